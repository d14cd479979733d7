// What a person meets when the service, the network or the program itself fails, and how it goes on.
import assert from 'node:assert/strict';
import { after, afterEach, before, beforeEach, test } from 'node:test';
import { t } from './support/texts.mjs';
import { openBrowser, World } from './support/World.mjs';

let browser;
let world;
before(async () => (browser = await openBrowser()));
after(() => browser?.close());
beforeEach(async () => (world = await World.start({ browser })));
afterEach(async () => {
  try {
    await world.closePanels();
  } finally {
    await world.end();
  }
});

const open = () => world.openPanel({ faults: true });

async function signedIn(panel) {
  await panel.signIn();
  await panel.signedIn();
}

async function toBasket(panel, name) {
  await panel.clip(name).focus();
  await panel.page.keyboard.press('b');
  await panel.openDrawer('basket');
  await panel.drawer.locator('.clips li', { hasText: name }).waitFor();
}

async function buyWithCredits(panel) {
  await panel.button('basket.buy_credits', panel.drawer).click();
  await panel.button('basket.buy_now', panel.dialog).click();
  await panel.dialog.waitFor({ state: 'detached' });
}

test('a search that the service refuses says so, and trying again finds the clips', async () => {
  const panel = await open();
  await panel.clips.first().waitFor();
  await world.service.goWrong({ command: 'search' }, 'status', { status: 500 }, 20);
  await panel.search('sea');
  await panel.sees(t('results.failed_title'));
  await world.service.goRight();
  await panel.button('common.try_again').click();
  await panel.shows(['Sea at noon', 'Sea birds']);
});

test('while a search is slow the page shows it, can be typed into, and the search can be stopped', async () => {
  const panel = await open();
  await panel.clips.first().waitFor();
  await world.service.goWrong({ command: 'search' }, 'delay', { ms: 60_000 }, 20);
  const asked = [];
  panel.page.on('request', (request) => request.url().includes('words=sea&') && asked.push(request.url()));
  await panel.words.fill('sea');
  await panel.page.getByRole('progressbar', { name: t('results.searching') }).waitFor();
  await panel.words.press('Enter');
  await panel.words.press('End');
  await panel.page.keyboard.type(' x');
  assert.equal(await panel.words.inputValue(), 'sea x');
  assert.equal(asked.length, 1, 'the search that runs is not begun anew by Enter');
  await panel.words.fill('sea');
  await panel.button('results.stop').click();
  await panel.page.getByRole('progressbar').waitFor({ state: 'detached' });
  await world.service.goRight();
  await panel.search('sea');
  await panel.shows(['Sea at noon', 'Sea birds']);
});

test('with the service down a previously played preview plays, and the search goes on when it is back', async () => {
  const panel = await open();
  const video = panel.page.locator('section.player video');
  const plays = () => video.evaluate((element) => element.currentTime > 0.3 && element.error === null);
  await panel.clip('Sea birds').focus();
  await panel.page.keyboard.press('Enter');
  await panel.until(async () => (await video.count()) === 1 && (await plays()), () => 'it does not play');
  await panel.until(() => video.evaluate((element) => element.ended), () => 'not to its end');
  await world.service.goDown();
  // A page of its own, so that nothing of the preview is left in the browser.
  const later = await open();
  await later.search('sea');
  await later.sees(t('results.failed_title'));
  assert.ok((await panel.clips.count()) === 5, 'what is on screen stays');
  const whole = await later.page.evaluate(async (film) => {
    const answer = await fetch(film, { headers: { Range: 'bytes=0-' } });
    return { status: answer.status, bytes: (await answer.arrayBuffer()).byteLength };
  }, new URL(await video.evaluate((element) => element.currentSrc)).pathname);
  assert.equal(whole.status, 206);
  assert.ok(whole.bytes > 10_000, `${whole.bytes} bytes`);
  await panel.clip('Sea birds').focus();
  await panel.page.keyboard.press('Enter');
  await panel.until(plays, () => 'a preview that was played does not play again');
  await world.service.comeBack();
  await later.button('common.try_again').click();
  await later.shows(['Sea at noon', 'Sea birds']);
});

test('a purchase whose answer is lost is in doubt, is not sent again, and is decided by what is owned', async () => {
  const panel = await open();
  await signedIn(panel);
  await toBasket(panel, 'Red car');
  await world.service.goWrong({ command: 'purchase_using_credits' }, 'lost-answer', {}, 1);
  // What is owned tells nothing for a while, so that the doubt can be seen.
  await world.service.goWrong({ command: 'get_downloads_formatted' }, 'status', { status: 503 }, 1000);
  await buyWithCredits(panel);
  await panel.purchase.getByText(t('basket.purchase.doubtful'), { exact: true }).waitFor();
  assert.ok(await panel.button('basket.buy_credits', panel.drawer).isDisabled(), 'no second click buys it');
  await panel.drawer.locator('.clips li', { hasText: 'Red car' }).getByText(t('basket.undecided')).waitFor();
  const clips = (await panel.get('repositories/T7/basket')).clips.map(({ id }) => id);
  const another = await panel.send('POST', 'repositories/T7/purchases', { key: 'another', clips, payment: 'credits' });
  assert.equal(another.status, 409, 'nor does another panel');
  await world.service.goRight();
  await panel.purchase.getByText(t('basket.purchase.done'), { exact: true }).waitFor();
  await panel.clip('Red car').getByText(t('results.owned')).waitFor();
});

test('a download that fails is told in the words of the log, and is fetched when it is tried again', async () => {
  const panel = await open();
  await signedIn(panel);
  await panel.clip('Red car').focus();
  await panel.page.keyboard.press('p');
  await panel.piece('Red car').waitFor();
  await toBasket(panel, 'Red car');
  await buyWithCredits(panel);
  await panel.purchase.getByText(t('basket.purchase.done'), { exact: true }).waitFor();
  await world.service.goWrong({ path: '/full/' }, 'status', { status: 404 }, 50);
  await panel.button('basket.fetch', panel.drawer).click();
  await panel.until(async () => (await panel.get('tasks')).tasks[0]?.state === 'failed', async () =>
    JSON.stringify((await panel.get('tasks')).tasks));
  await panel.openDrawer('tasks');
  const [{ failed }] = (await panel.get('tasks')).tasks;
  assert.equal(failed.length, 1);
  await panel.drawer.getByText(failed[0].reason).first().waitFor();
  await world.service.goRight();
  await panel.drawer.getByRole('button', { name: t('tasks.retry.one', { count: 1 }) }).click();
  await panel.piece('Red car').getByText(t('state.full')).waitFor();
});

test('a slow download is seen in bytes and in the strip, and can be cancelled', async () => {
  const panel = await open();
  await signedIn(panel);
  await panel.clip('Red car').focus();
  await panel.page.keyboard.press('p');
  await panel.piece('Red car').waitFor();
  await toBasket(panel, 'Red car');
  await buyWithCredits(panel);
  await panel.purchase.getByText(t('basket.purchase.done'), { exact: true }).waitFor();
  await world.service.goWrong({ path: '/full/' }, 'stall', { bytes: 20_000, ms: 60_000 }, 50);
  await panel.button('basket.fetch', panel.drawer).click();
  await panel.piece('Red car').getByText(t('state.downloading')).waitFor();
  await panel.openDrawer('tasks');
  await panel.button('tasks.cancel', panel.drawer).click();
  await panel.until(async () => (await panel.get('tasks')).tasks[0].state === 'cancelled', async () =>
    (await panel.get('tasks')).tasks[0].state);
  await panel.piece('Red car').getByText(t('state.preview')).waitFor();
});

test('a page whose program has ended says so and that it is to be opened anew when another has begun', async () => {
  const panel = await open();
  await panel.clips.first().waitFor();
  await world.program.end();
  await panel.page.getByText(t('connection.lost')).waitFor();
  assert.equal(await panel.clips.count(), 5, 'what is on screen stays');
  await world.startProgram(['--port', new URL(world.origin).port]);
  // A new program has a new token: the page is told to be opened anew, and shows nothing of the old run.
  await panel.sees(t('app.not_entered_title'));
  await panel.page.goto(world.address);
  await panel.shows(['Red car', 'Sea at noon', 'Sea birds', 'Green meadow', 'Old harbour']);
});

test('a page whose program stood still for a while goes on by itself', async () => {
  const panel = await open();
  await panel.clips.first().waitFor();
  world.program.freeze();
  await panel.words.fill('sea');
  assert.equal(await panel.words.inputValue(), 'sea', 'typing does not wait');
  await panel.page.getByRole('progressbar', { name: t('results.searching') }).waitFor();
  world.program.thaw();
  await panel.shows(['Sea at noon', 'Sea birds']);
});
