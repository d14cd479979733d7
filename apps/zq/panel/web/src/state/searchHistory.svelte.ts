// Where in the browser's history the page stands, so that its own back and forward buttons know whether they lead
// anywhere. A docked web view often has none of its own.
import type { HistoryEntry, PastSearch } from '../lib/pastSearches.ts';

const farthestKey = 'zq-panel.farthest';

class HistoryPosition {
  position = $state(0);
  farthest = $state(0);

  set(position: number): void {
    this.position = position;
    this.farthest = Math.max(position, this.#readFarthest());
  }

  advance(): void {
    this.position++;
    this.farthest = this.position;
    this.#writeFarthest();
  }

  get canGoBack(): boolean {
    return this.position > 0;
  }

  get canGoForward(): boolean {
    return this.position < this.farthest;
  }

  #readFarthest(): number {
    try {
      return Number(sessionStorage.getItem(farthestKey) ?? 0);
    } catch {
      return this.farthest;
    }
  }

  #writeFarthest(): void {
    try {
      sessionStorage.setItem(farthestKey, String(this.farthest));
    } catch {
      // Only the forward button after a reload depends on it.
    }
  }
}

export const historyPosition = new HistoryPosition();

export function fillHistory(how: 'push' | 'replace', search: PastSearch): void {
  if (how === 'push') {
    historyPosition.advance();
  }
  const entry: HistoryEntry = { search, position: historyPosition.position };
  if (how === 'push') {
    history.pushState(entry, '');
  } else {
    history.replaceState(entry, '');
  }
}
