// The clip in the player, and the range that is marked in it.
import type { Clip } from '../api/types.ts';

class PlayerState {
  repository = $state('');
  clip = $state.raw<Clip | null>(null);
  // Seconds in the clip; null: the clip's own beginning and end.
  inPoint = $state<number | null>(null);
  outPoint = $state<number | null>(null);
  // Rises with each wish to play, also of the same clip.
  wish = $state(0);

  // Shows the clip without playing it.
  show(repository: string, clip: Clip): void {
    if (repository !== this.repository || clip.id !== this.clip?.id) {
      this.inPoint = null;
      this.outPoint = null;
    }
    this.repository = repository;
    this.clip = clip;
  }

  play(repository: string, clip: Clip): void {
    this.show(repository, clip);
    this.wish++;
  }

  close(): void {
    this.clip = null;
    this.inPoint = null;
    this.outPoint = null;
  }

  // The marked range as a new piece has it: nothing where nothing is marked, or the clip is not the one shown.
  rangeOf(repository: string, clip: string): { in?: number; out?: number } {
    if (repository !== this.repository || clip !== this.clip?.id) {
      return {};
    }
    return {
      ...(this.inPoint === null ? {} : { in: this.inPoint }),
      ...(this.outPoint === null ? {} : { out: this.outPoint }),
    };
  }
}

export const player = new PlayerState();
