// The piece of the strip that is worked on. The player places before it.
import type { Piece } from '../../api/types.ts';
import { project } from '../../state/project.svelte.ts';
import type { Edge } from '../../lib/stripLayout.ts';

class Selection {
  number = $state<number | null>(null);
  edge = $state<Edge>('out'); // that keys trim

  get piece(): Piece | null {
    return project.sequence?.pieces.find((piece) => piece.piece === this.number) ?? null;
  }

  set(piece: Piece | null | undefined): void {
    this.number = piece?.piece ?? null;
  }
}

export const selection = new Selection();
