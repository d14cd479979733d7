// What a person meets when the full file of a clip comes late, broken or not at all: each way to fail, with the words
// on its card, the piece in the strip, and the same clip fetched when it is tried again.
import assert from 'node:assert/strict';
import { after, afterEach, before, test } from 'node:test';
import { assertReadable, commandFaults, fileFaults } from './support/faultTables.mjs';
import { t } from './support/texts.mjs';
import { World } from './support/World.mjs';

const commands = [...commandFaults, { name: 'an address that has expired', kind: 'expired-address', values: {}, says: /\(403\)/ }];
const title = (purpose, index) => `${purpose} ${String(index + 1).padStart(2, '0')}`;
const titles = [...commands.map((_, index) => title('Asked', index)), ...fileFaults.map((_, index) => title('Sent', index))];

let world;
let panel;
before(async () => {
  world = await World.start({ clips: titles.map((name) => ({ film: 'small.mov', title: name, price: 1 })) });
  panel = await world.openPanel({ faults: true });
  await panel.clips.first().waitFor();
  await panel.signIn();
  await panel.signedIn();
  // All of them at once: buying is not what is looked at here.
  const { clips } = await panel.get('repositories/T7/search?words=&pageSize=200');
  const all = { key: 'all', clips: clips.map(({ id }) => id), payment: 'credits' };
  assert.equal((await panel.send('POST', 'repositories/T7/purchases', all)).told.state, 'done');
});
afterEach(() => world.service.goRight());
after(async () => {
  try {
    await world?.closePanels();
  } finally {
    await world?.end();
  }
});

const card = () => panel.drawer.getByRole('article').first();

// Places the clip and fetches what is owned of the sequence and not there yet: this one.
async function fetchOne(name) {
  await panel.search(name);
  await panel.shows([name]);
  await panel.place(name);
  await panel.piece(name).waitFor();
  await panel.openDrawer('tasks');
  const count = await panel.drawer.getByRole('article').count();
  await panel.button('tasks.fetch_owned', panel.drawer).click();
  await panel.until(async () => (await panel.drawer.getByRole('article').count()) > count, () => `${name}: no task`);
}

// True where it is there in full, false where its card says that it failed.
async function ends(name) {
  const good = card().getByText(t('tasks.state.done'), { exact: true });
  const bad = card().getByText(t('tasks.state.failed'), { exact: true });
  await good.or(bad).waitFor();
  return (await bad.count()) === 0;
}

async function isToldAndMended(name, fault, says) {
  assert.ok((await world.service.met()) > 0, `${fault.name}: no request met the fault`);
  const reason = await card().locator('ul li').filter({ hasText: name }).textContent();
  assertReadable(reason, fault.name);
  assert.match(reason, says, fault.name);
  await panel.piece(name).getByText(t('state.preview')).waitFor(); // it stays in the sequence
  await world.service.goRight();
  await card().getByRole('button', { name: t('tasks.retry.one', { count: 1 }) }).click();
  await panel.piece(name).getByText(t('state.full')).waitFor();
}

test('a request for a file that fails is told, and the clip comes when it is tried again', async () => {
  for (const [index, fault] of commands.entries()) {
    const name = title('Asked', index);
    await world.service.goWrong({ command: 'download' }, fault.kind, fault.values, 1);
    await fetchOne(name);
    const isThere = await ends(name);
    assert.equal(isThere, fault.says === null, fault.name);
    if (isThere) {
      await panel.piece(name).getByText(t('state.full')).waitFor();
      await world.service.goRight();
    } else {
      // Of a request that was not answered the repository says only that it was refused.
      await isToldAndMended(name, fault, fault.kind === 'expired-address' ? fault.says : /refused/);
    }
  }
});

test('a file that fails is told, leaves nothing behind, and the clip comes when it is tried again', async () => {
  const says = { 'wrong-length': /failed \(0\)|decoder|damaged/, 'not-json': /no media file|decoder|damaged/ };
  for (const [index, fault] of fileFaults.entries()) {
    const name = title('Sent', index);
    await world.service.goWrong({ path: '/full/' }, fault.kind, fault.values, 10);
    await fetchOne(name);
    const isThere = await ends(name);
    // Which file it was the last time does not matter to one that is fetched as a whole.
    assert.equal(isThere, fault.harmless || fault.kind === 'changed-validator', fault.name);
    if (isThere) {
      await panel.piece(name).getByText(t('state.full')).waitFor();
      await world.service.goRight();
    } else {
      const status = fault.kind === 'expired-address' ? 403 : (fault.values.status ?? 0);
      await isToldAndMended(name, fault, says[fault.kind] ?? new RegExp(`failed \\(${status}\\)`));
    }
  }
});
