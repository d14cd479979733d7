// The clip in the player: where it stands, how fast it runs and in which direction, and what went wrong.
import { untrack } from 'svelte';
import { lacksPicture } from '../../lib/films.ts';
import { middleOf, frameAt } from '../../lib/timecode.ts';
import { films } from '../../state/films.svelte.ts';
import { previewFailure } from './previewFailure.ts';
import type { Transport } from './Transport.ts';

const unknownRate = 25; // frames a second to step by where the rate is not known
const dwell_ms = 150; // a clip that is only passed on the way to another one is not loaded

// What is to happen once a film of that clip is open.
interface Wish {
  film: string; // which clip that is of, whatever the quality
  at: number | null; // null: where it stands
  plays: boolean;
  stopAt: number | null; // null: the end
}

class Playback implements Transport {
  time = $state(0);
  duration = $state(0); // 0 until it is known
  speed = $state(0); // 0: stands; negative: backward
  muted = $state(false);
  isWaiting = $state(false); // for bytes
  failure = $state.raw<{ address: string; text: string } | null>(null);
  perSecond = $state(unknownRate);
  answered = 0; // the wish to play that was granted last, see player.wish

  #video: HTMLVideoElement | null = null;
  #address = '';
  #film = '';
  #left: { video: HTMLVideoElement; plays: boolean } | null = null; // how the last film was left
  #pending: number | null = null; // where the next seek goes once the one that runs has ended
  #stopAt: number | null = null;
  #wish: Wish | null = null;
  #frame = 0;
  #last_ms = 0;

  get isOpen(): boolean {
    return this.duration > 0;
  }

  get frame(): number {
    return Math.min(frameAt(this.time, this.perSecond), this.lastFrame);
  }

  get lastFrame(): number {
    return Math.max(0, frameAt(this.duration, this.perSecond) - 1);
  }

  // For the element that shows the film; that of another address takes its place. The same film in another quality
  // goes on where it is.
  attach(video: HTMLVideoElement, address: string, film: string): () => void {
    this.#video = video;
    const listeners: [keyof HTMLMediaElementEventMap, () => void][] = [
      ['loadedmetadata', () => this.#opened()],
      ['durationchange', () => this.#setDuration()],
      ['timeupdate', () => this.#follow()],
      ['seeked', () => this.#seeked()],
      ['ended', () => (this.speed = 0)],
      ['waiting', () => (this.isWaiting = true)],
      ['canplay', () => (this.isWaiting = false)],
      ['playing', () => (this.isWaiting = false)],
      ['error', () => void this.#failed()],
    ];
    listeners.forEach(([name, listener]) => video.addEventListener(name, listener));
    // The player comes and goes with the room that there is; the film stays where it stood.
    const stood = untrack(() => this.time);
    if (film === this.#film && this.#wish === null && stood > 0) {
      this.#wish = { film, at: stood, plays: this.#left?.video === video && this.#left.plays, stopAt: null };
    }
    const wait_ms = this.#wish?.film === film ? 0 : dwell_ms;
    const timer = setTimeout(() => (video.src = address), wait_ms);
    untrack(() => {
      this.#forget();
      this.#address = address;
      this.#film = film;
      video.muted = this.muted;
      this.isWaiting = true;
    });
    return () => {
      clearTimeout(timer);
      listeners.forEach(([name, listener]) => video.removeEventListener(name, listener));
      cancelAnimationFrame(this.#frame);
      this.#left = { video, plays: this.speed === 1 };
      this.speed = 0;
      this.#video = null;
      // Ends the transfer.
      video.removeAttribute('src');
      video.load();
    };
  }

  // Does what is wished as soon as a film of that clip is there.
  begin(wish: Wish): void {
    this.#wish = wish;
    if (wish.film === this.#film && this.isOpen) {
      this.#grant();
    }
  }

  // The same film anew, at the place where it stood.
  reload(): void {
    this.#wish = { film: this.#film, at: this.time, plays: false, stopAt: null };
    this.stop();
    this.failure = null;
    films.forget();
    if (this.#video !== null) {
      this.#forget();
      this.isWaiting = true;
      this.#video.src = this.#address;
    }
  }

  run(speed: number, stopAt: number | null = null): void {
    const video = this.#video;
    if (video === null || !this.isOpen) {
      return;
    }
    this.#stopAt = stopAt;
    this.speed = speed;
    if (speed > 0) {
      if (this.frame >= this.lastFrame) {
        this.seek(0);
      }
      video.playbackRate = speed;
      video.play().catch(() => {
        // A web view may forbid sound before the first press.
        if (this.speed > 0 && video.paused) {
          this.speed = 0;
        }
      });
    } else {
      video.pause();
    }
    this.#last_ms = performance.now();
    cancelAnimationFrame(this.#frame);
    if (speed !== 0) {
      this.#frame = requestAnimationFrame((now) => this.#tick(now));
    }
  }

  // Also what was still to begin.
  stop(): void {
    if (this.#wish !== null) {
      this.#wish = { ...this.#wish, plays: false };
    }
    this.run(0);
    this.#video?.pause();
    this.#follow();
  }

  toggle(): void {
    if (this.speed === 0) {
      this.run(1);
    } else {
      this.stop();
    }
  }

  step(frames: number): void {
    this.stop();
    this.seekToFrame(this.frame + frames);
  }

  seekToFrame(frame: number): void {
    const bounded = Math.min(Math.max(frame, 0), this.lastFrame);
    this.seek(middleOf(bounded, this.perSecond));
  }

  // One seek at a time: what is wished in the meantime is where the next one goes.
  seek(time: number): void {
    const bounded = Math.min(Math.max(time, 0), this.duration);
    this.time = bounded;
    if (this.#video === null || !this.isOpen) {
      return;
    }
    if (this.#video.seeking) {
      this.#pending = bounded;
    } else {
      // A seek has ended whose end is not told yet: what waited for that is out of date.
      this.#pending = null;
      this.#video.currentTime = bounded;
    }
  }

  setMuted(muted: boolean): void {
    this.muted = muted;
    if (this.#video !== null) {
      this.#video.muted = muted;
    }
  }

  #forget(): void {
    cancelAnimationFrame(this.#frame);
    this.time = 0;
    this.duration = 0;
    this.speed = 0;
    this.#pending = null;
  }

  #opened(): void {
    if (this.#video !== null && lacksPicture(this.#address, this.#video)) {
      void this.#failed();
      return;
    }
    this.#setDuration();
    if (this.#wish?.film === this.#film) {
      this.#grant();
    }
  }

  #grant(): void {
    const wish = this.#wish;
    this.#wish = null;
    if (wish !== null && wish.at !== null) {
      this.seek(wish.at);
    }
    if (wish?.plays === true) {
      this.run(1, wish.stopAt);
    }
  }

  #setDuration(): void {
    const duration = this.#video?.duration ?? 0;
    this.duration = Number.isFinite(duration) ? duration : 0;
  }

  #follow(): void {
    const video = this.#video;
    if (video !== null && !video.seeking && this.#pending === null && this.speed >= 0) {
      this.time = video.currentTime;
    }
  }

  #seeked(): void {
    const next = this.#pending;
    this.#pending = null;
    if (next !== null && this.#video !== null) {
      this.#video.currentTime = next;
    }
  }

  // Browsers play forward only: backward is a seek at each picture that the screen draws.
  #tick(now: number): void {
    const passed = Math.min((now - this.#last_ms) / 1000, 0.25);
    this.#last_ms = now;
    if (this.speed < 0) {
      this.seek(this.time + this.speed * passed);
      if (this.time <= 0) {
        this.speed = 0;
      }
    } else {
      this.#follow();
      if (this.#stopAt !== null && this.time >= this.#stopAt - 0.5 / this.perSecond) {
        const end = this.#stopAt;
        this.stop();
        this.seekToFrame(frameAt(end, this.perSecond) - 1);
      }
    }
    if (this.speed !== 0) {
      this.#frame = requestAnimationFrame((next) => this.#tick(next));
    }
  }

  async #failed(): Promise<void> {
    const address = this.#address;
    this.speed = 0;
    this.isWaiting = false;
    if (films.giveUp(address)) {
      return; // the preview is attached in its place
    }
    const text = await previewFailure(address, this.isOpen);
    if (address === this.#address) {
      this.failure = { address, text };
    }
  }
}

export const playback = new Playback();
