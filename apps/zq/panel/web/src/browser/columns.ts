// Which of a repository's columns stands where in a tile. The numbers are the host's attribute types, the same for
// all repositories.
import type { Clip, Column, Repository } from '../api/types.ts';

export const nameType = 1;
const priceType = 59;

export interface Facts {
  price: string;
  duration: string;
  others: string[];
}

export const noFacts: Facts = { price: '', duration: '', others: [] };

export function factsOf(clip: Clip, columns: readonly Column[]): Facts {
  const facts: Facts = { ...noFacts, others: [] };
  for (const column of columns) {
    const text = clip.attributes[column.type] ?? '';
    if (column.type === nameType || text === '') {
      continue;
    }
    if (column.type === priceType) {
      facts.price = text;
    } else if (column.kind === 'duration' && facts.duration === '') {
      facts.duration = text;
    } else {
      facts.others.push(text);
    }
  }
  return facts;
}

export function isPrice(column: Column): boolean {
  return column.type === priceType;
}

export function columnsOf(repository: Repository | undefined): Column[] {
  return repository?.columns ?? [];
}

// A name of blanks or of nothing would leave nothing to press.
export function nameOf(clip: Clip): string {
  return clip.name.trim() === '' ? clip.id : clip.name;
}
