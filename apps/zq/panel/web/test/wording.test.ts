import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { join } from 'node:path';
import { pathToFileURL } from 'node:url';
import { test } from 'node:test';
import { fillIn, pluralKey, type Values } from '../src/lib/fillIn.ts';
import {
  checkSaid,
  differenceSaid,
  failureSaid,
  purchaseSaid,
  serverSaid,
  signInSaid,
  stepSaid,
  taskEndSaid,
  taskSaid,
  unfetchedSaid,
  warningSaid,
  type Said,
} from '../src/lib/wording.ts';

const web = process.env['ZQ_PANEL_WEB'] ?? '.';
const { readTexts } = (await import(pathToFileURL(join(web, 'scripts/mock/texts.mjs')).href)) as {
  readTexts: (language: string) => Record<string, string>;
};

// As the page says it: a text that is missing, or a place-holder that nothing fills, is a failure.
function say(said: Said, language = 'en'): string {
  const texts = readTexts(language);
  const values: Values = said.count === undefined ? {} : { count: said.count };
  for (const [name, value] of Object.entries(said.values ?? {})) {
    values[name] = typeof value === 'object' ? say(value, language) : value;
  }
  const key = said.count === undefined ? said.key : pluralKey(texts, said.key, said.count, language);
  const text = texts[key];
  assert.notEqual(text, undefined, `${language}: ${key}`);
  const spoken = fillIn(text ?? '', values);
  assert.doesNotMatch(spoken, /\$[A-Z_]+\$/, key);
  return spoken;
}

const inAll = (said: Said): string[] => ['en', 'de', 'ja', 'qps'].map((language) => say(said, language));
const failed = (reason: string, text = 'own words') => failureSaid({ code: 'conflict', reason, text });

// The table of the interface's document behind that line.
function wordsBehind(head: string): string[] {
  const document = readFileSync(join(web, '../../../../docs/panel-api.md'), 'utf8');
  const from = document.indexOf(head);
  assert.ok(from > 0, head);
  const [table = ''] = document.slice(from).split('\n\n');
  return [...table.matchAll(/^\| `([a-z_]+)`/gm)].map((match) => match[1] ?? '');
}

test('every reason of the interface is said in every language', () => {
  const reasons = wordsBehind('| Reason | Meaning |');
  assert.ok(reasons.length > 20);
  for (const reason of reasons) {
    assert.equal(failed(reason).key, `failure.reason.${reason}`);
    assert.equal(new Set(inAll(failed(reason))).size, 4, reason);
  }
});

test('a failure is shown with what the service or the host says of it, and else without the program\'s words', () => {
  assert.equal(failed('not_owned').detail, '');
  assert.equal(failed('service_refused', 'The cart is closed').detail, 'The cart is closed');
  assert.deepEqual(failureSaid({ code: 'internal', reason: '', text: 'x' }), { key: 'failure.internal', values: {}, detail: '' });
  assert.deepEqual(failureSaid({ code: 'unreachable', reason: '', text: '' }).key, 'failure.unreachable');
});

test('a failure that the page has no words for is told in those of the program', () => {
  for (const reason of ['', 'of_tomorrow', 'constructor']) {
    const said = failed(reason, 'the moon is in the way');
    assert.equal(said.key, 'failure.unknown');
    assert.equal(said.detail, 'the moon is in the way');
  }
});

test('a refused sign-in is told by its code', () => {
  const refused = (code: number, reason = '') => signInSaid({ code, text: 'words', user: '', reason });
  assert.equal(say(refused(2), 'de'), 'Der Dienst kennt keinen Benutzer dieses Namens.');
  assert.equal(say(refused(7), 'de'), 'Das Passwort ist falsch.');
  assert.equal(refused(17).key, 'account.refused');
  assert.equal(refused(17).detail, '');
  assert.equal(refused(17, 'service_refused').detail, 'words');
  assert.equal(say(refused(17, 'service_unreachable'), 'de'), 'Der Dienst ist nicht zu erreichen.');
});

test('a purchase is told by its state, and a refusal with the words of the service', () => {
  for (const state of ['running', 'done', 'waiting', 'doubtful'] as const) {
    const said = purchaseSaid({ state, code: null, text: 'bought 1 clip' });
    assert.equal(said.detail, '');
    assert.equal(inAll(said).length, 4);
  }
  assert.deepEqual(purchaseSaid({ state: 'refused', code: 0, text: 'no such clip' }).detail, 'no such clip');
  assert.equal(purchaseSaid({ state: 'refused', code: 3, text: '' }).key, 'basket.told.cannot_pay');
});

test('a task is named by its clips', () => {
  const fetching = (...clips: string[]) => taskSaid({ kind: 'fetch', clips, name: 'fetch clip 1' });
  assert.equal(say(fetching('Red car'), 'de'), 'Red car');
  assert.equal(say(fetching('Red car', 'Sea'), 'de'), '2 Clips');
  assert.equal(say(fetching(' '), 'de'), '1 Clip');
  assert.equal(taskSaid({ kind: 'other', clips: [], name: 'tidy up' }).detail, 'tidy up');
});

test('a task that has ended tells how many clips it brought', () => {
  const ended = (fetched: number, state: 'done' | 'failed' | 'running' = 'failed') =>
    taskEndSaid({ kind: 'fetch', state, fetched, clips: ['a', 'b', 'c'] });
  assert.equal(ended(3, 'running'), null);
  assert.equal(say(ended(3, 'done') as Said), '3 clips are here in full.');
  assert.equal(say(ended(1) as Said), '1 of 3 clips are here in full.');
  assert.equal(taskEndSaid({ kind: 'other', state: 'done', fetched: 0, clips: [] }), null);
});

test('why a clip did not come is told with the line of the import log', () => {
  assert.equal(unfetchedSaid({ why: 'transfer', reason: 'the disk is full' }).detail, 'the disk is full');
  for (const why of ['cancelled', 'transfer', 'refused', 'media', 'preview'] as const) {
    assert.equal(new Set(inAll(unfetchedSaid({ why, reason: 'x' }))).size, 4);
  }
  assert.equal(unfetchedSaid({ why: 'cancelled', reason: 'cancelled' }).detail, '');
});

test('a check tells what becomes of the uses', () => {
  for (const outcome of ['same', 'cut_short', 'no_edit', 'no_file', 'unusable'] as const) {
    assert.equal(new Set(inAll(checkSaid({ outcome, cutShort: 2, text: 'x' }))).size, 4);
  }
  assert.equal(say(checkSaid({ outcome: 'cut_short', cutShort: 1, text: '' })), '1 use shows frames that the file does not have.');
});

test('a step is told by its kind, its clip and its sequence', () => {
  for (const kind of ['placing', 'relinking', 'moving', 'trimming', 'removing'] as const) {
    assert.equal(new Set(inAll(stepSaid({ kind, clip: 'Red car', sequence: 'S' }))).size, 4);
    assert.equal(new Set(inAll(stepSaid({ kind, clip: ' ', sequence: 'S' }))).size, 4);
  }
  assert.equal(say(stepSaid({ kind: 'placing', clip: 'Red car', sequence: 'S' }), 'de'), '„Red car“ in „S“ gesetzt');
});

test('a difference has its values in the language too', () => {
  const told = (what: 'rate' | 'length' | 'size' | 'sound', promised: string, found: string) =>
    say(differenceSaid({ what, promised, found }), 'de');
  assert.equal(told('rate', '25', '29.97'), 'Die Bildrate ist 29.97 statt 25.');
  assert.equal(told('rate', '25', 'unknown'), 'Die Bildrate ist unbekannt statt 25.');
  assert.equal(told('length', '12.48 s', '12.50 s'), 'Die Länge ist 12.5 s statt 12.48 s.');
  assert.equal(told('size', '1920x1080', '1280x720'), 'Die Bildgröße ist 1280x720 statt 1920x1080.');
  assert.equal(told('sound', '2 channels', 'no sound'), 'Ton: kein Ton; zugesagt: 2 Kanäle.');
  assert.equal(told('sound', '1 channel', '2 channels'), 'Ton: 2 Kanäle; zugesagt: 1 Kanal.');
});

test('warnings of an export and answers of servers are said in every language', () => {
  for (const kind of ['preview', 'other_rate', 'too_many_events'] as const) {
    assert.equal(new Set(inAll(warningSaid({ kind, clip: 'Red car', text: 'x' }))).size, 4);
  }
  for (const reason of ['answered', 'no_answer', 'late', 'no_address'] as const) {
    assert.equal(new Set(inAll(serverSaid({ reason, status: 404, text: 'x' }))).size, 4);
  }
  assert.equal(serverSaid({ reason: 'no_answer', status: 0, text: 'could not connect' }).detail, 'could not connect');
});
