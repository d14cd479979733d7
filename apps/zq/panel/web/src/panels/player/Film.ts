// One of the video elements by which a sequence is played: the film that it has, and the frame of it that is wanted.
import { lacksPicture } from '../../lib/films.ts';

export class Film {
  address = '';
  piece = 0; // whose film it is; 0: nobody's
  hasOpened = false;
  hasFailed = false;
  #wanted: number | null = null; // a seek that waits, for the film to open or for the seek that runs
  readonly #listeners: [keyof HTMLMediaElementEventMap, () => void][];

  // `changed` is called whenever the answer of isReady or hasFailed may be another one.
  constructor(
    readonly video: HTMLVideoElement,
    changed: () => void,
  ) {
    this.#listeners = [
      ['loadedmetadata', () => this.#opened(changed)],
      ['seeked', () => (this.#goOn(), changed())],
      ['loadeddata', changed],
      ['canplay', changed],
      ['error', () => (this.hasFailed = this.address !== '') && changed()],
    ];
    this.#listeners.forEach(([name, listener]) => video.addEventListener(name, listener));
  }

  // True while the frame on screen is the one that was asked for.
  get isReady(): boolean {
    const { video } = this;
    return this.address !== '' && !this.hasFailed && this.#wanted === null && !video.seeking && video.readyState >= 2;
  }

  // False while it waits for bytes.
  get flows(): boolean {
    return this.video.readyState >= 3 || this.video.ended;
  }

  get time(): number {
    return this.video.currentTime;
  }

  // Shows that frame of that film, which is loaded where it is another one.
  open(address: string, piece: number, time: number): void {
    this.piece = piece;
    if (address !== this.address) {
      this.address = address;
      this.hasOpened = false;
      this.hasFailed = false;
      this.video.src = address;
    }
    this.seek(time);
  }

  // One seek at a time: what is wished in the meantime is where the next one goes.
  seek(time: number): void {
    this.#wanted = time;
    this.#goOn();
  }

  // Calls `forbidden` where the browser does not let a page play that nobody has pressed a key in yet.
  play(speed: number, muted: boolean, forbidden: () => void): void {
    this.video.muted = muted;
    if (this.video.playbackRate !== speed) {
      this.video.playbackRate = speed;
    }
    if (this.video.paused && !this.video.ended) {
      this.video.play().catch((error: unknown) => {
        if (error instanceof DOMException && error.name === 'NotAllowedError') {
          forbidden();
        }
      });
    }
  }

  pause(): void {
    this.video.pause();
  }

  // Ends the transfer.
  clear(): void {
    this.address = '';
    this.piece = 0;
    this.hasFailed = false;
    this.#wanted = null;
    this.video.removeAttribute('src');
    this.video.load();
  }

  dispose(): void {
    this.#listeners.forEach(([name, listener]) => this.video.removeEventListener(name, listener));
    this.clear();
  }

  #opened(changed: () => void): void {
    this.hasOpened = true;
    if (lacksPicture(this.address, this.video)) {
      this.hasFailed = true;
      changed();
    } else {
      this.#goOn();
    }
  }

  #goOn(): void {
    const { video } = this;
    if (this.#wanted === null || video.readyState < 1 || video.seeking) {
      return;
    }
    const end = Number.isFinite(video.duration) ? video.duration : Number.MAX_VALUE;
    const time = Math.min(this.#wanted, end);
    this.#wanted = null;
    if (Math.abs(time - video.currentTime) > 1e-4) {
      video.currentTime = time;
    }
  }
}
