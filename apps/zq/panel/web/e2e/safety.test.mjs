// What other sites, other machines' names and hostile texts of a service can do to the page: nothing.
import assert from 'node:assert/strict';
import { createServer, request } from 'node:http';
import { after, afterEach, before, test } from 'node:test';
import { t } from './support/texts.mjs';
import { World } from './support/World.mjs';

const unlike = [
  '<img src=x onerror=alert(1)>',
  '"><script>alert(document.cookie)</script>',
  '<svg onload=alert(1)>',
  '<iframe src="javascript:alert(1)">',
  '<style>*{display:none}</style>',
  '</title><h1>title</h1>',
  '<!-- comment',
  ']]>',
  '&lt;b&gt;bold&lt;/b&gt; &amp;',
  "' onmouseover='alert(1)",
  'javascript:alert(1)',
  'data:text/html,<script>alert(1)</script>',
  '{{constructor.constructor("alert(1)")()}}',
  '${alert(1)}',
  '{@html "<b>x</b>"}',
  '{#each x}',
  '$CLIP$ $COUNT$ $SEQUENCE$',
  '%s%n%d%p%x',
  "'; DROP TABLE clips; --",
  '$(touch x) `touch x` | touch x',
  '../../../../etc/passwd',
  'C:\\CON\\aux.mov',
  '\u202Egnirts desrever a\u202C and on',
  '\u2067right\u2069 to left',
  'غروب الشمس في الصحراء',
  'שקיעה מעל הים',
  '東京の夕日、渋谷のスクランブル交差点を渡る人々の長い長い題名',
  'Ηλιοβασίλεμα στο Αιγαίο',
  'Z̷̢̛a̸l̵g̶o̷ ̴s̶u̵n̸s̷e̶t̴',
  '👩‍👩‍👧‍👦 family at the beach 🏖️',
  '\u0007bell and \u001b[31mescape\u001b[0m',
  'zero\u200bwidth\ufeffmarks',
  'line\u2028and paragraph\u2029separators',
  'a'.repeat(500),
  'https://example.com/?a=b&c=d#e',
  '__proto__',
  'constructor',
  'null',
  'NaN',
  '-1',
];
// The others are each markup with another event or tag, so that no single one of them is let through.
const tags = ['a', 'b', 'body', 'div', 'form', 'input', 'link', 'math', 'meta', 'object', 'p', 'table'];
const events = ['onclick', 'onerror', 'onfocus', 'onload', 'onpointerenter'];
const made = tags.flatMap((tag) => events.map((event) => `<${tag} ${event}=alert(1) autofocus tabindex=1>${tag}`));
const titles = [...unlike, ...made].slice(0, 100);

let world;
before(async () => {
  world = await World.start({
    clips: titles.map((title, index) => ({ film: 'small.mov', title, price: 1 + (index % 7) })),
  });
});
afterEach(() => world.closePanels());
after(() => world?.end());

// Elements that only a title could have brought, and the number of scripts.
const strangers = (panel) =>
  panel.page.evaluate(() => ({
    elements: document.querySelectorAll(
      'iframe, object, embed, math, body table, form[onclick], [onclick], [onerror], [onfocus], [onload], [onpointerenter], h1:not(.visually-hidden)',
    ).length,
    scripts: document.scripts.length,
    title: document.title,
  }));

test('a hundred hostile titles are shown as the texts that they are', async () => {
  assert.equal(titles.length, 100);
  const panel = await world.openPanel();
  const first = await strangers(panel);
  await panel.until(async () => (await panel.get('repositories/T7/search?words=&pageSize=100')).totalCount === 100);
  const told = (await panel.get('repositories/T7/search?words=&pageSize=100')).clips;
  for (const view of ['grid', 'list']) {
    await panel.page.getByRole('button', { name: t(`results.${view}`), exact: true }).click();
    const seen = new Map();
    await panel.page.locator('[role="grid"]').evaluate((grid) => (grid.scrollTop = 0));
    await panel.until(async () => {
      const rows = await panel.clips.evaluateAll((items) =>
        items.map((item) => [item.dataset.index, item.querySelector('.name').textContent]),
      );
      rows.forEach(([index, name]) => seen.set(index, name));
      await panel.page.locator('[role="grid"]').evaluate((grid) => (grid.scrollTop += grid.clientHeight / 2));
      return seen.size === 100;
    }, () => `${seen.size} of 100 clips seen in the ${view}`);
    assert.deepEqual([...seen.values()].map((name) => name.trim()).sort(), told.map((clip) => clip.name.trim()).sort());
    assert.deepEqual(await strangers(panel), first, `in the ${view}`);
  }
  const markup = told.filter((clip) => clip.name.includes('<'));
  assert.ok(markup.length > 60, 'the service tells markup as it stands in the side files');
});

test('hostile titles in the player, the strip, the basket and the report are texts as well', async () => {
  const panel = await world.openPanel();
  const first = await strangers(panel);
  for (const words of ['img', 'script', 'DROP', 'SEQUENCE', 'desrever', 'constructor']) {
    await panel.search(words);
    assert.ok((await panel.clips.count()) > 0, `no clip for ${words}`);
    await panel.clips.first().click();
    await panel.page.keyboard.press('p');
    await panel.page.keyboard.press('b');
    await panel.page.keyboard.press('Enter');
    await panel.page.locator('section.player video').waitFor();
  }
  await panel.until(async () => (await panel.pieces.count()) === 6, async () => `${await panel.pieces.count()} pieces`);
  await panel.openDrawer('basket');
  await panel.until(async () => (await panel.drawer.locator('.clips li').count()) === 6);
  await panel.button('sequence.usage').click();
  await panel.until(async () => (await panel.dialog.locator('tbody tr').count()) === 6);
  assert.equal(await panel.dialog.locator('tbody img, tbody script, tbody svg').count(), 0);
  await panel.page.keyboard.press('Escape');
  assert.equal((await strangers(panel)).scripts, first.scripts);
  assert.equal((await strangers(panel)).title, first.title);
});

// A page of another origin in the same browser, with the panel's cookie there to be misused.
async function foreignSite(html, work) {
  const server = createServer((_, response) => {
    response.setHeader('Content-Type', 'text/html');
    response.end(html);
  });
  await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
  try {
    // The other name of this machine is another site to the browser.
    await work(`http://localhost:${server.address().port}/`);
  } finally {
    server.closeAllConnections();
    await new Promise((resolve) => server.close(resolve));
  }
}

test('another site in the same browser reads nothing and changes nothing', async () => {
  const panel = await world.openPanel();
  const before = await panel.get('project');
  await foreignSite('<!doctype html><title>evil</title><body>', async (address) => {
    const evil = await panel.context.newPage();
    await evil.goto(address);
    const read = await evil.evaluate(async (origin) => {
      const results = {};
      const attempt = async (name, path, options) => {
        try {
          const answer = await fetch(origin + path, { credentials: 'include', ...options });
          results[name] = answer.type === 'opaque' ? 'opaque' : `${answer.status} ${(await answer.text()).slice(0, 20)}`;
        } catch {
          results[name] = 'failed';
        }
      };
      await attempt('read', '/api/state', {});
      await attempt('blind', '/api/project/undo', { method: 'POST', mode: 'no-cors' });
      await attempt('plain', '/api/settings', { method: 'PATCH', body: '{"theme":"light"}' });
      await attempt('json', '/api/repositories/T7/logout', {
        method: 'POST', headers: { 'Content-Type': 'application/json' }, body: '{}',
      });
      return results;
    }, world.origin);
    assert.equal(read.read, 'failed');
    assert.equal(read.plain, 'failed');
    assert.equal(read.json, 'failed');
    // A blind request may be sent; what counts is that nothing comes of it.
    assert.ok(['failed', 'opaque'].includes(read.blind), read.blind);
    await evil.evaluate((origin) => {
      document.body.innerHTML = `<form method="post" enctype="text/plain" action="${origin}/api/project/undo"><input name='{"a":"' value='"}'></form>`;
      document.forms[0].submit();
    }, world.origin);
    await evil.waitForURL(`${world.origin}/**`);
    assert.match(await evil.locator('body').innerText(), /foreign_origin|not_entered/);
    await evil.close();
  });
  assert.deepEqual(await panel.get('project'), before);
});

test('in a frame of another site the panel stays closed', async () => {
  const panel = await world.openPanel();
  await foreignSite(`<!doctype html><iframe src="${world.origin}/"></iframe>`, async (address) => {
    const evil = await panel.context.newPage();
    await evil.goto(address);
    const frame = evil.frames().find((other) => other.url().startsWith(world.origin));
    assert.ok(frame, 'the frame was tried');
    await frame.locator('body').waitFor();
    assert.equal(await frame.locator('#search-words').count(), 0);
    assert.doesNotMatch(await frame.locator('body').innerText(), /Tarn7/);
    await evil.close();
  });
});

test('a name that leads here but is another is refused, as is an address without the cookie', async () => {
  const port = Number(new URL(world.origin).port);
  const ask = (headers, path = '/api/state') =>
    new Promise((resolve, reject) => {
      request({ host: '127.0.0.1', port, path, headers }, (response) => {
        let body = '';
        response.on('data', (part) => (body += part)).on('end', () => resolve({ status: response.statusCode, body }));
      })
        .on('error', reject)
        .end();
    });
  for (const host of ['evil.example', `evil.example:${port}`, '127.0.0.1', `127.0.0.1:${port + 1}`, `127.0.0.1.evil.example:${port}`]) {
    const answer = await ask({ Host: host });
    assert.equal(answer.status, 421, host);
    assert.equal(JSON.parse(answer.body).error.code, 'wrong_host');
  }
  assert.equal((await ask({ Host: `127.0.0.1:${port}` })).status, 401);
  assert.equal((await ask({ Host: `127.0.0.1:${port}`, Cookie: `zq-panel-${port}=${'0'.repeat(64)}` })).status, 401);
});

test('the token is in no page, no address, no cookie that a script reads', async () => {
  const panel = await world.openPanel();
  const token = new URL(world.address).searchParams.get('token');
  assert.ok(!panel.page.url().includes(token));
  const text = await panel.page.evaluate(() => document.documentElement.outerHTML + document.cookie + document.referrer);
  assert.ok(!text.includes(token));
  assert.equal(await panel.page.evaluate(() => document.cookie), '');
  const [cookie] = await panel.context.cookies();
  assert.ok(cookie.httpOnly && cookie.sameSite === 'Strict' && cookie.value.length >= 32, JSON.stringify({ ...cookie, value: '' }));
  assert.ok(!JSON.stringify(await panel.get('log')).includes(token));
});

test('without its cookie the page says that it is closed', async () => {
  const context = await world.browser.newContext();
  const page = await context.newPage();
  const answer = await page.goto(`${world.origin}/`);
  assert.equal(answer.status(), 401);
  await context.close();
});
