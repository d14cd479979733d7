// The strip: placing at a position, reordering and trimming by mouse and by finger, playing the whole sequence, the
// states of pieces, and a long sequence.
import assert from 'node:assert/strict';
import { readdirSync, rmSync } from 'node:fs';
import { join } from 'node:path';
import { after, afterEach, before, test } from 'node:test';
import { t } from './support/texts.mjs';
import { World } from './support/World.mjs';

const clips = [
  { film: 'small.mov', title: 'Red', price: 9 },
  { film: 'fast.mp4', title: 'Green', price: 19 },
  { film: 'small.mov', title: 'Blue', price: 5 },
];

let world;
before(async () => (world = await World.start({ clips })));
afterEach(() => world.closePanels());
after(() => world?.end());

let number = 0;

// A panel that works on a sequence of its own, with these pieces: [title, in, out].
async function openSequence(pieces, options = {}) {
  const panel = await world.openPanel(options);
  await panel.clips.nth(2).waitFor();
  const name = `Cut ${++number}`;
  await panel.button('sequence.new').click();
  await panel.page.getByRole('textbox', { name: t('sequence.new_name') }).fill(name);
  await panel.page.keyboard.press('Enter');
  const { clips: found } = await panel.get('repositories/T7/search?words=');
  const places = pieces.map(([title, from, to]) => {
    const clip = found.find((other) => other.name === title);
    return { repository: 'T7', clip: clip.id, in: from, out: to };
  });
  await panel.page.evaluate(async ([address, list]) => {
    for (const piece of list) {
      await fetch(address, { method: 'POST', headers: { 'Content-Type': 'application/json' }, body: JSON.stringify(piece) });
    }
  }, [`/api/sequences/${encodeURIComponent(name)}/pieces`, places]);
  await panel.until(async () => (await panel.pieces.count()) === pieces.length);
  const told = async () => (await panel.get(`sequences/${encodeURIComponent(name)}`)).pieces;
  // As the page shows it and as the program has it; while they differ, neither is right yet.
  const order = async () => {
    const shown = (await panel.pieces.locator('.name').allTextContents()).map((text) => text.trim());
    const kept = (await told()).map((piece) => piece.name);
    return JSON.stringify(shown) === JSON.stringify(kept) ? shown : { shown, kept };
  };
  return { panel, name, told, order };
}

const three = [['Red', 0, 2], ['Green', 0, 2], ['Blue', 1, 3]];
const becomes = (panel, order, wanted) =>
  panel.until(async () => JSON.stringify(await order()) === JSON.stringify(wanted), async () => JSON.stringify(await order()));

test('a clip that is dropped between two pieces lies between them, to the frame of its marks', async () => {
  const { panel, order, told } = await openSequence(three);
  const between = await panel.pieces.nth(1).boundingBox();
  const track = await panel.page.locator('footer.strip .track').boundingBox();
  const target = { x: between.x - track.x + 6, y: between.y - track.y + 10 };
  await panel.clip('Blue').locator('[data-picture]').dragTo(panel.page.locator('footer.strip .track'), { targetPosition: target });
  await becomes(panel, order, ['Red', 'Blue', 'Green', 'Blue']);
  assert.deepEqual((await told()).map((piece) => piece.start), [0, 2, 8, 10], 'what is behind it moves on');
});

test('a mouse moves a piece, and trims it at either end, each in one step to take back', async () => {
  const { panel, order, told } = await openSequence(three);
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

test('a finger that rests on a piece moves it, and one that swipes scrolls', async () => {
  const pieces = Array.from({ length: 12 }, (_, index) => [['Red', 'Green', 'Blue'][index % 3], 0, 2]);
  const { panel, order } = await openSequence(pieces, { hasTouch: true, isMobile: true, width: 360, height: 760 });
  const { page } = panel;
  const touch = await panel.context.newCDPSession(page);
  const send = (type, x, y) =>
    touch.send('Input.dispatchTouchEvent', { type, touchPoints: type === 'touchEnd' ? [] : [{ x, y }] });
  const track = page.locator('footer.strip .track');
  const before = await order();
  const box = await panel.pieces.nth(1).boundingBox();
  const from = { x: box.x + box.width / 2, y: box.y + box.height / 2 };

  await send('touchStart', from.x, from.y);
  for (let step = 1; step <= 8; step++) {
    await send('touchMove', from.x - step * 10, from.y);
  }
  await panel.until(() => track.evaluate((scroller) => scroller.scrollLeft > 20), () => 'it does not scroll');
  // A strip that still runs out is not at rest under the next finger.
  await track.evaluate((scroller) => {
    window.rested = new Promise((resolve) => scroller.addEventListener('scrollend', resolve, { once: true }));
  });
  await send('touchEnd');
  await page.evaluate(() => window.rested);
  assert.deepEqual(await order(), before);
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
  const { panel, told } = await openSequence([['Red', 0, 4]], { hasTouch: true, isMobile: true, width: 360, height: 760 });
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

// What the player shows at each picture that the screen draws.
const watch = (panel) => panel.page.evaluate(() => {
  window.seen = [];
  const look = () => {
    const films = [...document.querySelectorAll('section.player video')];
    const front = films.findIndex((film) => film.classList.contains('front'));
    const film = films[front];
    const time = Number(document.querySelector('section.player [role="slider"]')?.getAttribute('aria-valuenow'));
    if (film) {
      window.seen.push({ front, clip: film.currentSrc.match(/clips\/(\w+)/)?.[1] ?? '', ready: film.readyState >= 2 && !film.seeking, there: film.readyState >= 2 || film.seeking, at: film.currentTime, frame: time });
    }
    requestAnimationFrame(look);
  };
  look();
});

test('the whole sequence plays, piece after piece within its points, without a picture missing at a cut', async () => {
  const { panel, told } = await openSequence([['Red', 1, 2], ['Green', 0.5, 1.5], ['Blue', 2, 3]]);
  const { page } = panel;
  await panel.button('sequence.play_all').click();
  const which = page.getByRole('group', { name: t('player.what') });
  assert.equal(await panel.button('player.sequence', which).getAttribute('aria-pressed'), 'true');
  assert.equal(await panel.button('player.clip', which).getAttribute('aria-pressed'), 'false');
  await page.locator('section.player video.front').waitFor();
  await watch(panel);
  await panel.until(() => page.evaluate(() => window.seen.length > 0 && window.seen.at(-1).ready));
  await panel.button('sequence.play_all').waitFor({ timeout: 30_000 });
  const seen = await page.evaluate(() => window.seen);
  const begun = seen.slice(seen.findIndex((look) => look.ready));
  assert.ok(begun.every((look) => look.there), 'there is a picture all the time');
  assert.ok(begun.every((look, index) => look.front === (begun[index - 1] ?? look).front || look.ready), 'at each cut at once');
  const clipsOf = (await told()).map((piece) => piece.clip);
  assert.deepEqual(begun.map((look) => look.clip).filter((clip, index, all) => clip !== all[index - 1]), clipsOf);
  assert.deepEqual(begun.map((look) => look.front).filter((front, index, all) => front !== all[index - 1]), [0, 1, 0]);
  for (const piece of await told()) {
    const times = begun.filter((look) => look.clip === piece.clip).map((look) => look.at);
    assert.ok(Math.min(...times) >= piece.in - 0.001, `${piece.name} from ${Math.min(...times)}`);
    assert.ok(Math.max(...times) < piece.out + 0.1, `${piece.name} to ${Math.max(...times)}`);
  }
  assert.ok(begun.every((look, index) => index === 0 || look.frame >= begun[index - 1].frame), 'the playhead goes one way');
  const { duration, rate } = await panel.get(`sequences/${encodeURIComponent(`Cut ${number}`)}`);
  assert.equal(begun.at(-1).frame, Math.round((duration * rate[0]) / rate[1]) - 1, 'it ends on the last frame');
  const head = await page.locator('footer.strip .playhead').boundingBox();
  const last = await panel.pieces.last().boundingBox();
  assert.ok(Math.abs(head.x - last.x - last.width) < 12, 'the playhead is where the last piece ends');
});

test('the ruler, the space bar, J, K, L and cuts work on the sequence while the focus is in the strip', async () => {
  const { panel } = await openSequence(three);
  const { page } = panel;
  const shown = (key) => panel.button(key, page.getByRole('group', { name: t('player.what') }));
  const position = page.locator('section.player [role="slider"]');
  const frame = async () => Number(await position.getAttribute('aria-valuenow'));
  await panel.clip('Blue').focus();
  await page.keyboard.press('Enter');
  await panel.until(async () => (await shown('player.clip').getAttribute('aria-pressed')) === 'true');
  const green = await panel.pieces.nth(1).boundingBox();
  const ruler = await page.locator('footer.strip .ruler').boundingBox();
  await page.mouse.click(green.x + green.width / 2, ruler.y + 6);
  assert.equal(await shown('player.sequence').getAttribute('aria-pressed'), 'true');
  await panel.until(async () => Math.abs((await frame()) - 75) <= 1, async () => `frame ${await frame()}`);
  const clip = (await panel.get(`sequences/${encodeURIComponent(`Cut ${number}`)}`)).pieces[1].clip;
  await page.locator(`section.player video.front[src*="clips/${clip}/"]`).waitFor();
  await panel.until(() => page.locator('section.player video.front').evaluate((film) => Math.abs(film.currentTime - 1.02) < 0.07));

  await panel.pieces.first().focus();
  await page.keyboard.press('ArrowUp');
  assert.equal(await frame(), 50, 'the cut before');
  await page.keyboard.press('ArrowDown');
  assert.equal(await frame(), 100, 'the cut behind');
  const speed = page.locator('section.player .speed');
  await page.keyboard.press('j');
  await page.keyboard.press('j');
  await speed.filter({ hasText: '-2' }).waitFor();
  await panel.until(async () => (await frame()) < 45, async () => `backward over the cut, at ${await frame()}`);
  await page.keyboard.press('k');
  await speed.waitFor({ state: 'detached' });
  await panel.button('sequence.play_all').waitFor();
  await page.keyboard.press(' ');
  await panel.button('sequence.pause_all').waitFor();
  await page.keyboard.press(' ');
  await panel.button('sequence.play_all').waitFor();
  const stood = await frame();
  await position.focus();
  await page.keyboard.press('ArrowRight');
  assert.equal(await frame(), stood + 1);
  await page.keyboard.press('f');
  await panel.until(async () => (await shown('player.clip').getAttribute('aria-pressed')) === 'true');
});

test('a change of the sequence leaves the frame that is on screen where it is', async () => {
  const { panel, order } = await openSequence(three);
  const { page } = panel;
  const frame = async () => Number(await page.locator('section.player [role="slider"]').getAttribute('aria-valuenow'));
  const green = await panel.pieces.nth(1).boundingBox();
  const ruler = await page.locator('footer.strip .ruler').boundingBox();
  await page.mouse.click(green.x + green.width / 2, ruler.y + 6);
  await panel.until(async () => (await frame()) > 50);
  const stood = await frame();
  await panel.pieces.nth(1).focus();
  await page.keyboard.press('Alt+ArrowLeft');
  await becomes(panel, order, ['Green', 'Red', 'Blue']);
  await panel.until(async () => (await frame()) === stood - 50, async () => `frame ${await frame()}, before ${stood}`);
});

test('another quality is seen in the sequence too, at the same frame', async () => {
  const { panel } = await openSequence([['Green', 0, 2]]);
  const { page } = panel;
  const front = page.locator('section.player video.front');
  const piece = await panel.pieces.first().boundingBox();
  const ruler = await page.locator('footer.strip .ruler').boundingBox();
  await page.mouse.click(piece.x + piece.width / 2, ruler.y + 6);
  const film = () => front.evaluate((video) => ({ address: video.currentSrc, at: video.currentTime, ready: video.readyState >= 2 }));
  await panel.until(async () => (await film()).ready && (await film()).at > 0.5);
  const before = await film();
  await page.locator('section.player input[type="checkbox"]').click();
  await panel.until(async () => (await film()).address !== before.address && (await film()).ready, async () => JSON.stringify(await film()));
  assert.ok(Math.abs((await film()).at - before.at) < 1e-3, `at ${(await film()).at}, before ${before.at}`);
  await page.locator('section.player input[type="checkbox"]').click();
  await panel.until(async () => (await film()).address === before.address && (await film()).ready);
});

test('a piece whose preview cannot be had is told, and the sequence plays on behind it', async () => {
  const { panel, told } = await openSequence([['Red', 0, 1], ['Green', 0, 1], ['Blue', 0, 1]], { faults: true });
  const { page } = panel;
  const [, gone, last] = await told();
  await page.route(`**/clips/${gone.clip}/preview*`, (route) => route.abort());
  await panel.button('sequence.play_all').click();
  await page.locator('section.player [role="alert"]', { hasText: t('player.failed') }).waitFor();
  await page.locator(`section.player video.front[src*="clips/${last.clip}/"]`).waitFor();
  await page.locator('section.player [role="alert"]').waitFor({ state: 'detached' });
  await panel.button('sequence.play_all').waitFor();
});

test('preview, downloading, full and missing are told in the strip by word and by shape', async () => {
  const { panel } = await openSequence([['Red', 0, 2]]);
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
  const { panel, told } = await openSequence(pieces);
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
