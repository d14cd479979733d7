// What a careless service or repository tells: the same name twice, figures without sense, a legend without end.
import assert from 'node:assert/strict';
import { after, afterEach, before, beforeEach, test } from 'node:test';
import { t } from './support/texts.mjs';
import { World } from './support/World.mjs';

const endless = 'Legend '.repeat(80).trim();

let world;
let seam;
let panel;
before(async () => {
  world = await World.start({ seam: true });
  seam = world.seam;
});
beforeEach(async () => {
  seam.change = null;
  panel = await world.openPanel({ faults: true });
});
afterEach(async () => {
  assert.deepEqual(panel.problems, []);
  await world.closePanels();
});
after(() => world?.end());

// The answers of the program to that path, changed on their way to the page.
const changed = (path, change) =>
  panel.page.route(path, async (route) => {
    const response = await route.fetch();
    await route.fulfill({ response, json: change(await response.json()) });
  });
const twice = (list) => list.flatMap((one) => [one, one]);
const twiceEach = (repository) => ({ ...repository, columns: twice(repository.columns) });

async function readAnew() {
  await panel.page.reload();
  await panel.words.waitFor();
}

test('clips of a number without sense are shown, and one that comes twice is there twice', async () => {
  let items = [];
  seam.change = (reply, command) => {
    items = command === 'search' ? reply.items : items;
    return null;
  };
  await panel.search('sea');
  await panel.until(() => items.length === 2, () => `${items.length} clips to begin with`);
  for (const [index, count] of [1e15, 0, 65_536, -65_536].entries()) {
    seam.change = (reply, command) =>
      command !== 'search' ? null : { ...reply, tot_nbr_rows: count, items: twice(items) };
    await panel.search(`number ${index}`);
    await panel.until(async () => (await panel.clips.count()) === 4, async () => `${count}: ${await panel.clips.count()} clips`);
  }
  const names = await panel.names();
  assert.equal(names[0], names[1]);
  await panel.clips.nth(1).focus();
  await panel.page.keyboard.press('ArrowRight');
  await panel.until(() => panel.clips.nth(2).evaluate((clip) => clip === document.activeElement));
});

test('columns, choices and fields of one name do not stop the page', async () => {
  await changed('**/api/state', (state) => ({ ...state, repositories: state.repositories.map(twiceEach) }));
  await changed('**/api/repositories/T7', twiceEach);
  await changed('**/api/repositories/T7/options', ({ groups }) => ({
    groups: groups.map((group) => ({
      ...group,
      options: twice(group.options.map((option) => (option.choices === undefined ? option : { ...option, choices: twice(option.choices) }))),
    })),
  }));
  await changed('**/api/repositories/T7/login', ({ form, linkForm }) => ({ form: twice(form), linkForm: twice(linkForm) }));
  await readAnew();
  await panel.search('');
  for (const view of ['list', 'grid']) {
    await panel.button(`results.${view}`).click();
    await panel.until(async () => (await panel.clips.count()) > 3, () => `no clips in the ${view}`);
  }
  const choices = panel.page.locator('#filters select').first().locator('option');
  assert.equal(await choices.nth(0).textContent(), await choices.nth(1).textContent());
  await panel.clips.first().click();
  await panel.page.keyboard.press('Enter');
  await panel.page.locator('section.player').getByText(t('player.sound'), { exact: true }).waitFor();
  await panel.page.locator('header.top .account').click();
  await panel.until(async () => (await panel.dialog.locator('form input').count()) === 4, () => 'not every field is there');
});

test('legends without end leave the results their room, and can be read in full', async () => {
  await changed('**/api/repositories/T7/options', ({ groups }) => ({
    groups: groups.map((group) => ({
      ...group,
      options: [...Array(12)].flatMap(() => group.options).map((option) => ({
        ...option,
        legend: endless,
        choices: option.choices?.map((choice) => ({ ...choice, text: endless })),
      })),
    })),
  }));
  for (const [width, height] of [[1280, 800], [900, 640], [360, 640]]) {
    await panel.page.setViewportSize({ width, height });
    await readAnew();
    const filters = panel.page.locator('#filters');
    const opener = panel.button('search.filters');
    await filters.or(opener).first().waitFor();
    if ((await filters.count()) === 0) {
      await opener.click();
    }
    await filters.locator('label').first().waitFor();
    const box = await filters.boundingBox();
    assert.ok(box.height <= height / 3, `${width}: ${box.height} high`);
    assert.ok(box.x >= 0 && box.x + box.width <= width, `${width}: ${box.width} wide`);
    const spills = await filters.evaluate((element) => {
      const { right } = element.getBoundingClientRect();
      return [...element.querySelectorAll('label, bdi, select, input')].filter(
        (one) => one.tagName !== 'BDI' && one.getBoundingClientRect().right > right + 1,
      ).length;
    });
    assert.equal(spills, 0, `${width}: over the edge`);
    assert.equal(await filters.locator('label').first().getAttribute('title'), endless);
    // Each can be reached, the last one too.
    const last = filters.locator('select, input').last();
    await last.focus();
    const place = await last.boundingBox();
    assert.ok(place.y >= box.y && place.y + place.height <= box.y + box.height + 1, `${width}: out of sight`);
  }
});
