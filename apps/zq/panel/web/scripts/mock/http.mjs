// The least of an HTTP server that the stand-in needs.

export class ApiError extends Error {
  constructor(code, status, text) {
    super(text);
    this.code = code;
    this.status = status;
  }
}

export function delay(ms) {
  return new Promise((resolve) => {
    setTimeout(resolve, ms);
  });
}

export function sendJson(response, value, status = 200) {
  const body = Buffer.from(JSON.stringify(value));
  response.writeHead(status, { 'Content-Type': 'application/json; charset=utf-8', 'Content-Length': body.length, 'Cache-Control': 'no-store' });
  response.end(body);
}

export function sendBytes(request, response, bytes, type, fresh = 'no-store') {
  const range = /^bytes=(\d*)-(\d*)$/.exec(request.headers.range ?? '');
  const headers = { 'Content-Type': type, 'Accept-Ranges': 'bytes', 'Cache-Control': fresh };
  if (!range || (range[1] === '' && range[2] === '')) {
    response.writeHead(200, { ...headers, 'Content-Length': bytes.length });
    response.end(request.method === 'HEAD' ? undefined : bytes);
    return;
  }
  const first = range[1] === '' ? Math.max(0, bytes.length - Number(range[2])) : Number(range[1]);
  const last = range[1] === '' || range[2] === '' ? bytes.length - 1 : Math.min(Number(range[2]), bytes.length - 1);
  if (first > last) {
    response.writeHead(416, { 'Content-Range': `bytes */${bytes.length}` });
    response.end();
    return;
  }
  response.writeHead(206, {
    ...headers,
    'Content-Range': `bytes ${first}-${last}/${bytes.length}`,
    'Content-Length': last - first + 1,
  });
  response.end(bytes.subarray(first, last + 1));
}

export async function readBody(request) {
  const parts = [];
  let size = 0;
  for await (const part of request) {
    size += part.length;
    if (size > 65536) {
      throw new ApiError('too_large', 413, 'The request is too large.');
    }
    parts.push(part);
  }
  if (size === 0) {
    return {};
  }
  if (!(request.headers['content-type'] ?? '').startsWith('application/json')) {
    throw new ApiError('not_json', 415, 'The request is no JSON.');
  }
  try {
    return JSON.parse(Buffer.concat(parts).toString('utf8'));
  } catch {
    throw new ApiError('not_json', 400, 'The request is no JSON.');
  }
}

// Events with numbers, and the last ones for a page that was away.
export class Events {
  constructor() {
    this.number = 0;
    this.kept = [];
    this.listeners = new Set();
  }

  send(event, data) {
    this.number++;
    const text = `id: ${this.number}\nevent: ${event}\ndata: ${JSON.stringify(data)}\n\n`;
    this.kept.push({ number: this.number, text });
    this.kept = this.kept.slice(-1000);
    this.listeners.forEach((response) => response.write(text));
  }

  listen(request, response) {
    response.writeHead(200, { 'Content-Type': 'text/event-stream', 'Cache-Control': 'no-store' });
    response.write(': here\n\n');
    const since = new URL(request.url, 'http://mock').searchParams.get('since');
    const behind = Number(request.headers['last-event-id'] ?? since ?? 0);
    if (behind > 0) {
      const oldest = this.kept[0]?.number ?? this.number + 1;
      if (behind > this.number || behind + 1 < oldest) {
        response.write(`id: ${this.number}\nevent: reset\ndata: null\n\n`);
      } else {
        this.kept.filter((event) => event.number > behind).forEach((event) => response.write(event.text));
      }
    }
    this.listeners.add(response);
    response.on('close', () => this.listeners.delete(response));
  }
}
