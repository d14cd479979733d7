// Which of the two is played, the clip or the sequence, and what J, K and L do to it.
import { asApiError } from '../../api/ApiError.ts';
import * as api from '../../api/client.ts';
import type { Clip, Piece } from '../../api/types.ts';
import { shuttled, type ShuttleKey } from '../../lib/shuttle.ts';
import { attempt } from '../../state/failure.ts';
import { layout } from '../../state/layout.svelte.ts';
import { player } from '../../state/player.svelte.ts';
import { clipOfPiece } from './clipOfPiece.ts';
import { playback } from './Playback.svelte.ts';
import { sequencePlayback } from './SequencePlayback.svelte.ts';
import type { Transport } from './Transport.ts';

export function transport(): Transport {
  return player.shows === 'sequence' ? sequencePlayback : playback;
}

// The drawer lies over the player where the page is not very wide.
function makeRoom(): void {
  if (layout.panel !== null && layout.room !== 'huge') {
    layout.close();
  }
}

export function showSequence(): void {
  if (sequencePlayback.isOpen) {
    makeRoom();
    playback.stop();
    player.shows = 'sequence';
  }
}

export function showClip(): void {
  if (player.source !== null) {
    sequencePlayback.stop();
    player.shows = 'clip';
  }
}

export function toggleSequence(): void {
  showSequence();
  sequencePlayback.toggle();
}

// Without K the speed goes up and down by its steps; with K held, J and L go by single frames.
class Shuttle {
  #holdsK = false;

  press(key: ShuttleKey, of: Transport = transport()): void {
    if (this.#holdsK && key !== 'k') {
      of.step(key === 'l' ? 1 : -1);
      return;
    }
    this.#holdsK = key === 'k';
    const speed = shuttled(of.speed, key);
    if (speed === 0) {
      of.stop();
    } else {
      of.run(speed);
    }
  }

  release(): void {
    this.#holdsK = false;
  }
}

export const shuttle = new Shuttle();

// The clip as the repository tells it, or as far as its piece does. Null: it could not be asked, and that was said.
async function clipOf(piece: Piece): Promise<Clip | null> {
  try {
    return await api.getClip(piece.repository, piece.clip);
  } catch (error) {
    if (asApiError(error).code === 'not_found') {
      return clipOfPiece(piece);
    }
    await attempt(() => Promise.reject(error));
    return null;
  }
}

function mark(piece: Piece): void {
  player.inPoint = piece.in;
  player.outPoint = piece.out;
}

// Plays what the piece takes of its clip.
export async function playPiece(piece: Piece): Promise<void> {
  const clip = await clipOf(piece);
  if (clip !== null) {
    makeRoom();
    sequencePlayback.stop();
    player.play(piece.repository, clip);
    mark(piece);
  }
}

// Shows the clip of the piece on screen at the same frame, with what the piece takes of it marked.
export async function matchFrame(): Promise<void> {
  const { piece, clipTime } = sequencePlayback;
  if (piece !== null) {
    sequencePlayback.stop();
    const clip = await clipOf(piece);
    if (clip !== null) {
      player.showAt(piece.repository, clip, clipTime);
      mark(piece);
    }
  }
}
