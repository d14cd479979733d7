import assert from 'node:assert/strict';
import { test } from 'node:test';
import { inOrder, placeRows, type Place } from '../src/lib/rowPlaces.ts';

const rowsFrom = (first: number, count: number) => Array.from({ length: count }, (_, index) => first + index);
const rowsOf = (places: readonly Place[]) => places.map(({ row }) => row);
const slotsOf = (places: readonly Place[]) => places.map(({ slot }) => slot);

test('a row that comes stands where one stood that goes, and the others are left alone', () => {
  const before = placeRows([], rowsFrom(0, 4));
  assert.deepEqual(rowsOf(before), [0, 1, 2, 3]);
  const after = placeRows(before, rowsFrom(1, 4));
  assert.deepEqual(rowsOf(after), [4, 1, 2, 3]);
  [1, 2, 3].forEach((index) => assert.equal(after[index], before[index], 'the same object'));
});

test('however far one scrolls, no place is made anew and none is moved', () => {
  let places = placeRows([], rowsFrom(0, 9));
  const first = slotsOf(places);
  for (const row of [1, 5, 40, 38, 400, 0, 8]) {
    places = placeRows(places, rowsFrom(row, 9));
    assert.deepEqual(slotsOf(places), first);
    assert.deepEqual(rowsOf(inOrder(places)), rowsFrom(row, 9));
  }
});

test('a row that stays behind keeps its place, and the rest need one more', () => {
  let places = placeRows([], rowsFrom(0, 4));
  const stays = places[2];
  places = placeRows(places, [2, ...rowsFrom(50, 4)]);
  assert.equal(places[2], stays);
  assert.deepEqual(slotsOf(places), [0, 1, 2, 3, 4]);
  places = placeRows(inOrder(places), [2, ...rowsFrom(10, 4)]);
  assert.equal(places[0], stays);
  assert.deepEqual(rowsOf(inOrder(places)), [2, 10, 11, 12, 13]);
});

test('fewer rows leave places out, and no two rows ever share one', () => {
  let places = placeRows([], rowsFrom(0, 6));
  places = placeRows(places, rowsFrom(3, 2));
  assert.deepEqual(slotsOf(places), [3, 4]);
  places = placeRows(places, rowsFrom(1, 6));
  assert.equal(new Set(slotsOf(places)).size, 6);
  assert.deepEqual(rowsOf(inOrder(places)), rowsFrom(1, 6));
  assert.deepEqual(placeRows(places, []), []);
});
