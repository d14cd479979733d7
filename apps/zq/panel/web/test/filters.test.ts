import assert from 'node:assert/strict';
import { test } from 'node:test';
import type { OptionGroup } from '../src/api/types.ts';
import { activeFilters, concernsPreviews, isOn, isShown, toggled } from '../src/lib/filters.ts';
import { changesTowards, isSameSearch, readEntry, valuesOf, type PastSearch } from '../src/lib/pastSearches.ts';

function groups(price: string, quality: string): OptionGroup[] {
  const base = { tooltip: '', active: true, hidden: false, id: 'price' };
  const choices = [
    { value: '-1', text: 'Any' },
    { value: '0', text: '$5' },
  ];
  return [
    { legend: 'Filters', options: [{ ...base, legend: 'Maximum price', type: 'choice', value: price, initial: '-1', choices }] },
    { legend: 'Options', options: [{ ...base, legend: 'Quality', type: 'boolean', value: quality, initial: null }] },
  ];
}

const search: PastSearch = { repository: 'T7', words: 'sea', owned: false, options: [['-1'], ['true']], item: 0 };

test('a filter in force becomes a chip with the text of its choice', () => {
  assert.deepEqual(activeFilters(groups('0', 'true')), [
    { group: 0, index: 0, legend: 'Maximum price', text: '$5', initial: '-1' },
  ]);
});

test('an option that filters nothing is no chip, and one without such a value never is', () => {
  assert.deepEqual(activeFilters(groups('-1', 'true')), []);
});

test('a value that is no choice shows itself', () => {
  assert.equal(activeFilters(groups('15', 'true'))[0]?.text, '15');
});

test('a text in force is a chip with that text, and an empty one is none', () => {
  const text = (value: string): OptionGroup[] => [
    { legend: '', options: [{ tooltip: '', active: true, hidden: false, id: 'by', legend: 'Author', type: 'text', value, initial: '' }] },
  ];
  assert.deepEqual(activeFilters(text('Ada')), [{ group: 0, index: 0, legend: 'Author', text: 'Ada', initial: '' }]);
  assert.deepEqual(activeFilters(text('')), []);
});

test('a boolean on which results depend is a chip with its legend alone, and part of a search', () => {
  const boolean = (value: string, initial: string | null): OptionGroup[] => [
    { legend: '', options: [{ tooltip: '', active: true, hidden: false, id: 'ed', legend: 'Editorial only', type: 'boolean', value, initial }] },
  ];
  assert.deepEqual(activeFilters(boolean('true', 'false')), [
    { group: 0, index: 0, legend: 'Editorial only', text: '', initial: 'false' },
  ]);
  assert.deepEqual(activeFilters(boolean('false', 'false')), []);
  assert.deepEqual(changesTowards(boolean('true', 'false'), [['false']]), [{ group: 0, index: 0, value: 'false' }]);
  assert.deepEqual(changesTowards(boolean('true', null), [['false']]), []);
});

test('only a boolean on which no results are known to depend is an option of previews', () => {
  const [filters, options] = groups('0', 'true');
  assert.equal(options?.options.every(concernsPreviews), true);
  assert.equal(filters?.options.some(concernsPreviews), false);
  assert.equal(options?.options.some((option) => concernsPreviews({ ...option, initial: 'false' })), false);
});

test('a hidden option has no place among the filters, and says so as a chip where it is in force', () => {
  const [filters] = groups('0', 'true');
  const hidden = filters?.options.map((option) => ({ ...option, hidden: true })) ?? [];
  assert.equal(hidden.some(isShown), false);
  assert.equal(activeFilters([{ legend: '', options: hidden }]).length, 1);
});

test('a boolean is turned round in its own words', () => {
  assert.deepEqual(['true', 'false', '1', '0'].map(toggled), ['false', 'true', '0', '1']);
  assert.ok(isOn('1') && isOn('true') && !isOn('0') && !isOn('false') && !isOn(''));
});

test('going back sets what filters and leaves the rest', () => {
  assert.deepEqual(changesTowards(groups('0', 'false'), [['-1'], ['true']]), [{ group: 0, index: 0, value: '-1' }]);
  assert.deepEqual(changesTowards(groups('-1', 'false'), [['-1'], ['true']]), []);
  assert.deepEqual(changesTowards(groups('0', 'false'), []), []);
});

test('the place in the results is no part of what makes a search another one', () => {
  assert.ok(isSameSearch(search, { ...search, item: 700 }));
  assert.ok(!isSameSearch(search, { ...search, options: [['0'], ['true']] }));
  assert.ok(!isSameSearch(search, { ...search, words: 'sea ' }));
  assert.deepEqual(valuesOf(groups('0', 'true')), [['0'], ['true']]);
});

test('history of another page is not taken for a search', () => {
  assert.deepEqual(readEntry({ search, position: 3 }), { search, position: 3 });
  for (const strange of [null, undefined, 7, 'x', {}, { search }, { search: { ...search, words: 1 }, position: 0 }]) {
    assert.equal(readEntry(strange), null);
  }
});
