// Times in a sequence and in the clips of its pieces, and the way from the one to the other.

export interface Timed {
  in: number; // seconds in the clip
  out: number;
}

export interface Placed extends Timed {
  start: number; // seconds in the sequence
}

export interface Span {
  begin: number; // seconds in the sequence
  end: number;
}

// Times come with the errors of decimal fractions.
const hair = 1e-6;

// Where each piece lies. A piece takes whole frames of the sequence, which is not quite what it takes of a clip with
// another rate: its own begin and that of the next one tell. `shown` are the pieces' times while they are trimmed.
export function spansOf(pieces: readonly Placed[], duration: number, shown: readonly Timed[] = pieces): Span[] {
  let shift = 0;
  return pieces.map((piece, index) => {
    const end = pieces[index + 1]?.start ?? Math.max(duration, piece.start);
    const draft = shown[index] ?? piece;
    const begin = piece.start + shift;
    shift += draft.out - draft.in - (piece.out - piece.in);
    return { begin, end: Math.max(end + shift, begin) };
  });
}

// The piece that is on screen at that time: the last one at the very end, none (-1) in an empty sequence.
export function indexAt(spans: readonly Span[], time: number): number {
  let low = 0;
  let high = spans.length - 1;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (time < (spans[middle]?.end ?? 0) - hair) {
      high = middle;
    } else {
      low = middle + 1;
    }
  }
  return spans.length === 0 ? -1 : low;
}

// The time in the clip. Never quite the out point, where the next piece begins.
export function clipTimeAt(piece: Timed, span: Span, time: number, frame: number): number {
  const last = Math.max(piece.in, piece.out - frame / 2);
  return Math.min(Math.max(piece.in + time - span.begin, piece.in), last);
}

export function sequenceTimeAt(piece: Timed, span: Span, clipTime: number): number {
  return Math.min(Math.max(span.begin + clipTime - piece.in, span.begin), span.end);
}

// The cut behind that time, or before it; the ends of the sequence are cuts.
export function nextCut(spans: readonly Span[], time: number, frame: number): number {
  return spans.find((span) => span.begin > time + frame / 2)?.begin ?? spans.at(-1)?.end ?? 0;
}

export function previousCut(spans: readonly Span[], time: number, frame: number): number {
  return spans.filter((span) => span.begin < time - frame).at(-1)?.begin ?? 0;
}
