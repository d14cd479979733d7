// The program's event stream. The browser connects again by itself with Last-Event-ID as long as it has not given
// up; when it has, this begins a new stream and reports a reset, since what was missed is then not told.
//
// A page that begins opens the stream and reads the state once that is open: the stream tells all that happens from
// then on. What it tells before the state is there waits for it, and of that what the state has already is passed over.
//
// A browser has a handful of connections to one program, for all its tabs together, and a stream takes one: a page that
// nobody sees lets go of it, and hears afterwards what it has missed.
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
  'preview',
  'settings',
];

const firstWait_ms = 500;
const longestWait_ms = 8000;

export class EventStream {
  #source: EventSource | null = null;
  #timer: ReturnType<typeof setTimeout> | undefined;
  #wait_ms = firstWait_ms;
  #isAnew = false;
  #known = 0;
  #last = 0; // the latest event that this page has, told or in its state
  #rests = false;
  #held: { name: EventName; event: MessageEvent<string> }[] | null = null;
  readonly #handlers: Handlers;
  readonly #onConnection: (connection: Connection) => void;

  constructor(handlers: Handlers, onConnection: (connection: Connection) => void) {
    this.#handlers = handlers;
    this.#onConnection = onConnection;
  }

  // Resolves when the stream is open, or as it fails: it is tried again then, and the state tells why.
  open(): Promise<void> {
    return this.#open('/api/events');
  }

  // Lets go of the connection until wake().
  rest(): void {
    if (this.#source !== null) {
      this.close();
      this.#rests = true;
    }
  }

  // Goes on behind the last event that was heard.
  wake(): void {
    if (!this.#rests) {
      return;
    }
    if (this.#last === 0) {
      this.#isAnew = true;
    }
    void this.#open(this.#last === 0 ? '/api/events' : `/api/events?since=${this.#last}`);
  }

  #open(address: string): Promise<void> {
    this.close();
    this.#onConnection('connecting');
    const source = new EventSource(address);
    this.#source = source;
    for (const name of names) {
      source.addEventListener(name, (event) => this.#take(name, event as MessageEvent<string>));
    }
    return new Promise((resolve) => {
      source.onopen = () => {
        this.#wait_ms = firstWait_ms;
        this.#onConnection('live');
        if (this.#isAnew) {
          this.#isAnew = false;
          this.#handlers.reset(null);
        }
        resolve();
      };
      source.onerror = () => {
        this.#onConnection('lost');
        if (source.readyState === EventSource.CLOSED) {
          this.#openLater();
        }
        resolve();
      };
    });
  }

  // Connects at once instead of when the next try is due.
  retry(): void {
    this.#isAnew = true;
    void this.open();
  }

  close(): void {
    this.#rests = false;
    clearTimeout(this.#timer);
    this.#source?.close();
    this.#source = null;
  }

  // From here on events wait, for the state that is about to be read.
  hold(): void {
    this.#held ??= [];
  }

  // The state is there, with the events up to that number in it; those that waited are told.
  release(known: number): void {
    this.#known = known;
    this.#last = Math.max(this.#last, known);
    this.releaseUnread();
  }

  // The state did not come: what waited is told as it is.
  releaseUnread(): void {
    const held = this.#held ?? [];
    this.#held = null;
    for (const { name, event } of held) {
      this.#take(name, event);
    }
  }

  #openLater(): void {
    this.#isAnew = true;
    clearTimeout(this.#timer);
    this.#timer = setTimeout(() => void this.open(), this.#wait_ms);
    this.#wait_ms = Math.min(this.#wait_ms * 2, longestWait_ms);
  }

  #take(name: EventName, event: MessageEvent<string>): void {
    if (this.#held !== null) {
      this.#held.push({ name, event });
      return;
    }
    this.#last = name === 'reset' ? Number(event.lastEventId) : Math.max(this.#last, Number(event.lastEventId));
    if (Number(event.lastEventId) > this.#known) {
      this.#dispatch(name, event.data);
    }
  }

  #dispatch<Name extends EventName>(name: Name, text: string): void {
    let data: unknown;
    try {
      data = JSON.parse(text);
    } catch {
      return;
    }
    this.#handlers[name](data as EventData[Name]);
  }
}
