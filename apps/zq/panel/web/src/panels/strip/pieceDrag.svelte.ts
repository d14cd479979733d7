// A piece that is moved or trimmed by the pointer. A mouse or pen drags at once; a finger that moves scrolls the strip,
// and drags once it has rested on a piece.
import type { Piece } from '../../api/types.ts';
import { FingerRest } from '../../lib/FingerRest.ts';
import { indexAfterMove, insertionAt, type Edge } from '../../lib/stripLayout.ts';
import { movePiece } from './actions.ts';
import { trim } from './trim.svelte.ts';
import { view } from './view.svelte.ts';

const beginsDrag = 5; // pixels that a mouse moves before it drags
const edge = 34; // pixels at the ends of the view in which a drag scrolls
const fastest = 18; // pixels that it scrolls at each picture

interface Drag {
  piece: Piece;
  edge: Edge | null; // null: the piece is moved
  startX: number; // in the track, which may scroll meanwhile
  moved: boolean;
}

class PieceDrag {
  now = $state.raw<Drag | null>(null);
  place = $state<number | null>(null); // where what is dragged would go
  #clientX = 0;
  #rest = new FingerRest();
  #drawing = 0;

  // True while the pointer has the piece, so that a finger must not scroll the strip.
  get holds(): boolean {
    return this.now !== null;
  }

  isMoved(piece: Piece): boolean {
    return this.now?.moved === true && this.now.edge === null && this.now.piece.piece === piece.piece;
  }

  down(event: PointerEvent, piece: Piece, at: Edge | null): void {
    this.#clientX = event.clientX;
    const begin = (moved: boolean): void => {
      this.now = { piece, edge: at, startX: this.#inTrack(this.#clientX), moved };
      view.scroller?.setPointerCapture(event.pointerId);
    };
    if (event.pointerType !== 'touch' || at !== null) {
      begin(false);
      return;
    }
    this.#rest.begin(event, () => {
      begin(true);
      this.place = piece.index;
    });
  }

  move(event: PointerEvent): void {
    this.#rest.move(event);
    this.#clientX = event.clientX;
    if (this.now === null) {
      return;
    }
    if (!this.now.moved) {
      if (Math.abs(this.#inTrack(event.clientX) - this.now.startX) < beginsDrag) {
        return;
      }
      this.now = { ...this.now, moved: true };
    }
    this.#follow();
    cancelAnimationFrame(this.#drawing);
    this.#drawing = requestAnimationFrame(() => this.#scroll());
  }

  up(): void {
    const { now, place } = this;
    this.#end();
    if (now === null || !now.moved) {
      return;
    }
    if (now.edge !== null) {
      void trim.send();
    } else if (place !== null) {
      void movePiece(now.piece, indexAfterMove(now.piece.index, place));
    }
  }

  cancel(): void {
    if (this.now !== null) {
      trim.cancel();
    }
    this.#end();
  }

  // Something from elsewhere is dragged over the strip.
  over(clientX: number): void {
    scrollAtEdge(clientX);
    this.place = insertionAt(this.#inTrack(clientX), view.boxes);
  }

  leave(): void {
    this.place = null;
  }

  #inTrack(clientX: number): number {
    const { scroller } = view;
    return scroller === null ? 0 : clientX - scroller.getBoundingClientRect().left + scroller.scrollLeft;
  }

  #follow(): void {
    const { now } = this;
    if (now === null || !now.moved) {
      return;
    }
    const x = this.#inTrack(this.#clientX);
    if (now.edge !== null) {
      trim.bySeconds(now.piece, now.edge, (x - now.startX) / view.scale);
    } else {
      this.place = insertionAt(x, view.boxes);
    }
  }

  // At the end of the view it goes on scrolling for as long as the pointer stays there.
  #scroll(): void {
    if (this.now?.moved === true && scrollAtEdge(this.#clientX)) {
      this.#follow();
      this.#drawing = requestAnimationFrame(() => this.#scroll());
    }
  }

  #end(): void {
    this.#rest.end();
    cancelAnimationFrame(this.#drawing);
    this.now = null;
    this.place = null;
  }
}

// The nearer to the edge, the faster. False where it does not scroll.
function scrollAtEdge(clientX: number): boolean {
  const { scroller } = view;
  const box = scroller?.getBoundingClientRect();
  if (scroller === null || box === undefined) {
    return false;
  }
  const into = Math.max(clientX - (box.right - edge), 0) - Math.max(box.left + edge - clientX, 0);
  const before = scroller.scrollLeft;
  scroller.scrollLeft += (Math.min(Math.max(into / edge, -1), 1)) * fastest;
  return scroller.scrollLeft !== before;
}

export const pieceDrag = new PieceDrag();
