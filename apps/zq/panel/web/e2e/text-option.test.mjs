// An option of a repository that is a text: typed, kept, refused and hostile. The repository is that of the guide, which
// knows no server and no account.
import assert from 'node:assert/strict';
import { mkdirSync } from 'node:fs';
import { join } from 'node:path';
import { after, afterEach, before, beforeEach, test } from 'node:test';
import { putFilm } from './support/footage.mjs';
import { assertReadable } from './support/faultTables.mjs';
import { built } from './support/places.mjs';
import { t } from './support/texts.mjs';
import { World } from './support/World.mjs';

let world;
let panel;
const folder = (name) => join(world.folder, 'films', name);
before(async () => {
  world = await World.start({ modules: [built('tests/panel-modules/folder.zqd')] });
  putFilm(folder('boats'), 'red boat.mp4', 'fast.mp4');
  putFilm(folder('boats'), 'white boat.mov');
  putFilm(folder('<img src=x onerror=alert(1)> & "meadows"'), 'green meadow.mov');
  mkdirSync(folder('nothing'), { recursive: true });
});
after(() => world?.end());
beforeEach(async () => (panel = await world.openPanel({ faults: true })));
afterEach(() => world.closePanels());

const field = () => panel.page.getByLabel('Folder', { exact: true });
const problem = () => panel.page.locator('.results .state.problem, .browser .state.problem').first();

async function set(value) {
  await field().fill(value);
  await field().press('Enter');
}

async function shows(...parts) {
  await panel.until(async () => {
    const names = await panel.names();
    return names.length === parts.length && parts.every((part) => names.some((name) => name.includes(part)));
  }, async () => `clips ${JSON.stringify(await panel.names())} instead of ${parts}`);
}

test('what is typed is searched with, by Enter or by leaving the field, and Escape takes it back', async () => {
  await set(folder('boats'));
  await shows('red boat', 'white boat');
  await field().fill(folder('nothing'));
  assert.equal((await panel.names()).length, 2, 'nothing happens while one types');
  await field().press('Escape');
  assert.equal(await field().inputValue(), folder('boats'));
  await field().fill(folder('nothing'));
  await panel.words.focus();
  await panel.page.getByRole('heading', { name: t('results.filtered_title') }).waitFor();
  await set(folder('boats'));
  await shows('red boat', 'white boat');
  await panel.search('white');
  await shows('white boat');
  await panel.search('');
});

test('a text that leads nowhere is told in the words of the repository, and another one helps', async () => {
  await set(folder('boats'));
  await shows('red boat', 'white boat');
  await set(folder('not there'));
  await problem().getByText(/not there cannot be read/).waitFor();
  assertReadable(await problem().locator('p').first().textContent(), 'no folder');
  await panel.button('common.try_again', problem()).waitFor();
  await set(folder('boats'));
  await shows('red boat', 'white boat');
});

test('a text with every sort of character stays a text, and holds after a restart', async () => {
  const hostile = folder('<img src=x onerror=alert(1)> & "meadows"');
  await set(hostile);
  await shows('green meadow');
  assert.equal(await field().inputValue(), hostile);
  await world.closePanels();
  await world.program.end();
  await world.startProgram();
  panel = await world.openPanel();
  await shows('green meadow');
  assert.equal(await field().inputValue(), hostile);
  assert.equal(await panel.page.locator('img[onerror]').count(), 0);
});

test('a second panel takes the text over as it is set', async () => {
  const other = await world.openPanel();
  await set(folder('boats'));
  await shows('red boat', 'white boat');
  const theirs = other.page.getByLabel('Folder', { exact: true });
  await other.until(async () => (await theirs.inputValue()) === folder('boats'), () => 'the other panel does not follow');
  await other.until(async () => (await other.names()).length === 2, () => 'the other panel shows what was before');
});

test('without accounts there is nothing to sign in to or to buy, and a clip plays and is placed', async () => {
  await set(folder('boats'));
  await shows('red boat', 'white boat');
  await panel.clip('red boat').focus();
  await panel.page.keyboard.press('Enter');
  const film = panel.page.locator('section.player video');
  await panel.until(
    async () => film.evaluateAll((all) => all.some((one) => one.currentTime > 0.2)),
    async () => `it does not play: ${await panel.page.locator('section.player').textContent()}`,
  );
  await panel.place('red boat');
  await panel.piece('red boat').waitFor();
  await panel.page.locator('header.top .account').click();
  await panel.dialog.getByText(t('account.not_needed')).waitFor();
});
