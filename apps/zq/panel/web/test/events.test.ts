import assert from 'node:assert/strict';
import { test } from 'node:test';
import { EventStream, type Connection } from '../src/api/events.ts';
import type { EventData, EventName } from '../src/api/types.ts';

// What the page sees of the browser's stream.
class FakeSource {
  static readonly CLOSED = 2;
  static last: FakeSource;
  readyState = 0;
  onopen: (() => void) | null = null;
  onerror: (() => void) | null = null;
  closed = false;
  readonly #listeners = new Map<string, (event: { data: string; lastEventId: string }) => void>();

  constructor(readonly address: string) {
    FakeSource.last = this;
  }
  addEventListener(name: string, listener: (event: { data: string; lastEventId: string }) => void): void {
    this.#listeners.set(name, listener);
  }
  close(): void {
    this.closed = true;
  }
  send(number: number, name: EventName, data: unknown): void {
    this.#listeners.get(name)?.({ data: JSON.stringify(data), lastEventId: String(number) });
  }
}
Object.assign(globalThis, { EventSource: FakeSource });

function listen(onReset: (stream: EventStream) => void = () => undefined) {
  const seen: string[] = [];
  const connections: Connection[] = [];
  const note =
    <Name extends EventName>(name: Name) =>
    (data: EventData[Name]) =>
      void seen.push(`${name} ${JSON.stringify(data)}`);
  const stream: EventStream = new EventStream(
    {
      reset: () => {
        seen.push('reset');
        onReset(stream);
      },
      repository: note('repository'),
      options: note('options'),
      project: note('project'),
      task: note('task'),
      log: note('log'),
      basket: note('basket'),
      purchase: note('purchase'),
      preview: note('preview'),
      settings: note('settings'),
    },
    (connection) => connections.push(connection),
  );
  return { stream, seen, connections };
}

const basket = (repository: string) => `basket {"repository":"${repository}"}`;

test('what happens between the opening of the stream and the reading of the state is told once', () => {
  const { stream, seen } = listen();
  void stream.open();
  stream.hold();
  FakeSource.last.send(7, 'basket', { repository: 'in the state already' });
  FakeSource.last.send(8, 'basket', { repository: 'A' });
  assert.deepEqual(seen, [], 'it waits for the state');
  stream.release(7);
  FakeSource.last.send(9, 'basket', { repository: 'B' });
  assert.deepEqual(seen, [basket('A'), basket('B')]);
});

test('the stream is open when its opening has been waited for', async () => {
  const { stream, connections } = listen();
  let isOpen = false;
  const opening = stream.open().then(() => (isOpen = true));
  await Promise.resolve();
  assert.equal(isOpen, false);
  FakeSource.last.onopen?.();
  await opening;
  assert.deepEqual(connections, ['connecting', 'live']);
});

test('a stream that cannot be opened is waited for no longer, so that the state can say why', async () => {
  const { stream, connections } = listen();
  const opening = stream.open();
  FakeSource.last.onerror?.();
  await opening;
  assert.deepEqual(connections, ['connecting', 'lost']);
});

test('events keep their order where a reset among them has the state read anew', () => {
  const { stream, seen } = listen((self) => self.hold());
  void stream.open();
  stream.hold();
  FakeSource.last.send(1, 'basket', { repository: 'A' });
  FakeSource.last.send(5, 'reset', null);
  FakeSource.last.send(6, 'basket', { repository: 'B' });
  FakeSource.last.send(7, 'basket', { repository: 'C' });
  stream.release(0);
  assert.deepEqual(seen, [basket('A'), 'reset']);
  stream.release(6);
  assert.deepEqual(seen, [basket('A'), 'reset', basket('C')]);
});

test('events that waited for a state that did not come are told', () => {
  const { stream, seen } = listen();
  void stream.open();
  stream.hold();
  FakeSource.last.send(3, 'basket', { repository: 'A' });
  stream.releaseUnread();
  assert.deepEqual(seen, [basket('A')]);
});

test('a stream begun anew has the state read, since what was missed is not told', () => {
  const { stream, seen } = listen();
  void stream.open();
  const first = FakeSource.last;
  first.onopen?.();
  stream.retry();
  assert.equal(first.closed, true);
  FakeSource.last.onopen?.();
  assert.deepEqual(seen, ['reset']);
});

test('a page that rests lets go of the connection without a word, and goes on behind what it has heard', () => {
  const { stream, seen, connections } = listen();
  void stream.open();
  const first = FakeSource.last;
  first.onopen?.();
  stream.hold();
  stream.release(7);
  first.send(9, 'basket', { repository: 'A' });
  stream.rest();
  assert.equal(first.closed, true);
  assert.deepEqual(connections, ['connecting', 'live']);
  stream.wake();
  assert.equal(FakeSource.last.address, '/api/events?since=9');
  FakeSource.last.onopen?.();
  FakeSource.last.send(10, 'basket', { repository: 'B' });
  assert.deepEqual(seen, [basket('A'), basket('B')]);
  stream.wake();
  assert.equal(FakeSource.last.closed, false, 'who is awake goes on');
});

test('a page that has heard nothing goes on behind the state that it has read', () => {
  const { stream } = listen();
  void stream.open();
  stream.hold();
  stream.release(7);
  stream.rest();
  stream.wake();
  assert.equal(FakeSource.last.address, '/api/events?since=7');
});

test('a page that has read no state yet reads it anew', () => {
  const { stream, seen } = listen();
  void stream.open();
  stream.rest();
  stream.wake();
  FakeSource.last.onopen?.();
  assert.equal(FakeSource.last.address, '/api/events');
  assert.deepEqual(seen, ['reset']);
});

test('a stream that was closed for good does not wake', () => {
  const { stream } = listen();
  void stream.open();
  stream.close();
  const last = FakeSource.last;
  stream.rest();
  stream.wake();
  assert.equal(FakeSource.last, last);
});
