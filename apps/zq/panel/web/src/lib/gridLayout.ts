// Where the tiles of a virtual grid lie. Everything is computed from the width and the number of items, so that a
// place is reserved for what has not come yet and nothing moves when it comes.

export interface GridSpace {
  width: number; // pixels for tiles, without padding
  tileSize: number; // wanted width of a tile
  aspect: number; // width by height of a picture
  textHeight: number; // below the picture
  gap: number;
}

export interface GridShape {
  columns: number;
  tileWidth: number;
  pictureHeight: number;
  rowHeight: number; // with the gap below
}

export function gridShape({ width, tileSize, aspect, textHeight, gap }: GridSpace): GridShape {
  const columns = Math.max(1, Math.round((width + gap) / (tileSize + gap)));
  const tileWidth = Math.max(1, Math.floor((width - gap * (columns - 1)) / columns));
  const sound = Number.isFinite(aspect) && aspect > 0.1 ? aspect : 16 / 9;
  const pictureHeight = Math.round(tileWidth / sound);
  return { columns, tileWidth, pictureHeight, rowHeight: pictureHeight + textHeight + gap };
}

export interface RowSpan {
  first: number;
  last: number; // inclusive; before first where there is none
}

// The rows that are on screen.
export function rowsInView(scrollTop: number, height: number, rowHeight: number, rows: number): RowSpan {
  if (rows === 0 || rowHeight <= 0) {
    return { first: 0, last: -1 };
  }
  const first = Math.floor(scrollTop / rowHeight);
  const last = Math.ceil((scrollTop + height) / rowHeight) - 1;
  return { first: Math.min(Math.max(0, first), rows - 1), last: Math.max(0, Math.min(rows - 1, last)) };
}

// The rows on screen and `around` pixels on both sides, in whole rows. They are as many wherever one scrolls, also at both
// ends, so that each row that goes is one that comes.
export function rowsAround(scrollTop: number, height: number, rowHeight: number, rows: number, around: number): RowSpan {
  if (rows === 0 || rowHeight <= 0) {
    return { first: 0, last: -1 };
  }
  const extra = Math.ceil(around / rowHeight);
  const count = Math.min(rows, Math.ceil(Math.max(0, height) / rowHeight) + 1 + 2 * extra);
  const first = Math.min(Math.max(0, Math.floor(scrollTop / rowHeight) - extra), rows - count);
  return { first, last: first + count - 1 };
}

export function rowCount(total: number, columns: number): number {
  return Math.ceil(total / columns);
}

// Where a key leads from the item at `index`; null where the key moves nothing.
export function moveTo(
  key: string,
  index: number,
  { columns, pageRows, total }: { columns: number; pageRows: number; total: number },
): number | null {
  const steps: Record<string, number> = {
    ArrowLeft: -1,
    ArrowRight: 1,
    ArrowUp: -columns,
    ArrowDown: columns,
    PageUp: -columns * pageRows,
    PageDown: columns * pageRows,
    Home: -total,
    End: total,
  };
  const step = steps[key];
  if (step === undefined || total === 0) {
    return null;
  }
  const wanted = index + step;
  // Down from the last row but one lands on the last item where the row below is shorter; up from the first stays.
  if (key === 'ArrowUp' && wanted < 0) {
    return index;
  }
  if (key === 'ArrowDown' && wanted >= total) {
    const isInLastRow = Math.floor(index / columns) === Math.floor((total - 1) / columns);
    return isInLastRow ? index : total - 1;
  }
  return Math.min(Math.max(wanted, 0), total - 1);
}

// The scroll position that brings the row on screen, the nearest to where it is.
export function scrollToRow(row: number, rowHeight: number, scrollTop: number, height: number, head = 0): number {
  const top = row * rowHeight;
  if (top < scrollTop) {
    return top;
  }
  const bottom = top + rowHeight + head;
  return bottom > scrollTop + height ? bottom - height : scrollTop;
}
