// The whole sequence in the player: from cut to cut, by the ruler and by keys, and what cannot be played.
import assert from 'node:assert/strict';
import { after, afterEach, before, test } from 'node:test';
import { becomes, openSequence, stripClips, three } from './support/sequences.mjs';
import { t } from './support/texts.mjs';
import { World } from './support/World.mjs';

let world;
before(async () => (world = await World.start({ clips: stripClips })));
afterEach(() => world.closePanels());
after(() => world?.end());

// Presses the button, and notes from then on what the player shows at each picture that the screen draws.
const watchFrom = (button) => button.evaluate((start, loading) => {
  start.click();
  window.seen = [];
  const look = () => {
    const films = [...document.querySelectorAll('section.player video')];
    const front = films.findIndex((film) => film.classList.contains('front'));
    const film = films[front];
    const time = Number(document.querySelector('section.player [role="slider"]')?.getAttribute('aria-valuenow'));
    if (film) {
      const loads = [...document.querySelectorAll('section.player .sign')].some((sign) => sign.textContent === loading);
      window.seen.push({ drawn: performance.now(), loads, front, clip: film.currentSrc.match(/clips\/(\w+)/)?.[1] ?? '', ready: film.readyState >= 2 && !film.seeking, there: film.readyState >= 2 || film.seeking, at: film.currentTime, frame: time });
    }
    requestAnimationFrame(look);
  };
  requestAnimationFrame(look);
}, t('player.loading'));

test('the whole sequence plays, piece after piece within its points, without a picture missing at a cut', async () => {
  const { panel, name, told } = await openSequence(world, [['Red', 1, 2], ['Green', 0.5, 1.5], ['Blue', 2, 3]]);
  const { page } = panel;
  await watchFrom(panel.button('sequence.play_all'));
  const which = page.getByRole('group', { name: t('player.what') });
  assert.equal(await panel.button('player.sequence', which).getAttribute('aria-pressed'), 'true');
  assert.equal(await panel.button('player.clip', which).getAttribute('aria-pressed'), 'false');
  await page.locator('section.player video.front').waitFor();
  await panel.until(() => page.evaluate(() => window.seen.length > 0 && window.seen.at(-1).ready));
  await panel.button('sequence.play_all').waitFor();
  const seen = await page.evaluate(() => window.seen);
  const begun = seen.slice(seen.findIndex((look) => look.ready && !look.loads));
  assert.ok(begun.every((look) => look.there), 'there is a picture all the time');
  assert.ok(begun.every((look, index) => look.front === (begun[index - 1] ?? look).front || look.ready), 'at each cut at once');
  const clipsOf = (await told()).map((piece) => piece.clip);
  assert.deepEqual(begun.map((look) => look.clip).filter((clip, index, all) => clip !== all[index - 1]), clipsOf);
  assert.deepEqual(begun.map((look) => look.front).filter((front, index, all) => front !== all[index - 1]), [0, 1, 0]);
  // A film is stopped between two pictures of the screen, which a busy machine draws late.
  const late_s = Math.max(...begun.slice(1).map((look, index) => look.drawn - begun[index].drawn)) / 1000;
  for (const piece of await told()) {
    const times = begun.filter((look) => look.clip === piece.clip).map((look) => look.at);
    assert.ok(Math.min(...times) >= piece.in - 0.001, `${piece.name} from ${Math.min(...times)}`);
    assert.ok(Math.max(...times) < piece.out + Math.max(0.1, late_s), `${piece.name} to ${Math.max(...times)}`);
  }
  assert.ok(begun.every((look, index) => index === 0 || look.frame >= begun[index - 1].frame), 'the playhead goes one way');
  const { duration, rate } = await panel.get(`sequences/${encodeURIComponent(name)}`);
  assert.equal(begun.at(-1).frame, Math.round((duration * rate[0]) / rate[1]) - 1, 'it ends on the last frame');
  const head = await page.locator('footer.strip .playhead').boundingBox();
  const last = await panel.pieces.last().boundingBox();
  assert.ok(Math.abs(head.x - last.x - last.width) < 12, 'the playhead is where the last piece ends');
});

test('the ruler, the space bar, J, K, L and cuts work on the sequence while the focus is in the strip', async () => {
  // The last piece is long, so that the end does not come while something is looked at.
  const { panel, name } = await openSequence(world, [...three, ['Long', 0, 30]]);
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
  const clip = (await panel.get(`sequences/${encodeURIComponent(name)}`)).pieces[1].clip;
  await page.locator(`section.player video.front[src*="clips/${clip}/"]`).waitFor();
  await panel.until(() => page.locator('section.player video.front').evaluate((film) => Math.abs(film.currentTime - 1.02) < 0.07));

  await panel.pieces.first().focus();
  await page.keyboard.press('ArrowUp');
  assert.equal(await frame(), 50, 'the cut before');
  await page.keyboard.press('ArrowDown');
  assert.equal(await frame(), 100, 'the cut behind');
  const speed = page.locator('section.player .speed');
  const speeds = await panel.notes('section.player .speed');
  await page.keyboard.press('j');
  await page.keyboard.press('j');
  await panel.until(async () => (await speeds()).some((text) => text.includes('-2')), async () => JSON.stringify(await speeds()));
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
  const { panel, order } = await openSequence(world, three);
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
  const { panel } = await openSequence(world, [['Green', 0, 2]]);
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
  const { panel, told } = await openSequence(world, [['Red', 0, 1], ['Green', 0, 1], ['Blue', 0, 1]], { faults: true });
  const { page } = panel;
  const [, gone, last] = await told();
  await page.route(`**/clips/${gone.clip}/preview*`, (route) => route.abort());
  const alerts = await panel.notes('section.player [role="alert"]');
  await panel.button('sequence.play_all').click();
  await panel.until(async () => (await alerts()).some((text) => text.includes(t('player.failed'))), () => 'it is not told');
  await page.locator(`section.player video.front[src*="clips/${last.clip}/"]`).waitFor();
  await page.locator('section.player [role="alert"]').waitFor({ state: 'detached' });
  await panel.button('sequence.play_all').waitFor();
});
