// A finger that carries a clip from the results into the strip.
import assert from 'node:assert/strict';
import { after, afterEach, before, test } from 'node:test';
import { becomes, openSequence, stripClips, three } from './support/sequences.mjs';
import { World } from './support/World.mjs';

let world;
before(async () => (world = await World.start({ clips: stripClips })));
afterEach(() => world.closePanels());
after(() => world?.end());

test('a finger that rests on a result carries it between two pieces, and one that swipes scrolls the results', async () => {
  const { panel, order } = await openSequence(world, three, { hasTouch: true, isMobile: true, width: 360, height: 760 });
  const { page } = panel;
  const touch = await panel.context.newCDPSession(page);
  const send = (type, x, y) =>
    touch.send('Input.dispatchTouchEvent', { type, touchPoints: type === 'touchEnd' || type === 'touchCancel' ? [] : [{ x, y }] });
  const middle = async (item) => {
    const box = await item.boundingBox();
    return { x: box.x + box.width / 2, y: box.y + box.height / 2 };
  };
  const to = async (from, target) => {
    for (let step = 1; step <= 8; step++) {
      await send('touchMove', from.x + ((target.x - from.x) * step) / 8, from.y + ((target.y - from.y) * step) / 8);
    }
  };
  const results = page.locator('[role="grid"]');
  const carried = page.locator('footer.strip .carried');
  const marker = page.locator('footer.strip .marker');

  const from = await middle(panel.clip('Long').locator('.name'));
  const second = await panel.pieces.nth(1).boundingBox();
  const between = { x: second.x + 6, y: second.y + 20 };
  await send('touchStart', from.x, from.y);
  await carried.getByText('Long').waitFor();
  await to(from, between);
  await marker.waitFor();
  await send('touchEnd');
  const placed = ['Red', 'Long', 'Green', 'Blue'];
  await becomes(panel, order, placed);
  await carried.waitFor({ state: 'detached' });

  // What is let go of elsewhere is placed nowhere.
  await send('touchStart', from.x, from.y);
  await carried.waitFor();
  await to(from, { x: from.x, y: from.y - 30 });
  assert.equal(await marker.count(), 0);
  await send('touchEnd');
  await carried.waitFor({ state: 'detached' });

  // However busy the machine is, this finger has not rested when it begins to move.
  await results.evaluate((grid) => (grid.querySelector('[role="rowgroup"]').style.minHeight = '3000px'));
  await page.evaluate(() => {
    const { setTimeout } = window;
    window.setTimeout = (work, ms, ...more) => (ms === 380 ? 0 : setTimeout(work, ms, ...more));
  });
  await send('touchStart', from.x, from.y);
  await to(from, { x: from.x, y: from.y - 90 });
  await panel.until(() => results.evaluate((grid) => grid.scrollTop > 20), () => 'it does not scroll');
  await send('touchEnd');
  assert.equal(await carried.count(), 0);
  assert.deepEqual(await order(), placed);
});
