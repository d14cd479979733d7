// What can be done with a piece, by button, key and pointer alike.
import type { Piece } from '../../api/types.ts';
import { formatNumber, t } from '../../i18n/texts.svelte.ts';
import type { DraggedClip } from '../../lib/draggedClip.ts';
import { framesPerSecond } from '../../lib/timecode.ts';
import { notices } from '../../state/notices.svelte.ts';
import { player } from '../../state/player.svelte.ts';
import { project } from '../../state/project.svelte.ts';
import { selection } from './selection.svelte.ts';

const unknownRate = 25;

// Seconds of one frame of the clip.
export function frameOf(piece: Piece): number {
  return 1 / (framesPerSecond(piece.rate) ?? framesPerSecond(project.sequence?.rate) ?? unknownRate);
}

// Places what was dragged, or its marked range, at the end or before the piece at that index.
export function dropClip({ repository, clip, name }: DraggedClip, at: number | null): void {
  const range = player.rangeOf(repository, clip);
  void project.place({ repository, clip, ...range, ...(at === null ? {} : { at }) }, name);
}

export async function movePiece(piece: Piece, index: number): Promise<void> {
  const count = project.sequence?.pieces.length ?? 0;
  const at = Math.min(Math.max(index, 0), count - 1);
  if (at !== piece.index && (await project.change(piece.piece, { at }))) {
    notices.say(t('sequence.moved', { clip: piece.name, place: formatNumber(at + 1), count: formatNumber(count) }));
  }
}

// What comes after it is chosen next, or what came before it where it was the last.
export async function removePiece(piece: Piece): Promise<void> {
  const pieces = project.sequence?.pieces ?? [];
  const next = pieces[piece.index + 1] ?? pieces[piece.index - 1] ?? null;
  if (await project.remove(piece.piece)) {
    selection.set(next);
    notices.say(t('sequence.removed', { clip: piece.name }));
  }
}
