// The page without a pointer.
import assert from 'node:assert/strict';
import { after, afterEach, before, test } from 'node:test';
import { t } from './support/texts.mjs';
import { World } from './support/World.mjs';

let world;
before(async () => (world = await World.start()));
afterEach(() => world.closePanels());
after(() => world?.end());

// What has the focus, as far as a test wants to know.
const focus = (panel) =>
  panel.page.evaluate(() => {
    const element = document.activeElement;
    const style = getComputedStyle(element);
    return {
      id: element.id,
      tag: element.localName,
      name: element.getAttribute('aria-label') ?? element.textContent.trim(),
      index: element.dataset.index,
      piece: element.dataset.piece,
      region: element.closest('[data-region]')?.getAttribute('aria-label') ?? '',
      ring: style.outlineStyle !== 'none' && parseFloat(style.outlineWidth) >= 1,
    };
  });

test('sign-in, search, basket, purchase, fetch and export without a pointer', async () => {
  const panel = await world.openPanel();
  const press = (...keys) => keys.reduce((last, key) => last.then(() => panel.page.keyboard.press(key)), Promise.resolve());
  await panel.page.locator('header.top .account').focus();
  await press('Enter');
  await panel.dialog.waitFor();
  await panel.page.keyboard.type('editor');
  await press('Enter');
  await panel.page.keyboard.type('tarn7');
  await press('Enter');
  await panel.signedIn();
  assert.match((await focus(panel)).name, /editor/, 'the focus is back where the dialog was opened');

  await press('/');
  assert.equal((await focus(panel)).id, 'search-words');
  await panel.page.keyboard.type('sea');
  await panel.shows(['Sea at noon', 'Sea birds']);
  await press('ArrowDown');
  assert.equal((await focus(panel)).index, '0');
  await press('ArrowRight');
  assert.equal((await focus(panel)).index, '1');
  assert.ok((await focus(panel)).ring, 'the focus is seen');
  const name = await panel.page.evaluate(() => document.activeElement.querySelector('.name').textContent.trim());
  await press('p');
  await panel.piece(name).waitFor();
  await press('b');
  await panel.clips.nth(1).getByText(t('results.in_basket')).waitFor();

  await panel.page.locator('header.top nav button').first().focus();
  await press('Enter');
  await panel.drawer.waitFor();
  assert.equal((await focus(panel)).id, 'drawer-title');
  await panel.button('basket.buy_credits', panel.drawer).focus();
  await press('Enter');
  await panel.dialog.waitFor();
  await panel.button('basket.buy_now', panel.dialog).focus();
  await press('Enter');
  await panel.dialog.waitFor({ state: 'detached' });
  await panel.drawer.getByText(t('basket.purchase.done'), { exact: true }).waitFor();
  await panel.button('basket.fetch', panel.drawer).focus();
  await press('Enter');
  await panel.piece(name).getByText(t('state.full')).waitFor();
  await press('Escape');
  await panel.drawer.waitFor({ state: 'detached' });

  await panel.button('sequence.export').focus();
  await press('Enter');
  await panel.dialog.locator('a[download][aria-disabled="false"]').focus();
  const [download] = await Promise.all([panel.page.waitForEvent('download'), press('Enter')]);
  assert.match(download.suggestedFilename(), /\.\w+$/);
  await press('Escape');
  await panel.dialog.waitFor({ state: 'detached' });
  assert.equal((await focus(panel)).name, t('sequence.export'));
});

// Whether there is a step is asked of the program: the page hears of the last one only after it shows what came of it.
test('the key that does something again says so where there is nothing', async () => {
  const panel = await world.openPanel({ faults: true });
  await panel.page.keyboard.press('Control+y');
  await panel.sees(t('failure.reason.nothing_to_redo'));
});

test('F6 leads through every part of the page and round again', async () => {
  const panel = await world.openPanel();
  await panel.search('');
  await panel.place('Red car');
  await panel.piece('Red car').waitFor();
  await panel.clips.first().click();
  const go = async (key, count) => {
    const seen = [];
    for (let step = 0; step < count; step++) {
      await panel.page.keyboard.press(key);
      const { region, tag, ring } = await focus(panel);
      assert.ok(ring, `the focus is seen in "${region}"`);
      seen.push(region || tag);
    }
    return seen;
  };
  const top = 'input';
  assert.deepEqual(await go('F6', 4), [t('panels.player'), t('panels.sequence'), top, t('results.title')]);
  assert.deepEqual(await go('Shift+F6', 4), [top, t('panels.sequence'), t('panels.player'), t('results.title')]);
});

test('in the results the focus goes by clips, rows and pages to both ends, and comes back to where it was', async () => {
  const panel = await world.openPanel();
  await panel.search('');
  await panel.clips.nth(4).waitFor();
  const indexAfter = async (key) => {
    await panel.page.keyboard.press(key);
    return (await focus(panel)).index;
  };
  await panel.words.focus();
  assert.equal(await indexAfter('ArrowDown'), '0');
  assert.equal(await panel.page.locator('[data-index][aria-selected="true"]').count(), 0, 'the focus alone chooses nothing');
  assert.equal(await indexAfter('End'), '4');
  assert.equal(await indexAfter('Home'), '0');
  assert.equal(await indexAfter('ArrowRight'), '1');
  assert.equal(await indexAfter('PageDown'), '4');
  assert.equal(await indexAfter('PageUp'), '0');
  assert.equal(await indexAfter('ArrowRight'), '1');
  assert.equal(await panel.page.locator('[data-index][aria-selected="true"]').count(), 1);
  assert.equal(await panel.page.locator('[role="grid"] [data-index][tabindex="0"]').count(), 1, 'one stop for Tab');
  await panel.page.keyboard.press('/');
  assert.equal(await indexAfter('ArrowDown'), '1', 'the focus is back where it was');
});

test('the space bar plays the clip that has the focus, and stops it', async () => {
  const panel = await world.openPanel();
  await panel.search('red car');
  await panel.shows(['Red car']);
  await panel.clips.first().focus();
  await panel.page.keyboard.press(' ');
  const video = panel.page.locator('section.player video');
  const isPaused = () => video.first().evaluate((element) => element.paused);
  await panel.until(async () => (await video.count()) > 0 && !(await isPaused()), () => 'it does not play');
  await panel.page.keyboard.press(' ');
  await panel.until(isPaused, () => 'it does not stop');
  assert.equal((await focus(panel)).index, '0');
  await panel.search('');
});

test('a dialog begins where its form does, and at its heading where it has none', async () => {
  const panel = await world.openPanel();
  await panel.button('keys.title').click();
  await panel.dialog.waitFor();
  assert.equal((await focus(panel)).tag, 'h2');
  await panel.page.keyboard.press('Escape');
  await panel.dialog.waitFor({ state: 'detached' });
  assert.equal((await focus(panel)).name, t('keys.title'));
  // Signed in since the first test: the form is there once nobody is.
  await panel.page.getByRole('button', { name: t('account.signed_in_as', { user: 'editor' }) }).click();
  await panel.button('account.sign_out', panel.dialog).click();
  await panel.dialog.waitFor({ state: 'detached' });
  await panel.page.locator('header.top .account').click();
  await panel.dialog.locator('form').waitFor();
  assert.equal((await focus(panel)).tag, 'input');
});

test('the list of keys opens at ? and closes with Escape', async () => {
  const panel = await world.openPanel();
  await panel.clips.first().focus();
  await panel.page.keyboard.press('?');
  await panel.dialog.getByText(t('keys.to_search')).waitFor();
  await panel.page.keyboard.press('Escape');
  await panel.dialog.waitFor({ state: 'detached' });
  assert.equal((await focus(panel)).index, '0', 'the focus is back');
});

test('letters typed into the search are no commands', async () => {
  const panel = await world.openPanel();
  await panel.search('');
  const before = (await panel.get('project')).revision;
  await panel.words.focus();
  await panel.page.keyboard.type('gbpx?/ik');
  assert.equal(await panel.words.inputValue(), 'gbpx?/ik');
  assert.equal(await panel.dialog.count(), 0);
  assert.equal((await panel.get('project')).revision, before);
  await panel.page.keyboard.press('Escape');
  assert.equal(await panel.words.inputValue(), '');
});

test('the player follows J, K, L, frames and marks, and the marked range is what is placed', async () => {
  const panel = await world.openPanel();
  await panel.search('red car');
  await panel.shows(['Red car']);
  await panel.clips.first().focus();
  const video = panel.page.locator('section.player video');
  const at = () => video.evaluate((element) => element.currentTime);
  const pieces = () => panel.pieces.count();
  await panel.page.keyboard.press('Enter');
  await panel.until(async () => (await video.count()) === 1 && (await at()) > 0.2, () => 'it does not play');
  await panel.page.keyboard.press('k');
  await panel.until(() => video.evaluate((element) => element.paused));
  await panel.page.getByRole('slider', { name: t('player.position') }).focus();
  await panel.page.keyboard.press('Home');
  await panel.until(async () => (await at()) < 0.04);
  const frame = await at();
  await panel.page.keyboard.press('ArrowRight');
  await panel.until(async () => Math.abs((await at()) - frame - 1 / 25) < 0.01, async () => `${frame} to ${await at()}`);
  await panel.page.keyboard.press('i');
  for (let step = 0; step < 3; step++) {
    await panel.page.keyboard.press('Shift+ArrowRight');
  }
  await panel.until(async () => Math.abs((await at()) - frame - 31 / 25) < 0.02, async () => `at ${await at()}`);
  await panel.page.keyboard.press('o');
  const before = await pieces();
  await panel.page.getByRole('button', { name: t('player.place_range') }).focus();
  await panel.page.keyboard.press('Enter');
  await panel.until(async () => (await pieces()) === before + 1);
  const placed = (await panel.get(`sequences/${encodeURIComponent(t('sequence.first_name'))}`)).pieces.at(-1);
  assert.ok(Math.abs(placed.in - 1 / 25) < 0.001, `in ${placed.in}`);
  assert.ok(Math.abs(placed.out - 32 / 25) < 0.001, `out ${placed.out}`);
});
