// The program's event stream. The browser connects again by itself with Last-Event-ID as long as it has not given
// up; when it has, this begins a new stream and reports a reset, since what was missed is then not told.
import type { EventData, EventName } from './types.ts';

export type Connection = 'connecting' | 'live' | 'lost';

type Handlers = { [Name in EventName]: (data: EventData[Name]) => void };

const names: EventName[] = [
  'reset',
  'repository',
  'options',
  'project',
  'task',
  'log',
  'basket',
  'purchase',
  'settings',
];

const firstWait_ms = 500;
const longestWait_ms = 8000;

export class EventStream {
  // Events up to this number are in the state that was read already, and are passed over.
  known = 0;
  #source: EventSource | null = null;
  #timer: ReturnType<typeof setTimeout> | undefined;
  #wait_ms = firstWait_ms;
  #begun = false;
  readonly #handlers: Handlers;
  readonly #onConnection: (connection: Connection) => void;

  constructor(handlers: Handlers, onConnection: (connection: Connection) => void) {
    this.#handlers = handlers;
    this.#onConnection = onConnection;
  }

  open(): void {
    this.close();
    this.#onConnection('connecting');
    const source = new EventSource('/api/events');
    this.#source = source;
    source.onopen = () => {
      this.#wait_ms = firstWait_ms;
      this.#onConnection('live');
      if (this.#begun) {
        this.#begun = false;
        this.#handlers.reset(null);
      }
    };
    source.onerror = () => {
      this.#onConnection('lost');
      if (source.readyState === EventSource.CLOSED) {
        this.#openLater();
      }
    };
    for (const name of names) {
      source.addEventListener(name, (event) => this.#dispatch(name, event as MessageEvent<string>));
    }
  }

  // Connects at once instead of when the next try is due.
  retry(): void {
    this.#begun = true;
    this.open();
  }

  close(): void {
    clearTimeout(this.#timer);
    this.#source?.close();
    this.#source = null;
  }

  #openLater(): void {
    this.#begun = true;
    clearTimeout(this.#timer);
    this.#timer = setTimeout(() => this.open(), this.#wait_ms);
    this.#wait_ms = Math.min(this.#wait_ms * 2, longestWait_ms);
  }

  #dispatch<Name extends EventName>(name: Name, event: MessageEvent<string>): void {
    let data: unknown = null;
    if (name !== 'reset') {
      if (Number(event.lastEventId) <= this.known) {
        return;
      }
      try {
        data = JSON.parse(event.data);
      } catch {
        return;
      }
    }
    this.#handlers[name](data as EventData[Name]);
  }
}
