// Short notices at the edge of the page, read out by screen readers as they come.
import { say } from '../i18n/say.ts';
import type { Said } from '../lib/wording.ts';

export interface Notice {
  number: number;
  kind: 'info' | 'good' | 'problem';
  text: string;
  detail: string; // in the program's or a service's words; may be empty
  action?: { label: string; run: () => void };
}

const lifetime_ms = 6000;
const most = 4;

class Notices {
  list = $state<Notice[]>([]);
  // Said but not shown: what a sighted person sees happen anyway.
  spoken = $state('');
  #last = 0;

  // A problem stays until it is dismissed; the rest go by themselves, and before the next of them.
  add(kind: Notice['kind'], text: string, action?: Notice['action'], detail = ''): number {
    const number = ++this.#last;
    const notice: Notice = { number, kind, text, detail, ...(action === undefined ? {} : { action }) };
    const stays = (other: Notice): boolean =>
      kind === 'problem' || other.kind === 'problem' || other.action !== undefined;
    this.list = [...this.list.filter((other) => other.text !== text && stays(other)), notice].slice(-most);
    if (kind !== 'problem') {
      setTimeout(() => this.remove(number), lifetime_ms);
    }
    return number;
  }

  // What the program tells.
  tell(kind: Notice['kind'], said: Said): number {
    return this.add(kind, say(said), undefined, said.detail);
  }

  remove(number: number): void {
    this.list = this.list.filter((notice) => notice.number !== number);
  }

  say(text: string): void {
    this.spoken = text;
  }
}

export const notices = new Notices();
