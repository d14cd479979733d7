// A panel in the browser, and what a person does in it.
import assert from 'node:assert/strict';
import { account } from './Service.mjs';
import { readTexts } from '../../scripts/mock/texts.mjs';
import { t } from './texts.mjs';

const wait_ms = 60_000; // a guard against waiting for ever, which a busy machine does not come near

export class Panel {
  // What the page itself has to answer for: errors, refusals of its policy, dialogs that nobody asked for.
  problems = [];

  // `texts`: the language that the page is given its texts in, whatever the program's is.
  static async open(browser, address, { faults = false, width = 1280, height = 800, init = '', texts = '', ...context } = {}) {
    const panel = new Panel();
    panel.context = await browser.newContext({ viewport: { width, height }, reducedMotion: 'reduce', ...context });
    panel.context.setDefaultTimeout(wait_ms);
    await panel.context.addInitScript(() => {
      document.addEventListener('securitypolicyviolation', (event) =>
        console.error(`policy: ${event.violatedDirective} forbids ${event.blockedURI} ${event.sample}`),
      );
    });
    if (texts !== '') {
      await panel.context.route('**/api/texts', (route) => route.fulfill({ json: { language: texts, texts: readTexts(texts) } }));
    }
    if (init !== '') {
      await panel.context.addInitScript({ content: init });
    }
    const page = await panel.context.newPage();
    panel.page = page;
    page.on('pageerror', (error) => panel.problems.push(String(error)));
    page.on('dialog', (dialog) => {
      panel.problems.push(`dialog: ${dialog.message()}`);
      void dialog.dismiss();
    });
    page.on('console', (message) => {
      // The browser tells each answer from 400 on; where a test makes them, they are expected.
      const isAnswer = message.text().startsWith('Failed to load resource');
      // A search that a later one overtakes is answered so, if the page has not let go of it by then.
      const isOvertaken =
        isAnswer && message.text().includes('409') && /\/search\?/.test(message.location().url);
      if (message.type() === 'error' && !(faults && isAnswer) && !isOvertaken) {
        panel.problems.push(`${message.text()} ${message.location().url}`);
      }
    });
    await page.goto(address);
    await panel.words.waitFor();
    return panel;
  }

  get words() {
    return this.page.locator('#search-words');
  }
  get clips() {
    return this.page.locator('[role="grid"] [data-index][aria-busy="false"]');
  }
  get pieces() {
    return this.page.locator('[data-piece]');
  }
  get drawer() {
    return this.page.locator('.drawer');
  }
  get dialog() {
    return this.page.locator('dialog[open]');
  }

  // How the latest purchase stands, in the open basket.
  get purchase() {
    return this.drawer.locator('.purchases').getByRole('listitem').first();
  }

  clip(name) {
    return this.clips.filter({ hasText: name });
  }
  piece(name) {
    return this.pieces.filter({ hasText: name });
  }
  button(key, within = this.page, values = {}) {
    return within.getByRole('button', { name: t(key, values), exact: true });
  }
  // Notices go by themselves; the words must have been there.
  async sees(text) {
    await this.page.getByText(text).first().waitFor();
  }

  async signIn({ user = account.user, password = account.password } = {}) {
    await this.page.locator('header.top .account').click();
    const fields = this.dialog.locator('form input');
    await fields.nth(0).fill(user);
    await fields.nth(1).fill(password);
    await fields.nth(1).press('Enter');
  }

  // In the open form: a wrong password, and what is said of it.
  async signInRefused() {
    const fields = this.dialog.locator('form input');
    await fields.nth(0).fill(account.user);
    await fields.nth(1).fill('wrong');
    await fields.nth(1).press('Enter');
    await this.dialog.getByRole('alert').waitFor();
  }

  async signedIn(user = account.user) {
    await this.page.getByRole('button', { name: t('account.signed_in_as', { user }) }).waitFor();
    await this.dialog.waitFor({ state: 'detached' });
  }

  // Searches, and waits until the answer is there.
  async search(words) {
    const answered = this.page.waitForResponse((response) => {
      const { pathname, searchParams } = new URL(response.url());
      return pathname.endsWith('/search') && searchParams.get('words') === words.trim();
    });
    await this.words.fill(words);
    await this.words.press('Enter');
    await answered;
    await this.page.locator('[role="grid"][aria-busy="true"]').waitFor({ state: 'detached' });
  }

  async names() {
    return (await this.clips.locator('.name').allTextContents()).map((name) => name.trim());
  }

  // Waits until the results are just these, in any order.
  async shows(names) {
    const wanted = JSON.stringify([...names].sort());
    await this.until(async () => JSON.stringify((await this.names()).sort()) === wanted, async () =>
      `clips ${JSON.stringify(await this.names())} instead of ${wanted}`);
  }

  async place(name) {
    await this.clip(name).first().hover();
    await this.button('results.place', this.clip(name).first()).click();
  }

  async openDrawer(panel) {
    if ((await this.drawer.count()) === 0 || (await this.drawer.locator('h2').first().textContent()) !== t(`panels.${panel}`)) {
      await this.page.locator('header.top nav').getByRole('button', { name: new RegExp(`^${t(`panels.${panel}`).replace(/[[\]().*+?^$|\\]/g, '\\$&')}`) }).click();
      await this.drawer.locator('#drawer-title', { hasText: t(`panels.${panel}`) }).waitFor();
    }
  }

  // What the interface itself says, with the page's own cookie.
  get(path) {
    return this.page.evaluate(async (address) => (await fetch(address)).json(), `/api/${path}`);
  }

  // Has the interface do something, with the page's own cookie and key, past its buttons: { status, told }.
  send(method, path, body = {}) {
    return this.page.evaluate(async ([address, options]) => {
      const headers = { 'Content-Type': 'application/json', 'X-Zq-Panel-Key': localStorage['zq-panel.key'] };
      const answer = await fetch(address, { ...options, headers });
      return { status: answer.status, told: await answer.json() };
    }, [`/api/${path}`, { method, body: JSON.stringify(body) }]);
  }

  // Notes from here on what the elements of that selector have on screen, so that a state which passes by itself is not
  // missed. Gives what asks for the texts, each once and in the order in which they came.
  async notes(selector) {
    const texts = await this.page.evaluateHandle((wanted) => {
      const seen = new Set();
      const look = () =>
        document.querySelectorAll(wanted).forEach((element) => element.checkVisibility() && seen.add(element.textContent.trim()));
      new MutationObserver(look).observe(document, { subtree: true, childList: true, characterData: true, attributes: true });
      look();
      return seen;
    }, selector);
    return () => texts.evaluate((seen) => [...seen]);
  }

  // Waits for something that only asking tells.
  async until(isSo, otherwise = () => 'it did not come to be', within_ms = wait_ms) {
    const deadline = Date.now() + within_ms;
    while (!(await isSo())) {
      if (Date.now() > deadline) {
        assert.fail(await otherwise());
      }
      await this.page.waitForTimeout(30);
    }
  }
}
