// The basket of the repository that is looked at.
import * as api from '../api/client.ts';
import type { Basket } from '../api/types.ts';
import { t } from '../i18n/texts.svelte.ts';
import { attempt } from './failure.ts';
import { notices } from './notices.svelte.ts';
import { repositories } from './repositories.svelte.ts';

const none: Basket = { clips: [], clipsToBuy: 0, total: '', credits: null, unpriced: 0 };

class BasketState {
  basket = $state.raw<Basket>(none);
  // What is wanted, while the program has not said that it is so: a repository answers one call at a time, and may be
  // busy with a search.
  #wish = $state.raw<string[] | null>(null);
  ids = $derived(new Set(this.#wish ?? this.basket.clips.map((clip) => clip.id)));
  #asked = 0;
  #sending: Promise<boolean> | null = null;

  async load(): Promise<void> {
    const asked = ++this.#asked;
    const basket = await attempt(() => api.getBasket(repositories.shortName));
    if (basket !== undefined && asked === this.#asked) {
      this.basket = basket;
    }
  }

  // One after the other, and of several wishes the last.
  replace(clips: string[]): Promise<boolean> {
    this.#wish = clips;
    this.#sending ??= this.#send().finally(() => (this.#sending = null));
    return this.#sending;
  }

  async #send(): Promise<boolean> {
    let isSo = false;
    for (let wish = this.#wish; wish !== null; wish = this.#wish) {
      const clips = wish;
      const basket = await attempt(() => api.setBasket(repositories.shortName, clips));
      isSo = basket !== undefined;
      if (this.#wish === wish) {
        this.#wish = null;
        this.basket = basket ?? this.basket;
      }
    }
    return isSo;
  }

  async toggle(clip: { id: string; name: string }): Promise<void> {
    const had = this.ids.has(clip.id);
    const clips = [...this.ids];
    const wanted = had ? clips.filter((id) => id !== clip.id) : [...clips, clip.id];
    if (await this.replace(wanted)) {
      // Seen on the clip and on the basket.
      notices.say(t(had ? 'basket.taken_out' : 'basket.put_in', { clip: clip.name }));
    }
  }

  clear(): void {
    this.#asked++;
    this.#wish = null;
    this.basket = none;
  }
}

export const basket = new BasketState();
