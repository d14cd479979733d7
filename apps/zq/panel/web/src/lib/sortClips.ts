// Puts loaded clips into the order of one column.
import type { Clip, Column } from '../api/types.ts';

export interface Sorting {
  column: Column;
  descending: boolean;
}

export type Comparable = number | string | null;

// "1:02:03" and "0:05" are lengths, "$1,249.50" and "29.97" amounts; a column's texts are compared as what its kind
// says, and what is no number of that kind counts as nothing. A text is a text, also one that begins with a number.
export function comparable(text: string, kind: Column['kind']): Comparable {
  const trimmed = text.trim();
  if (trimmed === '') {
    return null;
  }
  if (kind === 'text') {
    return trimmed;
  }
  if (kind === 'duration' && /^\d+(:\d+)+([.;]\d+)?$/.test(trimmed)) {
    return trimmed.split(':').reduce((sum, part) => sum * 60 + Number(part.replace(';', '.')), 0);
  }
  const amount = /^[^\d-]{0,3}(-?\d[\d,]*(?:\.\d+)?)\D*$/.exec(trimmed)?.[1];
  return amount === undefined ? null : Number(amount.replaceAll(',', ''));
}

// Nothing comes last in both directions; numbers come before words.
export function sortClips(clips: readonly Clip[], { column, descending }: Sorting, language: string): Clip[] {
  const collator = new Intl.Collator(language, { numeric: true, sensitivity: 'base' });
  const direction = descending ? -1 : 1;
  const compare = (a: Comparable, b: Comparable): number => {
    if (a === null || b === null) {
      return Number(a === null) - Number(b === null);
    }
    if (typeof a === 'number' && typeof b === 'number') {
      return (a - b) * direction;
    }
    if (typeof a !== typeof b) {
      return typeof a === 'number' ? -1 : 1;
    }
    return collator.compare(String(a), String(b)) * direction;
  };
  return clips
    .map((clip, index) => ({ clip, index, key: comparable(clip.attributes[column.type] ?? '', column.kind) }))
    .sort((a, b) => compare(a.key, b.key) || a.index - b.index)
    .map(({ clip }) => clip);
}
