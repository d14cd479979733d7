// Which row of a virtual grid stands in which place of the document. A row that is scrolled out of sight gives its place,
// with all that was made for it, to one that comes: making a row anew costs several times as much as writing into it.

export interface Place {
  readonly slot: number; // names the place; the same as long as the place is there
  readonly row: number;
}

// The places of the wanted rows. A row that has a place keeps it, as the same object. The others take what has come free,
// and stand in the list where that stood, so that nothing in the document is moved; only then new places are added.
// Rows: each at most once.
export function placeRows(before: readonly Place[], rows: readonly number[]): Place[] {
  const wanted = new Set(rows);
  const kept = new Set(before.map(({ row }) => row));
  const coming = rows.filter((row) => !kept.has(row));
  const places: Place[] = [];
  let next = 0;
  for (const place of before) {
    next = Math.max(next, place.slot + 1);
    if (wanted.has(place.row)) {
      places.push(place);
      continue;
    }
    const row = coming.shift();
    if (row !== undefined) {
      places.push({ slot: place.slot, row });
    }
  }
  return [...places, ...coming.map((row) => ({ slot: next++, row }))];
}

// In the order of the rows, which is the one to be read out.
export function inOrder(places: readonly Place[]): Place[] {
  return [...places].sort((one, other) => one.row - other.row);
}
