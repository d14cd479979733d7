// The player: frames, speeds, marks, the quality of previews; and previews that play under the pointer.
import assert from 'node:assert/strict';
import { after, afterEach, before, test } from 'node:test';
import { t } from './support/texts.mjs';
import { World } from './support/World.mjs';

const clips = [
  { film: 'small.mov', title: 'At 25', price: 9 },
  { film: 'large.mp4', title: 'At 23.976', price: 49 },
  { film: 'ntsc.mp4', title: 'At 29.97', price: 19 },
  { film: 'long.mp4', title: 'Long', price: 3 },
];

let world;
before(async () => (world = await World.start({ clips })));
afterEach(() => world.closePanels());
after(() => world?.end());

const film = (panel) => panel.page.locator('section.player video');
const at = (panel) => film(panel).evaluate((video) => video.currentTime);
const slider = (panel) => panel.page.getByRole('slider', { name: t('player.position') });
const transport = (panel, key) => panel.page.locator('section.player').getByRole('button', { name: t(key), exact: true });

// Plays the clip and stops it. From then on the frame that the browser has drawn last is known.
async function openClip(panel, title) {
  await panel.clip(title).focus();
  await panel.page.keyboard.press('Enter');
  await panel.until(async () => (await film(panel).count()) === 1 && (await at(panel)) > 0, () => 'it does not play');
  await film(panel).evaluate((video) => {
    const note = (_, { mediaTime }) => {
      video.drawn = mediaTime;
      video.requestVideoFrameCallback(note);
    };
    video.requestVideoFrameCallback(note);
  });
  await panel.page.keyboard.press('k');
  await slider(panel).focus();
}

// Waits until that frame, counted at the rate, is the one that is drawn.
async function draws(panel, frame, rate) {
  const drawn = () => film(panel).evaluate((video, perSecond) => (video.drawn ?? -1) * perSecond, rate);
  await panel.until(async () => Math.abs((await drawn()) - frame) < 0.1, async () => `frame ${await drawn()} instead of ${frame}`);
}

for (const [title, rate, second] of [['At 25', 25, 25], ['At 23.976', 24000 / 1001, 24], ['At 29.97', 30000 / 1001, 30]]) {
  test(`${title} frames a second each step shows the very next frame, and the one before`, async () => {
    const panel = await world.openPanel();
    await openClip(panel, title);
    const { page } = panel;
    await page.keyboard.press('End');
    await page.keyboard.press('Home');
    await draws(panel, 0, rate);
    for (let frame = 1; frame <= 8; frame++) {
      await page.keyboard.press('ArrowRight');
      await draws(panel, frame, rate);
    }
    for (let frame = 18; frame <= 48; frame += 10) {
      await page.keyboard.press('Shift+ArrowRight');
      await draws(panel, frame, rate);
    }
    await page.keyboard.press('ArrowLeft');
    await draws(panel, 47, rate);
    const code = `00:00:01${second === 30 ? ';' : ':'}${String(47 - second).padStart(2, '0')}`;
    assert.equal(await page.locator('section.player .transport .time').first().textContent(), code);
    await page.keyboard.down('k');
    await page.keyboard.press('l');
    await draws(panel, 48, rate);
    await page.keyboard.press('j');
    await draws(panel, 47, rate);
    await page.keyboard.up('k');
  });
}

test('J, K and L go through the speeds, backward too, and the space bar plays and pauses', async () => {
  const panel = await world.openPanel();
  await openClip(panel, 'Long'); // at no speed does it end while something is looked at
  const { page } = panel;
  const speed = () => film(panel).evaluate((video) => (video.paused ? 0 : video.playbackRate));
  const sign = page.locator('section.player .speed');
  await page.keyboard.press('Home');
  for (const wanted of [1, 2, 4]) {
    await page.keyboard.press('l');
    await panel.until(async () => (await speed()) === wanted, async () => `${await speed()} instead of ${wanted}`);
  }
  await panel.until(async () => (await sign.textContent()) === '4 ×');
  await page.keyboard.press('k');
  await panel.until(async () => (await speed()) === 0);
  const stood = await at(panel);
  assert.ok(stood > 0);
  const signs = await panel.notes('section.player .speed');
  await page.keyboard.press('j');
  await page.keyboard.press('j');
  await panel.until(async () => (await signs()).includes('-2 ×'), async () => JSON.stringify(await signs()));
  await panel.until(async () => (await at(panel)) < stood, () => 'it does not run backward');
  await panel.until(async () => (await at(panel)) === 0, () => 'nor to the beginning');
  await sign.waitFor({ state: 'detached' });
  await page.keyboard.press(' ');
  await panel.until(async () => (await speed()) === 1);
  await page.keyboard.press(' ');
  await panel.until(async () => (await speed()) === 0);
});

test('the marked range is placed frame by frame as it was marked, at 29.97 too', async () => {
  const panel = await world.openPanel();
  await openClip(panel, 'At 29.97');
  const { page } = panel;
  const rate = 30000 / 1001;
  await page.keyboard.press('Home');
  await page.keyboard.press('Shift+ArrowRight');
  await page.keyboard.press('i');
  await page.keyboard.press('Shift+ArrowRight');
  await page.keyboard.press('Shift+ArrowRight');
  await page.keyboard.press('o');
  await page.keyboard.press('Shift+I');
  await draws(panel, 10, rate);
  await page.keyboard.press('Shift+O');
  await draws(panel, 30, rate);
  await page.keyboard.press('p');
  await panel.piece('At 29.97').waitFor();
  const [piece] = (await panel.get(`sequences/${encodeURIComponent(t('sequence.first_name'))}`)).pieces;
  assert.deepEqual([piece.sourceIn, piece.sourceOut], ['00:00:00;10', '00:00:01;01'], 'the out point is behind its frame');
  assert.ok(Math.abs(piece.in * rate - 10) < 1e-3, `in at frame ${piece.in * rate}`);
  assert.ok(Math.abs(piece.out * rate - 31) < 1e-3, `out at frame ${piece.out * rate}`);
  await page.keyboard.press('x');
  await panel.page.keyboard.press('p');
  await panel.until(async () => (await panel.pieces.count()) === 2);
  const whole = (await panel.get(`sequences/${encodeURIComponent(t('sequence.first_name'))}`)).pieces[1];
  assert.equal(whole.in, 0, 'without marks the whole clip is placed');
  assert.ok(Math.abs(whole.out - whole.clipDuration) < 1e-3);
});

test('the marked range plays from its first frame to its last', async () => {
  const panel = await world.openPanel();
  await openClip(panel, 'At 25');
  const { page } = panel;
  await page.keyboard.press('Home');
  await page.keyboard.press('Shift+ArrowRight');
  await page.keyboard.press('i');
  await page.keyboard.press('Shift+ArrowRight');
  await page.keyboard.press('o');
  await page.keyboard.press('Home');
  // The range is shorter than a busy machine may take to look.
  await film(panel).evaluate((video) => video.addEventListener('play', () => (video.dataset.played = 'yes'), { once: true }));
  await transport(panel, 'player.play_range').click();
  await panel.until(() => film(panel).evaluate((video) => video.dataset.played === 'yes' && video.paused));
  await draws(panel, 20, 25);
});

test('another quality is another film at the same frame, and going back gives the first one', async () => {
  const panel = await world.openPanel();
  await openClip(panel, 'At 23.976');
  const { page } = panel;
  const option = page.locator('section.player input[type="checkbox"]');
  await page.keyboard.press('Home');
  for (let step = 0; step < 3; step++) {
    await page.keyboard.press('Shift+ArrowRight');
  }
  await draws(panel, 30, 24000 / 1001);
  const picture = () => film(panel).evaluate((video) => ({ address: video.currentSrc, width: video.videoWidth }));
  const high = await picture();
  const wasOn = await option.isChecked();
  await option.click();
  await panel.until(async () => (await picture()).address !== high.address && (await picture()).width > 0);
  const low = await picture();
  assert.notEqual(low.width, high.width, 'the film of the other quality has another size');
  await draws(panel, 30, 24000 / 1001);
  await option.click();
  await panel.until(async () => (await picture()).width === high.width, async () => `${(await picture()).width}`);
  assert.equal(await option.isChecked(), wasOn);
  assert.equal((await picture()).address, high.address);
  await draws(panel, 30, 24000 / 1001);
});

test('a preview plays under the pointer, other frames where that moves, and nothing around it moves', async () => {
  const panel = await world.openPanel();
  await panel.page.locator('[data-picture] img.there').nth(clips.length - 1).waitFor();
  const { page } = panel;
  const picture = panel.clip('At 25').locator('[data-picture]');
  const box = await picture.boundingBox();
  const boxes = () => page.locator('[role="grid"] [data-index]').evaluateAll((tiles) =>
    tiles.flatMap((tile) => [...tile.querySelectorAll('*:not(.scrub-video, .scrub-line)')].map((part) => {
      const { x, y, width, height } = part.getBoundingClientRect();
      return [x, y, width, height].join(' ');
    })));
  const over = (part) => page.mouse.move(box.x + box.width * part, box.y + box.height / 3);
  await over(0.1);
  const before = await boxes();
  await page.evaluate(() => {
    window.shifts = [];
    new PerformanceObserver((list) => window.shifts.push(...list.getEntries().map((entry) => entry.value))).observe({ type: 'layout-shift' });
  });
  const scrub = picture.locator('video.shown');
  await scrub.waitFor();
  const frames = [];
  for (const part of [0.15, 0.4, 0.65, 0.9]) {
    await over(part);
    await panel.until(() => scrub.evaluate((video, wanted) => !video.seeking && Math.abs(video.currentTime / video.duration - wanted) < 0.06, part));
    // What is drawn tells more than what the film says of itself.
    frames.push(await scrub.evaluate((video) => {
      const canvas = document.createElement('canvas');
      canvas.width = 64;
      canvas.height = 48;
      const context = canvas.getContext('2d');
      context.drawImage(video, 0, 0, 64, 48);
      return context.getImageData(0, 0, 64, 48).data.join('');
    }));
  }
  assert.equal(new Set(frames).size, frames.length, 'each place shows another frame');
  assert.deepEqual(await boxes(), before);
  assert.deepEqual(await page.evaluate(() => window.shifts), []);
  await page.mouse.move(2, 2);
  await picture.locator('video').waitFor({ state: 'detached' });
});
