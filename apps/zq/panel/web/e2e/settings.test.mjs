// The settings as a person changes them, and what becomes of them: proxy, certificate, test of the connection, cache,
// language.
import assert from 'node:assert/strict';
import { existsSync, readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { spawnSync } from 'node:child_process';
import { after, afterEach, before, beforeEach, test } from 'node:test';
import { readTexts } from '../scripts/mock/texts.mjs';
import { ConnectProxy } from './support/ConnectProxy.mjs';
import { assertReadable } from './support/faultTables.mjs';
import { t } from './support/texts.mjs';
import { World } from './support/World.mjs';

const clips = ['Red car', 'Sea birds'].map((title) => ({ film: 'small.mov', title, price: 4 }));

let world;
let panel;
before(async () => (world = await World.start({ clips })));
after(() => world?.end());
beforeEach(async () => {
  panel = await world.openPanel({ faults: true });
  await panel.openDrawer('settings');
});
afterEach(() => world.closePanels());

const field = (key) => panel.drawer.getByLabel(t(`settings.${key}`), { exact: true });
const needsRestart = (key) => field(key).locator('xpath=ancestor::*[contains(@class, "field")][1]').getByText(t('settings.restart'));

async function set(key, value) {
  await field(key).fill(value);
  await field(key).press('Enter');
}

// The program begun anew, with a page of its own.
async function startAgain() {
  await world.program.end();
  await world.startProgram();
  panel = await world.openPanel({ faults: true });
  await panel.openDrawer('settings');
}

// What the test of the connection says of the one server.
async function connectionSays() {
  await panel.button('settings.test', panel.drawer).click();
  const server = panel.drawer.locator('.servers li');
  await server.waitFor();
  assert.match(await server.locator('strong').textContent(), /www\.tarn7\.example/);
  const text = await server.locator('.why').textContent();
  assertReadable(text, 'connection');
  return { text, ok: (await server.locator('.sign.good').count()) > 0 };
}

test('the connection is tested, and a service that is gone is told in words', async () => {
  const now = await connectionSays();
  assert.ok(now.ok, now.text);
  assert.match(now.text, /answers.*404/);
  await world.service.goDown();
  const { text, ok } = await connectionSays();
  await world.service.comeBack();
  assert.ok(!ok);
  assert.match(text, /could not connect to www\.tarn7\.example/);
  assert.equal((await connectionSays()).ok, true);
});

test('a proxy is used from the next start on; one that is not there is named', async () => {
  const proxy = await ConnectProxy.start(world.service.port);
  try {
    await set('proxy', proxy.address);
    await needsRestart('proxy').waitFor();
    assert.equal((await connectionSays()).ok, true);
    assert.deepEqual(proxy.asked, [], 'not before the restart');
    await startAgain();
    assert.equal(await field('proxy').inputValue(), proxy.address);
    assert.equal(await needsRestart('proxy').count(), 0);
    assert.equal((await connectionSays()).ok, true);
    await panel.search('sea');
    await panel.shows(['Sea birds']);
    assert.ok(proxy.asked.length > 0, 'the search goes through the proxy');
  } finally {
    await proxy.end();
  }
  const { text, ok } = await connectionSays();
  assert.ok(!ok);
  assert.match(text, /proxy/);
  await panel.search('red');
  await panel.sees(t('results.failed_title'));
  await panel.page.locator('.state.problem').getByText(/check \[network\] proxy/).waitFor();
  // The way out is offered where the search has failed.
  await panel.drawer.getByRole('button', { name: t('common.close') }).click();
  await panel.button('results.check_connection').click();
  await set('proxy', '');
  await needsRestart('proxy').waitFor();
  await startAgain();
  assert.equal((await connectionSays()).ok, true);
});

// Why the field's value was refused, beside the field.
const refusal = (key) => field(key).locator('xpath=ancestor::*[contains(@class, "field")][1]').getByRole('alert');

test('a proxy without sense is refused in words beside it, stays to be mended, and the one before holds', async () => {
  await set('proxy', 'no address at all');
  await refusal('proxy').getByText(t('failure.reason.no_address')).waitFor();
  assert.equal(await field('proxy').getAttribute('aria-invalid'), 'true');
  await field('media_folder').focus();
  assert.equal(await field('proxy').inputValue(), 'no address at all');
  await refusal('proxy').waitFor();
  await field('proxy').press('Escape');
  await refusal('proxy').waitFor({ state: 'detached' });
  assert.equal(await field('proxy').inputValue(), '');
  assert.equal(await panel.drawer.isVisible(), true);
  assert.equal((await panel.get('settings')).proxy, '');
});

// An authority that has signed nothing here.
function otherAuthority() {
  const file = join(world.folder, 'other-ca.pem');
  const made = spawnSync('openssl', [
    'req', '-x509', '-newkey', 'rsa:2048', '-nodes', '-keyout', join(world.folder, 'other.key'), '-out', file,
    '-days', '2', '-subj', '/CN=Nobody',
  ]);
  assert.equal(made.status, 0, String(made.stderr));
  return file;
}

test('with the wrong authority the certificate is said not to be accepted, with the right one all is well', async () => {
  const right = world.service.ca;
  await set('ca_file', otherAuthority());
  await needsRestart('ca_file').waitFor();
  await startAgain();
  const { text, ok } = await connectionSays();
  assert.ok(!ok);
  assert.match(text, /certificate of www\.tarn7\.example.* is not accepted/);
  assert.match(text, /authority/, 'what to do');
  await panel.search('birds');
  await panel.page.locator('.state.problem').getByText(/certificate/).waitFor();
  await set('ca_file', right);
  await needsRestart('ca_file').waitFor();
  await startAgain();
  assert.equal((await connectionSays()).ok, true);
  await panel.search('birds');
  await panel.shows(['Sea birds']);
});

test('a certificate file that is not there is refused in words', async () => {
  await set('ca_file', '/there/is/no/such.pem');
  await refusal('ca_file').getByText(/there is no file/).waitFor();
  assert.equal(await field('ca_file').inputValue(), '/there/is/no/such.pem');
  assert.equal((await panel.get('settings')).caFile, world.service.ca);
  await set('ca_file', world.service.ca);
  await refusal('ca_file').waitFor({ state: 'detached' });
});

test('the cache is counted and cleared, its limit is kept, and a limit without sense changes nothing', async () => {
  await panel.button('panels.settings', panel.page.locator('header.top nav')).click();
  await panel.search('red car'); // the words before are still there
  await panel.clip('Red car').focus();
  await panel.page.keyboard.press('Enter');
  const film = panel.page.locator('section.player video');
  await panel.until(async () => (await film.evaluateAll((all) => all[0]?.currentTime ?? 0)) > 0.5, () => 'it does not play');
  await panel.openDrawer('settings');
  const fetched = join(world.environment.ZQ_HOME, 'cache');
  assert.ok(existsSync(fetched));
  assert.ok((await panel.get('settings')).cacheUsed > 10_000);
  const clear = panel.button('settings.clear_cache', panel.drawer);
  await panel.until(() => clear.isEnabled(), () => 'it cannot be cleared');
  await clear.click();
  await panel.sees(new RegExp(t('settings.cleared', { bytes: '.*' })));
  await panel.until(async () => (await panel.get('settings')).cacheUsed < 10_000, () => 'nothing is freed');

  await set('cache_limit', '77');
  await panel.until(async () => (await panel.get('settings')).cacheLimitMiB === 77, () => 'not kept');
  await needsRestart('cache_limit').waitFor();
  await set('cache_limit', 'much');
  await refusal('cache_limit').getByText(t('settings.no_number')).waitFor();
  assert.equal(await field('cache_limit').inputValue(), 'much');
  assert.equal((await panel.get('settings')).cacheLimitMiB, 77);
  await startAgain();
  assert.equal(await field('cache_limit').inputValue(), '77');
  assert.equal(await needsRestart('cache_limit').count(), 0);
});

test('the language changes at once, on a page that is not read anew, and holds after a restart', async () => {
  const german = readTexts('de');
  await panel.page.evaluate(() => (window.isStillThisPage = true));
  await panel.page.locator('header.top').waitFor();
  await panel.drawer.getByLabel(t('settings.language'), { exact: true }).selectOption('de');
  await panel.drawer.getByRole('heading', { name: german['settings.network'], exact: true }).waitFor();
  await panel.page.getByRole('button', { name: german['results.all'], exact: true }).waitFor();
  assert.equal(await panel.page.evaluate(() => document.documentElement.lang), 'de');
  assert.equal(await panel.page.evaluate(() => window.isStillThisPage), true);
  // What the footage service itself says changes with the next start.
  await panel.drawer.getByText(german['settings.language_hint']).waitFor();
  await world.program.end();
  await world.startProgram();
  panel = await world.openPanel();
  await panel.page.getByRole('button', { name: german['results.all'], exact: true }).waitFor();
  await panel.page.locator('header.top nav').getByRole('button', { name: german['panels.settings'] }).click();
  await panel.drawer.getByLabel(german['settings.language'], { exact: true }).selectOption('en');
  await panel.button('results.all').waitFor();
  assert.match(readFileSync(join(world.environment.ZQ_HOME, 'host.toml'), 'utf8'), /language = "en"/);
});

test('with a settings file that cannot be understood a change is refused with its place, and nothing is lost', async () => {
  const file = join(world.environment.ZQ_HOME, 'host.toml');
  const before = readFileSync(file, 'utf8');
  const broken = `${before}\nthis is no = = toml\n`;
  writeFileSync(file, broken);
  try {
    await set('proxy', 'http://127.0.0.1:9');
    await refusal('proxy').getByText(/host\.toml:\d+/).waitFor();
    assert.equal(readFileSync(file, 'utf8'), broken);
  } finally {
    writeFileSync(file, before);
  }
  await set('cache_limit', '88');
  await panel.until(async () => (await panel.get('settings')).cacheLimitMiB === 88, () => 'not kept');
});
