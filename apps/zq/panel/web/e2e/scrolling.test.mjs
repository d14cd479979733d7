// Rows that are scrolled away become those that come: what one sees, reads and has the focus on must not notice.
import assert from 'node:assert/strict';
import { after, afterEach, before, test } from 'node:test';
import { t } from './support/texts.mjs';
import { World } from './support/World.mjs';

const count = 120;
const clips = Array.from({ length: count }, (_, index) => ({
  film: 'small.mov',
  title: `Reel ${String(index + 1).padStart(3, '0')}`,
  price: 1,
}));

let world;
before(async () => (world = await World.start({ clips })));
afterEach(() => world.closePanels());
after(() => world?.end());

// The clips in the document, in its order.
const indexes = (panel) =>
  panel.page.locator('[role="grid"] [data-index]').evaluateAll((items) => items.map((item) => Number(item.dataset.index)));
const isInOrder = (numbers) => numbers.every((number, index) => index === 0 || numbers[index - 1] < number);

async function open(view) {
  const panel = await world.openPanel();
  await panel.until(async () => (await panel.get('repositories/T7/search?words=')).totalCount === count, undefined, 60_000);
  await panel.search('');
  await panel.button(`results.${view}`).click();
  await panel.page.locator(`[role="grid"] [role="${view === 'grid' ? 'gridcell' : 'row'}"][data-index]`).first().waitFor();
  return panel;
}

// Turns the wheel over the results until the clip is on screen: by `step` pixels, and by ever less back where the browser has
// scrolled past it.
async function wheelTo(panel, index, step) {
  const grid = panel.page.locator('[role="grid"]');
  await grid.hover();
  let turn = step;
  let way = 0;
  await panel.until(async () => {
    const shown = await grid.evaluate((element) => {
      const box = element.getBoundingClientRect();
      const items = [...element.querySelectorAll('[data-index]')].filter((item) => {
        const place = item.getBoundingClientRect();
        return place.top >= box.top && place.bottom <= box.bottom;
      });
      return items.map((item) => Number(item.dataset.index));
    });
    if (shown.includes(index)) {
      return true;
    }
    if (shown.length > 0) {
      const next = Math.sign(index - shown[0]);
      turn = next === -way ? Math.max(50, turn / 2) : turn;
      way = next;
      await panel.page.mouse.wheel(0, way * turn);
    }
    return false;
  }, async () => `clip ${index} does not come, but ${await indexes(panel)}`);
}

for (const view of ['grid', 'list']) {
  test(`a clip keeps the focus while one scrolls away from it and back, in the ${view}`, async () => {
    const panel = await open(view);
    const third = panel.page.locator('[role="grid"] [data-index="2"]');
    const name = await third.locator('.name').textContent();
    await third.focus();
    const focused = () =>
      panel.page.evaluate(() => [document.activeElement.dataset.index, document.activeElement.querySelector('.name')?.textContent]);
    assert.deepEqual(await focused(), ['2', name]);
    for (const [index, step] of [[count - 1, 500], [0, 500], [40, 150], [2, 150]]) {
      await wheelTo(panel, index, step);
      await panel.until(async () => isInOrder(await indexes(panel)), async () => JSON.stringify(await indexes(panel)));
      assert.deepEqual(await focused(), ['2', name], `at clip ${index}`);
      assert.equal(await panel.page.locator('[role="grid"] [data-index][tabindex="0"]').count(), 1);
    }
  });

  test(`every row is read out with its own number and its own clip, wherever one scrolls, in the ${view}`, async () => {
    const panel = await open(view);
    const told = (await panel.get(`repositories/T7/search?words=&pageSize=${count}`)).clips.map((clip) => clip.name);
    for (const [index, step] of [[70, 400], [count - 1, 700], [10, 900]]) {
      await wheelTo(panel, index, step);
      await panel.until(async () => isInOrder(await indexes(panel)) && (await panel.page.locator('[role="grid"] [aria-busy="true"]').count()) === 0);
      const rows = await panel.page.locator('[role="grid"] [role="row"]').evaluateAll((all) =>
        all.filter((row) => row.querySelector('[data-index]') ?? row.dataset.index).map((row) => {
          const items = row.dataset.index === undefined ? [...row.querySelectorAll('[data-index]')] : [row];
          return { number: Number(row.ariaRowIndex), clips: items.map((item) => [Number(item.dataset.index), item.querySelector('.name').textContent]) };
        }));
      const columns = Math.max(...rows.map((row) => row.clips.length));
      for (const row of rows) {
        const heads = view === 'grid' ? 1 : 2;
        assert.equal(Math.floor(row.clips[0][0] / columns), row.number - heads);
        row.clips.forEach(([at, name]) => assert.equal(name, told[at]));
      }
    }
  });
}

test('a search that was stopped leaves the clips before it, and as one scrolls their pages come', async () => {
  const panel = await open('list');
  await world.service.goWrong({ command: 'search' }, 'delay', { ms: 60_000 }, 20);
  await panel.words.fill('Reel 001');
  await panel.words.press('Enter');
  await panel.button('results.stop').click();
  await world.service.goRight();
  await panel.page.getByRole('progressbar').waitFor({ state: 'detached' });
  await wheelTo(panel, count - 1, 700);
  const last = panel.page.locator(`[role="grid"] [data-index="${count - 1}"][aria-busy="false"] .name`);
  await last.waitFor();
  assert.match(await last.textContent(), /Reel \d+/);
});

test('a button that was pressed keeps the focus on its own clip', async () => {
  const panel = await open('grid');
  // Of a row that has no other reason to stay in the document.
  const pressed = panel.page.locator('[role="grid"] [data-index="9"]');
  await pressed.hover();
  await panel.button('results.basket', pressed).click();
  await pressed.getByText(t('results.in_basket')).waitFor();
  await wheelTo(panel, count - 1, 700);
  assert.equal(await panel.page.evaluate(() => document.activeElement.closest('[data-index]')?.dataset.index), '9');
});
