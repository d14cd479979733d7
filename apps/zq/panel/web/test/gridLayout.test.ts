import assert from 'node:assert/strict';
import { test } from 'node:test';
import { gridShape, moveTo, rowCount, rowsAround, rowsInView, scrollToRow } from '../src/lib/gridLayout.ts';

const space = { width: 1000, tileSize: 200, aspect: 16 / 9, textHeight: 40, gap: 10 };

test('tiles fill the width without passing it', () => {
  for (let width = 50; width < 3000; width += 7) {
    const { columns, tileWidth } = gridShape({ ...space, width });
    const used = columns * tileWidth + (columns - 1) * space.gap;
    assert.ok(used <= width, `${used} of ${width}`);
    assert.ok(width - used < columns, `${used} of ${width}`);
  }
});

test('a docked panel of 360 pixels shows two tiles of the default size', () => {
  assert.equal(gridShape({ ...space, width: 336 }).columns, 2);
});

test('a service that tells no sound aspect gets pictures of 16 by 9', () => {
  for (const aspect of [0, Number.NaN, -1, Number.POSITIVE_INFINITY]) {
    const { pictureHeight, tileWidth } = gridShape({ ...space, aspect });
    assert.equal(pictureHeight, Math.round((tileWidth * 9) / 16));
  }
});

test('the rows in view are those that the window touches', () => {
  assert.deepEqual(rowsInView(0, 300, 100, 50), { first: 0, last: 2 });
  assert.deepEqual(rowsInView(50, 300, 100, 50), { first: 0, last: 3 });
  assert.deepEqual(rowsInView(4800, 300, 100, 50), { first: 48, last: 49 });
  assert.deepEqual(rowsInView(99999, 300, 100, 50), { first: 49, last: 49 });
});

test('the rows around the window are enough for both sides, and as many wherever one scrolls', () => {
  for (let top = 0; top <= 4700; top += 13) {
    const { first, last } = rowsAround(top, 300, 100, 50, 150);
    assert.equal(last - first + 1, 8);
    assert.ok(first >= 0 && last < 50, `${first} to ${last}`);
    assert.ok(first * 100 <= Math.max(0, top - 150), `${first} at ${top}`);
    assert.ok((last + 1) * 100 >= Math.min(5000, top + 300 + 150), `${last} at ${top}`);
  }
  assert.deepEqual(rowsAround(99999, 300, 100, 50, 150), { first: 42, last: 49 });
  assert.deepEqual(rowsAround(0, 300, 100, 3, 150), { first: 0, last: 2 });
  assert.deepEqual(rowsAround(0, 0, 100, 50, 150), { first: 0, last: 4 });
});

test('nothing is in view of an empty result', () => {
  assert.deepEqual(rowsInView(0, 300, 100, 0), { first: 0, last: -1 });
  assert.deepEqual(rowsAround(0, 300, 100, 0, 150), { first: 0, last: -1 });
});

test('a last row that is not full counts', () => {
  assert.equal(rowCount(9, 4), 3);
  assert.equal(rowCount(8, 4), 2);
  assert.equal(rowCount(0, 4), 0);
});

test('keys move in the grid and stay in it', () => {
  const grid = { columns: 4, pageRows: 2, total: 10 };
  assert.equal(moveTo('ArrowRight', 3, grid), 4);
  assert.equal(moveTo('ArrowLeft', 0, grid), 0);
  assert.equal(moveTo('ArrowUp', 2, grid), 2);
  assert.equal(moveTo('ArrowDown', 2, grid), 6);
  assert.equal(moveTo('ArrowDown', 7, grid), 9);
  assert.equal(moveTo('ArrowDown', 8, grid), 8);
  assert.equal(moveTo('PageDown', 1, grid), 9);
  assert.equal(moveTo('PageUp', 9, grid), 1);
  assert.equal(moveTo('Home', 7, grid), 0);
  assert.equal(moveTo('End', 0, grid), 9);
  assert.equal(moveTo('x', 0, grid), null);
  assert.equal(moveTo('End', 0, { ...grid, total: 0 }), null);
});

test('scrolling to a row goes no farther than needed', () => {
  assert.equal(scrollToRow(5, 100, 450, 300), 450);
  assert.equal(scrollToRow(4, 100, 450, 300), 400);
  assert.equal(scrollToRow(8, 100, 450, 300), 600);
  assert.equal(scrollToRow(8, 100, 450, 300, 30), 630);
});
