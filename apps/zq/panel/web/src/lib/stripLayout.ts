// Where the pieces of a sequence lie in the strip, and where things land in it. All of it is to scale: so many pixels
// for a second.

import type { Span, Timed } from './sequenceTime.ts';

export interface Box {
  left: number;
  width: number;
}

export const leastScale = 0.05;
export const mostScale = 400;

export function layOut(spans: readonly Span[], scale: number): Box[] {
  return spans.map(({ begin, end }) => ({ left: begin * scale, width: (end - begin) * scale }));
}

// The scale that shows all of it.
export function fittingScale(duration: number, width: number): number {
  return duration > 0 && width > 0 ? bounded(width / duration) : 20;
}

// The scale at which a name can be read in three of four pieces; that which shows all of it where it is large enough.
export function readableScale(spans: readonly Span[], width: number, nameWidth = 96): number {
  const lengths = spans.map((span) => span.end - span.begin).sort((a, b) => a - b);
  const usual = lengths[Math.floor(lengths.length / 4)] ?? 0;
  const fitting = fittingScale(spans.at(-1)?.end ?? 0, width);
  return usual > 0 ? bounded(Math.max(fitting, nameWidth / usual)) : fitting;
}

export function bounded(scale: number): number {
  return Math.min(Math.max(scale, leastScale), mostScale);
}

// Where the view begins after a change of scale, so that what is at that place of it stays there.
export function keptScroll(scroll: number, anchor: number, before: number, after: number): number {
  return ((scroll + anchor) / before) * after - anchor;
}

// What a change of scale holds on to, as a place in the view: the first of these that is in it, else its middle.
export function anchorOf(wanted: readonly (number | null)[], scroll: number, width: number): number {
  const seen = wanted.find((x) => x !== null && x >= scroll && x <= scroll + width) ?? null;
  return seen === null ? width / 2 : seen - scroll;
}

// The place between pieces that is nearest: 0 before the first, their number after the last.
export function insertionAt(x: number, boxes: readonly Box[]): number {
  return boxes.filter((box) => x > box.left + box.width / 2).length;
}

// The index that a piece has after it was put into a place between pieces, counted while it was still in its own.
export function indexAfterMove(from: number, place: number): number {
  return place > from ? place - 1 : place;
}

export type Edge = 'in' | 'out';

// One edge moved by so many seconds, at least one frame left, nothing beyond the clip.
export function trimmed(piece: Timed, edge: Edge, by: number, frame: number, clipDuration: number): Timed {
  if (edge === 'in') {
    return { in: Math.min(Math.max(piece.in + by, 0), piece.out - frame), out: piece.out };
  }
  const end = Math.max(clipDuration, piece.out);
  return { in: piece.in, out: Math.max(Math.min(piece.out + by, end), piece.in + frame) };
}

// Seconds to the nearest frame.
export function toFrame(seconds: number, frame: number): number {
  return Math.round(seconds / frame) * frame;
}

const steps = [0.1, 0.2, 0.5, 1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200];

// Seconds between two marks of the ruler, so that their texts do not touch.
export function rulerStep(scale: number, least = 84): number {
  return steps.find((step) => step * scale >= least) ?? Math.ceil(least / scale / 3600) * 3600;
}

// The marks that are within view, in seconds.
export function rulerMarks(scale: number, duration: number, from: number, to: number): number[] {
  const step = rulerStep(scale);
  const marks: number[] = [];
  const last = Math.min(to / scale, Math.max(duration, 0));
  for (let index = Math.max(0, Math.floor(from / scale / step)); index * step <= last; index++) {
    marks.push(index * step);
  }
  return marks;
}
