// In and out points as a person sets them, by frame. The in point is the beginning of its frame and the out point the
// end of its frame, so that marking both on one frame gives that frame.

export interface Marks {
  inPoint: number | null; // seconds; null: the clip's beginning
  outPoint: number | null; // null: its end
}

export const noMarks: Marks = { inPoint: null, outPoint: null };

// A mark beyond the other one takes that one away.
export function markedIn(marks: Marks, frame: number, perSecond: number): Marks {
  const inPoint = frame / perSecond;
  const keeps = marks.outPoint !== null && marks.outPoint > inPoint + 0.5 / perSecond;
  return { inPoint, outPoint: keeps ? marks.outPoint : null };
}

export function markedOut(marks: Marks, frame: number, perSecond: number): Marks {
  const outPoint = (frame + 1) / perSecond;
  const keeps = marks.inPoint !== null && marks.inPoint < outPoint - 0.5 / perSecond;
  return { inPoint: keeps ? marks.inPoint : null, outPoint };
}

// The range that the marks leave of the clip.
export function spanOf(marks: Marks, duration: number): { begin: number; end: number } {
  const begin = Math.min(Math.max(marks.inPoint ?? 0, 0), duration);
  return { begin, end: Math.min(Math.max(marks.outPoint ?? duration, begin), duration) };
}
