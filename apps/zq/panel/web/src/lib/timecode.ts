// Frames, seconds and timecodes. A timecode counts frames without leaving numbers out, as the program's own do.
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

export function frameTimecode(frame: number, perSecond: number): string {
  const counted = Math.max(1, Math.round(perSecond));
  const whole = Math.max(0, Math.trunc(frame));
  return `${clock(Math.floor(whole / counted))}:${two(whole % counted)}`;
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
