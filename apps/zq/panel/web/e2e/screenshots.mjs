// Pictures of the main states for docs/pictures, from the real programs over the demonstration footage.
//   node e2e/screenshots.mjs [FOLDER]
import { mkdirSync } from 'node:fs';
import { join } from 'node:path';
import { web } from './support/places.mjs';
import { t } from './support/texts.mjs';
import { World } from './support/World.mjs';

const folder = process.argv[2] ?? join(web, '../../../../docs/pictures');
mkdirSync(folder, { recursive: true });
const world = await World.start({ demo: true });
try {
  const look = { width: 1280, height: 800 };
  const panel = await world.openPanel({ ...look, colorScheme: 'dark' });
  const picture = async (name, of = panel) => {
    // What is on its way is not yet a picture of the state.
    await of.page.locator('.notice').first().waitFor({ state: 'detached', timeout: 20_000 });
    await of.page.evaluate(() =>
      Promise.all([...document.images].map((image) => (image.complete ? null : image.decode().catch(() => null)))),
    );
    await of.page.waitForTimeout(500);
    await of.page.screenshot({ path: join(folder, `panel-${name}.png`) });
    console.log(`panel-${name}.png`);
  };

  await panel.signIn();
  await panel.signedIn();
  await panel.until(async () => (await panel.names()).length > 8, undefined, 60_000);
  const names = (await panel.names()).slice(0, 6);
  for (const name of names.slice(0, 4)) {
    await panel.clip(name).first().focus();
    await panel.page.keyboard.press('p');
    await panel.piece(name).first().waitFor();
  }
  await panel.clip(names[0]).first().focus();
  await panel.page.keyboard.press('b');
  await panel.openDrawer('basket');
  await panel.button('basket.buy_credits', panel.drawer).click();
  await panel.button('basket.buy_now', panel.dialog).click();
  await panel.button('basket.fetch', panel.drawer).click();
  await panel.piece(names[0]).getByText(t('state.full')).first().waitFor({ timeout: 60_000 });
  await panel.openDrawer('tasks');
  await picture('tasks');
  await panel.openDrawer('basket');
  await panel.button('basket.fill', panel.drawer).click();
  await panel.drawer.locator('.clips li').nth(2).waitFor();
  await picture('basket');
  await panel.page.keyboard.press('Escape');
  await panel.clip(names[1]).first().focus();
  await panel.page.keyboard.press('Enter');
  const video = panel.page.locator('section.player video');
  await panel.until(() => video.evaluate((element) => element.currentTime > 1), undefined, 60_000);
  await panel.page.keyboard.press('k');
  await picture('grid');

  const light = await world.openPanel({ ...look, colorScheme: 'light' });
  await light.clips.nth(8).waitFor();
  await light.clip(names[2]).first().click();
  await picture('light', light);
  const docked = await world.openPanel({ width: 360, height: 800, colorScheme: 'dark' });
  await docked.clips.first().waitFor();
  await picture('docked', docked);
  await panel.page.getByRole('button', { name: t('results.list'), exact: true }).click();
  await panel.page.locator('[role="grid"] [role="row"][data-index]').first().waitFor();
  await picture('list');
  await world.closePanels();
} finally {
  await world.end();
}
