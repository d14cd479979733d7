// A trim that a person is at: shown at once, sent when the keys have rested or the pointer was let go, so that one
// trim is one step to take back.
import type { Piece } from '../../api/types.ts';
import { t } from '../../i18n/texts.svelte.ts';
import { Settle } from '../../lib/settle.ts';
import type { Timed } from '../../lib/sequenceTime.ts';
import { toFrame, trimmed, type Edge } from '../../lib/stripLayout.ts';
import { timecode } from '../../lib/timecode.ts';
import { notices } from '../../state/notices.svelte.ts';
import { project } from '../../state/project.svelte.ts';
import { frameOf } from './actions.ts';
import { selection } from './selection.svelte.ts';

const rest_ms = 350;

class Trim {
  draft = $state.raw<({ piece: number } & Timed) | null>(null);
  #of: Piece | null = null;
  #rest = new Settle(rest_ms, () => void this.send());

  // The piece as it is shown.
  timesOf(piece: Piece): Timed {
    return this.draft !== null && this.draft.piece === piece.piece ? this.draft : piece;
  }

  // By so many frames from where the edge is shown.
  byFrames(piece: Piece, edge: Edge, frames: number): void {
    this.#set(piece, trimmed(this.timesOf(piece), edge, frames * frameOf(piece), frameOf(piece), piece.clipDuration));
    selection.edge = edge;
    notices.say(t(edge === 'in' ? 'sequence.said_in' : 'sequence.said_out', { time: this.#told(piece, edge) }));
    this.#rest.later();
  }

  // By so many seconds from where the edge was before.
  bySeconds(piece: Piece, edge: Edge, seconds: number): void {
    const frame = frameOf(piece);
    this.#set(piece, trimmed(piece, edge, toFrame(seconds, frame), frame, piece.clipDuration));
  }

  async send(): Promise<void> {
    this.#rest.cancel();
    const { draft } = this;
    const of = this.#of;
    this.#of = null;
    if (draft !== null && of !== null && (draft.in !== of.in || draft.out !== of.out)) {
      await project.change(draft.piece, {
        ...(draft.in === of.in ? {} : { in: draft.in }),
        ...(draft.out === of.out ? {} : { out: draft.out }),
      });
    }
    if (this.draft === draft) {
      this.draft = null;
    }
  }

  cancel(): void {
    this.#rest.cancel();
    this.#of = null;
    this.draft = null;
  }

  #set(piece: Piece, times: Timed): void {
    if (this.#of !== null && this.#of.piece !== piece.piece) {
      void this.send();
    }
    this.#of = piece;
    this.draft = { piece: piece.piece, in: times.in, out: times.out };
  }

  #told(piece: Piece, edge: Edge): string {
    return timecode(this.timesOf(piece)[edge], piece.rate);
  }
}

export const trim = new Trim();
