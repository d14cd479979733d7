// Keys of the whole page, wherever the focus is.
import { isPlain, isTyping } from '../lib/keys.ts';
import { layout } from '../state/layout.svelte.ts';
import { settings } from '../state/settings.svelte.ts';

export function onPageKey(event: KeyboardEvent): void {
  if (event.defaultPrevented) {
    return;
  }
  if (event.key === 'F6') {
    event.preventDefault();
    moveToRegion(event.shiftKey ? -1 : 1);
    return;
  }
  if (event.key === 'Escape' && layout.panel !== null && !isDialogOpen()) {
    event.preventDefault();
    layout.close();
    return;
  }
  if (!isPlain(event) || isTyping(event) || isDialogOpen()) {
    return;
  }
  switch (event.key) {
    case '/':
      event.preventDefault();
      document.getElementById('search-words')?.focus();
      break;
    case '?':
      event.preventDefault();
      layout.keyList = true;
      break;
    case 'g':
    case 'G':
      event.preventDefault();
      settings.changeSoon({ view: settings.settings?.view === 'list' ? 'grid' : 'list' });
      break;
  }
}

function isDialogOpen(): boolean {
  return document.querySelector('dialog[open]') !== null;
}

// Every region of the page bears `data-region`; the focus goes to its first place, or to where it says.
function moveToRegion(step: 1 | -1): void {
  const regions = [...document.querySelectorAll<HTMLElement>('[data-region]')].filter(
    (region) => region.offsetParent !== null,
  );
  const at = regions.findIndex((region) => region.contains(document.activeElement));
  const from = at < 0 && step < 0 ? 0 : at;
  // A region with nothing to work on is passed over.
  for (let count = 1; count <= regions.length; count++) {
    const target = firstPlace(regions[(from + step * count + regions.length * 2) % regions.length]);
    if (target !== null) {
      target.focus();
      return;
    }
  }
}

function firstPlace(region: HTMLElement | undefined): HTMLElement | null {
  const places = [
    ...(region?.querySelectorAll<HTMLElement>('[data-first-focus]') ?? []),
    ...(region?.querySelectorAll<HTMLElement>('[tabindex="0"], input, select, button:not([tabindex="-1"]), a[href]') ?? []),
  ];
  return places.find((place) => !place.matches(':disabled') && place.offsetParent !== null) ?? null;
}
