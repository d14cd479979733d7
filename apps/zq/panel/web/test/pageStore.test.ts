import assert from 'node:assert/strict';
import { test } from 'node:test';
import { pagesFor, withPage } from '../src/lib/pageStore.ts';

test('the pages on screen come first, then the one after and the one before', () => {
  assert.deepEqual(pagesFor({ first: 120, last: 160 }, 50, 1000), [3, 4, 5, 2]);
});

test('no page beyond the ends is wanted', () => {
  assert.deepEqual(pagesFor({ first: -5, last: 10 }, 50, 60), [1, 2]);
  assert.deepEqual(pagesFor({ first: 990, last: 1200 }, 50, 1000), [20, 19]);
  assert.deepEqual(pagesFor({ first: 0, last: 10 }, 50, 0), []);
  assert.deepEqual(pagesFor({ first: 0, last: -1 }, 50, 100), []);
});

test('a page takes its place and leaves the others where they are', () => {
  const first = withPage<string>([], 1, 2, ['a', 'b'], 5);
  assert.deepEqual(first, ['a', 'b', undefined, undefined, undefined]);
  assert.deepEqual(withPage(first, 3, 2, ['e'], 5), ['a', 'b', undefined, undefined, 'e']);
});

test('a page that is fuller than announced does not shift what follows', () => {
  const items = withPage<string>([], 2, 2, ['c', 'd'], 4);
  assert.deepEqual(withPage(items, 1, 2, ['a', 'b', 'x', 'y'], 4), ['a', 'b', 'c', 'd']);
});

test('a total that has shrunk takes the end away', () => {
  assert.deepEqual(withPage(['a', 'b', 'c'], 1, 2, ['A', 'B'], 2), ['A', 'B']);
});
