// What a person meets when pictures and previews come late, broken or not at all.
import assert from 'node:assert/strict';
import { after, afterEach, before, beforeEach, test } from 'node:test';
import { assertReadable, fileFaults } from './support/faultTables.mjs';
import { t } from './support/texts.mjs';
import { World } from './support/World.mjs';

// Each fault has clips of its own, of which nothing has been kept yet.
const title = (purpose, index) => `${purpose} ${String(index + 1).padStart(2, '0')}`;
const purposes = ['Once', 'Always', 'Picture'];
const clips = purposes.flatMap((purpose) => fileFaults.map((_, index) => ({ film: 'small.mov', title: title(purpose, index), price: 1 })));

let world;
let panel;
before(async () => {
  world = await World.start({ clips });
  // The first page that is opened asks for all pictures: the first test is to have none yet.
  await world.service.goWrong({ path: '/icons/' }, 'status', { status: 503 }, 10_000);
});
after(() => world?.end());
beforeEach(async () => {
  panel = await world.openPanel({ faults: true });
  await panel.clips.first().waitFor();
});
afterEach(async () => {
  await world.service.goRight();
  await world.closePanels();
});

const player = () => panel.page.locator('section.player');
const video = () => player().locator('video');
const goWrong = (path, { kind, values }, count) => world.service.goWrong({ path }, kind, values, count);

async function isPlaying() {
  return (await video().evaluateAll((all) => all.some((film) => film.currentTime > 0.1 && film.error === null)));
}

// Looks for the clip; gives where the service keeps its preview.
async function find(name) {
  await panel.search(name);
  await panel.clip(name).waitFor();
  const [{ id }] = (await panel.get(`repositories/T7/search?words=${encodeURIComponent(name)}`)).clips;
  return `/${id.padStart(9, '0')}`;
}

async function play(name) {
  await panel.clip(name).focus();
  await panel.page.keyboard.press('Enter');
  await player().getByRole('heading', { name }).waitFor();
}

async function metSomething(what) {
  assert.ok((await world.service.met()) > 0, `${what}: no request met the fault`);
  await world.service.goRight();
}

// Nobody asks whether a picture has changed; one whose announced length is shorter passes for whole, and the browser
// draws what there is of it.
const comesAllTheSame = ({ harmless, kind, values }) =>
  harmless || kind === 'changed-validator' || (kind === 'wrong-length' && values.bytes < 0);

test('a picture that does not come leaves a sign in its place, and comes with the next search', async () => {
  // None of them is on its way any more when they begin to come.
  const signs = panel.clips.getByText(t('results.no_picture'));
  await panel.until(async () => (await signs.count()) > 0 && (await signs.count()) === (await panel.clips.count()), async () =>
    `${await signs.count()} of ${await panel.clips.count()}`);
  await world.service.goRight();
  const picture = (name) => panel.clip(name).locator('[data-picture] img.there');
  for (const [index, fault] of fileFaults.entries()) {
    const name = title('Picture', index);
    await goWrong('/icons/', fault, 200);
    await panel.search(name);
    const missing = panel.clip(name).getByText(t('results.no_picture'));
    await panel.until(async () => (await missing.count()) + (await picture(name).count()) > 0, () => `${fault.name}: nothing`);
    await metSomething(fault.name);
    // The clip can be used without its picture.
    assert.ok(await panel.button('results.play', panel.clip(name)).isEnabled());
    if (comesAllTheSame(fault)) {
      assert.equal(await missing.count(), 0, fault.name);
    } else {
      assert.equal(await missing.count(), 1, fault.name);
      await panel.words.press('Enter');
      await picture(name).waitFor();
      assert.equal(await missing.count(), 0, fault.name);
    }
  }
});

test('a preview plays where each way to ask for it goes wrong once', async () => {
  for (const [index, fault] of fileFaults.entries()) {
    const name = title('Once', index);
    await goWrong(await find(name), fault, 1);
    await play(name);
    await panel.until(isPlaying, async () => `${fault.name}: ${await player().textContent()}`);
    await metSomething(fault.name);
  }
});

test('a preview that cannot be had says why, and plays when it is tried again', async () => {
  for (const [index, fault] of fileFaults.entries()) {
    const name = title('Always', index);
    await goWrong(await find(name), fault, 200);
    await play(name);
    const alert = player().getByRole('alert');
    await panel.until(async () => (await alert.count()) > 0 || (await isPlaying()), () => `${fault.name}: nothing happens`);
    const isTold = (await alert.count()) > 0;
    await metSomething(fault.name);
    // What changes all the time may hold still for one opening.
    const mayPlay = fault.harmless || fault.kind === 'changed-validator';
    assert.ok(isTold || mayPlay, `${fault.name}: it plays all the same`);
    assert.ok(!isTold || !fault.harmless, `${fault.name}: ${isTold ? await alert.textContent() : ''}`);
    if (isTold) {
      const text = await alert.locator('.why').textContent();
      assertReadable(text, fault.name);
      assert.notEqual(text, t('player.not_playable'), `${fault.name}: it is not the format`);
      // Where it has changed in between, the first try finds that out.
      for (let tries = 1; !(await isPlaying()); tries++) {
        assert.ok(tries <= 2, `${fault.name}: ${await player().textContent()}`);
        await panel.button('common.try_again', player()).click();
        await panel.until(
          async () => (await alert.count()) > 0 || (await video().evaluateAll((all) => all.some((film) => film.readyState >= 2))),
          () => `${fault.name}: nothing happens`,
        );
        if ((await alert.count()) === 0) {
          await panel.button('player.play', player()).click();
          await panel.until(isPlaying, async () => `${fault.name}: ${await player().textContent()}`);
        }
      }
    }
  }
});
