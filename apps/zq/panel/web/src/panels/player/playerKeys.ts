// The keys of the player. Those of an editing suite that the page has no other use for work wherever the focus is; the
// others while it is in the player.
import { nameOf } from '../../browser/columns.ts';
import { isPlain, isTyping } from '../../lib/keys.ts';
import { basket } from '../../state/basket.svelte.ts';
import { player } from '../../state/player.svelte.ts';
import { repositories } from '../../state/repositories.svelte.ts';
import { clearMarks, goToIn, goToOut, markIn, markOut, place, playRange } from './marking.ts';
import { playback } from './Playback.svelte.ts';
import { matchFrame, showSequence, shuttle, transport } from './playing.svelte.ts';
import { sequencePlayback } from './SequencePlayback.svelte.ts';

type Work = (event: KeyboardEvent) => void;
type Keys = Record<string, Work | undefined>;

const everywhere: Keys = {
  j: () => shuttle.press('j'),
  k: () => shuttle.press('k'),
  l: () => shuttle.press('l'),
  m: () => transport().setMuted(!transport().muted),
};

const inside: Keys = {
  ArrowLeft: (event) => transport().step(event.shiftKey ? -10 : -1),
  ArrowRight: (event) => transport().step(event.shiftKey ? 10 : 1),
  Home: () => transport().seekToFrame(0),
  End: () => transport().seekToFrame(transport().lastFrame),
};

const ofClip: { everywhere: Keys; inside: Keys } = {
  everywhere: { i: markIn, o: markOut, I: goToIn, O: goToOut, x: clearMarks },
  inside: { p: () => place(false), P: () => place(true), b: toggleBasket },
};

const ofSequence: { everywhere: Keys; inside: Keys } = {
  everywhere: { f: () => void matchFrame() },
  inside: { ArrowUp: () => sequencePlayback.stepCut(-1), ArrowDown: () => sequencePlayback.stepCut(1) },
};

function toggleBasket(): void {
  const { source } = player;
  if (source !== null && source.repository === repositories.shortName) {
    void basket.toggle({ id: source.clip.id, name: nameOf(source.clip) });
  }
}

// What has a use of its own for the space bar.
const pressable = 'button, a, summary, input, [role="option"], [role="row"]';

// `root`: the player. Where the focus is in the sequence, it is the sequence that is played.
export function onPlayerKey(event: KeyboardEvent, root: HTMLElement | undefined): void {
  if (event.defaultPrevented || !isPlain(event) || isTyping(event) || document.querySelector('dialog[open]')) {
    return;
  }
  const target = event.target instanceof Element ? event.target : null;
  const key = event.key.length === 1 && !event.shiftKey ? event.key.toLowerCase() : event.key;
  if (target?.closest('[data-plays="sequence"]') != null && ['j', 'k', 'l', ' '].includes(key)) {
    showSequence();
  }
  if (player.clip === null) {
    return;
  }
  const shown = player.shows === 'sequence' ? ofSequence : ofClip;
  if (key === ' ') {
    if (target?.closest(pressable) === null) {
      event.preventDefault();
      if (event.shiftKey && shown === ofClip) {
        playRange();
      } else {
        transport().toggle();
      }
    }
    return;
  }
  const canPlay = shown === ofSequence || (player.clip.hasPreview && playback.failure === null);
  const isInside = target !== null && root?.contains(target) === true;
  const work =
    (isInside ? (shown.inside[key] ?? inside[key]) : undefined) ??
    (canPlay ? (shown.everywhere[key] ?? everywhere[key]) : undefined);
  if (work !== undefined) {
    event.preventDefault();
    work(event);
  }
}

export function onPlayerKeyUp(event: KeyboardEvent): void {
  if (event.key.toLowerCase() === 'k') {
    shuttle.release();
  }
}
