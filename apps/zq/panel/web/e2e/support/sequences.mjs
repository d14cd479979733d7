// Panels that work on a sequence of their own: what the tests of the strip begin with.
import { t } from './texts.mjs';

export const stripClips = [
  { film: 'small.mov', title: 'Red', price: 9 },
  { film: 'fast.mp4', title: 'Green', price: 19 },
  { film: 'small.mov', title: 'Blue', price: 5 },
  { film: 'long.mp4', title: 'Long', price: 3 },
];

let number = 0;

// A panel that works on a sequence of its own, with these pieces: [title, in, out].
export async function openSequence(world, pieces, options = {}) {
  const panel = await world.openPanel(options);
  await panel.clips.nth(3).waitFor();
  const name = `Cut ${++number}`;
  await panel.button('sequence.new').click();
  await panel.page.getByRole('textbox', { name: t('sequence.new_name') }).fill(name);
  await panel.page.keyboard.press('Enter');
  const { clips: found } = await panel.get('repositories/T7/search?words=');
  for (const [title, from, to] of pieces) {
    const { id } = found.find((other) => other.name === title);
    await panel.send('POST', `sequences/${encodeURIComponent(name)}/pieces`, { repository: 'T7', clip: id, in: from, out: to });
  }
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

export const three = [['Red', 0, 2], ['Green', 0, 2], ['Blue', 1, 3]];

// Waits until the order of the pieces is that, on the page and in the program.
export const becomes = (panel, order, wanted) =>
  panel.until(async () => JSON.stringify(await order()) === JSON.stringify(wanted), async () => JSON.stringify(await order()));
