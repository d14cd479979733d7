import assert from 'node:assert/strict';
import { webcrypto } from 'node:crypto';
import { test } from 'node:test';
import type { BasketClip, Purchase, PurchaseState } from '../src/api/types.ts';
import { bytesText, waitText } from '../src/lib/amounts.ts';
import { buyable, totalOf, undecided } from '../src/lib/buying.ts';
import { newKey } from '../src/lib/newKey.ts';

const clip = (id: string, owned = false): BasketClip => ({
  id,
  name: id,
  price: '$4',
  owned,
  undecided: false,
  used: 0,
});
const purchase = (state: PurchaseState, ...clips: string[]): Purchase => ({
  key: state,
  user: 'ada',
  clips,
  payment: 'credits',
  state,
  code: null,
  text: '',
  trouble: '',
  page: '',
  time: 1,
});

test('what is owned, on its way or in doubt is not bought', () => {
  const clips = [clip('a', true), clip('b'), clip('c'), clip('d'), clip('e')];
  const purchases = [purchase('running', 'b'), purchase('doubtful', 'c'), purchase('refused', 'd'), purchase('waiting', 'e')];
  assert.deepEqual(buyable(clips, purchases, 'ada').map(({ id }) => id), ['d', 'e']);
  assert.deepEqual([...undecided(clips, purchases, 'ada')], ['b', 'c']);
});

test('what the basket calls undecided is not bought, whether the page knows of the purchase or not', () => {
  const clips = [{ ...clip('a'), undecided: true }, clip('b')];
  assert.deepEqual(buyable(clips, [], 'ada').map(({ id }) => id), ['b']);
});

test('the doubt of another account keeps nobody from buying', () => {
  assert.deepEqual(buyable([clip('a')], [purchase('doubtful', 'a')], 'bob').map(({ id }) => id), ['a']);
});

test('the total is that of what is bought, and else unknown', () => {
  const clips = [clip('a', true), clip('b'), { ...clip('c'), undecided: true }];
  const basket = { clips, clipsToBuy: 1, total: '$4', credits: null, unpriced: 0 };
  assert.equal(totalOf(basket, buyable(clips, [], 'ada')), '$4');
  assert.equal(totalOf(basket, buyable(clips, [purchase('running', 'b')], 'ada')), '');
  assert.equal(totalOf(basket, [clip('x')]), '');
});

test('keys differ and have 128 bits', () => {
  assert.equal(newKey((bytes) => bytes.fill(10)), '0a'.repeat(16));
  const random = (bytes: Uint8Array) => webcrypto.getRandomValues(bytes);
  assert.notEqual(newKey(random), newKey(random));
});

test('bytes are in the unit that reads best', () => {
  assert.equal(bytesText(48_000_000, 'en'), '48 MB');
  assert.equal(bytesText(1_234_000, 'en'), '1.2 MB');
  assert.equal(bytesText(1_234_000, 'de'), '1,2 MB');
  assert.equal(bytesText(999, 'en'), '999 bytes');
  assert.equal(bytesText(Number.NaN, 'en'), '0 bytes');
});

test('a wait is told more coarsely the longer it is', () => {
  assert.equal(waitText(12.2, 'en'), '13 sec');
  assert.equal(waitText(60, 'en'), '1 min');
  assert.equal(waitText(3 * 3600 + 119, 'en'), '3 hr 2 min');
  assert.equal(waitText(7200, 'en'), '2 hr');
});
