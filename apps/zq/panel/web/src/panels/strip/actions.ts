// What can be done with a piece, by button, key and pointer alike.
import * as api from '../../api/client.ts';
import { asApiError } from '../../api/ApiError.ts';
import type { Clip, Piece } from '../../api/types.ts';
import { t } from '../../i18n/texts.svelte.ts';
import { framesPerSecond } from '../../lib/timecode.ts';
import { attempt } from '../../state/failure.ts';
import { layout } from '../../state/layout.svelte.ts';
import { notices } from '../../state/notices.svelte.ts';
import { player } from '../../state/player.svelte.ts';
import { project } from '../../state/project.svelte.ts';
import { selection } from './selection.svelte.ts';

const unknownRate = 25;

// Seconds of one frame of the clip.
export function frameOf(piece: Piece): number {
  return 1 / (framesPerSecond(piece.rate) ?? framesPerSecond(project.sequence?.rate) ?? unknownRate);
}

// A piece may be older than this run of the program, which then has not heard of its clip.
function unheard(piece: Piece): Clip {
  return {
    id: piece.clip,
    name: piece.name,
    owned: false,
    attributes: {},
    rate: '',
    rateFraction: piece.rate,
    hasThumbnail: false,
    hasPreview: true,
    audioChannels: 0,
    edit: piece.edit,
    state: piece.state,
  };
}

// Plays what the piece takes of its clip.
export async function playPiece(piece: Piece): Promise<void> {
  let clip: Clip;
  try {
    clip = await api.getClip(piece.repository, piece.clip);
  } catch (error) {
    if (asApiError(error).code !== 'not_found') {
      await attempt(() => Promise.reject(error));
      return;
    }
    clip = unheard(piece);
  }
  if (layout.panel !== null && layout.room !== 'huge') {
    layout.close();
  }
  player.show(piece.repository, clip);
  player.inPoint = piece.in;
  player.outPoint = piece.out;
  player.wish++;
}

export async function movePiece(piece: Piece, index: number): Promise<void> {
  const count = project.sequence?.pieces.length ?? 0;
  const at = Math.min(Math.max(index, 0), count - 1);
  if (at !== piece.index && (await project.change(piece.piece, { at }))) {
    notices.say(t('sequence.moved', { clip: piece.name, place: at + 1, count }));
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
