// What was ordered is known whatever becomes of the page and of the program: nothing is bought twice.
import assert from 'node:assert/strict';
import { createServer } from 'node:net';
import { after, afterEach, before, beforeEach, test } from 'node:test';
import { program } from './support/places.mjs';
import { Program } from './support/Program.mjs';
import { account } from './support/Service.mjs';
import { t } from './support/texts.mjs';
import { Panel } from './support/Panel.mjs';
import { openBrowser, World } from './support/World.mjs';

const buying = 'purchase_using_credits';
const owning = 'get_downloads_formatted';

let browser;
let world;
let ends;
before(async () => (browser = await openBrowser()));
after(() => browser?.close());
beforeEach(async () => {
  ends = [];
  world = await World.start({ browser });
});
afterEach(async () => {
  try {
    await world.closePanels();
  } finally {
    for (const end of ends) {
      await end();
    }
    await world.end();
  }
});

const open = () => world.openPanel({ faults: true });

async function signIn(panel) {
  await panel.signIn();
  await panel.signedIn();
}

async function toBasket(panel, name) {
  await panel.clip(name).focus();
  await panel.page.keyboard.press('b');
  await panel.openDrawer('basket');
  await panel.drawer.locator('.clips li', { hasText: name }).waitFor();
}

async function confirm(panel) {
  await panel.button('basket.buy_credits', panel.drawer).click();
  await panel.button('basket.buy_now', panel.dialog).click();
}

const is = (panel, state) =>
  panel.purchase.getByText(t(`basket.purchase.${state}`), { exact: true }).waitFor();

const lookNow = (panel) => panel.button('basket.look_now', panel.purchase);
// Unless the program has looked by itself in this moment, and the button is gone.
const pressLookNow = (panel) => lookNow(panel).evaluateAll(([button]) => button?.click());

// In doubt until the account tells, and not sent again.
async function isDecidedBySigningIn(panel) {
  await panel.openDrawer('basket');
  await is(panel, 'doubtful');
  await signIn(panel);
  await panel.openDrawer('basket');
  await is(panel, 'done');
  assert.equal(await world.service.met(buying), 1, 'it was sent once');
}

// Every order that reaches the service is counted from here on.
const countOrders = () => world.service.goWrong({ command: buying }, 'delay', { ms: 1 }, 50);

async function cannotBuy(panel, name) {
  for (const key of ['basket.buy_credits', 'basket.buy_page']) {
    assert.ok(await panel.button(key, panel.drawer).isDisabled(), key);
  }
  await panel.drawer.locator('.clips li', { hasText: name }).getByText(t('basket.undecided')).waitFor();
  const clips = (await panel.get('repositories/T7/basket')).clips.map(({ id }) => id);
  for (const payment of ['credits', 'page']) {
    const { status, told } = await panel.send('POST', 'repositories/T7/purchases', { key: `another ${payment}`, clips, payment });
    assert.deepEqual([status, told.error?.reason], [409, 'in_doubt'], 'nor does another page');
  }
}

// Killed, and started again on another port, as somebody has taken the old one.
async function killAndStartAgain() {
  const before = world.origin;
  await world.program.kill();
  const other = createServer((connection) => connection.destroy());
  await new Promise((resolve) => other.listen(new URL(before).port, '127.0.0.1', resolve));
  ends.push(() => new Promise((resolve) => other.close(resolve)));
  await world.startProgram();
  assert.notEqual(world.origin, before);
}

test('a purchase in doubt is in doubt in the next program too, and is decided there by what is owned', async () => {
  let panel = await open();
  await signIn(panel);
  await toBasket(panel, 'Red car');
  await world.service.goWrong({ command: buying }, 'lost-answer', {}, 1);
  await countOrders();
  await world.service.goWrong({ command: owning }, 'status', { status: 503 }, 1000);
  await confirm(panel);
  await is(panel, 'doubtful');
  await panel.page.reload();
  await panel.openDrawer('basket');
  await is(panel, 'doubtful');

  await killAndStartAgain();
  panel = await open();
  await panel.openDrawer('basket');
  await is(panel, 'doubtful');
  await panel.purchase.getByText(t('basket.other_account', { user: account.user })).waitFor();
  await panel.button('account.sign_in', panel.purchase).click();
  const fields = panel.dialog.locator('form input');
  await fields.nth(0).fill(account.user);
  await fields.nth(1).fill(account.password);
  await fields.nth(1).press('Enter');
  await panel.signedIn();
  await panel.purchase.getByText(t('basket.list_unread')).waitFor();
  await cannotBuy(panel, 'Red car');
  const [{ clips }] = (await panel.get('repositories/T7/purchases')).purchases;

  // Nor does a terminal buy it.
  const terminal = new Program(
    program('zq'), ['--login', account.user, 'buy', clips[0], '--credits'], world.environment);
  terminal.write(`${account.password}\n`);
  assert.notEqual(await terminal.finish(), 0);
  assert.match(terminal.errors, /a purchase with one of these clips is in doubt/);

  assert.equal(await world.service.met(buying), 1, 'one order has reached the service');
  await lookNow(panel).waitFor();
  await world.service.goRight();
  await countOrders();
  await pressLookNow(panel);
  await is(panel, 'done');
  await panel.clip('Red car').getByText(t('results.owned')).waitFor();
  assert.equal(await world.service.met(buying), 0);
});

test('an order whose program is killed before the answer came is in doubt until the list of what is owned tells', async () => {
  let panel = await open();
  await signIn(panel);
  await toBasket(panel, 'Red car');
  await world.service.goWrong({ command: buying }, 'stall', { ms: 60_000 }, 1);
  await countOrders();
  await confirm(panel);
  await panel.until(async () => (await world.service.met(buying)) === 1);
  await killAndStartAgain();
  panel = await open();
  await isDecidedBySigningIn(panel);
  const owned = await panel.get('repositories/T7/owned');
  assert.deepEqual(owned.clips.map((clip) => clip.name), ['Red car']);
});

test('what one program has in doubt, another of the same home does not buy, and both say what came of it', async () => {
  const panel = await open();
  const second = new Program(program('zq'), ['panel', '--no-browser'], world.environment);
  ends.push(() => second.end());
  const other = await Panel.open(world.browser, await second.line(), { faults: true });
  ends.unshift(() => other.context.close());
  await signIn(panel);
  await signIn(other);
  await toBasket(panel, 'Red car');
  await world.service.goWrong({ command: buying }, 'lost-answer', {}, 1);
  await countOrders();
  await world.service.goWrong({ command: owning }, 'status', { status: 503 }, 1000);
  await confirm(panel);
  await is(panel, 'doubtful');
  await other.openDrawer('basket');
  await is(other, 'doubtful');
  if ((await other.drawer.locator('.clips li', { hasText: 'Red car' }).count()) === 0) {
    await toBasket(other, 'Red car');
  }
  await cannotBuy(other, 'Red car');
  assert.equal(await world.service.met(buying), 1);
  await lookNow(other).waitFor();
  await world.service.goRight();
  await pressLookNow(other);
  await is(other, 'done');
  await is(panel, 'done');
  assert.deepEqual(other.problems, []);
});

test('an order of a terminal that is killed before the answer came is in doubt in the panel, which decides it', async () => {
  const panel = await open();
  const { clips } = await panel.get('repositories/T7/search?words=Red%20car');
  await world.service.goWrong({ command: buying }, 'stall', { ms: 60_000 }, 1);
  await countOrders();
  const terminal = new Program(
    program('zq'), ['--login', account.user, 'buy', clips[0].id, '--credits'], world.environment);
  terminal.write(`${account.password}\n`);
  await panel.until(async () => (await world.service.met(buying)) === 1);
  await terminal.kill();
  await isDecidedBySigningIn(panel);
});

test('an order that has not reached the program is not bought, not even when it arrives later', async () => {
  const panel = await open();
  await signIn(panel);
  await toBasket(panel, 'Red car');
  await countOrders();
  let order;
  await panel.page.route('**/purchases', async (route) => {
    if (route.request().method() !== 'POST') {
      return route.continue();
    }
    order = route.request().postData();
    return route.abort();
  });
  await confirm(panel);
  await is(panel, 'doubtful');
  assert.ok(await panel.button('basket.buy_credits', panel.drawer).isDisabled());
  await panel.page.unroute('**/purchases');
  await panel.button('basket.ask', panel.purchase).click();
  await panel.purchase.getByText(t('basket.never_arrived')).waitFor();
  const { told: late } = await panel.send('POST', 'repositories/T7/purchases', JSON.parse(order));
  assert.equal(late.state, 'refused');
  assert.equal(await world.service.met(buying), 0);
  await confirm(panel);
  await panel.drawer.locator('.purchases').getByText(t('basket.purchase.done'), { exact: true }).waitFor();
  assert.equal(await world.service.met(buying), 1);
});

test('an answer that says that nothing was sent is told in the question, and is no doubt', async () => {
  const panel = await open();
  await signIn(panel);
  await toBasket(panel, 'Red car');
  const text = 'no connection can be made to "www.tarn7.example"';
  await panel.page.route('**/purchases', (route) =>
    route.request().method() === 'POST'
      ? route.fulfill({ status: 502, json: { error: { code: 'failed', reason: 'service_unreachable', text } } })
      : route.continue());
  await confirm(panel);
  await panel.dialog.getByRole('alert').waitFor();
  await panel.button('common.close', panel.dialog.locator('.acts')).click();
  assert.equal(await panel.drawer.locator('.purchases').count(), 0);
  assert.ok(await panel.button('basket.buy_credits', panel.drawer).isEnabled());
});

test('the total is that of what is bought', async () => {
  const panel = await open();
  await signIn(panel);
  await toBasket(panel, 'Red car');
  await world.service.goWrong({ command: buying }, 'lost-answer', {}, 1);
  await world.service.goWrong({ command: owning }, 'status', { status: 503 }, 1000);
  await confirm(panel);
  await is(panel, 'doubtful');
  await toBasket(panel, 'Sea birds');
  await panel.drawer.locator('.sums .total').getByText('$19').waitFor();
  await panel.button('basket.buy_credits', panel.drawer).click();
  await panel.dialog.locator('.total').getByText('$19').waitFor();
  assert.equal(await panel.dialog.locator('li').count(), 1);
});
