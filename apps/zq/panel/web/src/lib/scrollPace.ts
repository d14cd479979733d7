// How fast one scrolls, to leave out what nobody could look at.

// A clip that crosses the window in less time than this is passed by.
const glance_ms = 300;
// Two positions further apart in time belong to two scrolls.
const rest_ms = 120;

export class ScrollPace {
  #top = 0;
  #time = Number.NEGATIVE_INFINITY;

  // The window of that height (pixels) stands at `top` at a time (milliseconds). Whether what it shows is passed by.
  at(top: number, time: number, height: number): boolean {
    const [way, taken] = [Math.abs(top - this.#top), time - this.#time];
    this.#top = top;
    this.#time = time;
    return taken > 0 && taken < rest_ms && way * glance_ms > height * taken;
  }
}
