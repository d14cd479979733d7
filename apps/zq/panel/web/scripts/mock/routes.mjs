// docs/panel-api.md over the made-up data: a list of method, pattern and handler.
import { landscape } from './png.mjs';
import { told } from './clips.mjs';
import { ApiError, delay, sendBytes, sendJson } from './http.mjs';
import { readTexts } from './texts.mjs';

const thumbnails = new Map();

export function makeRoutes({ repositories, desk, settings, events, previews }) {
  const repositoryOf = (name) => {
    const repository = repositories.get(name);
    if (!repository) {
      throw new ApiError('not_found', 404, 'There is no such repository.');
    }
    return repository;
  };
  const state = () => ({
    version: '0.0.0-mock',
    language: settings.language,
    theme: settings.theme,
    repositories: [...repositories.values()].map((repository) => repository.describe()),
    project: desk.tellProject(),
    tasks: desk.tasks.map((task) => desk.tellTask(task)),
    event: events.number,
  });
  const pieces = () => [...desk.sequences.values()].flat();
  const thumbnail = async (request, response, clip) => {
    if (!clip.hasThumbnail || clip.thumbnailFails) {
      throw new ApiError('not_found', 404, 'There is no picture.');
    }
    if (!thumbnails.has(clip.id)) {
      thumbnails.set(clip.id, landscape(clip.id));
    }
    sendBytes(request, response, thumbnails.get(clip.id), 'image/png', 'private, max-age=3600');
  };
  const preview = (request, response, clip) => {
    const bytes = previews.length > 0 ? previews[Number.parseInt(clip.id, 10) % previews.length || 0] : null;
    if (!clip.hasPreview || !bytes) {
      throw new ApiError('not_found', 404, 'There is no preview.');
    }
    sendBytes(request, response, bytes, 'video/mp4');
  };

  const route = (method, pattern, answer) => ({ method, parts: pattern.split('/').slice(1), answer });
  return [
    route('GET', '/api/state', state),
    route('GET', '/api/texts', () => ({ language: settings.language, texts: readTexts(settings.language) })),
    route('POST', '/api/links', ({ body }) => {
      console.log(`link: ${JSON.stringify(body.url)}`);
      return {};
    }),
    route('GET', '/api/repositories/{r}', ({ r }) => repositoryOf(r).describe()),
    route('GET', '/api/repositories/{r}/login', ({ r }) => repositoryOf(r).forms()),
    route('POST', '/api/repositories/{r}/login', ({ r, body }) => repositoryOf(r).signIn(body.values ?? {})),
    route('POST', '/api/repositories/{r}/logout', ({ r }) => {
      repositoryOf(r).signOut();
      return {};
    }),
    route('GET', '/api/repositories/{r}/options', ({ r }) => ({ groups: repositoryOf(r).toldGroups() })),
    route('PUT', '/api/repositories/{r}/options/{g}/{i}', ({ r, g, i, body }) =>
      repositoryOf(r).setOption(Number(g), Number(i), body.value)),
    route('GET', '/api/repositories/{r}/search', ({ r, query }) =>
      repositoryOf(r).search(query.get('words') ?? '', Number(query.get('page') ?? 1), Number(query.get('pageSize') ?? 50), query.get('asker') ?? '')),
    route('DELETE', '/api/repositories/{r}/search', ({ r, query }) => {
      repositoryOf(r).cancelSearch(query.get('asker') ?? '');
      return {};
    }),
    route('GET', '/api/repositories/{r}/owned', ({ r }) => repositoryOf(r).owned()),
    route('GET', '/api/repositories/{r}/clips/{c}', ({ r, c }) => told(repositoryOf(r).find(c))),
    route('GET', '/api/repositories/{r}/clips/{c}/thumbnail', async ({ r, c, request, response }) => {
      await delay(20 + Math.random() * 60);
      await thumbnail(request, response, repositoryOf(r).find(c));
    }),
    route('GET', '/api/repositories/{r}/clips/{c}/preview', ({ r, c, request, response }) =>
      preview(request, response, repositoryOf(r).find(c))),
    route('GET', '/api/repositories/{r}/clips/{c}/media', ({ r, c, request, response }) => {
      const clip = repositoryOf(r).find(c);
      if (clip.state !== 'full') {
        throw new ApiError('not_found', 404, "The clip's full media is not on this machine.");
      }
      preview(request, response, clip);
    }),
    route('GET', '/api/repositories/{r}/basket', ({ r }) => repositoryOf(r).tellBasket(pieces())),
    route('PUT', '/api/repositories/{r}/basket', ({ r, body }) => {
      repositoryOf(r).setBasket(body.clips ?? []);
      return repositoryOf(r).tellBasket(pieces());
    }),
    route('POST', '/api/repositories/{r}/purchases', ({ r, body }) => repositoryOf(r).buy(body)),
    route('DELETE', '/api/repositories/{r}/purchases/{key}', ({ r, key }) => repositoryOf(r).withdraw(key)),
    route('GET', '/api/repositories/{r}/purchases', ({ r }) => ({ purchases: repositoryOf(r).purchases })),
    route('POST', '/api/repositories/{r}/fetches', ({ r, body }) => ({ task: desk.fetch(repositoryOf(r), body.clips).task })),
    route('POST', '/api/repositories/{r}/checks', ({ r, body }) => ({
      checks: body.clips.map((id) => {
        const clip = repositoryOf(r).find(id);
        return {
          clip: id, name: clip.name, ok: clip.owned, outcome: clip.owned ? 'same' : 'no_file', cutShort: 0,
          text: clip.owned ? 'Every cut stays where it is.' : 'The full media is not on this machine.', file: {}, differences: [], uses: [],
        };
      }),
    })),
    route('GET', '/api/project', () => desk.tellProject()),
    route('POST', '/api/project/undo', () => desk.undo()),
    route('POST', '/api/project/redo', () => desk.redo()),
    route('GET', '/api/sequences/{s}', ({ s }) => desk.tellSequence(s)),
    route('POST', '/api/sequences/{s}/pieces', ({ s, body }) => desk.place(s, body)),
    route('PATCH', '/api/sequences/{s}/pieces/{p}', ({ s, p, body }) => desk.change(s, Number(p), body)),
    route('DELETE', '/api/sequences/{s}/pieces/{p}', ({ s, p }) => desk.remove(s, Number(p))),
    route('GET', '/api/sequences/{s}/usage', ({ s, query, request, response }) =>
      query.has('format')
        ? keep(request, response, JSON.stringify(desk.usage(s)), `usage.${query.get('format')}`)
        : desk.usage(s)),
    route('GET', '/api/sequences/{s}/export', ({ s, query, request, response }) =>
      query.get('check') === '1' ? desk.checkExport(s, query.get('format')) : keep(request, response, `stand-in for ${s}`, `sequence.${query.get('format')}`)),
    route('GET', '/api/tasks', () => ({ tasks: desk.tasks.map((task) => desk.tellTask(task)) })),
    route('DELETE', '/api/tasks/{t}', ({ t }) => {
      desk.cancelTask(Number(t));
      return {};
    }),
    route('POST', '/api/tasks/{t}/retry', ({ t }) => ({ task: desk.retryTask(Number(t)).task })),
    route('GET', '/api/tasks/{t}/log', ({ t, query }) => ({
      lines: (desk.logs.get(desk.findTask(Number(t)).task) ?? []).filter((line) => line.number > Number(query.get('since') ?? 0)),
    })),
    route('GET', '/api/log', () => ({ lines: desk.hostLog.slice(-500) })),
    route('GET', '/api/report', ({ request, response }) => keep(request, response, 'A report of the stand-in.', 'report.txt')),
    route('GET', '/api/settings', () => settings),
    route('PATCH', '/api/settings', ({ body }) => {
      for (const key of ['language', 'theme', 'mediaFolder', 'cacheFolder', 'cacheLimitMiB', 'proxy', 'caFile', 'thumbnailSize', 'view']) {
        if (body[key] !== undefined) {
          if (['proxy', 'caFile', 'cacheFolder', 'mediaFolder'].includes(key) && body[key] !== settings[key]) {
            settings.needsRestart = [...new Set([...settings.needsRestart, key])];
          }
          settings[key] = body[key];
        }
      }
      events.send('settings', settings);
      return settings;
    }),
    route('POST', '/api/settings/clear-cache', () => {
      const freed = settings.cacheUsed;
      settings.cacheUsed = 0;
      events.send('settings', settings);
      return { freed };
    }),
    route('POST', '/api/settings/test-connection', async () => {
      await delay(500);
      return { servers: [{ name: 'footage.example', ok: true, reason: 'answered', status: 200, text: 'Connected.', seconds: 0.12 }, { name: 'quarry.example', ok: false, reason: 'no_answer', status: 0, text: 'No connection to the service could be made.', seconds: 5 }] };
    }),
  ];
}

function keep(request, response, text, name) {
  response.setHeader('Content-Disposition', `attachment; filename="${name}"`);
  sendBytes(request, response, Buffer.from(text), 'application/octet-stream');
}

export function match(routes, method, parts) {
  for (const candidate of routes) {
    if (candidate.method !== method || candidate.parts.length !== parts.length) {
      continue;
    }
    const captures = {};
    const fits = candidate.parts.every((part, index) => {
      if (part.startsWith('{')) {
        captures[part.slice(1, -1)] = parts[index];
        return true;
      }
      return part === parts[index];
    });
    if (fits) {
      return { answer: candidate.answer, captures };
    }
  }
  return null;
}

export async function answer(found, request, response, query, body) {
  const value = await found.answer({ ...found.captures, query, body, request, response });
  if (!response.headersSent) {
    sendJson(response, value ?? {});
  }
}
