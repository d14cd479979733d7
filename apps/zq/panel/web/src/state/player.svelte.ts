// What the player shows: a clip, with the range that is marked in it, or the sequence. Both are kept when the other one
// is shown.
import type { Clip } from '../api/types.ts';

export type Shown = 'clip' | 'sequence';

export interface ClipOfRepository {
  repository: string;
  clip: Clip;
}

class PlayerState {
  shows = $state<Shown>('clip');
  source = $state.raw<ClipOfRepository | null>(null);
  // The clip whose piece of the sequence is on screen; null: the sequence has nothing to show.
  piece = $state.raw<ClipOfRepository | null>(null);
  // Seconds in the source; null: the clip's own beginning and end.
  inPoint = $state<number | null>(null);
  outPoint = $state<number | null>(null);
  // Rises with each wish to play the source, also of the same clip.
  wish = $state(0);
  // Where in the source the wish begins, and that it only stands there; null: plays from the in point.
  standAt = $state<number | null>(null);

  // The clip on screen, of the source or of the sequence.
  get clip(): Clip | null {
    return this.#onScreen?.clip ?? null;
  }

  get repository(): string {
    return this.#onScreen?.repository ?? '';
  }

  get #onScreen(): ClipOfRepository | null {
    return this.shows === 'sequence' ? this.piece : this.source;
  }

  // Shows the clip without playing it.
  show(repository: string, clip: Clip): void {
    if (repository !== this.source?.repository || clip.id !== this.source.clip.id) {
      this.inPoint = null;
      this.outPoint = null;
    }
    this.source = { repository, clip };
    this.shows = 'clip';
  }

  play(repository: string, clip: Clip): void {
    this.show(repository, clip);
    this.standAt = null;
    this.wish++;
  }

  // Shows the clip standing at that time.
  showAt(repository: string, clip: Clip, seconds: number): void {
    this.show(repository, clip);
    this.standAt = seconds;
    this.wish++;
  }

  close(): void {
    this.shows = 'clip';
    this.source = null;
    this.inPoint = null;
    this.outPoint = null;
  }

  // The marked range as a new piece has it: nothing where nothing is marked, or the clip is not the source.
  rangeOf(repository: string, clip: string): { in?: number; out?: number } {
    if (repository !== this.source?.repository || clip !== this.source.clip.id) {
      return {};
    }
    return {
      ...(this.inPoint === null ? {} : { in: this.inPoint }),
      ...(this.outPoint === null ? {} : { out: this.outPoint }),
    };
  }
}

export const player = new PlayerState();
