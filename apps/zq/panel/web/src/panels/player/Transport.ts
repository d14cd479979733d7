// What can be played: the clip, or the sequence. The bars and keys of the player work on either.
export interface Transport {
  readonly time: number; // seconds
  readonly duration: number; // 0 until it is known
  readonly speed: number; // 0: stands; negative: backward
  readonly muted: boolean;
  readonly perSecond: number; // frames
  readonly isOpen: boolean; // there is something to play
  readonly frame: number;
  readonly lastFrame: number;
  run(speed: number): void;
  stop(): void;
  toggle(): void;
  step(frames: number): void;
  seekToFrame(frame: number): void;
  setMuted(muted: boolean): void;
}
