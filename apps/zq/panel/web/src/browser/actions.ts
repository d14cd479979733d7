// What can be done with a clip of the results, by button and by key alike.
import type { Clip } from '../api/types.ts';
import { playback } from '../panels/player/Playback.svelte.ts';
import { basket } from '../state/basket.svelte.ts';
import { layout } from '../state/layout.svelte.ts';
import { player } from '../state/player.svelte.ts';
import { project } from '../state/project.svelte.ts';
import { results } from '../state/results.svelte.ts';
import { nameOf } from './columns.ts';

export function playClip(clip: Clip): void {
  // The drawer lies over the player where the page is not very wide.
  if (layout.panel !== null && layout.room !== 'huge') {
    layout.close();
  }
  player.play(results.source.repository, clip);
}

// The clip that the player has goes on or stops; another one begins.
export function playOrPause(clip: Clip): void {
  const source = player.source;
  const isThere = source?.clip.id === clip.id && source.repository === results.source.repository;
  if (isThere && player.shows === 'clip') {
    playback.toggle();
  } else {
    playClip(clip);
  }
}

export function placeClip(clip: Clip): void {
  const repository = results.source.repository;
  void project.place({ repository, clip: clip.id, ...player.rangeOf(repository, clip.id) }, nameOf(clip));
}

export function toggleBasket(clip: Clip): void {
  void basket.toggle({ id: clip.id, name: nameOf(clip) });
}

// Shows the clip beside the results where there is room for both.
export function showClip(clip: Clip): void {
  if (layout.room === 'wide' || layout.room === 'huge') {
    player.show(results.source.repository, clip);
  }
}
