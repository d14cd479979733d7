// Why the bytes of previews do not come at the moment, as the program tells it while it waits for the service.
import { ApiError } from '../api/ApiError.ts';
import type { PreviewNews } from '../api/types.ts';
import { failureText } from './failure.ts';

class PreviewTroubles {
  #texts = $state.raw<Readonly<Record<string, string>>>({});

  // Null where nothing is known to be wrong.
  of(repository: string, clip: string): string | null {
    return this.#texts[`${repository} ${clip}`] ?? null;
  }

  take({ repository, clip, reason, text }: PreviewNews): void {
    const { [`${repository} ${clip}`]: _, ...others } = this.#texts;
    this.#texts =
      reason === ''
        ? others
        : { ...others, [`${repository} ${clip}`]: failureText(new ApiError('failed', text, 502, reason)) };
  }

  // What was told before is not known to hold any more.
  forget(): void {
    this.#texts = {};
  }
}

export const previewTroubles = new PreviewTroubles();
