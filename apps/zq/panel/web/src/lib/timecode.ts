// Frames, seconds and timecodes, written as the program writes its own: 29.97 and 59.94 frames a second count in drop
// frame, which leaves out numbers to keep up with the clock, and have ";" before the frames.
import type { Fraction } from '../api/types.ts';

// Frames in a second; null where the rate is not known, or makes no sense.
export function framesPerSecond(rate: Fraction | null | undefined): number | null {
  if (rate === null || rate === undefined) {
    return null;
  }
  const value = rate[0] / rate[1];
  return Number.isFinite(value) && value > 0 ? value : null;
}

// The frame that is on screen at that time. Times come with the errors of decimal fractions, hence the hair.
export function frameAt(seconds: number, perSecond: number): number {
  return Math.max(0, Math.floor(seconds * perSecond + 1e-3));
}

export function startOf(frame: number, perSecond: number): number {
  return frame / perSecond;
}

// A time that is surely within the frame, to seek to: its very beginning may show the one before.
export function middleOf(frame: number, perSecond: number): number {
  return (frame + 0.5) / perSecond;
}

const two = (value: number): string => String(value).padStart(2, '0');

function clock(wholeSeconds: number): string {
  return `${two(Math.floor(wholeSeconds / 3600))}:${two(Math.floor(wholeSeconds / 60) % 60)}:${two(wholeSeconds % 60)}`;
}

// Numbers that are left out at the start of each minute but every tenth.
export function droppedNumbers(perSecond: number): number {
  const isRate = (nominal: number): boolean => Math.abs(perSecond - (nominal * 1000) / 1001) < 1e-3;
  return isRate(30) ? 2 : isRate(60) ? 4 : 0;
}

// The number that is written for the frame.
function droppedCount(frame: number, counted: number, dropped: number): number {
  const minute = counted * 60 - dropped;
  const tenMinutes = minute * 10 + dropped;
  const rest = frame % tenMinutes;
  const minutes = rest < dropped ? 0 : Math.floor((rest - dropped) / minute);
  return frame + dropped * (Math.floor(frame / tenMinutes) * 9 + minutes);
}

export function frameTimecode(frame: number, perSecond: number): string {
  const counted = Math.max(1, Math.round(perSecond));
  const dropped = droppedNumbers(perSecond);
  const whole = Math.max(0, Math.trunc(frame));
  const count = dropped === 0 ? whole : droppedCount(whole, counted, dropped);
  const frames = String(count % counted).padStart(counted > 100 ? 3 : 2, '0');
  return `${clock(Math.floor(count / counted))}${dropped === 0 ? ':' : ';'}${frames}`;
}

// The first frame whose timecode has that many seconds.
export function frameOfSecond(seconds: number, perSecond: number): number {
  const counted = Math.max(1, Math.round(perSecond));
  const minutes = Math.floor(seconds / 60 + 1e-9);
  const leftOut = minutes - Math.floor(minutes / 10);
  const isLeftOut = minutes % 10 !== 0 && seconds - minutes * 60 < 1e-9;
  return Math.round(seconds * counted) - droppedNumbers(perSecond) * (leftOut - (isLeftOut ? 1 : 0));
}

// Where there is no rate, hundredths of a second stand in the place of frames, behind a point.
export function timecode(seconds: number, rate: Fraction | null | undefined): string {
  const safe = Number.isFinite(seconds) ? Math.max(0, seconds) : 0;
  const perSecond = framesPerSecond(rate);
  if (perSecond !== null) {
    return frameTimecode(frameAt(safe, perSecond), perSecond);
  }
  const hundredths = Math.floor(safe * 100 + 1e-3);
  return `${clock(Math.floor(hundredths / 100))}.${two(hundredths % 100)}`;
}
