import assert from 'node:assert/strict';
import { test } from 'node:test';
import type { Clip, Column } from '../src/api/types.ts';
import { comparable, sortClips } from '../src/lib/sortClips.ts';

const column: Column = { type: 59, name: 'Price', kind: 'text', width: 1, editable: false };

function clips(...texts: string[]): Clip[] {
  return texts.map((text, index) => ({
    id: String(index),
    name: text,
    owned: false,
    attributes: text === '-' ? {} : { '59': text },
    rate: '',
    rateFraction: null,
    hasThumbnail: false,
    hasPreview: false,
    audioChannels: 0,
    edit: '',
    state: '',
  }));
}

function sorted(texts: string[], kind: Column['kind'], descending = false): string[] {
  return sortClips(clips(...texts), { column: { ...column, kind }, descending }, 'en').map((clip) => clip.name);
}

test('amounts are in the order of their value, whatever stands around them', () => {
  assert.deepEqual(sorted(['$100', '$9', '$1,249.50', '$49'], 'number'), ['$9', '$49', '$100', '$1,249.50']);
});

test('lengths are in the order of their seconds', () => {
  assert.deepEqual(sorted(['1:01', '0:59', '1:00:00', '10:00'], 'duration'), ['0:59', '1:01', '10:00', '1:00:00']);
});

test('what has no value comes last in both directions', () => {
  assert.deepEqual(sorted(['-', '$9', '$4'], 'text'), ['$4', '$9', '-']);
  assert.deepEqual(sorted(['-', '$9', '$4'], 'text', true), ['$9', '$4', '-']);
});

test('words are in the order of the language, numbers in them by value', () => {
  assert.deepEqual(sorted(['take 10', 'Take 2', 'ábaco', 'zebra'], 'text'), ['ábaco', 'Take 2', 'take 10', 'zebra']);
});

test('equal ones keep the order in which they were found', () => {
  const result = sortClips(clips('$9', '$9', '$9'), { column, descending: true }, 'en');
  assert.deepEqual(result.map((clip) => clip.id), ['0', '1', '2']);
});

test('titles that begin with the same number are in the order of their words', () => {
  assert.deepEqual(
    sorted(['12 Monkeys', '9 Lives', '12 Apes', '100 Days', 'Apes'], 'text'),
    ['9 Lives', '12 Apes', '12 Monkeys', '100 Days', 'Apes'],
  );
});

test('a title that only begins with a number is a title', () => {
  assert.equal(comparable('12 Monkeys', 'text'), '12 Monkeys');
  assert.equal(comparable('4 seasons in 1 day', 'text'), '4 seasons in 1 day');
  assert.equal(comparable('23.976', 'number'), 23.976);
  assert.equal(comparable('unknown', 'number'), null);
});
