import assert from 'node:assert/strict';
import { test } from 'node:test';
import type { Fraction } from '../src/api/types.ts';
import { markedIn, markedOut, noMarks, spanOf } from '../src/lib/markedRange.ts';
import { frameAt, frameOfSecond, frameTimecode, framesPerSecond, middleOf, startOf, timecode } from '../src/lib/timecode.ts';

const rates: Fraction[] = [[24000, 1001], [24, 1], [25, 1], [30000, 1001], [50, 1], [60000, 1001]];

test('the beginning and the middle of a frame lie in that frame, at every rate', () => {
  for (const rate of rates) {
    const perSecond = framesPerSecond(rate) ?? 0;
    for (let frame = 0; frame < 20_000; frame += 37) {
      assert.equal(frameAt(startOf(frame, perSecond), perSecond), frame);
      assert.equal(frameAt(middleOf(frame, perSecond), perSecond), frame);
    }
  }
});

test('a timecode counts as many frames a second as the rate is rounded to', () => {
  assert.equal(frameTimecode(0, 25), '00:00:00:00');
  assert.equal(frameTimecode(24, 25), '00:00:00:24');
  assert.equal(frameTimecode(25, 25), '00:00:01:00');
  assert.equal(frameTimecode(24, 24000 / 1001), '00:00:01:00');
  assert.equal(frameTimecode(119, 120), '00:00:00:119');
  assert.equal(frameTimecode(25 * 3600 * 2 + 25 * 61 + 3, 25), '02:01:01:03');
});

test('drop frame leaves out two numbers each minute but every tenth, four at the double rate', () => {
  const code = (frame: number): string => frameTimecode(frame, 30000 / 1001);
  assert.deepEqual([0, 29, 30, 1799, 1800, 3597, 3598].map(code), [
    '00:00:00;00',
    '00:00:00;29',
    '00:00:01;00',
    '00:00:59;29',
    '00:01:00;02',
    '00:01:59;29',
    '00:02:00;02',
  ]);
  assert.equal(code(17_982), '00:10:00;00');
  assert.equal(code(107_892), '01:00:00;00');
  assert.equal(frameTimecode(3600, 60000 / 1001), '00:01:00;04');
});

test('a second of the timecode begins at the frame that is written so', () => {
  for (const perSecond of [24000 / 1001, 25, 30000 / 1001, 60000 / 1001]) {
    for (let second = 0; second <= 4000; second++) {
      const frame = frameOfSecond(second, perSecond);
      const code = frameTimecode(frame, perSecond);
      const [hours = 0, minutes = 0, seconds = 0] = code.split(/[:;]/).map(Number);
      assert.equal(hours * 3600 + minutes * 60 + seconds, second, code);
      assert.ok(frame === 0 || frameTimecode(frame - 1, perSecond).slice(0, 8) !== code.slice(0, 8), code);
    }
  }
});

test('without a rate there are hundredths of a second', () => {
  assert.equal(timecode(61.239, null), '00:01:01.23');
  assert.equal(timecode(61.24, undefined), '00:01:01.24');
});

test('a rate or a time without sense does no harm', () => {
  for (const rate of [[0, 1], [25, 0], [-25, 1], [Number.NaN, 1]] as Fraction[]) {
    assert.equal(framesPerSecond(rate), null);
  }
  assert.equal(timecode(Number.NaN, [25, 1]), '00:00:00:00');
  assert.equal(timecode(-3, [25, 1]), '00:00:00:00');
  assert.equal(timecode(Number.POSITIVE_INFINITY, null), '00:00:00.00');
});

test('both marks on one frame mark that frame', () => {
  const marks = markedOut(markedIn(noMarks, 50, 25), 50, 25);
  assert.deepEqual(marks, { inPoint: 2, outPoint: 2.04 });
});

test('a mark beyond the other takes that one away', () => {
  const marks = markedOut(markedIn(noMarks, 50, 25), 100, 25);
  assert.deepEqual(markedIn(marks, 101, 25), { inPoint: 4.04, outPoint: null });
  assert.deepEqual(markedIn(marks, 100, 25), { inPoint: 4, outPoint: 4.04 });
  assert.deepEqual(markedOut(marks, 49, 25), { inPoint: null, outPoint: 2 });
});

test('marks leave a range within the clip', () => {
  assert.deepEqual(spanOf(noMarks, 8), { begin: 0, end: 8 });
  assert.deepEqual(spanOf({ inPoint: 3, outPoint: 20 }, 8), { begin: 3, end: 8 });
  assert.deepEqual(spanOf({ inPoint: 9, outPoint: 10 }, 8), { begin: 8, end: 8 });
});
