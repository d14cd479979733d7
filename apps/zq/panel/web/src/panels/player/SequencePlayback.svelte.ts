// The sequence in the player: its pieces one after the other, each between its in and out points. While one plays, the
// next is opened, so that a cut costs no wait. A piece whose film cannot be played takes its time with a sign in its
// place.
import { untrack } from 'svelte';
import type { Piece } from '../../api/types.ts';
import { clipTimeAt, indexAt, nextCut, previousCut, sequenceTimeAt, spansOf } from '../../lib/sequenceTime.ts';
import { frameAt, framesPerSecond, middleOf } from '../../lib/timecode.ts';
import { films } from '../../state/films.svelte.ts';
import { player } from '../../state/player.svelte.ts';
import { project } from '../../state/project.svelte.ts';
import { clipOfPiece } from './clipOfPiece.ts';
import type { Film } from './Film.ts';
import { FilmPair } from './FilmPair.svelte.ts';
import { playback } from './Playback.svelte.ts';
import { previewFailure } from './previewFailure.ts';
import type { Transport } from './Transport.ts';

const unknownRate = 25;
const drawing_s = 1 / 60; // between two pictures that the screen draws

const addressOf = (piece: Piece): string => films.of(piece.repository, piece.clip, piece.state);

class SequencePlayback implements Transport {
  time = $state(0);
  speed = $state(0);
  failures = $state.raw<Record<string, string>>({}); // why a film is not played, by its address
  readonly films = new FilmPair((film) => void this.#failed(film));

  pieces = $derived(project.sequence?.pieces ?? []);
  spans = $derived(spansOf(this.pieces, project.sequence?.duration ?? 0));
  duration = $derived(this.spans.at(-1)?.end ?? 0);
  perSecond = $derived(framesPerSecond(project.sequence?.rate) ?? unknownRate);
  index = $derived(indexAt(this.spans, this.time));
  cuts = $derived(this.spans.slice(1).map((span) => span.begin));

  #drawing = 0;
  #last_ms = 0;
  #stands = { sequence: '', piece: 0, clipTime: 0 }; // where it is, in terms that a change of the sequence leaves

  get piece(): Piece | null {
    return this.pieces[this.index] ?? null;
  }
  // In the clip of the piece on screen.
  get clipTime(): number {
    return this.#stands.clipTime;
  }
  // Of what is on screen; empty where there is nothing.
  get address(): string {
    return this.piece === null ? '' : addressOf(this.piece);
  }
  get failure(): string | null {
    return this.failures[this.address] ?? null;
  }
  get muted(): boolean {
    return playback.muted;
  }
  get isOpen(): boolean {
    return this.pieces.length > 0;
  }
  get frame(): number {
    return Math.min(frameAt(this.time, this.perSecond), this.lastFrame);
  }
  get lastFrame(): number {
    return Math.max(0, frameAt(this.duration, this.perSecond) - 1);
  }

  // For each of the two elements; what is on screen stays what it was while the player was elsewhere.
  attach(video: HTMLVideoElement, at: 0 | 1): () => void {
    const release = this.films.attach(video, at);
    if (this.films.isComplete) {
      untrack(() => this.#show());
    }
    return () => {
      this.stop();
      release();
    };
  }

  // The sequence is another one, or has been changed: the same frame of the same piece stays on screen where it can.
  follow(): void {
    if (project.sequence === null) {
      this.stop(); // another one is on its way
      return;
    }
    const { name } = project.sequence;
    const index = this.pieces.findIndex((piece) => piece.piece === this.#stands.piece);
    const piece = this.pieces[index];
    const span = this.spans[index];
    if (name !== this.#stands.sequence) {
      this.stop();
      this.time = 0;
    } else if (piece !== undefined && span !== undefined) {
      const time = sequenceTimeAt(piece, span, this.#stands.clipTime);
      this.time = Math.max(span.begin, Math.min(time, span.end - this.#half));
      const { clipTime } = this.#stands;
      if (this.speed > 0 && clipTime >= piece.in && clipTime < piece.out) {
        return; // it plays what is still right
      }
    } else {
      this.time = Math.max(0, Math.min(this.time, this.duration - this.#half));
    }
    if (this.pieces.length === 0) {
      this.stop();
      this.films.clear();
      player.shows = 'clip';
    }
    this.#show();
  }

  run(speed: number): void {
    if (!this.isOpen) {
      return;
    }
    if (speed > 0 && this.frame >= this.lastFrame) {
      this.seek(0);
    }
    this.speed = speed;
    if (speed <= 0) {
      this.films.pause();
    }
    cancelAnimationFrame(this.#drawing);
    this.#last_ms = performance.now();
    if (speed !== 0) {
      this.#drawing = requestAnimationFrame((now) => this.#tick(now));
    }
  }

  stop(): void {
    this.run(0);
    this.speed = 0;
    this.films.pause();
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

  // By cuts, to the next one or the one before.
  stepCut(step: 1 | -1): void {
    const frame = 1 / this.perSecond;
    const cut = (step > 0 ? nextCut : previousCut)(this.spans, this.time, frame);
    this.seekToFrame(Math.round(cut * this.perSecond));
  }

  seekToFrame(frame: number): void {
    this.seek(middleOf(Math.min(Math.max(frame, 0), this.lastFrame), this.perSecond));
  }

  seek(time: number): void {
    this.time = Math.min(Math.max(time, 0), this.duration);
    this.films.pause();
    this.#show();
  }

  setMuted(muted: boolean): void {
    playback.setMuted(muted);
    this.films.setMuted(muted);
  }

  // The film of the piece on screen may be another one now.
  readdress(): void {
    const { piece } = this;
    const { seen } = this.films;
    if (piece !== null && seen?.piece === piece.piece && seen.address !== addressOf(piece)) {
      this.#show();
    }
  }

  // What could not be played is asked for anew.
  retry(): void {
    this.failures = {};
    films.forget();
    this.films.forgetFailed();
    this.#show();
  }

  get #half(): number {
    return 0.5 / this.perSecond;
  }

  // Brings the frame of this time to the screen, at once or when its film is there.
  #show(): void {
    const { piece } = this;
    const span = this.spans[this.index];
    player.piece = piece === null ? null : { repository: piece.repository, clip: clipOfPiece(piece) };
    if (piece === null || span === undefined) {
      return;
    }
    const clipTime = this.#clipTime(piece, this.time - span.begin);
    this.#stands = { sequence: project.sequence?.name ?? '', piece: piece.piece, clipTime };
    this.films.show(addressOf(piece), piece.piece, clipTime);
  }

  #clipTime(piece: Piece, offset: number): number {
    const frame = 1 / (framesPerSecond(piece.rate) ?? this.perSecond);
    return clipTimeAt(piece, { begin: 0, end: 0 }, offset, frame);
  }

  async #failed(film: Film): Promise<void> {
    const { address, hasOpened } = film;
    if (films.giveUp(address)) {
      this.readdress();
      return;
    }
    this.failures = { ...this.failures, [address]: await previewFailure(address, hasOpened) };
  }

  #tick(now: number): void {
    const passed = Math.min((now - this.#last_ms) / 1000, 0.25);
    this.#last_ms = now;
    if (this.speed < 0) {
      this.#backward(passed);
    } else {
      this.#forward(passed);
    }
    if (this.speed !== 0) {
      this.#drawing = requestAnimationFrame((next) => this.#tick(next));
    }
  }

  // Browsers play forward only: backward is a seek at each picture that the screen draws.
  #backward(passed: number): void {
    this.time = Math.max(0, this.time + this.speed * passed);
    this.#show();
    this.#openBehind(this.index - 1);
    if (this.time <= 0) {
      this.stop();
    }
  }

  #forward(passed: number): void {
    const { piece, index } = this;
    const span = this.spans[index];
    const film = this.films.seen;
    if (piece === null || span === undefined) {
      return;
    }
    if (film?.piece !== piece.piece || film.address !== addressOf(piece)) {
      film?.pause(); // the piece is on its way to the screen
      if (!this.films.has(addressOf(piece), piece.piece)) {
        this.#show();
      }
      return;
    }
    let isOver = false;
    if (film.hasFailed) {
      this.time += this.speed * passed;
      isOver = this.time >= span.end;
    } else if (film.isReady || !film.video.paused) {
      this.#play(film);
      this.films.isWaiting = !film.flows;
      this.time = Math.max(this.time, sequenceTimeAt(piece, span, film.time));
      // Half of what passes until the screen is drawn again: the nearer of the two pictures to the cut.
      const ahead = (this.speed * drawing_s) / 2;
      isOver = film.video.ended || film.time >= piece.out - ahead || this.time >= span.end - ahead;
    }
    this.#stands.clipTime = piece.in + this.time - span.begin;
    this.#openBehind(index + 1);
    if (isOver) {
      this.#cut(index + 1);
    }
  }

  #play(film: Film): void {
    film.play(this.speed, this.muted, () => this.stop());
  }

  #cut(index: number): void {
    const next = this.spans[index];
    if (next === undefined) {
      this.stop();
      this.seekToFrame(this.lastFrame);
      return;
    }
    this.time = next.begin + this.#half;
    this.films.pause();
    this.#show();
    const { seen } = this.films;
    if (seen?.piece === this.pieces[index]?.piece && seen?.isReady === true) {
      this.#play(seen);
    }
  }

  // The piece that comes next is opened at the frame where one enters it.
  #openBehind(index: number): void {
    const next = this.pieces[index];
    const span = this.spans[index];
    if (next !== undefined && span !== undefined && this.films.seen?.piece === this.piece?.piece) {
      const time = this.#clipTime(next, this.speed < 0 ? span.end - span.begin : this.#half);
      this.films.prepare(addressOf(next), next.piece, time);
    }
  }
}

export const sequencePlayback = new SequencePlayback();
