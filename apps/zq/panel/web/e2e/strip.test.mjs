// The strip: placing at a position, reordering and trimming by mouse, the states of pieces, and a long sequence.
import assert from 'node:assert/strict';
import { readdirSync, rmSync } from 'node:fs';
import { join } from 'node:path';
import { after, afterEach, before, test } from 'node:test';
import { becomes, openSequence, stripClips, three } from './support/sequences.mjs';
import { t } from './support/texts.mjs';
import { World } from './support/World.mjs';

let world;
before(async () => (world = await World.start({ clips: stripClips })));
afterEach(() => world.closePanels());
after(() => world?.end());

test('a clip that is dropped between two pieces lies between them, to the frame of its marks', async () => {
  const { panel, order, told } = await openSequence(world, three);
  const between = await panel.pieces.nth(1).boundingBox();
  const track = await panel.page.locator('footer.strip .track').boundingBox();
  const target = { x: between.x - track.x + 6, y: between.y - track.y + 10 };
  await panel.clip('Blue').locator('[data-picture]').dragTo(panel.page.locator('footer.strip .track'), { targetPosition: target });
  await becomes(panel, order, ['Red', 'Blue', 'Green', 'Blue']);
  assert.deepEqual((await told()).map((piece) => piece.start), [0, 2, 8, 10], 'what is behind it moves on');
});

test('a mouse moves a piece, and trims it at either end, each in one step to take back', async () => {
  const { panel, order, told } = await openSequence(world, three);
  const { page } = panel;
  const middle = async (index) => {
    const box = await panel.pieces.nth(index).boundingBox();
    return { x: box.x + box.width / 2, y: box.y + box.height / 2, width: box.width, left: box.x };
  };
  const drag = async (from, to) => {
    await page.mouse.move(from.x, from.y);
    await page.mouse.down();
    await page.mouse.move((from.x + to.x) / 2, from.y, { steps: 4 });
    await page.mouse.move(to.x, from.y, { steps: 4 });
    await page.mouse.up();
  };
  const first = await middle(0);
  const last = await middle(2);
  await drag(first, { x: last.x + last.width / 4 });
  await becomes(panel, order, ['Green', 'Blue', 'Red']);
  await page.keyboard.press('Control+z');
  await becomes(panel, order, ['Red', 'Green', 'Blue']);

  const blue = await middle(2);
  const second = blue.width / 2; // pixels, as the piece lasts two
  await drag({ x: blue.left + 3, y: blue.y }, { x: blue.left + 3 + second / 2 });
  await panel.until(async () => (await told())[2].in > 1, () => 'it was not trimmed');
  const { in: begin, out: end } = (await told())[2];
  assert.ok(Math.abs(begin - 1.5) < 0.05, `in ${begin}`);
  assert.ok(Math.abs(begin * 25 - Math.round(begin * 25)) < 1e-3, 'on a frame');
  assert.equal(end, 3);
  await panel.page.keyboard.press('Control+z');
  await panel.until(async () => (await told())[2].in === 1, () => 'one step takes all of it back');

  const red = await middle(0);
  await drag({ x: red.left + red.width - 4, y: red.y }, { x: red.left + red.width - 4 - second });
  await panel.until(async () => (await told())[0].out < 2, () => 'it was not trimmed');
  const trimmed = await told();
  assert.ok(Math.abs(trimmed[0].out - 1) < 0.05, `out ${trimmed[0].out}`);
  assert.ok(Math.abs(trimmed[1].start - trimmed[0].out) < 0.05, 'what is behind it moves up');
});

test('preview, downloading, full and missing are told in the strip by word and by shape', async () => {
  const { panel } = await openSequence(world, [['Red', 0, 2]]);
  const { page } = panel;
  const looks = new Map();
  const look = async (state) => {
    await panel.pieces.first().getByText(t(`state.${state}`)).waitFor();
    const shape = await panel.pieces.first().evaluate((piece) => {
      const { borderStyle, backgroundImage } = getComputedStyle(piece);
      return [piece.querySelector('.state path').getAttribute('d'), borderStyle, backgroundImage, piece.querySelector('.progress') !== null].join(' | ');
    });
    looks.set(state, shape);
  };
  await look('preview');
  await panel.signIn();
  await panel.signedIn();
  await panel.clip('Red').focus();
  await page.keyboard.press('b');
  await panel.openDrawer('basket');
  await panel.drawer.locator('.clips li', { hasText: 'Red' }).waitFor();
  await panel.button('basket.buy_credits', panel.drawer).click();
  await panel.button('basket.buy_now', panel.dialog).click();
  await panel.drawer.getByText(t('basket.purchase.done'), { exact: true }).waitFor();
  await world.service.goWrong({ path: '/full/' }, 'stall', { bytes: 20_000, ms: 60_000 }, 50);
  await panel.button('basket.fetch', panel.drawer).click();
  await look('downloading');
  await panel.openDrawer('tasks');
  await panel.button('tasks.cancel', panel.drawer).click();
  await panel.until(async () => (await panel.get('tasks')).tasks.at(-1).state === 'cancelled');
  await world.service.goRight();
  await panel.openDrawer('basket');
  await panel.button('basket.fetch', panel.drawer).click();
  await look('full');
  const media = join(world.environment.ZQ_HOME, 'media');
  readdirSync(media, { recursive: true }).forEach((file) => rmSync(join(media, String(file)), { force: true, recursive: true }));
  await page.reload();
  await look('missing');
  assert.equal(new Set(looks.values()).size, 4, [...looks].join('\n'));
  const words = [...looks.keys()].map((state) => t(`state.${state}`));
  assert.equal(new Set(words).size, 4);
});

test('two hundred pieces lie to scale with names to read, are seen at once with a key, and are zoomed and scrolled', async () => {
  const lengths = [1.2, 2, 3.6, 2.4];
  const pieces = Array.from({ length: 200 }, (_, index) => [index % 2 === 0 ? 'Red' : 'Blue', 1, 1 + lengths[index % 4]]);
  const { panel, told } = await openSequence(world, pieces);
  const { page } = panel;
  const durations = (await told()).map((piece) => piece.out - piece.in);
  const track = page.locator('footer.strip .track');
  const boxes = () => panel.pieces.evaluateAll((list) => list.map((piece) => piece.getBoundingClientRect().width + 1));
  const scaleOf = async () => {
    const scales = (await boxes()).map((width, index) => width / durations[index]);
    assert.ok(Math.max(...scales) - Math.min(...scales) < 0.02 * Math.max(...scales) + 1, `${Math.min(...scales)} to ${Math.max(...scales)}`);
    return scales.reduce((sum, scale) => sum + scale, 0) / scales.length;
  };
  const cutOff = () => panel.pieces.locator('.name').evaluateAll((names) =>
    names.filter((name) => name.scrollWidth > name.clientWidth + 1 || getComputedStyle(name).opacity === '0').length);
  const readable = await scaleOf();
  assert.ok((await cutOff()) <= 50, `${await cutOff()} names are cut off`);
  assert.ok(await track.evaluate((scroller) => scroller.scrollWidth > scroller.clientWidth * 3));

  await panel.pieces.first().focus();
  await page.keyboard.press('0');
  await panel.until(() => track.evaluate((scroller) => scroller.scrollWidth <= scroller.clientWidth), () => 'not all is seen');
  assert.ok((await panel.pieces.last().boundingBox()).x < 1280);
  await page.keyboard.press('0');
  await panel.until(async () => Math.abs((await scaleOf()) - readable) < 1, () => 'nor back again');

  // The chosen piece stays in view while the scale changes.
  await page.keyboard.press('End');
  for (let step = 0; step < 9; step++) {
    await page.keyboard.press('ArrowLeft');
  }
  const chosen = page.locator('[data-piece][aria-selected="true"]');
  for (const key of ['+', '+', '-', '-', '-', '+']) {
    await page.keyboard.press(key);
    await panel.until(async () => {
      const box = await chosen.boundingBox();
      return box.x + box.width > 0 && box.x < 1280;
    }, () => `the piece is gone at ${key}`);
  }
  await panel.button('sequence.zoom_in').click();
  await panel.until(async () => (await scaleOf()) > readable * 1.3);
  await panel.button('sequence.zoom_fit').click();
  await panel.until(() => track.evaluate((scroller) => scroller.scrollWidth <= scroller.clientWidth));

  // A wheel with Ctrl makes it larger where the pointer is.
  const aim = await panel.pieces.nth(120).boundingBox();
  await page.mouse.move(aim.x + aim.width / 2, aim.y + 20);
  await page.keyboard.down('Control');
  for (let step = 0; step < 10; step++) {
    await page.mouse.wheel(0, -100);
  }
  await page.keyboard.up('Control');
  await panel.until(() => track.evaluate((scroller) => scroller.scrollLeft > 1000));
  const zoomed = await panel.pieces.nth(120).boundingBox();
  assert.ok(zoomed.x < aim.x + aim.width / 2 + 2 && zoomed.x + zoomed.width > aim.x - 2, `${zoomed.x} from ${aim.x}`);
});
