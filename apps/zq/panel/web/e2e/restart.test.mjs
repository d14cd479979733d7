// What is there again when the program is started anew, on another port and in a browser that has never seen it: all
// that a person has chosen and gathered is the program's to remember.
import assert from 'node:assert/strict';
import { createServer } from 'node:net';
import { after, afterEach, before, beforeEach, test } from 'node:test';
import { readTexts } from '../scripts/mock/texts.mjs';
import { account } from './support/Service.mjs';
import { t } from './support/texts.mjs';
import { World } from './support/World.mjs';

let world;
let panel;
before(async () => (world = await World.start()));
after(() => world?.end());
beforeEach(async () => (panel = await world.openPanel()));
afterEach(() => world.closePanels());

// One that nobody has.
async function otherPort() {
  const server = createServer();
  await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
  const { port } = server.address();
  await new Promise((resolve) => server.close(resolve));
  return port;
}

// Another port, since a web view keeps what it keeps for one port only.
async function startAgain() {
  const before = world.origin;
  await world.closePanels();
  await world.program.end();
  await world.startProgram();
  if (world.origin === before) {
    const port = await otherPort(); // while the program has that from before
    await world.program.end();
    await world.startProgram(['--port', String(port)]);
  }
  assert.notEqual(world.origin, before);
  panel = await world.openPanel();
}

const settled = (isSo) => panel.until(async () => isSo(await panel.get('settings')), async () => JSON.stringify(await panel.get('settings')));

test('the size of the pictures, the view and the colours', async () => {
  const size = () => panel.page.getByRole('slider', { name: t('results.size') });
  await panel.clips.first().waitFor();
  const usual = (await panel.clips.first().boundingBox()).width;
  await size().fill('320');
  await settled(({ thumbnailSize }) => thumbnailSize === 320);
  const wide = (await panel.clips.first().boundingBox()).width;
  assert.ok(wide > usual, `${wide} after ${usual}`);
  await panel.button('theme.to_light').or(panel.button('theme.to_dark')).click();
  const theme = await panel.page.evaluate(() => document.documentElement.dataset.theme);
  await settled((settings) => settings.theme === theme);
  await startAgain();
  await panel.clips.first().waitFor();
  assert.equal(await size().inputValue(), '320');
  await panel.until(async () => Math.abs((await panel.clips.first().boundingBox()).width - wide) < 2, () => 'another width');
  assert.equal(await panel.page.evaluate(() => document.documentElement.dataset.theme), theme);
  await panel.button('results.list').click();
  await settled(({ view }) => view === 'list');
  await startAgain();
  await panel.page.getByRole('columnheader').first().waitFor({ state: 'attached' });
  assert.equal(await panel.button('results.list').getAttribute('aria-pressed'), 'true');
  await panel.button('results.grid').click();
  await settled(({ view }) => view === 'grid');
});

test('the filters of the repository, as chips and in what is found', async () => {
  await panel.clips.first().waitFor();
  const [{ options }] = (await panel.get('repositories/T7/options')).groups;
  const option = options.find(({ type }) => type === 'choice');
  const wanted = option.choices.find(({ value }) => value !== option.initial);
  await panel.page.getByLabel(option.legend, { exact: true }).selectOption(wanted.value);
  const chip = () => panel.page.getByRole('button', { name: new RegExp(`^${t('search.remove_filter', { filter: '' }).trim()}`) });
  await chip().waitFor();
  const label = await chip().textContent();
  const answer = await panel.get('repositories/T7/search');
  assert.ok(answer.totalCount < 5, 'the filter leaves something out');
  await panel.shows(answer.clips.map(({ name }) => name));
  const found = await panel.names();
  await startAgain();
  await chip().waitFor();
  assert.equal(await chip().textContent(), label);
  await panel.shows(found);
  await chip().click();
  await chip().waitFor({ state: 'detached' });
  await panel.shows(['Red car', 'Sea at noon', 'Sea birds', 'Green meadow', 'Old harbour']);
  await startAgain();
  await panel.shows(['Red car', 'Sea at noon', 'Sea birds', 'Green meadow', 'Old harbour']);
  assert.equal(await chip().count(), 0);
});

test('the last words, which are searched for', async () => {
  await panel.search('sea');
  await panel.shows(['Sea at noon', 'Sea birds']);
  await startAgain();
  await panel.until(async () => (await panel.words.inputValue()) === 'sea', async () =>
    `"${await panel.words.inputValue()}" is in the field`);
  await panel.shows(['Sea at noon', 'Sea birds']);
  await panel.button('search.clear').click();
  await panel.shows(['Red car', 'Sea at noon', 'Sea birds', 'Green meadow', 'Old harbour']);
  await startAgain();
  await panel.shows(['Red car', 'Sea at noon', 'Sea birds', 'Green meadow', 'Old harbour']);
  assert.equal(await panel.words.inputValue(), '');
});

test('the basket with its prices, before anything was searched for', async () => {
  for (const name of ['Red car', 'Old harbour']) {
    await panel.clip(name).focus();
    await panel.page.keyboard.press('b');
  }
  await panel.openDrawer('basket');
  const lines = () => panel.drawer.locator('.clips li');
  const told = async () => (await lines().allTextContents()).map((line) => line.replace(/\s+/g, ' ').trim()).sort();
  const total = () => panel.drawer.locator('.sums .total dd');
  await panel.until(async () => (await lines().count()) === 2 && /14/.test(await total().textContent()), async () => String(await told()));
  const before = await told();
  // A search that finds neither.
  await panel.search('meadow');
  await panel.shows(['Green meadow']);
  await startAgain();
  await panel.openDrawer('basket');
  await panel.until(async () => (await lines().count()) === 2, async () => String(await told()));
  assert.deepEqual(await told(), before);
  assert.match(await total().textContent(), /14/);
  await panel.search('');
});

test('the sequences with their pieces and ranges', async () => {
  await panel.clips.first().waitFor();
  const [first, second] = [t('sequence.numbered', { number: 1 }), t('sequence.numbered', { number: 2 })];
  await panel.place('Red car');
  await panel.piece('Red car').waitFor();
  assert.deepEqual((await panel.get('project')).sequences, [first]);
  for (const [clip, begin, end] of [['2', 0.5, 1.5], ['3', 0, 1]]) {
    await panel.send('POST', `sequences/${encodeURIComponent(second)}/pieces`, { repository: 'T7', clip, in: begin, out: end });
  }
  const choice = () => panel.page.getByLabel(t('sequence.choose'), { exact: true });
  await choice().selectOption(second);
  await panel.until(async () => (await panel.pieces.count()) === 2, async () => `${await panel.pieces.count()} pieces`);
  const before = await panel.get(`sequences/${encodeURIComponent(second)}`);
  await startAgain();
  await panel.piece('Red car').waitFor();
  await choice().selectOption(second);
  await panel.until(async () => (await panel.pieces.count()) === 2, async () => `${await panel.pieces.count()} pieces`);
  const now = await panel.get(`sequences/${encodeURIComponent(second)}`);
  assert.deepEqual(
    now.pieces.map(({ clip, in: begin, out: end, start }) => ({ clip, begin, end, start })),
    before.pieces.map(({ clip, in: begin, out: end, start }) => ({ clip, begin, end, start })),
  );
});

test('the language', async () => {
  const german = readTexts('de');
  await panel.openDrawer('settings');
  await panel.drawer.getByLabel(t('settings.language'), { exact: true }).selectOption('de');
  await settled(({ language }) => language === 'de');
  await startAgain();
  await panel.page.getByRole('button', { name: german['results.all'], exact: true }).waitFor();
  assert.equal(await panel.page.evaluate(() => document.documentElement.lang), 'de');
  await panel.send('PATCH', 'settings', { language: 'en' });
  await panel.button('results.all').waitFor();
});

// A session is the service's and ends with the program; the name is kept, the password is not.
test('who was signed in last: the form has the name, not the password', async () => {
  await panel.signIn();
  await panel.signedIn();
  await startAgain();
  await panel.page.locator('header.top .account').click();
  const fields = panel.dialog.locator('form input');
  await fields.first().waitFor();
  assert.equal(await fields.nth(0).inputValue(), account.user);
  assert.equal(await fields.nth(1).inputValue(), '');
  await panel.until(() => fields.nth(1).evaluate((field) => document.activeElement === field), () => panel.page.evaluate(() => `the focus is at ${document.activeElement?.outerHTML.slice(0, 200)}`));
  await fields.nth(1).fill(account.password);
  await fields.nth(1).press('Enter');
  await panel.signedIn();
});
