// The clips of the search that is on screen, page by page as they are looked at.
import * as api from '../api/client.ts';
import { ApiError, asApiError, isAbort } from '../api/ApiError.ts';
import type { Clip, PageOfClips } from '../api/types.ts';
import { knownLanguage } from '../i18n/texts.svelte.ts';
import { pagesFor, withPage, type Span } from '../lib/pageStore.ts';
import { sortClips, type Sorting } from '../lib/sortClips.ts';

export interface Source {
  repository: string;
  words: string;
  owned: boolean;
}

interface Running {
  source: Source;
  control: AbortController;
}

export type Phase = 'idle' | 'running' | 'done' | 'failed';

const defaultPageSize = 50;
// Beyond it "load all" is not offered: it asks the service once for each page.
export const mostToLoad = 2000;

class Results {
  // What is on screen came from there, also while another search runs.
  source = $state.raw<Source>({ repository: '', words: '', owned: false });
  phase = $state<Phase>('idle');
  failure = $state.raw<ApiError | null>(null);
  total = $state(0);
  items = $state.raw<(Clip | undefined)[]>([]);
  // Why a further page did not come; the clips that are there stay.
  pageFailure = $state.raw<ApiError | null>(null);
  sorting = $state.raw<Sorting | null>(null);
  // Rises with each new result, so that the view begins at its top again.
  generation = $state(0);
  // Rises when pictures that did not come are to be asked for again.
  pictureAttempt = $state(0);

  loaded = $derived(this.items.filter((clip): clip is Clip => clip !== undefined));
  isComplete = $derived(this.loaded.length === this.total);
  // What is shown, in its order. Undefined: the place of a clip that has not come yet.
  shown: readonly (Clip | undefined)[] = $derived(
    this.sorting === null ? this.items : sortClips(this.loaded, this.sorting, knownLanguage()),
  );

  #pageSize = defaultPageSize;
  #pages = new Set<number>();
  #stale = new Set<number>();
  #wanted: number[] = [];
  #running: Running | null = null;
  #turn = 0; // of the latest search, the number that the program knows it by
  #loading = false;

  // Asks for the first page, in the place of whatever was asked for before. False when it failed or was replaced.
  async run(source: Source): Promise<boolean> {
    const before = this.#running?.source;
    // A search of the same repository gives way to the new one by itself.
    this.#leave(source.owned || source.repository !== before?.repository);
    const running = { source, control: new AbortController() };
    this.#running = running;
    this.#turn++;
    this.#wanted = [];
    this.phase = 'running';
    this.failure = null;
    if (this.generation === 0) {
      this.source = source;
    }
    try {
      this.#begin(source, await this.#ask(source, 1, defaultPageSize, running.control.signal));
      return true;
    } catch (error) {
      if (!isAbort(error) && running === this.#running) {
        this.#fail(source, asApiError(error));
      }
      return false;
    } finally {
      if (running === this.#running) {
        this.#running = null;
        void this.#load();
      }
    }
  }

  // Stops the search that runs; what was on screen before stays.
  stop(): void {
    if (this.phase === 'running') {
      this.#leave(true);
      this.phase = this.generation === 0 ? 'idle' : 'done';
    }
  }

  // These places are on screen: their pages are loaded, the nearest first.
  want(span: Span): void {
    if (this.sorting === null) {
      this.#wanted = pagesFor(span, this.#pageSize, this.total);
      void this.#load();
    }
  }

  wantAll(): void {
    this.#wanted = pagesFor({ first: 0, last: this.total - 1 }, this.#pageSize, this.total);
    void this.#load();
  }

  retryPages(): void {
    this.pageFailure = null;
    void this.#load();
  }

  // The clips may have changed (bought, placed, fetched): what is on screen is asked for again and takes the place
  // of what is there.
  refresh(): void {
    this.#stale = new Set(this.#pages);
    if (this.#wanted.length === 0 && this.phase === 'done') {
      this.#wanted = [1];
    }
    void this.#load();
  }

  // Waits no longer for the search that runs; `cancel`: has the program stop it too.
  #leave(cancel: boolean): void {
    if (this.#running !== null) {
      const { source, control } = this.#running;
      this.#running = null;
      control.abort();
      if (cancel && !source.owned) {
        api.cancelSearch(source.repository, this.#turn).catch(() => undefined);
        this.#turn++; // what is asked from here on is not meant
      }
    }
  }

  #ask(source: Source, page: number, pageSize: number, signal?: AbortSignal): Promise<PageOfClips> {
    return source.owned
      ? api.getOwned(source.repository, signal)
      : api.search(source.repository, source.words, page, pageSize, this.#turn, signal);
  }

  #begin(source: Source, answer: PageOfClips): void {
    this.source = source;
    this.#pageSize = this.source.owned ? Math.max(answer.clips.length, 1) : answer.pageSize || defaultPageSize;
    const total = this.source.owned ? answer.clips.length : answer.totalCount;
    this.phase = 'done';
    this.#show(withPage([], 1, this.#pageSize, answer.clips, total), total);
    this.#pages.add(1);
  }

  #fail(source: Source, failure: ApiError): void {
    this.source = source;
    this.phase = 'failed';
    this.failure = failure;
    this.#show([], 0);
  }

  #show(items: (Clip | undefined)[], total: number): void {
    this.items = items;
    this.total = total;
    this.pageFailure = null;
    this.sorting = null;
    this.#pages.clear();
    this.#stale.clear();
    this.#wanted = [];
    this.generation++;
  }

  // One page at a time: a repository answers one call at a time, and what is wanted next may have changed by then.
  async #load(): Promise<void> {
    if (this.#loading) {
      return;
    }
    this.#loading = true;
    try {
      for (let page = this.#next(); page !== undefined; page = this.#next()) {
        await this.#loadPage(page);
      }
    } finally {
      this.#loading = false;
    }
  }

  #next(): number | undefined {
    if (this.phase !== 'done' || this.pageFailure !== null) {
      return undefined;
    }
    return this.#wanted.find((page) => !this.#pages.has(page)) ?? this.#wanted.find((page) => this.#stale.has(page));
  }

  async #loadPage(page: number): Promise<void> {
    const generation = this.generation;
    const isAnew = this.#stale.delete(page);
    try {
      const answer = await this.#ask(this.source, page, this.#pageSize);
      if (generation !== this.generation || this.phase !== 'done') {
        return;
      }
      if (this.source.owned) {
        this.#pageSize = Math.max(answer.clips.length, 1);
      }
      this.total = this.source.owned ? answer.clips.length : answer.totalCount;
      this.items = withPage(this.items, page, this.#pageSize, answer.clips, this.total);
      this.#pages.add(page);
      if (isAnew) {
        this.pictureAttempt++;
      }
    } catch (error) {
      // A new search that runs has taken this one's place.
      if (generation === this.generation && this.phase === 'done' && !isAbort(error)) {
        this.pageFailure = asApiError(error);
      }
    }
  }
}

export const results = new Results();
