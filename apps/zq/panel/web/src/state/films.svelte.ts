// Which film plays of a clip: its full media where the project plays that, else its preview. A browser does not know
// every format that is sold: a full film that it cannot play gives way to the preview.
import { mediaAddress } from '../api/client.ts';
import type { Clip, Piece } from '../api/types.ts';
import { isMediaAddress } from '../lib/films.ts';
import { previewOf } from './previews.svelte.ts';
import { project } from './project.svelte.ts';

class Films {
  #unplayable = $state.raw<readonly string[]>([]);

  // The address of what plays of the clip in that state.
  of(repository: string, clip: string, state: Piece['state'] | ''): string {
    const full = mediaAddress(repository, clip);
    return state === 'full' && !this.#unplayable.includes(full) ? full : previewOf(repository, clip);
  }

  // The same for a clip outside of the sequence. Whether it is full the sequence knows sooner than a result of a search.
  ofClip(repository: string, clip: Clip): string {
    const piece = project.sequence?.pieces.find((one) => one.repository === repository && one.clip === clip.id);
    return this.of(repository, clip.id, piece?.state ?? clip.state);
  }

  // True where another film takes the place of that one: it is full, and does not play.
  giveUp(address: string): boolean {
    if (!isMediaAddress(address)) {
      return false;
    }
    if (!this.#unplayable.includes(address)) {
      this.#unplayable = [...this.#unplayable, address];
    }
    return true;
  }

  // All may be tried again.
  forget(): void {
    this.#unplayable = [];
  }
}

export const films = new Films();
