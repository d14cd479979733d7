// A finger that rests where it was put down: whoever moves it scrolls, whoever holds it still takes hold of something.
const staysTap = 10; // pixels that it may move while it rests
const rest_ms = 380;

export class FingerRest {
  #waiting: { timer: ReturnType<typeof setTimeout>; x: number; y: number } | null = null;

  // Calls `rested` once, unless it moves or ends before.
  begin(event: PointerEvent, rested: () => void): void {
    this.end();
    const timer = setTimeout(() => {
      this.#waiting = null;
      navigator.vibrate?.(12);
      rested();
    }, rest_ms);
    this.#waiting = { timer, x: event.clientX, y: event.clientY };
  }

  move(event: PointerEvent): void {
    const waiting = this.#waiting;
    if (waiting !== null && Math.hypot(event.clientX - waiting.x, event.clientY - waiting.y) > staysTap) {
      this.end();
    }
  }

  end(): void {
    clearTimeout(this.#waiting?.timer);
    this.#waiting = null;
  }
}
