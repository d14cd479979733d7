// Pictures of clips, few under way at a time. A browser has a handful of connections to one program, and a slow picture
// must not hold up a search or a click: what is on screen goes first, what is scrolled past is given up.
//
// A picture that has come is in the browser's own store, where an <img> of the same address finds it.

// "later": the program does not have it yet.
export type Fetched = 'there' | 'none' | 'later';
export type Fetch = (address: string, signal: AbortSignal) => Promise<Fetched>;

export interface Wish {
  // Nobody waits for it any more; nothing is told of it from then on.
  cancel(): void;
}

interface Entry {
  address: string;
  isOnScreen: () => boolean;
  onEnd: (isThere: boolean) => void;
  transfer: AbortController | null; // null: it waits
  notBefore: boolean; // it has just been asked for and was not there yet
}

export const atOnce = 2;
const pause_ms = 100; // before one that was not there yet is asked for again
const mostKnown = 10_000;

export class PictureQueue {
  readonly #fetch: Fetch;
  readonly #after: (work: () => void) => void;
  #entries: Entry[] = [];
  #running = 0;
  #there = new Set<string>();

  // `after` runs the work a little later.
  constructor(fetch: Fetch, after: (work: () => void) => void = (work) => void setTimeout(work, pause_ms)) {
    this.#fetch = fetch;
    this.#after = after;
  }

  // It has come during this visit.
  has(address: string): boolean {
    return this.#there.has(address);
  }

  // The browser has not kept it.
  forget(address: string): void {
    this.#there.delete(address);
  }

  // `onEnd` is told once, and not before this has returned. `isOnScreen` is asked whenever the next one is chosen.
  ask(address: string, isOnScreen: () => boolean, onEnd: (isThere: boolean) => void): Wish {
    const entry: Entry = { address, isOnScreen, onEnd, transfer: null, notBefore: false };
    this.#entries.push(entry);
    this.#startMore();
    return {
      cancel: () => {
        this.#entries = this.#entries.filter((other) => other !== entry);
        entry.transfer?.abort();
      },
    };
  }

  #startMore(): void {
    while (this.#running < atOnce) {
      const waiting = this.#entries.filter((entry) => entry.transfer === null && !entry.notBefore);
      const next = waiting.find((entry) => entry.isOnScreen()) ?? waiting[0];
      if (next === undefined) {
        return;
      }
      void this.#run(next);
    }
  }

  async #run(entry: Entry): Promise<void> {
    const transfer = new AbortController();
    entry.transfer = transfer;
    this.#running++;
    const fetched = await this.#fetch(entry.address, transfer.signal).catch((): Fetched => 'none');
    this.#running--;
    entry.transfer = null;
    if (this.#entries.includes(entry)) {
      this.#take(entry, fetched);
    }
    this.#startMore();
  }

  #take(entry: Entry, fetched: Fetched): void {
    this.#entries = this.#entries.filter((other) => other !== entry);
    if (fetched === 'later') {
      // Behind the others.
      entry.notBefore = true;
      this.#entries.push(entry);
      this.#after(() => {
        entry.notBefore = false;
        this.#startMore();
      });
      return;
    }
    if (fetched === 'there') {
      if (this.#there.size >= mostKnown) {
        this.#there.clear();
      }
      this.#there.add(entry.address);
    }
    entry.onEnd(fetched === 'there');
  }
}
