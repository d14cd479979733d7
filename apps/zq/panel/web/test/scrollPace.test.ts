import assert from 'node:assert/strict';
import { test } from 'node:test';
import { ScrollPace } from '../src/lib/scrollPace.ts';

const height = 600;
const frame_ms = 16;

// What is said at each frame of a scroll with that many pixels a frame.
function scroll(perFrame: number, frames: number, pace = new ScrollPace()): boolean[] {
  return Array.from({ length: frames }, (_, frame) => pace.at(frame * perFrame, frame * frame_ms, height));
}

test('a fast scroll passes its clips by, in both directions, from its second frame on', () => {
  assert.deepEqual(scroll(100, 4), [false, true, true, true]);
  assert.deepEqual(scroll(-100, 4), [false, true, true, true]);
});

test('at the pace of one who reads nothing is passed by', () => {
  assert.ok(!scroll(20, 30).includes(true));
});

test('a jump after a rest is no fast scroll: one has arrived', () => {
  const pace = new ScrollPace();
  pace.at(0, 0, height);
  assert.equal(pace.at(20_000, 1000, height), false);
});

test('two positions of one moment tell no pace', () => {
  const pace = new ScrollPace();
  pace.at(0, 0, height);
  assert.equal(pace.at(5000, 0, height), false);
});
