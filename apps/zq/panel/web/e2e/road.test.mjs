// The whole road of an editor: from the sign-in to a sequence of full media, and its way into an editing program.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { after, afterEach, before, test } from 'node:test';
import { t } from './support/texts.mjs';
import { World } from './support/World.mjs';

let world;
before(async () => (world = await World.start()));
afterEach(() => world.closePanels());
after(() => world?.end());

test('a refused sign-in says why, and the right password signs in', async () => {
  const panel = await world.openPanel();
  await panel.signIn({ password: 'wrong' });
  await panel.dialog.getByRole('alert').waitFor();
  assert.equal(await panel.dialog.locator('input[type="password"]').inputValue(), '', 'the password is typed again');
  await panel.dialog.locator('input[type="password"]').fill('tarn7');
  await panel.dialog.locator('input[type="password"]').press('Enter');
  await panel.signedIn();
  assert.equal((await panel.get('repositories/T7')).user, 'editor');
});

test('words and filters find clips, and a filter is removed by its chip', async () => {
  const panel = await world.openPanel();
  await panel.shows(['Red car', 'Sea at noon', 'Sea birds', 'Green meadow', 'Old harbour']);
  await panel.search('sea');
  await panel.shows(['Sea at noon', 'Sea birds']);
  const filter = panel.page.locator('#filters select').first();
  const choices = await filter.locator('option').allTextContents();
  await filter.selectOption({ label: choices.find((choice) => choice.includes('20')) });
  await panel.shows(['Sea birds']);
  const chip = panel.page.locator('.chips button').first();
  assert.match(await chip.innerText(), /20/);
  await chip.click();
  await panel.shows(['Sea at noon', 'Sea birds']);
  await panel.search('nothing of that name');
  await panel.sees(t('results.none_title', { words: 'nothing of that name' }));
  await panel.button('results.show_all').click();
  await panel.shows(['Red car', 'Sea at noon', 'Sea birds', 'Green meadow', 'Old harbour']);
});

test('nothing moves while the page comes up and shows its first clips', async () => {
  const panel = await world.openPanel({
    init: `window.shifts = [];
      new PerformanceObserver((list) => window.shifts.push(...list.getEntries().map(({ value, sources }) =>
        value + ' ' + sources.map(({ node }) => node?.className ?? node?.nodeName).join())))
        .observe({ type: 'layout-shift', buffered: true });`,
  });
  await panel.clips.nth(4).waitFor();
  await panel.until(
    () => panel.page.locator('[data-index] img').evaluateAll((images) => images.length > 3 && images.every(({ complete }) => complete)),
    () => 'the pictures did not come',
  );
  assert.deepEqual(await panel.page.evaluate(() => window.shifts), []);
});

test('back and forward lead through past searches', async () => {
  const panel = await world.openPanel();
  await panel.shows(['Red car', 'Sea at noon', 'Sea birds', 'Green meadow', 'Old harbour']);
  // A search that was looked at for a while is one to come back to.
  await panel.page.evaluate(() => {
    const now = Date.now;
    Date.now = () => now() + 1600;
  });
  await panel.search('car');
  await panel.shows(['Red car']);
  await panel.button('search.back').click();
  await panel.shows(['Red car', 'Sea at noon', 'Sea birds', 'Green meadow', 'Old harbour']);
  await panel.button('search.forward').click();
  await panel.shows(['Red car']);
  assert.equal(await panel.words.inputValue(), 'car');
  await panel.search('');
  await panel.shows(['Red car', 'Sea at noon', 'Sea birds', 'Green meadow', 'Old harbour']);
});

test('a clip is placed, moved, trimmed and removed, and each step is taken back and done again', async () => {
  const panel = await world.openPanel();
  await panel.place('Red car');
  await panel.piece('Red car').waitFor();
  await panel.place('Sea at noon');
  await panel.piece('Sea at noon').waitFor();
  const order = () => panel.pieces.locator('.name').allTextContents();
  assert.deepEqual(await order(), ['Red car', 'Sea at noon']);
  await panel.piece('Sea at noon').focus();
  await panel.page.keyboard.press('Alt+ArrowLeft');
  await panel.until(async () => (await order())[0] === 'Sea at noon');
  const pieces = async () => (await panel.get(`sequences/${encodeURIComponent(t('sequence.first_name'))}`)).pieces;
  const before = (await pieces())[0].out;
  await panel.piece('Sea at noon').focus();
  await panel.page.keyboard.press('[');
  await panel.until(async () => (await pieces())[0].out < before, () => 'the trim did not arrive');
  await panel.page.keyboard.press('Delete');
  await panel.piece('Sea at noon').waitFor({ state: 'detached' });
  for (const count of [2, 2, 2, 1]) {
    await panel.page.keyboard.press('Control+z');
    await panel.until(async () => (await panel.pieces.count()) === count, async () => `${await panel.pieces.count()}`);
  }
  for (let step = 0; step < 4; step++) {
    const { revision } = await panel.get('project');
    await panel.page.keyboard.press('Control+Shift+z');
    await panel.until(async () => (await panel.get('project')).revision > revision);
  }
  await panel.until(async () => JSON.stringify(await order()) === '["Red car"]', async () => JSON.stringify(await order()));
});

test('a clip is dragged into the sequence', async () => {
  const panel = await world.openPanel();
  const before = await panel.pieces.count();
  await panel.clip('Old harbour').locator('[data-picture]').dragTo(panel.page.locator('footer.strip .track'));
  await panel.piece('Old harbour').waitFor();
  assert.equal(await panel.pieces.count(), before + 1);
  await panel.page.keyboard.press('Control+z');
  await panel.piece('Old harbour').waitFor({ state: 'detached' });
});

test('what the sequence uses is bought with credits, fetched, and full in the strip', async () => {
  const panel = await world.openPanel();
  await panel.openDrawer('basket');
  await panel.button('basket.fill', panel.drawer).click();
  await panel.drawer.locator('.clips li', { hasText: 'Red car' }).waitFor();
  await panel.button('basket.buy_credits', panel.drawer).click();
  await panel.button('basket.buy_now', panel.dialog).click();
  await panel.drawer.getByText(t('basket.purchase.done'), { exact: true }).waitFor();
  await panel.clip('Red car').getByText(t('results.owned')).waitFor();
  assert.equal(await panel.clip('Sea birds').getByText(t('results.owned')).count(), 0);
  assert.equal((await panel.get('repositories/T7')).credits, 491, 'the price was 9');
  await panel.button('basket.fetch', panel.drawer).click();
  await panel.piece('Red car').getByText(t('state.full')).waitFor();
  await panel.openDrawer('tasks');
  assert.deepEqual((await panel.get('tasks')).tasks.map((task) => task.state), ['done']);
  const state = (await panel.get(`sequences/${encodeURIComponent(t('sequence.first_name'))}`)).pieces[0];
  assert.equal(state.state, 'full');
});

test('what is bought on the payment page is seen to be owned', async () => {
  const panel = await world.openPanel();
  await panel.clip('Green meadow').hover();
  await panel.button('results.basket', panel.clip('Green meadow')).click();
  await panel.openDrawer('basket');
  await panel.drawer.locator('.clips li', { hasText: 'Green meadow' }).waitFor();
  await panel.button('basket.buy_page', panel.drawer).click();
  await panel.button('basket.open_page', panel.dialog).click();
  await panel.purchase.getByText(t('basket.purchase.waiting'), { exact: true }).waitFor();
  await panel.until(() => world.opened().length > 0, () => 'no page was opened');
  const buyer = await world.browser.newContext({ ignoreHTTPSErrors: true });
  const shop = await buyer.newPage();
  await shop.goto(world.opened().at(-1));
  for (const [index, text] of [await shop.locator('form code').first().textContent(), '12/39', '123'].entries()) {
    await shop.locator('form input').nth(index).fill(text);
  }
  await shop.locator('form button').click();
  await shop.waitForLoadState();
  await panel.purchase.getByText(t('basket.purchase.done'), { exact: true }).waitFor();
  await panel.clip('Green meadow').getByText(t('results.owned')).waitFor();
  await buyer.close();
});

test('the sequence goes to other programs in every format', async () => {
  const panel = await world.openPanel();
  await panel.piece('Red car').waitFor();
  for (const [format, sign] of [['mlt', '<mlt'], ['edl', 'TITLE:'], ['fcpxml', '<fcpxml'], ['otio', 'OTIO_SCHEMA']]) {
    await panel.button('sequence.export').click();
    await panel.dialog.locator(`input[value="${format}"]`).check();
    const [download] = await Promise.all([
      panel.page.waitForEvent('download'),
      panel.dialog.locator('a[download][aria-disabled="false"]').click(),
    ]);
    assert.match(download.suggestedFilename(), new RegExp(`\\.${format}$`));
    assert.match(readFileSync(await download.path(), 'utf8'), new RegExp(sign));
    await panel.page.keyboard.press('Escape');
    await panel.dialog.waitFor({ state: 'detached' });
  }
});

test('the report of what is used can be kept', async () => {
  const panel = await world.openPanel();
  await panel.piece('Red car').waitFor();
  await panel.button('sequence.usage').click();
  await panel.dialog.locator('tbody tr', { hasText: 'Red car' }).waitFor();
  const [download] = await Promise.all([
    panel.page.waitForEvent('download'),
    panel.dialog.getByRole('link', { name: 'CSV' }).click(),
  ]);
  assert.match(readFileSync(await download.path(), 'utf8'), /Red car/);
});

// The browser tells of the first one's end when the second one is asked for already.
test('a dialog that opens as another one closes stays open', async () => {
  const panel = await world.openPanel();
  await panel.piece('Red car').waitFor();
  for (const [one, other] of [['sequence.export', 'sequence.usage'], ['sequence.usage', 'sequence.export']]) {
    await panel.button(one).click();
    await panel.dialog.waitFor();
    const opener = await panel.page.getByRole('button', { name: t(other), includeHidden: true }).elementHandle();
    await panel.page.evaluate((button) => {
      const dialog = document.querySelector('dialog[open]');
      globalThis.closeIsTold = new Promise((resolve) => dialog.addEventListener('close', resolve));
      dialog.close();
      button.click();
    }, opener);
    await panel.page.evaluate(() => globalThis.closeIsTold);
    await panel.dialog.getByRole('heading').first().waitFor();
    await panel.page.evaluate(() => new Promise((resolve) => requestAnimationFrame(() => setTimeout(resolve))));
    assert.equal(await panel.dialog.count(), 1, other);
    await panel.page.keyboard.press('Escape');
    await panel.dialog.waitFor({ state: 'detached' });
  }
});

test('signed out, nothing of the account is left on the page', async () => {
  const panel = await world.openPanel();
  await panel.page.getByRole('button', { name: t('account.signed_in_as', { user: 'editor' }) }).click();
  await panel.button('account.sign_out', panel.dialog).click();
  await panel.button('account.sign_in').first().waitFor();
  await panel.until(async () => (await panel.clips.getByText(t('results.owned')).count()) === 0);
});

test('the words and the filters are there again when the program has been started anew', async () => {
  const panel = await world.openPanel();
  await panel.search('sea');
  const filter = (of) => of.page.locator('#filters select').first();
  const choices = await filter(panel).locator('option').allTextContents();
  const chosen = choices.find((choice) => choice.includes('20'));
  await filter(panel).selectOption({ label: chosen });
  await panel.shows(['Sea birds']);
  await world.closePanels();
  await world.program.end();
  await world.startProgram();
  const again = await world.openPanel();
  await again.shows(['Sea birds']);
  assert.equal(await again.words.inputValue(), 'sea');
  assert.equal(await filter(again).locator('option:checked').textContent(), chosen);
});
