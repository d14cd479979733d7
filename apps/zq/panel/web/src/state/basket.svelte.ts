// The basket of the repository that is looked at.
import * as api from '../api/client.ts';
import type { Basket } from '../api/types.ts';
import { t } from '../i18n/texts.svelte.ts';
import { attempt } from './failure.ts';
import { notices } from './notices.svelte.ts';
import { repositories } from './repositories.svelte.ts';

const none: Basket = { clips: [], total: '', credits: null, unpriced: 0 };

class BasketState {
  basket = $state.raw<Basket>(none);
  ids = $derived(new Set(this.basket.clips.map((clip) => clip.id)));
  #asked = 0;

  async load(): Promise<void> {
    const asked = ++this.#asked;
    const basket = await attempt(() => api.getBasket(repositories.shortName));
    if (basket !== undefined && asked === this.#asked) {
      this.basket = basket;
    }
  }

  async replace(clips: string[]): Promise<boolean> {
    const asked = ++this.#asked;
    const basket = await attempt(() => api.setBasket(repositories.shortName, clips));
    if (basket !== undefined && asked === this.#asked) {
      this.basket = basket;
    }
    return basket !== undefined;
  }

  async toggle(clip: { id: string; name: string }): Promise<void> {
    const had = this.ids.has(clip.id);
    const clips = this.basket.clips.map((other) => other.id);
    const wanted = had ? clips.filter((id) => id !== clip.id) : [...clips, clip.id];
    if (await this.replace(wanted)) {
      notices.add('good', t(had ? 'basket.taken_out' : 'basket.put_in', { clip: clip.name }));
    }
  }

  clear(): void {
    this.#asked++;
    this.basket = none;
  }
}

export const basket = new BasketState();
