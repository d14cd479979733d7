import assert from 'node:assert/strict';
import { test } from 'node:test';
import { clipTimeAt, indexAt, nextCut, previousCut, sequenceTimeAt, spansOf } from '../src/lib/sequenceTime.ts';

const frame = 1 / 25;
const pieces = [
  { start: 0, in: 0, out: 4 },
  { start: 4, in: 10, out: 12 },
  { start: 6, in: 1, out: 7 },
];
const spans = spansOf(pieces, 12);

test('a piece lies from its begin to that of the next one', () => {
  assert.deepEqual(spans, [
    { begin: 0, end: 4 },
    { begin: 4, end: 6 },
    { begin: 6, end: 12 },
  ]);
});

test('a clip of another rate takes whole frames of the sequence, which do not add up to its own', () => {
  const third = 1 / 3;
  const mixed = [
    { start: 0, in: 0, out: third },
    { start: 0.32, in: 0, out: third },
  ];
  assert.deepEqual(spansOf(mixed, 0.64), [
    { begin: 0, end: 0.32 },
    { begin: 0.32, end: 0.64 },
  ]);
});

test('while a piece is trimmed, what follows it moves along', () => {
  const shown = [pieces[0], { in: 10, out: 13 }, pieces[2]].map((times) => times ?? { in: 0, out: 0 });
  assert.deepEqual(spansOf(pieces, 12, shown), [
    { begin: 0, end: 4 },
    { begin: 4, end: 7 },
    { begin: 7, end: 13 },
  ]);
});

test('at a cut the next piece is on screen, and at the end the last one', () => {
  assert.deepEqual([0, 3.99, 4, 5, 6, 11.9, 12, 99].map((time) => indexAt(spans, time)), [0, 0, 1, 1, 2, 2, 2, 2]);
  assert.equal(indexAt(spans, -1), 0);
  assert.equal(indexAt([], 3), -1);
});

test('decimal fractions do not bring the piece before the cut back', () => {
  const times = spansOf([{ start: 0, in: 0, out: 0.1 + 0.2 }, { start: 0.1 + 0.2, in: 0, out: 1 }], 1.3);
  assert.equal(indexAt(times, 0.3), 1);
});

test('a time in the sequence is one in the clip, and back', () => {
  const [, piece] = pieces;
  const [, span] = spans;
  assert.ok(piece && span);
  assert.equal(clipTimeAt(piece, span, 4.5, frame), 10.5);
  assert.equal(sequenceTimeAt(piece, span, 10.5), 4.5);
  assert.equal(clipTimeAt(piece, span, 3, frame), 10, 'not before its in point');
  assert.equal(clipTimeAt(piece, span, 6, frame), 12 - frame / 2, 'nor behind its last frame');
  assert.equal(sequenceTimeAt(piece, span, 99), 6);
});

test('from cut to cut, forward to the end and back to the beginning', () => {
  const forward = [0, 4, 6, 12].map((time) => nextCut(spans, time, frame));
  assert.deepEqual(forward, [4, 6, 12, 12]);
  assert.deepEqual([12, 6, 4.5, 4, 0].map((time) => previousCut(spans, time, frame)), [6, 4, 4, 0, 0]);
  assert.equal(nextCut([], 0, frame), 0);
});

test('in the first frame behind a cut, back is to the cut before it', () => {
  assert.equal(previousCut(spans, 4 + frame / 2, frame), 0);
  assert.equal(previousCut(spans, 4 + 1.5 * frame, frame), 4);
});
