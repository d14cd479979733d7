// The main road in other languages: whoever does not read English meets no English words of the program.
import assert from 'node:assert/strict';
import { after, afterEach, before, beforeEach, test } from 'node:test';
import { readTexts } from '../scripts/mock/texts.mjs';
import { account } from './support/Service.mjs';
import { readIn, t } from './support/texts.mjs';
import { openBrowser, World } from './support/World.mjs';

let browser;
let world;
before(async () => (browser = await openBrowser()));
after(() => browser?.close());
beforeEach(async () => (world = await World.start({ browser })));
afterEach(async () => {
  readIn('en');
  try {
    await world.closePanels();
  } finally {
    await world.end();
  }
});

// All that is on screen or read out now, except the words of others: logs, keys, and the small lines in which the
// program or a service is quoted.
const said = (panel) =>
  panel.page.evaluate(() => {
    const quoted = 'script, style, kbd, ol, .detail, .legal, video';
    const isSeen = (element) => element.checkVisibility() && element.closest(quoted) === null;
    const all = [];
    const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
    for (let node = walker.nextNode(); node !== null; node = walker.nextNode()) {
      if (isSeen(node.parentElement)) {
        all.push(node.textContent.trim());
      }
    }
    for (const element of document.querySelectorAll('body *')) {
      for (const name of isSeen(element) ? ['title', 'aria-label', 'placeholder', 'aria-valuetext', 'alt'] : []) {
        all.push((element.getAttribute(name) ?? '').trim());
      }
    }
    return [...new Set(all)].filter((text) => /\p{L}{2}/u.test(text));
  });

function leaves(value) {
  if (value !== null && typeof value === 'object') {
    return Object.values(value).flatMap(leaves);
  }
  return typeof value === 'string' && value.trim() !== '' ? [value.trim()] : [];
}

// What the repository itself has written: its names, legends, notices, and the clips' own data.
async function ofTheService(panel) {
  const of = 'repositories/T7';
  const answers = [];
  for (const path of [of, `${of}/login`, `${of}/options`, `${of}/search?words=&pageSize=50`]) {
    const answer = await panel.get(path);
    assert.equal(answer.error, undefined, path);
    answers.push(answer);
  }
  return leaves(answers).filter((text) => /\p{L}{2}/u.test(text)).sort((a, b) => b.length - a.length);
}

// The words of an account's own clips come with the purchase.
const changesTheirs = 'a purchase';

// The road, with a look at the page wherever something new is on it.
async function walk(panel, look) {
  await panel.clips.first().waitFor();
  await look('results');

  // A refused sign-in says why.
  await panel.page.locator('header.top .account').click();
  await panel.dialog.locator('form').waitFor();
  await panel.signInRefused();
  await panel.dialog.getByRole('alert').getByText(t('account.wrong_password')).waitFor();
  await look('refused sign-in');
  await panel.dialog.locator('input').nth(0).fill('nobody');
  await panel.dialog.locator('input').nth(1).fill('x');
  await panel.dialog.locator('input').nth(1).press('Enter');
  await panel.dialog.getByRole('alert').getByText(t('account.no_such_user')).waitFor();
  await panel.dialog.locator('input').nth(0).fill(account.user);
  await panel.dialog.locator('input').nth(1).fill(account.password);
  await panel.dialog.locator('input').nth(1).press('Enter');
  await panel.signedIn();

  // The sequence, and what would be taken back.
  const sequence = t('sequence.first_name');
  await panel.clip('Red car').focus();
  await panel.page.keyboard.press('p');
  await panel.piece('Red car').waitFor();
  const step = t('step.placing', { clip: 'Red car', sequence });
  await panel.button('sequence.undo_what', panel.page, { what: step }).click();
  await panel.sees(t('sequence.undone', { what: step }));
  await panel.button('sequence.redo_what', panel.page, { what: step }).click();
  await panel.piece('Red car').waitFor();
  await look('a step taken back and done again');
  await panel.piece('Red car').click();
  await look('the chosen piece');

  await panel.openDrawer('tasks');
  await panel.button('tasks.check', panel.drawer).click();
  await panel.drawer.getByText(t('tasks.outcome.no_file')).waitFor();
  await look('a check of what is not here');
  await panel.button('sequence.export').click();
  await panel.dialog.getByText(t('sequence.warning.preview', { clip: 'Red car' })).waitFor();
  await look('warnings before an export');
  await panel.page.keyboard.press('Escape');
  await panel.button('sequence.usage').click();
  await panel.dialog.locator('tbody tr').first().waitFor();
  await look('the usage');
  await panel.page.keyboard.press('Escape');

  // Bought, fetched, checked.
  await panel.openDrawer('basket');
  await panel.button('basket.fill', panel.drawer).click();
  await panel.drawer.locator('.clips li', { hasText: 'Red car' }).waitFor();
  await look('the basket');
  await panel.button('basket.buy_credits', panel.drawer).click();
  await panel.dialog.waitFor();
  await look('the question before a purchase');
  await panel.button('basket.buy_now', panel.dialog).click();
  await panel.purchase.getByText(t('basket.purchase.done'), { exact: true }).waitFor();
  await look(changesTheirs);
  await panel.button('basket.fetch', panel.drawer).click();
  await panel.piece('Red car').getByText(t('state.full')).waitFor();
  await panel.openDrawer('tasks');
  await panel.drawer.locator('article.done').waitFor();
  await panel.button('tasks.check', panel.drawer).click();
  await panel.drawer.getByText(t('tasks.outcome.same')).waitFor();
  await look('an ended fetch and a check');

  for (const drawer of ['log', 'settings']) {
    await panel.openDrawer(drawer);
    await look(drawer);
  }
  await panel.button('settings.test', panel.drawer).click();
  await panel.drawer.locator('.servers li').first().waitFor();
  await look('a tested connection');
  const field = panel.drawer.getByLabel(t('settings.media_folder'), { exact: true });
  await field.fill('nowhere');
  await field.press('Enter');
  await panel.sees(t('failure.reason.no_path'));
  await look('a refused setting');
  await panel.page.keyboard.press('Escape');

  // What fails.
  await world.service.goWrong({ command: 'search' }, 'status', { status: 500 }, 20);
  await panel.search('sea');
  await panel.sees(t('results.failed_title'));
  await panel.sees(t('failure.reason.service_failed'));
  await look('a failed search');
  await world.service.goRight();
  await panel.button('common.try_again').first().click();
  await panel.clips.first().waitFor();
  await world.service.goDown();
  await panel.search('harbour');
  // A request that went out on a connection from before has lost its answer, which is another reason.
  await panel.until(async () => {
    const again = panel.button('common.try_again').first();
    await again.waitFor();
    if ((await panel.page.getByText(t('failure.reason.service_unreachable')).count()) > 0) {
      return true;
    }
    await again.click();
    return false;
  });
  await look('a service that is down');

  await panel.page.locator('header.top .account').click();
  await panel.button('account.sign_out', panel.dialog).click();
  await panel.button('account.sign_in').first().waitFor();
  await look('signed out');
}

for (const [language, name] of [['de', 'German'], ['ja', 'Japanese']]) {
  test(`the road in ${name} has no English words of the program`, async () => {
    await world.program.end();
    await world.startProgram([], ['--language', language]);
    readIn(language);
    const panel = await world.openPanel({ faults: true });
    assert.equal(await panel.page.evaluate(() => document.documentElement.lang), language);
    let theirs = await ofTheService(panel);
    const ownTexts = Object.values(readTexts(language)).join('\n');
    const looked = [];
    await walk(panel, async (state) => {
      theirs = state === changesTheirs ? await ofTheService(panel) : theirs;
      const words = (await said(panel)).flatMap((text) => {
        // Neither language has these.
        const own = theirs.reduce((rest, other) => rest.replaceAll(other, ' '), text);
        const english = own.match(/\b(the|of|and|with|not|is|are|this|clips? relinked|fetch|bought|placing|answers?|every)\b/gi) ?? [];
        return english.length > 0 && !ownTexts.includes(text) ? [`${state}: ${text}`] : [];
      });
      assert.deepEqual(words, []);
      looked.push(state);
    });
    assert.ok(looked.length > 15);
  });
}

test('every text of the page over the real program is from its texts', async () => {
  readIn('qps');
  const panel = await world.openPanel({ faults: true, texts: 'qps' });
  let theirs = await ofTheService(panel);
  // Names that are the same in every language, numbers with their units, and what a person has typed.
  const same = /^(CSV|JSON|MiB|English|Deutsch|日本語|[·\d.,: ]+(s|[kMG]?B|byte|%)|\d+x\d+|\w+ \d+, \d{4}|editor|nobody|zq)$/;
  await walk(panel, async (state) => {
    theirs = state === changesTheirs ? await ofTheService(panel) : theirs;
    const plain = (await said(panel)).filter((text) => {
      const own = theirs.reduce((rest, other) => rest.replaceAll(other, ' '), text);
      return !text.includes('[') && /\p{L}{2}/u.test(own) && !same.test(own.trim()) && !own.trim().startsWith('/');
    });
    assert.deepEqual(plain, [], state);
  });
});

test('a changed language holds at once, and the page says which it is in', async () => {
  const panel = await world.openPanel();
  const other = await world.openPanel();
  const languageOf = (one) => one.page.evaluate(() => document.documentElement.lang);
  await panel.clips.first().waitFor();
  await panel.openDrawer('settings');
  for (const [language, name] of [['de', 'Deutsch'], ['ja', '日本語'], ['en', 'English']]) {
    await panel.drawer.getByLabel(t('settings.language'), { exact: true }).selectOption({ label: name });
    readIn(language);
    for (const one of [panel, other]) {
      await one.page.getByRole('button', { name: t('sequence.new'), exact: true }).waitFor();
      assert.equal(await languageOf(one), language);
    }
    await panel.drawer.getByText(t('settings.theme')).first().waitFor();
  }
  // And after a reload as well.
  await panel.drawer.getByLabel(t('settings.language'), { exact: true }).selectOption({ label: 'Deutsch' });
  readIn('de');
  await panel.page.getByRole('button', { name: t('sequence.new'), exact: true }).waitFor();
  await panel.page.reload();
  await panel.page.getByRole('button', { name: t('sequence.new'), exact: true }).waitFor();
  assert.equal(await languageOf(panel), 'de');
});
