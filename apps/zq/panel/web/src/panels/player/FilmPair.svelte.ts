// Two video elements that take turns: while the one is seen, the other opens what comes next and stands at the frame
// where that begins. Which of them is seen changes when the other one has its frame, never before: there is no black
// between two films.
import { Film } from './Film.ts';

export class FilmPair {
  front = $state(0); // which one is seen
  isWaiting = $state(false); // for the frame that is wanted
  #films: (Film | null)[] = [null, null];
  #wanted: Film | null = null; // has the frame that is to be seen, or is to have it
  readonly #failed: (film: Film) => void;

  constructor(failed: (film: Film) => void) {
    this.#failed = failed;
  }

  get isComplete(): boolean {
    return this.#films.every((film) => film !== null);
  }
  get seen(): Film | null {
    return this.#films[this.front] ?? null;
  }
  get #unseen(): Film | null {
    return this.#films[1 - this.front] ?? null;
  }

  attach(video: HTMLVideoElement, at: 0 | 1): () => void {
    const film = new Film(video, () => this.#changed(film));
    this.#films[at] = film;
    return () => {
      film.dispose();
      this.#films[at] = null;
      this.#wanted = null;
    };
  }

  // True where one of them has the film of that piece, from that address.
  has(address: string, piece: number): boolean {
    return this.#films.some((film) => film?.address === address && film.piece === piece);
  }

  // Brings that frame to the screen, at once or when its film is there.
  show(address: string, piece: number, time: number): void {
    const films = [this.seen, this.#unseen];
    const film =
      films.find((one) => one?.address === address && one.piece === piece) ??
      films.find((one) => one?.address === address) ??
      (this.seen?.address === '' ? this.seen : this.#unseen);
    if (film !== null) {
      film.open(address, piece, time);
      this.#wanted = film;
      this.#bringForward();
    }
  }

  // The element that is not seen opens that film, at that frame.
  prepare(address: string, piece: number, time: number): void {
    const film = this.#unseen;
    if (film !== null && film !== this.#wanted && (film.piece !== piece || film.address !== address)) {
      film.pause();
      film.open(address, piece, time);
    }
  }

  pause(): void {
    this.#films.forEach((film) => film?.pause());
  }

  setMuted(muted: boolean): void {
    this.#films.forEach((film) => film !== null && (film.video.muted = muted));
  }

  clear(): void {
    this.#films.forEach((film) => film?.clear());
    this.isWaiting = false;
  }

  forgetFailed(): void {
    this.#films.forEach((film) => film?.hasFailed && film.clear());
  }

  #changed(film: Film): void {
    if (film.hasFailed) {
      this.#failed(film);
    }
    if (film === this.#wanted) {
      this.#bringForward();
    }
  }

  #bringForward(): void {
    const film = this.#wanted;
    const isThere = film !== null && (film.isReady || film.hasFailed);
    this.isWaiting = !isThere;
    if (isThere) {
      this.#films.find((one) => one !== film)?.pause();
      this.front = this.#films.indexOf(film);
    }
  }
}
