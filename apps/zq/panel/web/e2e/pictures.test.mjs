// Pictures and pages that take their time: a browser has a handful of connections to one program, and none of them may
// keep a person from working.
import assert from 'node:assert/strict';
import { after, afterEach, before, test } from 'node:test';
import { t } from './support/texts.mjs';
import { World } from './support/World.mjs';

const clips = Array.from({ length: 60 }, (_, index) => ({
  film: 'small.mov',
  title: index === 59 ? 'Old harbour' : `Reel ${String(index + 1).padStart(2, '0')}`,
  price: 1,
}));

// A page that the test shows and hides, as one does by choosing a tab.
const init = `
  let seen = 'visible';
  Object.defineProperty(document, 'visibilityState', { get: () => seen });
  window.showPage = (next) => {
    seen = next;
    document.dispatchEvent(new Event('visibilitychange'));
  };`;

let world;
before(async () => (world = await World.start({ clips, seam: true })));
after(() => world?.end());
afterEach(async () => {
  world.seam.release();
  await world.service.goRight();
  await world.closePanels();
});

test('while no picture comes one searches, places, takes back and fills the basket', async () => {
  world.seam.hold({ path: '/icons/' });
  const panel = await world.openPanel();
  const pictures = panel.page.locator('[data-picture] img.there');
  await panel.clips.nth(10).waitFor();
  await panel.page.waitForRequest((request) => request.url().endsWith('/thumbnail'));

  await panel.search('harbour');
  await panel.shows(['Old harbour']);
  await panel.place('Old harbour');
  await panel.piece('Old harbour').waitFor();
  await panel.page.keyboard.press('Control+z');
  await panel.piece('Old harbour').waitFor({ state: 'detached' });
  await panel.clip('Old harbour').focus();
  await panel.page.keyboard.press('b');
  await panel.clip('Old harbour').getByText(t('results.in_basket')).waitFor();
  await panel.search('reel');
  await panel.clip('Reel 01').waitFor();
  await panel.get('project');
  assert.equal(await pictures.count(), 0, 'all that came before the first picture');

  world.seam.release();
  await pictures.first().waitFor();
});

test('while a search takes its time the basket takes what one puts into it', async () => {
  const panel = await world.openPanel();
  await panel.search('reel');
  await panel.clip('Reel 02').waitFor();
  world.seam.hold({ command: 'search' });
  await panel.words.fill('old'); // nobody has asked for that yet
  const busy = panel.page.locator('[role="grid"][aria-busy="true"]');
  await busy.waitFor();
  for (const name of ['Reel 02', 'Reel 03']) {
    await panel.clip(name).focus();
    await panel.page.keyboard.press('b');
    await panel.clip(name).getByText(t('results.in_basket')).waitFor();
  }
  assert.equal(await busy.count(), 1, 'the search still runs');
  world.seam.release();
  await panel.shows(['Old harbour']);
  const kept = async () => (await panel.get('repositories/T7/basket')).clips.map(({ name }) => name);
  await panel.until(async () => (await kept()).includes('Reel 03'), async () => JSON.stringify(await kept()));
  assert.ok((await kept()).includes('Reel 02'), 'the second wish takes nothing from the first');
});

test('a picture that is slow is asked for again until it is there, and one that is there is shown at once', async () => {
  await world.service.goWrong({ path: '/icons/' }, 'delay', { ms: 3000 }, 10_000);
  const panel = await world.openPanel();
  await panel.send('POST', 'settings/clear-cache');
  const asked = [];
  panel.page.on('response', (response) => {
    if (response.url().endsWith('/thumbnail')) {
      asked.push(response.status());
    }
  });
  await panel.search('reel 41');
  const picture = panel.clip('Reel 41').locator('[data-picture] img.there');
  await picture.waitFor();
  assert.ok(asked.includes(202), `nothing was late: ${asked}`);
  assert.equal(await panel.page.getByText(t('results.no_picture')).count(), 0);
});

test('a seventh page opens beside six that nobody looks at, and those hear what they have missed', async () => {
  const panel = await world.openPanel({ init });
  const pages = [panel.page];
  const rests = [];
  for (let count = 1; count < 7; count++) {
    const ends = (how) => pages.at(-1).waitForEvent(how, (request) => request.url().includes('/api/events')).catch(() => undefined);
    rests.push(Promise.race([ends('requestfinished'), ends('requestfailed')]));
    await pages.at(-1).evaluate(() => window.showPage('hidden'));
    if (count === 6) {
      await Promise.all(rests);
    }
    const page = await panel.context.newPage();
    await page.goto(world.origin);
    await page.locator('#search-words').waitFor();
    await page.locator('[role="grid"] [data-index][aria-busy="false"]').first().waitFor();
    pages.push(page);
  }
  const last = pages.at(-1);
  await last.locator('#search-words').fill('harbour');
  const clip = last.locator('[role="grid"] [data-index][aria-busy="false"]').filter({ hasText: 'Old harbour' }).first();
  await clip.focus();
  await last.keyboard.press('p');
  await last.locator('[data-piece]').filter({ hasText: 'Old harbour' }).waitFor();

  const first = pages[0];
  assert.equal(await first.locator('[data-piece]').count(), 0, 'it rests');
  await first.evaluate(() => window.showPage('visible'));
  await first.locator('[data-piece]').filter({ hasText: 'Old harbour' }).waitFor();
  assert.equal(await first.getByText(t('connection.lost')).count(), 0);
});

// What a browser keeps for a page, it keeps for the page's port.
test('after a restart the same browser stands where one was, and a placed clip plays with the service gone', async () => {
  const panel = await world.openPanel({ faults: true });
  const { page } = panel;
  await panel.search('Reel 07');
  await panel.place('Reel 07');
  await panel.piece('Reel 07').waitFor();
  const [{ id }] = (await panel.get('repositories/T7/search?words=Reel%2007')).clips;
  const length = () =>
    page.evaluate(
      async (address) => (await (await fetch(address)).arrayBuffer()).byteLength,
      `/api/repositories/T7/clips/${id}/preview`,
    );
  const whole = await length();
  await page.evaluate(() => localStorage.setItem('zq-panel.kept', 'by this browser'));

  const before = world.origin;
  await world.service.goDown();
  await world.program.end();
  await world.startProgram();
  assert.equal(world.origin, before);
  await page.goto(world.address);
  await panel.piece('Reel 07').waitFor();
  assert.equal(await page.evaluate(() => localStorage.getItem('zq-panel.kept')), 'by this browser');
  assert.equal(await length(), whole);
  assert.equal((await panel.get(`repositories/T7/clips/${id}`)).name, 'Reel 07');
  await panel.piece('Reel 07').focus();
  await page.keyboard.press('Enter');
  const film = page.locator('section.player video');
  await panel.until(
    () => film.evaluateAll((all) => all.some((video) => video.readyState >= 2 && video.error === null)),
    async () => page.locator('section.player').textContent(),
  );
  await world.service.comeBack();
});
