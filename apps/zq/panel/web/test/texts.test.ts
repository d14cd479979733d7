import assert from 'node:assert/strict';
import { readdirSync, readFileSync } from 'node:fs';
import { join } from 'node:path';
import { pathToFileURL } from 'node:url';
import { test } from 'node:test';
import { fillIn, pluralKey } from '../src/lib/fillIn.ts';

const web = process.env['ZQ_PANEL_WEB'] ?? '.';
const load = (name: string): Promise<unknown> => import(pathToFileURL(join(web, 'scripts', name)).href);
const { parseTexts, textsFolder } = (await load('mock/texts.mjs')) as {
  parseTexts: (toml: string) => Record<string, string>;
  textsFolder: string;
};
const { pseudo, pseudoFile } = (await load('pseudo-texts.mjs')) as {
  pseudo: (text: string) => string;
  pseudoFile: (english: string) => string;
};

const fileOf = (language: string): string => readFileSync(join(textsFolder, `${language}.toml`), 'utf8');
const english = parseTexts(fileOf('en'));

// "key.one" and "key.other" are forms of one text, and a language has those that it needs.
const stem = (key: string): string => key.replace(/\.(zero|one|two|few|many|other)$/, '');
const stems = (texts: Record<string, string>): string[] => [...new Set(Object.keys(texts).map(stem))].sort();
const holders = (text: string): string[] => [...new Set(text.match(/\$[A-Z_]+\$/g) ?? [])].sort();

function sources(folder: string): string[] {
  return readdirSync(folder, { withFileTypes: true }).flatMap((entry) => {
    const path = join(folder, entry.name);
    return entry.isDirectory() ? sources(path) : /\.(ts|svelte)$/.test(entry.name) ? [readFileSync(path, 'utf8')] : [];
  });
}

for (const language of ['de', 'ja', 'qps']) {
  test(`${language} has every text that English has, and no other`, () => {
    assert.deepEqual(stems(parseTexts(fileOf(language))), stems(english));
  });

  test(`${language} keeps the place-holders of every text`, () => {
    for (const [key, text] of Object.entries(parseTexts(fileOf(language)))) {
      const original = english[key] ?? english[`${stem(key)}.other`] ?? '';
      assert.deepEqual(holders(text), holders(original), key);
    }
  });
}

test('the pseudo-language is that of the English texts', () => {
  assert.equal(fileOf('qps'), pseudoFile(fileOf('en')));
});

test('a pseudo text is a third longer, in brackets, and keeps its place-holders', () => {
  const text = pseudo('Search $REPOSITORY$ for clips');
  assert.match(text, /^\[.*\$REPOSITORY\$.*\]$/);
  assert.ok(text.length >= 'Search $REPOSITORY$ for clips'.length * 1.3);
  assert.doesNotMatch(text, /Search/);
});

test('every key that the page names has a text, and every text is named', () => {
  const code = sources(join(web, 'src')).join('\n');
  const known = new Set(stems(english));
  const named = new Set([...code.matchAll(/['"`]([a-z_]+\.[a-z_0-9.]+)['"`]/g)].map((match) => match[1] ?? ''));
  const tables = new Set([...known].map((key) => key.split('.')[0]));
  const missing = [...named].filter((key) => tables.has(key.split('.')[0]) && !known.has(key));
  assert.deepEqual(missing, []);
  // Keys that are put together, such as t(`state.${clip.state}`), name their table.
  const composed = new Set([...code.matchAll(/`([a-z_]+(?:\.[a-z_]+)*)\.\$\{/g)].map((match) => match[1] ?? ''));
  const unused = [...known].filter((key) => !named.has(key) && ![...composed].some((start) => key.startsWith(`${start}.`)));
  assert.deepEqual(unused, []);
});

test('a value that looks like a place-holder stays as it is', () => {
  assert.equal(fillIn('$CLIP$ is in $SEQUENCE$.', { clip: '$SEQUENCE$ $1 $&', sequence: 'Demo' }), '$SEQUENCE$ $1 $& is in Demo.');
  assert.equal(fillIn('$UNKNOWN$', {}), '$UNKNOWN$');
});

test('a count takes the form that its language has for it', () => {
  const texts = { 'clips.one': '', 'clips.other': '' };
  assert.equal(pluralKey(texts, 'clips', 1, 'en'), 'clips.one');
  assert.equal(pluralKey(texts, 'clips', 2, 'en'), 'clips.other');
  assert.equal(pluralKey({ 'clips.other': '' }, 'clips', 1, 'ja'), 'clips.other');
  assert.equal(pluralKey(texts, 'clips', 1, 'qps'), 'clips.one');
});
