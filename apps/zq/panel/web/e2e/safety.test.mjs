// What other sites, other machines' names and hostile texts of a service can do to the page: nothing.
import assert from 'node:assert/strict';
import { readdirSync, readFileSync } from 'node:fs';
import { createServer, request } from 'node:http';
import { join } from 'node:path';
import { after, afterEach, before, test } from 'node:test';
import { hostileTexts, strangers } from './support/hostileTexts.mjs';
import { account } from './support/Service.mjs';
import { t } from './support/texts.mjs';
import { World } from './support/World.mjs';

// One that is no part of anything else.
account.password = 'P\u00e4ss "word" & 4711-only';

let world;
before(async () => {
  world = await World.start({
    clips: hostileTexts.map((title, index) => ({ film: 'small.mov', title, price: 1 + (index % 7) })),
  });
});
afterEach(() => world.closePanels());
after(() => world?.end());

test('a hundred hostile titles are shown as the texts that they are', async () => {
  assert.equal(hostileTexts.length, 100);
  // A search that the test asks for cancels one of the page, which the browser tells as a failure.
  const panel = await world.openPanel({ faults: true });
  const first = await strangers(panel);
  let told;
  await panel.until(async () => {
    told = (await panel.get('repositories/T7/search?words=&pageSize=100')).clips ?? [];
    return told.length === 100;
  });
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
async function foreignPage(host, html, work) {
  const server = createServer((_, response) => {
    response.setHeader('Content-Type', 'text/html');
    response.end(html);
  });
  await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
  try {
    await work(`http://${host}:${server.address().port}/`);
  } finally {
    server.closeAllConnections();
    await new Promise((resolve) => server.close(resolve));
  }
}

// The other name of this machine is another site to the browser; another port of the same name is the same site, whose
// requests have the cookie.
const foreignSite = (html, work) => foreignPage('localhost', html, work);
const otherPort = (html, work) => foreignPage('127.0.0.1', html, work);

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

test('another port of this machine reads nothing, changes nothing and listens to nothing', async () => {
  const panel = await world.openPanel();
  const before = await panel.get('project');
  await otherPort('<!doctype html><title>evil</title><body>', async (address) => {
    const evil = await panel.context.newPage();
    const statuses = [];
    evil.on('response', (answer) => answer.url().startsWith(world.origin) && statuses.push(answer.status()));
    await evil.goto(address);
    const came = await evil.evaluate(async (origin) => {
      const results = [];
      const attempt = (path, options) =>
        fetch(origin + path, { credentials: 'include', ...options }).then((answer) => results.push(answer.type), () => {});
      await attempt('/api/state', {});
      await attempt('/api/state', { mode: 'no-cors' });
      await attempt('/api/repositories/T7/search?words=evil', { mode: 'no-cors' });
      await attempt('/api/project/undo', { method: 'POST', mode: 'no-cors' });
      const load = (element, attribute, path) =>
        new Promise((resolve) => {
          element.onload = element.onopen = () => resolve(results.push(path));
          element.onerror = () => resolve();
          element[attribute] = origin + path;
          document.body.append(element);
        });
      await load(new Image(), 'src', '/api/repositories/T7/clips/1/thumbnail');
      await load(document.createElement('script'), 'src', '/api/texts');
      await new Promise((resolve) => {
        const events = new EventSource(`${origin}/api/events`, { withCredentials: true });
        events.onopen = () => resolve(results.push('events'));
        events.onerror = () => resolve(events.close());
      });
      return results;
    }, world.origin);
    assert.deepEqual(came.filter((what) => what !== 'opaque'), []);
    assert.ok(statuses.every((status) => status === 403), statuses.join());
    await evil.close();
  });
  assert.deepEqual(await panel.get('project'), before);
});

test('another port of this machine gets the panel into a frame with the token alone', async () => {
  const panel = await world.openPanel();
  for (const [inFrame, isOpen] of [[`${world.origin}/`, false], [`${world.origin}/?frame=`, false], [world.address, true]]) {
    await otherPort(`<!doctype html><iframe src="${inFrame}"></iframe>`, async (address) => {
      const other = await panel.context.newPage();
      await other.goto(address);
      const frame = other.frames().find((one) => one !== other.mainFrame());
      await (isOpen ? frame.locator('#search-words') : frame.getByText('foreign_origin')).waitFor();
      assert.equal(await frame.locator('#search-words').count(), isOpen ? 1 : 0, inFrame);
      await other.close();
    });
  }
});

test('a server of another port that was given the cookie changes nothing with it', async () => {
  const panel = await world.openPanel();
  const before = await panel.get('settings');
  let stolen = '';
  const thief = createServer((asked, response) => {
    stolen = asked.headers.cookie ?? stolen;
    response.end('<!doctype html>');
  });
  await new Promise((resolve) => thief.listen(0, '127.0.0.1', resolve));
  try {
    const lured = await panel.context.newPage();
    await lured.goto(`http://127.0.0.1:${thief.address().port}/`);
    await lured.close();
  } finally {
    thief.closeAllConnections();
    await new Promise((resolve) => thief.close(resolve));
  }
  assert.match(stolen, /zq-panel-/, 'browsers send it to every port');
  // From its own process it asks with whatever headers it likes.
  const origin = new URL(world.origin);
  const ask = (method, path, headers, body) =>
    new Promise((resolve, reject) => {
      const all = { Host: origin.host, Origin: origin.origin, 'Sec-Fetch-Site': 'same-origin', Cookie: stolen, ...headers };
      request({ host: '127.0.0.1', port: origin.port, method, path, headers: all, agent: false }, (answer) => {
        let text = '';
        answer.on('data', (part) => (text += part)).on('end', () => resolve({ status: answer.statusCode, text }));
      }).on('error', reject).end(body);
    });
  const told = [];
  for (const path of ['/', '/enter', '/api/state', '/api/settings', '/api/report']) {
    told.push((await ask('GET', path, {})).text);
  }
  const key = await panel.page.evaluate(() => localStorage['zq-panel.key']);
  assert.match(key, /^[0-9a-f]{64}$/);
  assert.ok(!told.some((text) => text.includes(key)), 'nothing that the cookie opens tells the key');
  const json = { 'Content-Type': 'application/json' };
  for (const headers of [json, { ...json, 'X-Zq-Panel-Key': '' }, { ...json, 'X-Zq-Panel-Key': '0'.repeat(64) }]) {
    const refused = await ask('PATCH', '/api/settings', headers, '{"thumbnailSize":333}');
    assert.equal(refused.status, 403);
  }
  assert.equal((await panel.get('settings')).thumbnailSize, before.thumbnailSize);
});

test('the page shows its key after a reload, in a second tab, and after entering again', async () => {
  const panel = await world.openPanel();
  const change = async (page) => {
    await page.locator('#search-words').waitFor();
    assert.equal(new URL(page.url()).pathname + new URL(page.url()).search, '/', 'the token has left the address');
    const answered = page.waitForResponse((answer) => answer.request().method() === 'PATCH');
    await page.getByRole('button', { name: t('results.list'), exact: true }).click();
    assert.equal((await answered).status(), 200);
    const back = page.waitForResponse((answer) => answer.request().method() === 'PATCH');
    await page.getByRole('button', { name: t('results.grid'), exact: true }).click();
    assert.equal((await back).status(), 200);
  };
  await change(panel.page);
  await panel.page.reload();
  await change(panel.page);
  for (const address of [world.address, `${world.origin}/`]) {
    const second = await panel.context.newPage();
    await second.goto(address);
    await change(second);
    await second.close();
  }
  await change(panel.page);
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

// All files below a folder in which one of the texts is.
function filesWith(folder, texts) {
  return readdirSync(folder, { withFileTypes: true }).flatMap((entry) => {
    const path = join(folder, entry.name);
    if (entry.isDirectory()) {
      return filesWith(path, texts);
    }
    const bytes = entry.isFile() ? readFileSync(path) : Buffer.alloc(0);
    return texts.some((text) => bytes.includes(text)) ? [path] : [];
  });
}

test('a password is in one request body and nowhere else', async () => {
  const panel = await world.openPanel();
  const wrong = 'Wr\u00f6ng "pass" & word-77';
  const forms = [wrong, account.password].flatMap((word) => [
    word, JSON.stringify(word).slice(1, -1), encodeURIComponent(word), encodeURIComponent(word).replaceAll('%20', '+'),
    Buffer.from(word).toString('base64').replaceAll('=', ''),
  ]);
  const tells = (text) => forms.some((form) => text.includes(form));
  const carriers = [];
  const answers = [];
  panel.page.on('request', (request) => {
    if (tells(request.url()) || tells(JSON.stringify(request.headers()))) {
      carriers.push(`head of ${request.url()}`);
    }
    if (tells(request.postData() ?? '')) {
      carriers.push(`${request.method()} ${new URL(request.url()).pathname}`);
    }
  });
  panel.page.on('response', (response) => {
    if (response.headers()['content-type']?.startsWith('application/json')) {
      answers.push(response.text().catch(() => ''));
    }
  });
  // What the page holds that a script could read: its document, what is typed, its storage and its history.
  const held = () =>
    panel.page.evaluate(() =>
      JSON.stringify([
        document.documentElement.outerHTML, [...document.querySelectorAll('input, textarea')].map((field) => field.value),
        { ...localStorage }, { ...sessionStorage }, history.state, location.href, document.cookie,
      ]),
    );
  await panel.signIn({ password: wrong });
  await panel.dialog.getByRole('alert').waitFor();
  assert.ok(!tells(await held()), 'after the refusal');
  await panel.dialog.locator('input[type="password"]').fill(account.password);
  await panel.dialog.locator('input[type="password"]').press('Enter');
  await panel.signedIn();
  assert.ok(!tells(await held()), 'signed in');
  await panel.openDrawer('log');
  assert.ok(!tells(await held()), 'in the log');
  assert.deepEqual(carriers, Array(2).fill('POST /api/repositories/T7/login'));
  for (const path of ['state', 'log', 'settings', 'tasks', 'repositories/T7', 'repositories/T7/login', 'repositories/T7/purchases']) {
    assert.ok(!tells(JSON.stringify(await panel.get(path))), path);
  }
  assert.ok(!tells(await panel.page.evaluate(async () => (await fetch('/api/report')).text())), 'the report');
  assert.ok(!(await Promise.all(answers)).some(tells), 'an answer');
  assert.ok(filesWith(world.folder, ['ca_file = ']).length === 1, 'files are looked at');
  assert.deepEqual(filesWith(world.folder, forms), []);
  assert.ok(!tells(world.program.errors));
});

test('without its cookie the page says that it is closed', async () => {
  const context = await world.browser.newContext();
  const page = await context.newPage();
  const answer = await page.goto(`${world.origin}/`);
  assert.equal(answer.status(), 401);
  await context.close();
});
