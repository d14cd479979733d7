// What a person looks for: the words, the options, and the way back and forward through past searches.
import { fillHistory, historyPosition } from './searchHistory.svelte.ts';
import { changesTowards, isSameSearch, readEntry, valuesOf, type PastSearch } from '../lib/pastSearches.ts';
import { activeFilters, toggled } from '../lib/filters.ts';
import { Settle } from '../lib/settle.ts';
import { attempt } from './failure.ts';
import { basket } from './basket.svelte.ts';
import { repositories } from './repositories.svelte.ts';
import { results } from './results.svelte.ts';

const typingPause_ms = 250;
// A search that was on screen for so long is one to come back to; a shorter one was on the way to the next.
const lookedAt_ms = 1500;

class Search {
  typed = $state('');
  owned = $state(false);
  // The item on top of the view, as the view tells it, and where it is to begin after going back.
  topItem = 0;
  beginAt = $state(0);
  filters = $derived(activeFilters(repositories.groups));

  #current: PastSearch | null = null;
  // Of each repository what this page has looked for; before that, what the program remembers.
  #words = new Map<string, string>();
  #shownSince = 0;
  #restoring = 0;
  #ownChange = false;
  #typing = new Settle(typingPause_ms, () => void this.run());
  #optionsChanged = new Settle(30, () => void this.#runWithNewOptions());

  // Begins with the search that was on screen last, of this visit or of the last one.
  async start(): Promise<void> {
    const entry = readEntry(history.state);
    if (entry !== null && repositories.find(entry.search.repository) !== undefined) {
      await this.#restore(entry.search);
      return;
    }
    await this.#begin();
  }

  type(words: string): void {
    this.typed = words;
    this.#typing.later();
  }

  // What is typed, by Enter. Often the search for it runs already, since the typing had paused.
  async submit(): Promise<void> {
    if (results.phase !== 'running' || this.#current === null || !isSameSearch(this.#current, this.#snapshot(0))) {
      await this.run();
    }
  }

  // Searches with what is typed and chosen.
  async run(): Promise<void> {
    this.#typing.cancel();
    this.#remember();
    await this.#ask();
  }

  async showOwned(owned: boolean): Promise<void> {
    if (owned !== this.owned) {
      this.owned = owned;
      await this.run();
    }
  }

  async chooseRepository(shortName: string): Promise<void> {
    repositories.choose(shortName);
    this.owned = false;
    basket.clear();
    void basket.load();
    await this.#begin();
  }

  // With the words that the repository was last searched for.
  async #begin(): Promise<void> {
    this.typed = this.#words.get(repositories.shortName) ?? repositories.current?.words ?? '';
    await attempt(() => repositories.loadOptions());
    await this.run();
  }

  // The program says "options" where the results depend on it, and the search runs then.
  async setOption(group: number, index: number, value: string): Promise<void> {
    this.#ownChange = true;
    await attempt(() => repositories.setOption(group, index, value));
  }

  async toggleOption(group: number, index: number): Promise<void> {
    const option = repositories.groups[group]?.options[index];
    if (option !== undefined) {
      await this.setOption(group, index, toggled(option.value));
    }
  }

  async clearFilters(): Promise<void> {
    for (const filter of this.filters) {
      await this.setOption(filter.group, filter.index, filter.initial);
    }
  }

  // Also for a change that another panel has made.
  optionsChanged(repository: string, resultsDepend: boolean): void {
    if (repository !== repositories.shortName || this.#restoring !== 0) {
      return;
    }
    if (resultsDepend) {
      this.#optionsChanged.later();
    } else {
      this.#ownChange = false;
      void attempt(() => repositories.loadOptions());
    }
  }

  // From the browser's back and forward.
  async onPopState(state: unknown): Promise<void> {
    const entry = readEntry(state);
    if (entry !== null && repositories.find(entry.search.repository) !== undefined) {
      historyPosition.set(entry.position);
      await this.#restore(entry.search);
    }
  }

  // Keeps the place in the results with the search, so that coming back leads there.
  keepPlace(): void {
    if (this.#current !== null) {
      this.#current = { ...this.#current, item: this.topItem };
      fillHistory('replace', this.#current);
    }
  }

  async #runWithNewOptions(): Promise<void> {
    await attempt(() => repositories.loadOptions());
    this.#remember();
    await this.#ask();
    this.#ownChange = false;
  }

  async #restore(past: PastSearch): Promise<void> {
    this.#typing.cancel();
    const ticket = ++this.#restoring;
    try {
      if (past.repository !== repositories.shortName) {
        repositories.choose(past.repository);
        basket.clear();
        void basket.load();
      }
      this.owned = past.owned;
      this.typed = past.words;
      await attempt(() => repositories.loadOptions());
      for (const change of changesTowards(repositories.groups, past.options)) {
        await attempt(() => repositories.setOption(change.group, change.index, change.value));
      }
      this.#current = this.#snapshot(past.item);
      this.#shownSince = Date.now();
      await this.#ask(past.item);
    } finally {
      // The events of the options that were set just now come a moment later.
      setTimeout(() => {
        if (ticket === this.#restoring) {
          this.#restoring = 0;
        }
      }, 300);
    }
  }

  #snapshot(item: number): PastSearch {
    return {
      repository: repositories.shortName,
      words: this.typed.trim(),
      owned: this.owned,
      options: valuesOf(repositories.groups),
      item,
    };
  }

  #remember(): void {
    const next = this.#snapshot(0);
    const previous = this.#current;
    if (previous !== null && isSameSearch(previous, next)) {
      return;
    }
    const wasLookedAt = Date.now() - this.#shownSince > lookedAt_ms || this.#ownChange;
    if (previous !== null && wasLookedAt) {
      this.keepPlace();
      fillHistory('push', next);
    } else {
      fillHistory('replace', next);
    }
    this.#current = next;
    this.#shownSince = Date.now();
  }

  async #ask(item = 0): Promise<void> {
    this.beginAt = item;
    if (!this.owned) {
      this.#words.set(repositories.shortName, this.typed.trim());
    }
    await results.run({ repository: repositories.shortName, words: this.typed.trim(), owned: this.owned });
  }
}

export const search = new Search();
