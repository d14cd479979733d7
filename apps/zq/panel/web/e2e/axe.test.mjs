// What a checker of accessibility finds on the main states, in both colours and at the width of a docked panel.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { join } from 'node:path';
import { after, afterEach, before, test } from 'node:test';
import { Panel } from './support/Panel.mjs';
import { build, web } from './support/places.mjs';
import { Program } from './support/Program.mjs';
import { t } from './support/texts.mjs';
import { World } from './support/World.mjs';

const axe = readFileSync(createRequire(import.meta.url).resolve('axe-core/axe.min.js'), 'utf8');

let world;
before(async () => (world = await World.start()));
const found = [];
afterEach(() => world.closePanels());
after(() => world?.end());

async function check(panel, state) {
  const { violations, passes } = await panel.page.evaluate(() =>
    window.axe.run(document, { resultTypes: ['violations'], runOnly: { type: 'tag', values: [
      'wcag2a', 'wcag2aa', 'wcag21a', 'wcag21aa', 'wcag22aa', 'best-practice',
    ] } }),
  );
  assert.ok(passes.length > 10, 'the checker has run');
  found.push(
    ...violations.flatMap(({ id, nodes }) =>
      nodes.map((node) => `${state}: ${id}: ${node.html.slice(0, 200)} ${node.failureSummary}`),
    ),
  );
  const wide = await panel.page.evaluate(() => document.documentElement.scrollWidth - innerWidth);
  if (wide > 0) {
    found.push(`${state}: the page is ${wide} px wider than its window`);
  }
}

// All that a test has found, in one go.
function nothingFound() {
  assert.deepEqual(found.splice(0), []);
}

const looks = [
  { name: 'dark', colorScheme: 'dark', width: 1280 },
  { name: 'light', colorScheme: 'light', width: 1280 },
  { name: 'dark, 360 px', colorScheme: 'dark', width: 360 },
  { name: 'light, 360 px', colorScheme: 'light', width: 360 },
];

for (const { name, ...look } of looks) {
  test(`signed out, in the sign-in and in the list of keys, ${name}`, async () => {
    const panel = await world.openPanel({ ...look, init: axe });
    await panel.clips.first().waitFor();
    await check(panel, 'results');
    await panel.page.locator('header.top .account').click();
    await panel.dialog.locator('form').waitFor();
    await check(panel, 'sign-in');
    await panel.signInRefused();
    await check(panel, 'refused sign-in');
    await panel.page.keyboard.press('Escape');
    await panel.button('keys.title').click();
    await panel.dialog.waitFor();
    await check(panel, 'keys');
    await panel.page.keyboard.press('Escape');
    await panel.search('nothing of that name');
    await panel.sees(t('results.none_title', { words: 'nothing of that name' }));
    await check(panel, 'nothing found');
    await panel.search('');
    nothingFound();
  });
}

for (const { name, ...look } of looks) {
  test(`at work: list, player, sequence, drawers and reports, ${name}`, async () => {
    const panel = await world.openPanel({ ...look, init: axe });
    await panel.clips.first().waitFor();
    if ((await panel.get('repositories/T7')).user === '') {
      await panel.signIn();
      await panel.signedIn();
    }
    if ((await panel.pieces.count()) === 0) {
      for (const clip of ['Red car', 'Sea at noon']) {
        await panel.clip(clip).focus();
        await panel.page.keyboard.press('p');
        await panel.piece(clip).waitFor();
        await panel.page.keyboard.press('b');
      }
    }
    await panel.page.getByRole('button', { name: t('results.list'), exact: true }).click();
    await panel.page.locator('[role="grid"] [role="row"][data-index]').first().waitFor();
    await panel.clips.first().focus();
    await panel.page.keyboard.press('Enter');
    await panel.page.locator('section.player video').waitFor();
    await check(panel, 'list and player');
    await panel.page.getByRole('button', { name: t('results.grid'), exact: true }).click();
    await panel.pieces.first().focus();
    await panel.page.keyboard.press('ArrowRight');
    await check(panel, 'a chosen piece');
    for (const drawer of ['basket', 'tasks', 'log', 'settings']) {
      await panel.openDrawer(drawer);
      await check(panel, drawer);
      await panel.page.keyboard.press('Escape');
      await panel.drawer.waitFor({ state: 'detached' });
    }
    for (const dialog of ['sequence.export', 'sequence.usage']) {
      await panel.button(dialog).click();
      await panel.dialog.waitFor();
      await panel.page.locator('dialog a[download]').first().waitFor();
      await check(panel, dialog);
      await panel.page.keyboard.press('Escape');
      await panel.dialog.waitFor({ state: 'detached' });
    }
    nothingFound();
  });
}

// The pseudo-language is one of the page alone, so the stand-in for the program speaks it.
test('in the pseudo-language every text of the page is from its texts, and has room at 360 px', async () => {
  const mock = new Program(
    process.execPath,
    [join(web, 'scripts/mock-server.mjs'), '--port=0', '--language=qps', '--filled', '--signed-in', `--page=${join(build, 'panel')}`],
    process.env,
  );
  try {
    const panel = await Panel.open(world.browser, await mock.line(), { width: 360 });
    await panel.clips.first().waitFor();
    const plain = () =>
      panel.page.evaluate(() =>
        [...document.querySelectorAll('button, label, p, h1, h2, h3, legend, dt')]
          .filter((element) => element.offsetParent !== null)
          .filter((element) => element.querySelector('bdi') === null && element.closest('[data-index], [data-piece], bdi, .legal') === null)
          .map((element) => element.textContent.trim())
          .filter((text) => /[A-Za-z]{2}/.test(text) && !text.includes('[')),
      );
    const room = () => panel.page.evaluate(() => document.documentElement.scrollWidth - innerWidth);
    assert.deepEqual(await plain(), []);
    assert.equal(await room(), 0);
    const buttons = panel.page.locator('header.top nav button.panel');
    for (let index = 0; index < (await buttons.count()); index++) {
      await buttons.nth(index).click();
      await panel.drawer.waitFor();
      assert.deepEqual(await plain(), [], await panel.drawer.locator('h2').first().textContent());
      assert.equal(await room(), 0);
      await panel.page.keyboard.press('Escape');
    }
    // Some of the stand-in's clips have no picture, and the browser says so.
    assert.deepEqual(panel.problems.filter((problem) => !/404 .*\/thumbnail$/.test(problem)), []);
    await panel.context.close();
  } finally {
    await mock.end();
  }
});
