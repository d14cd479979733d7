// A door in front of the panel's program that changes what comes out: each text that a page shows becomes another one.
import { createServer, request } from 'node:http';

export class HostileDoor {
  // `change(text, field)` gives what the page gets in the place of a text; a field is named as "basket.clips.name", by
  // the value of the interface that it belongs to and the members on the way, however it has come.
  static async open(address, change) {
    const door = new HostileDoor();
    door.change = change;
    const inner = new URL(address);
    door.refused = null; // a path whose requests fail with the text of the door
    door.link = null; // where every link leads
    door.adjust = (value) => value; // an object, and the field that it is
    door.server = createServer((from, to) => door.#pass(inner, from, to));
    await new Promise((resolve) => door.server.listen(0, '127.0.0.1', resolve));
    const outer = new URL(address);
    outer.port = String(door.server.address().port);
    door.address = outer.href;
    return door;
  }

  #pass(inner, from, to) {
    const path = from.url.split('?')[0];
    if (path === this.refused) {
      to.writeHead(502, { 'Content-Type': 'application/json' });
      to.end(JSON.stringify({ error: { code: 'failed', reason: 'service_refused', text: this.change('', 'error.text') } }));
      return;
    }
    const headers = { ...from.headers, host: inner.host };
    if (headers.origin !== undefined) {
      headers.origin = inner.origin;
    }
    const asked = request({ host: inner.hostname, port: inner.port, method: from.method, path: from.url, headers }, (answer) => {
      const type = answer.headers['content-type'] ?? '';
      const { 'content-length': _, ...kept } = answer.headers;
      const isShown = path.startsWith('/api/') && path !== '/api/texts';
      if (isShown && type.startsWith('text/event-stream')) {
        to.writeHead(answer.statusCode, kept);
        to.flushHeaders();
        this.#passEvents(answer, to);
      } else if (isShown && type.startsWith('application/json') && answer.headers['content-disposition'] === undefined) {
        let body = '';
        answer.setEncoding('utf8').on('data', (part) => (body += part)).on('end', () => {
          to.writeHead(answer.statusCode, kept);
          to.end(body === '' ? body : JSON.stringify(this.#changed(JSON.parse(body), nameOf(path))));
        });
      } else {
        to.writeHead(answer.statusCode, answer.headers);
        answer.pipe(to);
      }
      to.on('close', () => answer.destroy());
    });
    asked.on('error', () => to.destroy());
    from.pipe(asked);
  }

  #passEvents(answer, to) {
    let rest = '';
    answer.setEncoding('utf8').on('data', (part) => {
      rest += part;
      for (let end = rest.indexOf('\n\n'); end >= 0; end = rest.indexOf('\n\n')) {
        const [, name] = /^event: (.*)$/m.exec(rest.slice(0, end)) ?? [];
        const event = rest
          .slice(0, end)
          .replace(/^data: (.*)$/m, (_, data) => `data: ${JSON.stringify(this.#changed(JSON.parse(data), name))}`);
        rest = rest.slice(end + 2);
        to.write(`${event}\n\n`);
      }
    });
    answer.on('end', () => to.end());
  }

  #changed(value, field) {
    if (Array.isArray(value)) {
      const [, one] = fillers.find(([pattern]) => pattern.test(field)) ?? [];
      const list = value.length === 0 && one !== undefined ? [one] : value;
      return list.map((item) => this.#changed(item, field));
    }
    if (value !== null && typeof value === 'object') {
      return Object.fromEntries(Object.entries(this.adjust(value, field)).map(([key, item]) => [key, this.#changed(item, `${field}.${key}`)]));
    }
    if (this.link !== null && /\.(link|webLink|page)$/.test(field) && typeof value === 'string') {
      return this.link;
    }
    const known = valueOf.reduce((name, [pattern, short]) => name.replace(pattern, short), field);
    return typeof value === 'string' && isShown(known, value) ? this.change(value, known) : value;
  }

  end() {
    this.server.closeAllConnections();
    return new Promise((resolve) => this.server.close(resolve));
  }
}

// Values that come in several answers and events.
const valueOf = [
  [/^state\.repositories\./, 'repository.'],
  [/^(state|tasks)\.tasks\./, 'task.'],
  [/^task\.log\./, 'log.'],
  [/^(purchases\.purchases|purchase\.purchase|purchases)\./, 'purchase.'],
  [/^(state|undo|redo)\.project\./, 'project.'],
];
// Lists that are empty as long as all goes well.
const fillers = [
  [/\.differences$/, { what: 'size', promised: '', found: '' }],
  [/\.warnings$/, { kind: 'preview', clip: '', text: '' }],
  [/\.failed$/, { id: '0', name: '', why: 'transfer', reason: '' }],
  [/^hostLog\.lines$/, { number: 1, text: '' }],
];
// Names that lead back to the program as they are.
const keys = /^(settings\.languages|login\.(form|linkForm)|sequence)\.name$/;
const texts =
  /\.(name|text|legend|hint|tooltip|failed\.reason|undo|redo|user|total|price|priceText|totalText|promised|found|legalNotice|(undoStep|redoStep|warnings)\.clip|connect|attributes\.\d+)$/;
// Where an empty text means that something is not there.
const presence = /\.(undo|redo|user|price|attributes\.\d+)$/;

function isShown(field, value) {
  return (texts.test(field) || field === 'task.clips') && !keys.test(field) && !(value === '' && presence.test(field));
}

// "/api/repositories/T7/search" as "search", "/api/tasks/3/log" as "task.log", "/api/sequences/NAME" as "sequence".
function nameOf(path) {
  const [, kind, item, part] = path.slice(1).split('/');
  if (kind === 'log') {
    return 'hostLog';
  }
  if (part === undefined) {
    return item === undefined || kind === 'project' || kind === 'settings' ? kind : kind.replace(/ies$/, 'y').replace(/s$/, '');
  }
  if (kind === 'tasks') {
    return `task.${part}`;
  }
  return kind === 'sequences' && part === 'pieces' ? 'sequence' : part;
}
