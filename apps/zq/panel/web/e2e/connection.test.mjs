// The service, or the way to it, goes away in the middle of something and comes back: what a person reads meanwhile,
// and how it goes on.
import assert from 'node:assert/strict';
import { after, afterEach, before, beforeEach, test } from 'node:test';
import { assertReadable } from './support/faultTables.mjs';
import { account } from './support/Service.mjs';
import { t } from './support/texts.mjs';
import { World } from './support/World.mjs';

const clips = [
  { film: 'long.mp4', title: 'Long harbour', price: 3 },
  { film: 'small.mov', title: 'Red car', price: 9 },
  { film: 'small.mov', title: 'Green meadow', price: 5 },
];

let world;
let panel;
before(async () => (world = await World.start({ clips, relay: true })));
after(() => world?.end());
beforeEach(async () => {
  panel = await world.openPanel({ faults: true });
  await panel.clips.first().waitFor();
});
afterEach(async () => {
  await world.service.goRight();
  await world.relay.mend();
  await world.closePanels();
});

test('a sign-in while the service is gone says so, and the same form signs in when it is back', async () => {
  await world.service.goDown();
  await panel.signIn();
  const alert = panel.dialog.getByRole('alert');
  await alert.waitFor();
  assertReadable(await alert.textContent(), 'sign-in');
  assert.match(await alert.textContent(), /connect/i);
  await world.service.comeBack();
  const password = panel.dialog.locator('form input').nth(1);
  await password.fill(account.password);
  await password.press('Enter');
  await panel.signedIn();
});

const player = () => panel.page.locator('section.player');
const film = () => player().locator('video');

// Where the film stands; 0 where it has failed.
async function place() {
  const all = await film().evaluateAll((films) => films.map((one) => (one.error === null ? one.currentTime : 0)));
  return all[0] ?? 0;
}

// What was read of a preview before comes again from the service.
async function clearCache() {
  await panel.openDrawer('settings');
  await panel.button('settings.clear_cache', panel.drawer).click();
  await panel.sees(t('settings.cleared', { bytes: '' }).trim());
}

// Plays until it waits for bytes that do not come.
async function playUntilItWaits() {
  await world.service.goWrong({ path: '/0' }, 'stall', { bytes: 400_000, ms: 60_000 }, 100);
  await panel.clip('Long harbour').focus();
  await panel.page.keyboard.press('Enter');
  await panel.until(async () => (await place()) > 0.5, async () => `it does not play: ${await player().textContent()}`);
}

const plays = (from) =>
  panel.until(async () => (await place()) > from + 1, async () => `it does not play on: ${await player().textContent()}`);

const waiting = () => player().getByRole('status');
const waits = (why = '') =>
  panel.until(async () => {
    const said = (await waiting().allTextContents()).join();
    return said.includes(t('player.waiting')) && said.includes(why);
  }, async () => `it does not wait: ${await player().textContent()}`);

// The program says why as soon as it knows.
async function saysThatTheServiceCannotBeReached() {
  await waits(t('failure.reason.service_unreachable'));
  assert.equal(await player().getByRole('alert').count(), 0);
}

test('a preview whose way to its service is cut says at once that it waits and why, and plays on by itself', async () => {
  await playUntilItWaits();
  await world.relay.cut();
  await saysThatTheServiceCannotBeReached();
  const stood = await place();
  await world.service.goRight();
  await world.relay.mend();
  await plays(stood);
  await waiting().getByText(t('player.waiting')).waitFor({ state: 'detached' });
  assert.equal(await player().getByRole('alert').count(), 0);
});

test('a preview whose service says nothing any more waits with a sign, though nobody knows why', async () => {
  await clearCache();
  await playUntilItWaits();
  await waits();
  assert.equal(await player().getByRole('alert').count(), 0);
  const stood = await place();
  await world.service.goRight();
  await plays(stood);
});

test('a preview whose service has ended says so, and plays on from there when it is back', async () => {
  await clearCache();
  await playUntilItWaits();
  await world.service.goDown();
  await saysThatTheServiceCannotBeReached();
  assert.equal(await panel.clips.count(), 3, 'what is on screen stays');
  const stood = await place();
  await world.service.comeBack();
  await plays(stood);
  assert.equal(await player().getByRole('alert').count(), 0);
});

test('the sequence waits and plays on in the same way', async () => {
  await clearCache();
  await world.service.goWrong({ path: '/0' }, 'stall', { bytes: 400_000, ms: 60_000 }, 100);
  await panel.place('Long harbour');
  await panel.piece('Long harbour').waitFor();
  await panel.page.locator('footer.strip').getByRole('button', { name: t('sequence.play_all'), exact: true }).click();
  const seen = () => player().locator('video.front').evaluate((one) => (one.error === null ? one.currentTime : 0));
  await panel.until(async () => (await seen()) > 0.5, async () => `it does not play: ${await player().textContent()}`);
  await world.relay.cut();
  await saysThatTheServiceCannotBeReached();
  const stood = await seen();
  await world.service.goRight();
  await world.relay.mend();
  await panel.until(async () => (await seen()) > stood + 1, async () => `it does not play on: ${await player().textContent()}`);
});

test('a clip that is placed while a search is slow says that it waits, and lies in the sequence once', async () => {
  const { page } = panel;
  const before = await panel.pieces.count();
  await world.service.goWrong({ command: 'search' }, 'stall', { bytes: 0, ms: 60_000 }, 1);
  await panel.clip('Green meadow').focus();
  await page.keyboard.press('Enter'); // the player has it while the results are another search's
  await player().getByRole('heading', { name: 'Green meadow' }).waitFor();
  await panel.words.fill('harbour');
  await panel.words.press('Enter');
  await panel.until(async () => (await world.service.met('search')) > 0, () => 'it does not search');
  const place = player().locator('button.primary');
  await place.click();
  await page.locator('footer.strip').getByRole('status').getByText(t('sequence.placing', { clip: 'Green meadow' })).waitFor();
  assert.equal(await place.getAttribute('aria-busy'), 'true');
  await place.click();
  await world.service.goRight();
  await panel.until(async () => (await panel.pieces.count()) > before, () => 'it is lost');
  await page.locator('footer.strip').getByRole('status').getByText('Green meadow').waitFor({ state: 'detached' });
  const { sequences } = await panel.get('project');
  const { pieces } = await panel.get(`sequences/${encodeURIComponent(sequences[0])}`);
  assert.equal(pieces.filter((piece) => piece.name === 'Green meadow').length, 1, 'a second press placed it again');
  await place.click();
  await panel.until(async () => (await panel.pieces.count()) === before + 2, () => 'what is pressed later is meant');
  await page.keyboard.press('Control+z');
  await panel.until(async () => (await panel.pieces.count()) === before + 1);
  await page.keyboard.press('Control+z');
  await panel.until(async () => (await panel.pieces.count()) === before);
  await panel.search(''); // with whose words the next panel begins
});

async function signIn() {
  await panel.signIn();
  await panel.signedIn();
}

async function signInAnew() {
  await panel.page.locator('header.top .account').click();
  await panel.button('account.sign_out', panel.dialog).click();
  await panel.dialog.waitFor({ state: 'detached' });
  await signIn();
}

const card = () => panel.drawer.getByRole('article').first();

async function buy(name) {
  await panel.place(name);
  await panel.piece(name).waitFor();
  await panel.clip(name).focus();
  await panel.page.keyboard.press('b');
  await panel.openDrawer('basket');
  await panel.button('basket.buy_credits', panel.drawer).click();
  await panel.button('basket.buy_now', panel.dialog).click();
  await panel.dialog.waitFor({ state: 'detached' }); // from then on the first purchase is this one
  await panel.purchase.getByText(t('basket.purchase.done'), { exact: true }).waitFor();
}

async function fetchUntilItWaits(name) {
  await world.service.goWrong({ path: '/full/' }, 'stall', { bytes: 20_000, ms: 60_000 }, 10);
  await panel.button('basket.fetch', panel.purchase).click();
  await panel.piece(name).getByText(t('state.downloading')).waitFor();
}

async function fetchHasFailed(name) {
  await card().getByText(t('tasks.state.failed'), { exact: true }).waitFor();
  assertReadable(await card().locator('ul li').textContent(), 'fetch');
  await panel.piece(name).getByText(t('state.preview')).waitFor();
}

const fetchAgain = () => card().getByRole('button', { name: t('tasks.retry.one', { count: 1 }) }).click();

test('a fetch whose way to the service is cut fails in words, and is done when it is tried again', async () => {
  await signInAnew();
  await buy('Green meadow');
  await fetchUntilItWaits('Green meadow');
  await panel.page.locator('header.top .account').click();
  await panel.dialog.getByText(t('account.ends_fetches.one', { count: 1 })).waitFor();
  await panel.page.keyboard.press('Escape');
  await panel.dialog.waitFor({ state: 'detached' });
  await world.relay.cut();
  await fetchHasFailed('Green meadow');
  await world.service.goRight();
  await fetchAgain();
  await panel.page.getByRole('alert').getByText(/connect/i).first().waitFor();
  await world.relay.mend();
  await fetchAgain();
  await panel.piece('Green meadow').getByText(t('state.full')).waitFor();
});

test('a fetch whose service has begun anew is done when one has signed in again, which is said', async () => {
  await buy('Red car');
  await fetchUntilItWaits('Red car');
  await world.service.goDown();
  await fetchHasFailed('Red car');
  await world.service.comeBack();
  await fetchAgain();
  await panel.page.getByRole('alert').getByText('Sign in first').first().waitFor();
  await signInAnew();
  await fetchAgain();
  await panel.piece('Red car').getByText(t('state.full')).waitFor();
});
