// Which pages of a long result are wanted for what is on screen.

export interface Span {
  first: number;
  last: number; // inclusive
}

// Pages, counted from 1, that hold the items, those on screen first and then the one after and the one before.
export function pagesFor(span: Span, pageSize: number, total: number): number[] {
  if (total === 0 || span.last < span.first) {
    return [];
  }
  const pageCount = Math.ceil(total / pageSize);
  const pageOf = (index: number) => Math.floor(Math.min(Math.max(index, 0), total - 1) / pageSize) + 1;
  const first = pageOf(span.first);
  const last = pageOf(span.last);
  const pages: number[] = [];
  for (let page = first; page <= last; page++) {
    pages.push(page);
  }
  if (last < pageCount) {
    pages.push(last + 1);
  }
  if (first > 1) {
    pages.push(first - 1);
  }
  return pages;
}

// Puts a page into its place. Places of pages that have not come are undefined. The result has `total` places; a
// service whose pages are fuller or emptier than announced does not shift what is there.
export function withPage<Item>(
  items: readonly (Item | undefined)[],
  page: number,
  pageSize: number,
  fresh: readonly Item[],
  total: number,
): (Item | undefined)[] {
  const result: (Item | undefined)[] = Array.from({ length: total }, (_, index) => items[index]);
  const start = (page - 1) * pageSize;
  fresh.slice(0, pageSize).forEach((item, index) => {
    if (start + index < total) {
      result[start + index] = item;
    }
  });
  return result;
}
