// Where the pieces of a sequence lie in the strip, and where things land in it. All of it is to scale: so many pixels
// for a second.

export interface Timed {
  in: number;
  out: number;
}

export interface Box {
  left: number;
  width: number;
}

export const leastScale = 0.05;
export const mostScale = 400;

export function layOut(pieces: readonly Timed[], scale: number): Box[] {
  let at = 0;
  return pieces.map((piece) => {
    const begin = at;
    at += Math.max(0, piece.out - piece.in);
    return { left: begin * scale, width: (at - begin) * scale };
  });
}

// The scale that shows all of it.
export function fittingScale(duration: number, width: number): number {
  return duration > 0 && width > 0 ? bounded(width / duration) : 20;
}

export function bounded(scale: number): number {
  return Math.min(Math.max(scale, leastScale), mostScale);
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
