// Work that waits until a person has paused: each call begins the wait anew.

export class Settle {
  #timer: ReturnType<typeof setTimeout> | undefined;

  constructor(
    private readonly wait_ms: number,
    private readonly work: () => void,
  ) {}

  later(): void {
    clearTimeout(this.#timer);
    this.#timer = setTimeout(this.work, this.wait_ms);
  }

  cancel(): void {
    clearTimeout(this.#timer);
  }
}
