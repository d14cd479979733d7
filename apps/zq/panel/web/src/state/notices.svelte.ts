// Short notices at the edge of the page, read out by screen readers as they come.

export interface Notice {
  number: number;
  kind: 'info' | 'good' | 'problem';
  text: string;
  action?: { label: string; run: () => void };
}

const lifetime_ms = 6000;
const most = 4;

class Notices {
  list = $state<Notice[]>([]);
  // Said but not shown: what a sighted person sees happen anyway.
  spoken = $state('');
  #last = 0;

  // A problem stays until it is dismissed; the rest go by themselves.
  add(kind: Notice['kind'], text: string, action?: Notice['action']): number {
    const number = ++this.#last;
    const notice: Notice = action === undefined ? { number, kind, text } : { number, kind, text, action };
    this.list = [...this.list.filter((other) => other.text !== text), notice].slice(-most);
    if (kind !== 'problem') {
      setTimeout(() => this.remove(number), lifetime_ms);
    }
    return number;
  }

  remove(number: number): void {
    this.list = this.list.filter((notice) => notice.number !== number);
  }

  say(text: string): void {
    this.spoken = text;
  }
}

export const notices = new Notices();
