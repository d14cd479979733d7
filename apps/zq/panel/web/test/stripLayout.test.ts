import assert from 'node:assert/strict';
import { test } from 'node:test';
import {
  anchorOf,
  fittingScale,
  indexAfterMove,
  insertionAt,
  keptScroll,
  layOut,
  readableScale,
  rulerMarks,
  rulerStep,
  toFrame,
  trimmed,
} from '../src/lib/stripLayout.ts';

const spans = [
  { begin: 0, end: 4 },
  { begin: 4, end: 6 },
  { begin: 6, end: 12 },
];
const boxes = layOut(spans, 10);

test('pieces lie end to end, as wide as they are long', () => {
  assert.deepEqual(boxes, [
    { left: 0, width: 40 },
    { left: 40, width: 20 },
    { left: 60, width: 60 },
  ]);
});

test('the scale that fits shows all of it, and an empty strip has one too', () => {
  assert.equal(fittingScale(12, 360), 30);
  assert.ok(fittingScale(0, 360) > 0);
  assert.ok(fittingScale(12, 0) > 0);
  assert.ok(fittingScale(1e9, 360) > 0);
});

test('the names of most pieces can be read, or all of it is seen where that is larger', () => {
  const many = Array.from({ length: 200 }, (_, index) => ({ begin: index * 2, end: index * 2 + 2 }));
  assert.equal(readableScale(many, 1200, 90), 45);
  assert.equal(readableScale(spans, 1200, 90), 100);
  const uneven = [1, 2, 4, 8].map((length, index) => ({ begin: index * 10, end: index * 10 + length }));
  assert.equal(readableScale(uneven, 200, 90), 45, 'a quarter of the pieces may be shorter');
  assert.ok(readableScale([], 1200) > 0);
});

test('a change of scale keeps what it holds on to where it is', () => {
  const held = anchorOf([null, 5000, 900], 600, 1000);
  assert.equal(held, 300, 'the first that is in view');
  assert.equal(anchorOf([50, null], 600, 1000), 500, 'none is in view');
  const scroll = keptScroll(600, held, 10, 15);
  assert.equal((900 / 10) * 15 - scroll, held);
});

test('a drop goes to the side of a piece that is nearer', () => {
  assert.equal(insertionAt(-5, boxes), 0);
  assert.equal(insertionAt(19, boxes), 0);
  assert.equal(insertionAt(21, boxes), 1);
  assert.equal(insertionAt(55, boxes), 2);
  assert.equal(insertionAt(900, boxes), 3);
  assert.equal(insertionAt(0, []), 0);
});

test('a piece that is dragged to either side of itself stays', () => {
  assert.equal(indexAfterMove(1, 1), 1);
  assert.equal(indexAfterMove(1, 2), 1);
  assert.equal(indexAfterMove(1, 3), 2);
  assert.equal(indexAfterMove(1, 0), 0);
});

test('trimming leaves a frame and stays within the clip', () => {
  const piece = { in: 2, out: 5 };
  assert.deepEqual(trimmed(piece, 'in', 1, 0.04, 8), { in: 3, out: 5 });
  assert.deepEqual(trimmed(piece, 'in', -9, 0.04, 8), { in: 0, out: 5 });
  assert.deepEqual(trimmed(piece, 'in', 9, 0.04, 8), { in: 4.96, out: 5 });
  assert.deepEqual(trimmed(piece, 'out', 9, 0.04, 8), { in: 2, out: 8 });
  assert.deepEqual(trimmed(piece, 'out', -9, 0.04, 8), { in: 2, out: 2.04 });
});

test('a clip whose length is not known does not shorten its piece', () => {
  assert.deepEqual(trimmed({ in: 2, out: 5 }, 'out', 1, 0.04, 0), { in: 2, out: 5 });
});

test('a dragged edge lands on a frame', () => {
  assert.ok(Math.abs(toFrame(1.03, 0.04) - 1.04) < 1e-9);
  assert.ok(Math.abs(toFrame(-1.01, 0.04) + 1) < 1e-9);
});

test('marks of the ruler are far enough from each other at every scale', () => {
  for (let scale = 0.01; scale < 500; scale *= 1.3) {
    assert.ok(rulerStep(scale) * scale >= 84, String(scale));
  }
});

test('only the marks in view are made', () => {
  const marks = rulerMarks(10, 3600, 10_000, 10_400);
  assert.ok(marks.length <= 7 && marks.length >= 3);
  assert.ok(marks.every((mark) => mark * 10 >= 9_800 && mark * 10 <= 10_400));
  assert.deepEqual(rulerMarks(10, 0, 0, 400), [0]);
});
