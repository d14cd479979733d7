// What a person meets when what the service answers is late, broken or nothing at all: at the search, the sign-in,
// the list of what is owned, the basket and both ways to buy.
import assert from 'node:assert/strict';
import { after, afterEach, before, beforeEach, test } from 'node:test';
import { assertReadable, commandFaults } from './support/faultTables.mjs';
import { account } from './support/Service.mjs';
import { t } from './support/texts.mjs';
import { World } from './support/World.mjs';

// More than the first page has.
const clips = Array.from({ length: 60 }, (_, index) => ({
  film: 'small.mov',
  title: `Harbour ${String(index + 1).padStart(2, '0')}`,
  price: 2,
}));

let world;
let panel;
before(async () => (world = await World.start({ clips })));
after(() => world?.end());
beforeEach(async () => {
  panel = await world.openPanel({ faults: true, height: 500 });
  await panel.clips.first().waitFor();
});
afterEach(async () => {
  await world.service.goRight();
  await world.closePanels();
});

const stateIn = (place) => panel.page.locator(`${place} .state.problem`);
const goWrong = (command, { kind, values }, count = 20) => world.service.goWrong({ command }, kind, values, count);

async function metSomething(what) {
  assert.ok((await world.service.met()) > 0, `${what}: no request met the fault`);
  await world.service.goRight();
}

async function becomeSignedIn() {
  if ((await panel.get('state')).repositories[0].user === '') {
    await panel.signIn();
    await panel.signedIn();
  }
}

async function becomeSignedOut() {
  if ((await panel.get('state')).repositories[0].user !== '') {
    await panel.page.locator('header.top .account').click();
    await panel.button('account.sign_out').click();
    await panel.dialog.waitFor({ state: 'detached' });
  }
}

// What was searched once is remembered, so each search has words of its own that find the same.
let spellings = 0;
function otherSpelling() {
  spellings++;
  const word = [...'harbour'].map((letter, bit) => ((spellings >> bit) & 1 ? letter.toUpperCase() : letter)).join('');
  return `${word} 07`;
}

test('a search whose answer fails says why, and trying again finds the clips', async () => {
  for (const fault of commandFaults) {
    await goWrong('search', fault);
    await panel.search(otherSpelling());
    if (fault.says !== null) {
      const state = stateIn('.results');
      await state.getByText(t('results.failed_title')).waitFor();
      const text = await state.textContent();
      assert.match(text, fault.says, fault.name);
      assertReadable(text, fault.name);
      await panel.button('results.check_connection', state).waitFor();
      await metSomething(fault.name);
      await panel.button('common.try_again', state).click();
    } else {
      await metSomething(fault.name);
    }
    await panel.shows(['Harbour 07']);
  }
});

test('a further page that fails leaves what is there, says why, and comes when it is tried again', async () => {
  for (const fault of commandFaults.filter(({ says }) => says !== null)) {
    // The page that is on screen comes, the one behind it does not.
    await world.service.goWrong({ command: 'search' }, 'delay', { ms: 1 }, 1);
    await goWrong('search', fault);
    await panel.search(otherSpelling().replace(' 07', ''));
    await panel.page.locator('[role="grid"]').evaluate((grid) => (grid.scrollTop = grid.scrollHeight));
    const told = panel.page.locator('.browser').getByText(t('results.page_failed'));
    await told.waitFor();
    const text = await told.locator('xpath=..').textContent();
    assert.ok(text.includes(t('failure.reason.service_failed')) || text.includes(t('failure.reason.service_refused')), text);
    assertReadable(text, fault.name);
    await metSomething(fault.name);
    await panel.button('common.try_again').click();
    await panel.clip('Harbour 60').waitFor();
    await told.waitFor({ state: 'detached' });
  }
});

test('a sign-in whose answer fails says why in the form, which takes the password again', async () => {
  const fields = panel.dialog.locator('form input');
  for (const fault of commandFaults) {
    await goWrong('login', fault);
    if ((await panel.dialog.count()) === 0) {
      await becomeSignedOut();
      await panel.signIn();
    } else {
      await fields.nth(1).fill(account.password);
      await fields.nth(1).press('Enter');
    }
    if (fault.says !== null) {
      const alert = panel.dialog.getByRole('alert').filter({ hasText: fault.says });
      await alert.waitFor();
      assertReadable(await alert.textContent(), fault.name);
      await panel.button('account.sign_in', panel.dialog.locator('form')).waitFor();
      assert.equal(await fields.nth(0).inputValue(), account.user, 'the name stays');
      assert.equal(await fields.nth(1).inputValue(), '', 'the password does not');
    }
    // The statuses come one after the other in the same form.
    if (fault.kind === 'status' && fault.values.status !== 503) {
      await metSomething(fault.name);
      continue;
    }
    if (fault.says !== null) {
      await metSomething(fault.name);
      await fields.nth(1).fill(account.password);
      await panel.button('account.sign_in', panel.dialog.locator('form')).click();
      await panel.signedIn();
    } else {
      await panel.signedIn();
      await metSomething(fault.name);
    }
  }
});

test('signing out succeeds whatever the service answers', async () => {
  for (const kind of ['not-json', 'lost-answer', 'status']) {
    await becomeSignedIn();
    await world.service.goWrong({ command: 'logout' }, kind, {}, 20);
    await becomeSignedOut();
    await metSomething(kind);
    await panel.page.getByRole('button', { name: t('account.sign_in'), exact: true }).first().waitFor();
  }
});

test('the list of what is owned says why it fails, and comes when it is tried again', async () => {
  await becomeSignedIn();
  await put('Harbour 01');
  await buyWith('credits');
  await stateOfPurchase('done');
  await panel.search('');
  for (const fault of commandFaults) {
    await panel.button('results.all').click();
    await panel.clips.nth(1).waitFor();
    await goWrong('get_downloads_formatted', fault);
    await panel.button('results.owned').click();
    if (fault.says !== null) {
      const state = stateIn('.results');
      await state.waitFor();
      assert.equal(await state.locator('h2').textContent(), t('owned.failed_title'));
      const text = await state.textContent();
      assert.match(text, fault.says, fault.name);
      assertReadable(text, fault.name);
      await metSomething(fault.name);
      await panel.button('common.try_again', state).click();
      await panel.shows(['Harbour 01']);
    } else {
      await panel.shows(['Harbour 01']);
      await metSomething(fault.name);
    }
  }
});

async function put(name) {
  await panel.search(name);
  await panel.shows([name]);
  await panel.clip(name).focus();
  await panel.page.keyboard.press('b');
  await panel.openDrawer('basket');
  await panel.drawer.locator('.clips li', { hasText: name }).waitFor();
}

async function buyWith(payment) {
  await panel.button(payment === 'credits' ? 'basket.buy_credits' : 'basket.buy_page', panel.drawer).click();
  await panel.button(payment === 'credits' ? 'basket.buy_now' : 'basket.open_page', panel.dialog).click();
  await panel.dialog.waitFor({ state: 'detached' });
}

const stateOfPurchase = (state) =>
  panel.purchase.getByText(t(`basket.purchase.${state}`), { exact: true }).waitFor();

async function emptyBasket() {
  await panel.button('basket.empty', panel.drawer).click();
  await panel.drawer.getByText(t('basket.nothing'), { exact: true }).waitFor();
}

test('with a service that fails at everything the basket is filled, counted and emptied all the same', async () => {
  await becomeSignedIn();
  await panel.search('Harbour 30');
  for (const kind of ['lost-answer', 'not-json']) {
    await world.service.goWrong({ command: '*' }, kind, {}, 200);
    await panel.clip('Harbour 30').focus();
    await panel.page.keyboard.press('b');
    await panel.openDrawer('basket');
    await panel.drawer.locator('.clips li', { hasText: 'Harbour 30' }).waitFor();
    await panel.drawer.locator('.sums .total dd', { hasText: '2' }).waitFor();
    await emptyBasket();
    await world.service.goRight();
  }
});

test('a purchase with credits whose answer fails is in doubt, says why, and others can be bought', async () => {
  await becomeSignedIn();
  const bought = [];
  const undone = [];
  let number = 40;
  for (const fault of commandFaults) {
    const name = `Harbour ${number++}`;
    await put(name);
    await goWrong('purchase_using_credits', fault, 1);
    // What is owned tells nothing for a while, so that the doubt can be seen.
    await world.service.goWrong({ command: 'get_downloads_formatted' }, 'status', { status: 503 }, 1000);
    await buyWith('credits');
    if (fault.says === null) {
      await stateOfPurchase('done');
    } else {
      await stateOfPurchase('doubtful');
      assertReadable(await panel.purchase.textContent(), fault.name);
      await panel.purchase.getByText(t('basket.doubtful_hint')).waitFor();
      assert.ok(await panel.button('basket.buy_credits', panel.drawer).isDisabled(), 'no click sends it again');
      (fault.kind === 'status' ? undone : bought).push(name);
      await emptyBasket(); // as long as it is in doubt: what is bought leaves the basket by itself
    }
    assert.ok((await world.service.met('purchase_using_credits')) > 0, `${fault.name}: no order met the fault`);
    await world.service.goRight();
    await panel.drawer.getByText(t('basket.nothing'), { exact: true }).waitFor();
  }
  // The list of what is owned decides: what the service did is bought, what it refused to look at stays in doubt.
  await panel.button('results.owned').click();
  await panel.clip(bought.at(-1)).waitFor();
  const owned = (await panel.get('repositories/T7/owned')).clips.map(({ name }) => name);
  bought.forEach((name) => assert.ok(owned.includes(name), `${name} was paid for`));
  undone.forEach((name) => assert.ok(!owned.includes(name), `${name} was not bought`));
  const states = (await panel.get('repositories/T7/purchases')).purchases.map(({ state }) => state);
  assert.equal(states.filter((state) => state === 'doubtful').length, undone.length, JSON.stringify(states));
});

test('a payment page that does not come is no purchase, says why, and comes when it is tried again', async () => {
  await becomeSignedIn();
  await put('Harbour 20');
  for (const fault of commandFaults) {
    const opened = world.opened().length;
    await goWrong('purchase_using_cash', fault, 1);
    await buyWith('page');
    if (fault.says !== null) {
      await stateOfPurchase('refused');
      const text = await panel.purchase.textContent();
      assert.match(text, fault.says, fault.name);
      assertReadable(text, fault.name);
      await metSomething(fault.name);
      assert.equal(world.opened().length, opened, 'nothing is opened');
      await buyWith('page');
    }
    await stateOfPurchase('waiting');
    await panel.until(() => world.opened().length > opened, () => 'no page is opened');
    await world.service.goRight();
  }
});
