// Two panels of one program, each in a browser of its own: what is done in one is seen in the other.
import assert from 'node:assert/strict';
import { after, afterEach, before, test } from 'node:test';
import { t } from './support/texts.mjs';
import { World } from './support/World.mjs';

let world;
before(async () => (world = await World.start()));
afterEach(() => world.closePanels());
after(() => world?.end());

test('sign-in, pieces, basket, options, purchases and settings of one are seen in the other', async () => {
  const one = await world.openPanel();
  const two = await world.openPanel();
  await one.signIn();
  await one.signedIn();
  await two.signedIn();

  await one.place('Red car');
  await two.piece('Red car').waitFor();
  await two.place('Sea birds');
  await one.piece('Sea birds').waitFor();
  await one.page.keyboard.press('Control+z');
  await two.piece('Sea birds').waitFor({ state: 'detached' });

  await one.clip('Red car').focus();
  await one.page.keyboard.press('b');
  await two.clip('Red car').getByText(t('results.in_basket')).waitFor();

  const filter = (panel) => panel.page.locator('#filters select').first();
  const dear = (await filter(one).locator('option').allTextContents()).find((choice) => choice.includes('10'));
  await filter(one).selectOption({ label: dear });
  await two.shows(['Red car', 'Old harbour']);
  assert.equal(await filter(two).locator('option:checked').textContent(), dear);
  await two.page.locator('.chips button').first().click();
  await one.clips.nth(4).waitFor();

  await one.openDrawer('basket');
  await one.button('basket.buy_credits', one.drawer).click();
  await one.button('basket.buy_now', one.dialog).click();
  await two.clip('Red car').getByText(t('results.owned')).waitFor();

  await one.page.getByRole('button', { name: t('results.list'), exact: true }).click();
  await two.page.locator('[role="grid"] [role="row"][data-index]').first().waitFor();
});

test('the quality of previews that one chooses is that of the other, whose results stay as they are', async () => {
  const one = await world.openPanel();
  const two = await world.openPanel();
  const box = (panel) => panel.page.locator('#filters input[type="checkbox"]').first();
  await box(one).waitFor();
  await box(two).waitFor();
  const before = await box(two).isChecked();
  const searches = [];
  two.page.on('request', (request) => {
    if (new URL(request.url()).pathname.endsWith('/search')) {
      searches.push(request.url());
    }
  });
  await box(one).click();
  await two.until(async () => (await box(two).isChecked()) !== before, () => 'it stands as it stood');
  assert.deepEqual(searches, []);
  assert.equal(await two.page.locator('.chips button').count(), 0, 'it filters nothing');
  await box(one).click();
  await two.until(async () => (await box(two).isChecked()) === before, () => 'it stands as it stood');
});

test('each panel finds what it looks for while the other searches too', async () => {
  const one = await world.openPanel();
  const two = await world.openPanel();
  await one.search('');
  await two.search('');
  await world.service.goWrong({ command: 'search' }, 'delay', { ms: 400 }, 2);
  try {
    await Promise.all([one.search('sea'), two.search('old harbour')]);
    await one.shows(['Sea at noon', 'Sea birds']);
    await two.shows(['Old harbour']);
    assert.equal(await one.words.inputValue(), 'sea');
  } finally {
    await world.service.goRight();
  }
  await one.search('');
});

test('a piece that one panel removes while the other works on it is gone in both', async () => {
  const one = await world.openPanel({ faults: true });
  const two = await world.openPanel({ faults: true });
  await one.place('Green meadow');
  await two.piece('Green meadow').waitFor();
  await Promise.all([one, two].map((panel) => panel.piece('Green meadow').focus()));
  await Promise.all([one, two].map((panel) => panel.page.keyboard.press('Delete')));
  for (const panel of [one, two]) {
    await panel.piece('Green meadow').waitFor({ state: 'detached' });
  }
});
