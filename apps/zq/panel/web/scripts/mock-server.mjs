// A stand-in for the panel's program: the interface of docs/panel-api.md over made-up data, to work on the page
// without a build of the program. It has no access token and is for this machine only.
//   node scripts/mock-server.mjs [--port=5180] [--page=FOLDER] [--language=de] [--theme=light] [--signed-in]
//     [--clips=1000] [--filled] [--build]
import { spawnSync } from 'node:child_process';
import { createServer } from 'node:http';
import { existsSync, readFileSync } from 'node:fs';
import { fileURLToPath } from 'node:url';
import { extname, join, normalize } from 'node:path';
import { Desk } from './mock/Desk.mjs';
import { ApiError, Events, readBody, sendBytes, sendJson } from './mock/http.mjs';
import { makePreviews } from './mock/previews.mjs';
import { Repository } from './mock/Repository.mjs';
import { answer, makeRoutes, match } from './mock/routes.mjs';

const option = (name, otherwise) => {
  const found = process.argv.find((argument) => argument.startsWith(`--${name}=`));
  return found ? found.slice(name.length + 3) : otherwise;
};
const has = (name) => process.argv.includes(`--${name}`);

const root = fileURLToPath(new URL('..', import.meta.url));
const page = option('page', process.env.ZQ_PANEL_OUT ?? join(root, '../../../../build/dev/panel'));
if (has('build')) {
  spawnSync('npm', ['run', 'build', '--', '--outDir', page, '--emptyOutDir'], { cwd: root, stdio: 'inherit' });
}

const policy =
  "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; media-src 'self'; connect-src 'self'; " +
  "font-src 'self'; form-action 'none'; base-uri 'none'; frame-ancestors *";
const types = { '.html': 'text/html; charset=utf-8', '.js': 'text/javascript', '.css': 'text/css', '.svg': 'image/svg+xml' };

const events = new Events();
const say = (event, data) => events.send(event, data);
const repositories = new Map();
for (const repository of [
  new Repository('MF', 'Meadow Footage', { needsSignIn: true, clipCount: Number(option('clips', '1000')), say }),
  new Repository('OP', 'Open Pictures', { needsSignIn: false, clipCount: 60, say }),
]) {
  repositories.set(repository.shortName, repository);
}
const desk = new Desk(repositories, say);
const settings = {
  language: option('language', 'en'),
  languages: [
    { code: 'en', name: 'English' },
    { code: 'de', name: 'Deutsch' },
    { code: 'ja', name: '日本語' },
    { code: 'qps', name: 'Pseudo' },
  ],
  theme: option('theme', 'system'),
  mediaFolder: '/home/ada/Media',
  cacheFolder: '/home/ada/.cache/zq',
  cacheLimitMiB: 2048,
  cacheUsed: 123_456_789,
  proxy: '',
  caFile: '',
  connect: [['footage.example', '127.0.0.1:8443']],
  thumbnailSize: 200,
  view: option('view', 'grid'),
  needsRestart: [],
  path: '/home/ada/.config/zq/host.toml',
};
if (has('signed-in')) {
  Object.assign(repositories.get('MF'), { user: 'editor', credits: 500 });
}
if (has('filled')) {
  ['4', '15', '2', '26', '9'].forEach((clip) => desk.place('Demo', { repository: 'MF', clip }));
  repositories.get('MF').find('4').state = 'full';
  repositories.get('MF').find('15').state = 'missing';
  repositories.get('MF').setBasket(['2', '9', '26']);
}

const routes = makeRoutes({ repositories, desk, settings, events, previews: makePreviews() });

function sendPage(request, response, path) {
  const file = path === '/' ? join(page, 'index.html') : join(page, normalize(path));
  if (!file.startsWith(normalize(page)) || !existsSync(file)) {
    throw new ApiError('not_found', 404, 'There is no such page.');
  }
  sendBytes(request, response, readFileSync(file), types[extname(file)] ?? 'application/octet-stream');
}

async function handle(request, response) {
  const url = new URL(request.url, 'http://127.0.0.1');
  response.setHeader('Content-Security-Policy', policy);
  response.setHeader('X-Content-Type-Options', 'nosniff');
  response.setHeader('Referrer-Policy', 'no-referrer');
  if (url.pathname === '/api/events') {
    events.listen(request, response);
    return;
  }
  if (!url.pathname.startsWith('/api/')) {
    sendPage(request, response, url.pathname);
    return;
  }
  const parts = url.pathname.split('/').slice(1).map(decodeURIComponent);
  const found = match(routes, request.method === 'HEAD' ? 'GET' : request.method, parts);
  if (!found) {
    throw new ApiError('not_found', 404, 'There is no such route.');
  }
  const body = request.method === 'GET' || request.method === 'HEAD' ? {} : await readBody(request);
  await answer(found, request, response, url.searchParams, body);
}

const server = createServer((request, response) => {
  handle(request, response).catch((error) => {
    const failure = error instanceof ApiError ? error : new ApiError('internal', 500, String(error));
    if (failure.status === 500) {
      console.error(error);
    }
    if (!response.headersSent) {
      sendJson(response, { error: { code: failure.code, reason: '', text: failure.message } }, failure.status);
    }
  });
});
server.listen(Number(option('port', '5180')), '127.0.0.1', () => {
  console.log(`http://127.0.0.1:${server.address().port}/`);
});
