// What was bought plays in full where the browser knows its format, and else as its preview.
import assert from 'node:assert/strict';
import { after, afterEach, before, test } from 'node:test';
import { t } from './support/texts.mjs';
import { World } from './support/World.mjs';

const clips = [
  { film: 'fast.mp4', title: 'Green film', price: 3 },
  { film: 'small.mov', title: 'Odd film', price: 3 },
];

let world;
let panel;
before(async () => (world = await World.start({ clips })));
after(() => world?.end());
afterEach(() => world.closePanels());

const player = () => panel.page.locator('section.player');
const sign = () => player().getByText(t('player.full'), { exact: true });

// Waits until what is on screen is the film of that address, with a picture.
async function plays(film, address) {
  const told = () => film.evaluateAll((all) => all.map((one) => [one.currentSrc, one.readyState, one.videoWidth]));
  await panel.until(
    async () => (await told()).some(([source, ready, width]) => address.test(source) && ready >= 2 && width > 0),
    async () => JSON.stringify(await told()),
  );
}

test('a piece that was bought and fetched plays its full file, or its preview where the browser cannot play that', async () => {
  panel = await world.openPanel();
  await panel.clips.nth(1).waitFor();
  await panel.signIn();
  await panel.signedIn();
  for (const { title } of clips) {
    await panel.place(title);
    await panel.piece(title).waitFor();
    await panel.clip(title).focus();
    await panel.page.keyboard.press('b');
  }
  await panel.openDrawer('basket');
  await panel.drawer.locator('.clips li').nth(1).waitFor();
  await panel.button('basket.buy_credits', panel.drawer).click();
  await panel.button('basket.buy_now', panel.dialog).click();
  await panel.purchase.getByText(t('basket.purchase.done'), { exact: true }).waitFor();
  await panel.button('basket.fetch', panel.purchase).click();
  for (const { title } of clips) {
    await panel.piece(title).getByText(t('state.full')).waitFor();
  }

  const pieces = (await panel.get(`sequences/${encodeURIComponent((await panel.get('project')).sequences[0])}`)).pieces;
  const [known, unknown] = clips.map(({ title }) => pieces.find((piece) => piece.name === title));
  const front = player().locator('video.front');
  await panel.button('sequence.play_all').click();
  await plays(front, new RegExp(`/clips/${known.clip}/media$`));
  await sign().waitFor();
  await plays(front, new RegExp(`/clips/${unknown.clip}/preview`));
  await sign().waitFor({ state: 'detached' });
  assert.equal(await player().getByRole('alert').count(), 0);

  // So does the clip of the piece, from where that begins.
  for (const [piece, address] of [[known, /\/media$/], [unknown, /\/preview/]]) {
    await panel.piece(piece.name).focus();
    await panel.page.keyboard.press('Enter');
    const film = player().getByLabel(t('player.film', { clip: piece.name }));
    await plays(film, new RegExp(`/clips/${piece.clip}${address.source}`));
    await panel.until(() => film.evaluate((one) => one.currentTime > 0), () => 'it does not play');
    assert.equal(await sign().count(), piece === known ? 1 : 0);
  }
  const listed = await panel.page.evaluate(() => performance.getEntriesByType('resource').map((entry) => entry.name));
  assert.ok(listed.some((address) => address.endsWith(`/clips/${known.clip}/media`)), 'media is read by the id of its clip');
  assert.ok(!listed.some((address) => address.includes('Tarn7') || address.includes('.mp4')), 'no path is in an address');
});
