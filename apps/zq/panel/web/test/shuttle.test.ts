import assert from 'node:assert/strict';
import { test } from 'node:test';
import { shuttled, type ShuttleKey } from '../src/lib/shuttle.ts';

function presses(keys: string): number[] {
  let speed = 0;
  return [...keys].map((key) => (speed = shuttled(speed, key as ShuttleKey)));
}

test('each press of L is faster forward, up to eight times', () => {
  assert.deepEqual(presses('lllll'), [1, 2, 4, 8, 8]);
});

test('each press of J is faster backward', () => {
  assert.deepEqual(presses('jjjjj'), [-1, -2, -4, -8, -8]);
});

test('the other key slows down first, and then turns round without standing still', () => {
  assert.deepEqual(presses('lllj'), [1, 2, 4, 2]);
  assert.deepEqual(presses('lj'), [1, -1]);
  assert.deepEqual(presses('jl'), [-1, 1]);
});

test('K stops at any speed', () => {
  assert.deepEqual(presses('lllk'), [1, 2, 4, 0]);
  assert.deepEqual(presses('jjk'), [-1, -2, 0]);
});

test('a speed that is set elsewhere goes on from the slowest', () => {
  assert.equal(shuttled(1.5, 'l'), 2);
  assert.equal(shuttled(-0.3, 'j'), -2);
});
