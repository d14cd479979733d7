// The strip under a finger: scrolling, moving and trimming.
import assert from 'node:assert/strict';
import { after, afterEach, before, test } from 'node:test';
import { becomes, openSequence, stripClips } from './support/sequences.mjs';
import { World } from './support/World.mjs';

let world;
before(async () => (world = await World.start({ clips: stripClips })));
afterEach(() => world.closePanels());
after(() => world?.end());

test('a finger that rests on a piece moves it, and one that swipes scrolls', async () => {
  const pieces = Array.from({ length: 12 }, (_, index) => [['Red', 'Green', 'Blue'][index % 3], 0, 2]);
  const { panel, order } = await openSequence(world, pieces, { hasTouch: true, isMobile: true, width: 360, height: 760 });
  const { page } = panel;
  const touch = await panel.context.newCDPSession(page);
  const send = (type, x, y) =>
    touch.send('Input.dispatchTouchEvent', { type, touchPoints: type === 'touchEnd' ? [] : [{ x, y }] });
  const track = page.locator('footer.strip .track');
  const before = await order();
  const box = await panel.pieces.nth(1).boundingBox();
  const from = { x: box.x + box.width / 2, y: box.y + box.height / 2 };

  // However busy the machine is, this finger has not rested when it begins to move: what waits for a moment waits on.
  await page.evaluate(() => {
    const { setTimeout, clearTimeout } = window;
    const waiting = new Set();
    let last = 1e9;
    window.setTimeout = (work, wait_ms, ...more) => {
      if (!(wait_ms > 200 && wait_ms < 900)) {
        return setTimeout(work, wait_ms, ...more);
      }
      waiting.add(++last);
      return last;
    };
    window.clearTimeout = (number) => waiting.delete(number) || clearTimeout(number);
    window.moments = { waiting, goOn: () => Object.assign(window, { setTimeout, clearTimeout }) };
  });
  await send('touchStart', from.x, from.y);
  await panel.until(() => page.evaluate(() => window.moments.waiting.size > 0), () => 'nothing waits for the finger to rest');
  for (let step = 1; step <= 8; step++) {
    await send('touchMove', from.x - step * 10, from.y);
  }
  await panel.until(() => track.evaluate((scroller) => scroller.scrollLeft > 20), () => 'it does not scroll');
  await panel.until(() => page.evaluate(() => window.moments.waiting.size === 0), () => 'it still waits for the finger to rest');
  // A strip that still runs out is not at rest under the next finger.
  await track.evaluate((scroller) => {
    window.rested = new Promise((resolve) => scroller.addEventListener('scrollend', resolve, { once: true }));
  });
  await send('touchEnd');
  await page.evaluate(() => window.rested);
  assert.deepEqual(await order(), before);
  await page.evaluate(() => window.moments.goOn());
  await track.evaluate((scroller) => (scroller.scrollLeft = 0));

  const third = await panel.pieces.nth(2).boundingBox();
  await send('touchStart', from.x, from.y);
  await page.locator('[data-piece].dragged').waitFor();
  const to = third.x + third.width * 0.75;
  for (let step = 1; step <= 8; step++) {
    await send('touchMove', from.x + ((to - from.x) * step) / 8, from.y);
  }
  await page.locator('footer.strip .marker').waitFor();
  assert.equal(await track.evaluate((scroller) => scroller.scrollLeft), 0, 'it does not scroll meanwhile');
  await send('touchEnd');
  await becomes(panel, order, ['Red', 'Blue', 'Green', ...before.slice(3)]);
});

test('a finger trims the chosen piece by its edge', async () => {
  const { panel, told } = await openSequence(world, [['Red', 0, 4]], { hasTouch: true, isMobile: true, width: 360, height: 760 });
  const touch = await panel.context.newCDPSession(panel.page);
  const send = (type, x, y) =>
    touch.send('Input.dispatchTouchEvent', { type, touchPoints: type === 'touchEnd' ? [] : [{ x, y }] });
  await panel.pieces.first().tap();
  const box = await panel.pieces.first().boundingBox();
  const y = box.y + box.height / 2;
  await send('touchStart', box.x + box.width - 10, y);
  for (let step = 1; step <= 6; step++) {
    await send('touchMove', box.x + box.width - 10 - (step * box.width) / 12, y);
  }
  await send('touchEnd');
  await panel.until(async () => (await told())[0].out < 4, () => 'it was not trimmed');
  assert.ok(Math.abs((await told())[0].out - 2) < 0.1, `out ${(await told())[0].out}`);
});
