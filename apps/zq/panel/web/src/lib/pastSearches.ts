// A search as the browser's history keeps it, so that back and forward lead through past searches.
import type { OptionGroup } from '../api/types.ts';

export interface PastSearch {
  repository: string;
  words: string;
  owned: boolean; // the list of what is owned, not a search
  options: string[][]; // values by group and index
  item: number; // the one that was on top
}

export interface HistoryEntry {
  search: PastSearch;
  position: number; // among the entries of this page, from 0
}

export function valuesOf(groups: readonly OptionGroup[]): string[][] {
  return groups.map((group) => group.options.map((option) => option.value));
}

export function isSameSearch(a: PastSearch, b: PastSearch): boolean {
  return (
    a.repository === b.repository &&
    a.words === b.words &&
    a.owned === b.owned &&
    JSON.stringify(a.options) === JSON.stringify(b.options)
  );
}

export interface OptionChange {
  group: number;
  index: number;
  value: string;
}

// What has to be set so that the options stand as they did. Only options that filter are part of a search.
export function changesTowards(groups: readonly OptionGroup[], past: readonly string[][]): OptionChange[] {
  const changes: OptionChange[] = [];
  groups.forEach((group, groupIndex) => {
    group.options.forEach((option, index) => {
      const value = past[groupIndex]?.[index];
      if (value !== undefined && option.initial !== null && option.value !== value) {
        changes.push({ group: groupIndex, index, value });
      }
    });
  });
  return changes;
}

// History state comes from the browser, perhaps of an older page: anything unfamiliar counts as nothing.
export function readEntry(state: unknown): HistoryEntry | null {
  const entry = state as Partial<HistoryEntry> | null;
  const search = entry?.search;
  if (
    typeof entry?.position !== 'number' ||
    typeof search?.repository !== 'string' ||
    typeof search.words !== 'string' ||
    typeof search.owned !== 'boolean' ||
    typeof search.item !== 'number' ||
    !Array.isArray(search.options)
  ) {
    return null;
  }
  return { search, position: entry.position };
}
