// The keys of the strip.
import type { Piece } from '../../api/types.ts';
import { project } from '../../state/project.svelte.ts';
import { playPiece, toggleSequence } from '../player/playing.svelte.ts';
import { sequencePlayback } from '../player/SequencePlayback.svelte.ts';
import { movePiece, removePiece } from './actions.ts';
import { pieceDrag } from './pieceDrag.svelte.ts';
import { selection } from './selection.svelte.ts';
import { trim } from './trim.svelte.ts';
import { view } from './view.svelte.ts';

type Focus = (piece: Piece | null | undefined) => Promise<void>;

// `piece`: the one that has the focus, else the one that is chosen. True where the key has done something.
export function onTrackKey(event: KeyboardEvent, piece: Piece | null, focus: Focus): boolean {
  const isPlain = !event.ctrlKey && !event.metaKey && !event.altKey;
  if (isPlain && onViewKey(event)) {
    return true;
  }
  if (piece === null) {
    return false;
  }
  return onTrimKey(event, piece) || onMoveKey(event, piece, focus) || (isPlain && onPieceKey(event, piece, focus));
}

function onViewKey(event: KeyboardEvent): boolean {
  const work: Record<string, (() => void) | undefined> = {
    '+': () => view.zoomBy(1),
    '=': () => view.zoomBy(1),
    '-': () => view.zoomBy(-1),
    '0': () => view.fit(),
    ' ': toggleSequence,
    ArrowUp: () => sequencePlayback.stepCut(-1),
    ArrowDown: () => sequencePlayback.stepCut(1),
  };
  const chosen = work[event.key];
  chosen?.();
  return chosen !== undefined;
}

// Brackets are found where they stand on an English keyboard, too.
function onTrimKey(event: KeyboardEvent, piece: Piece): boolean {
  const isBefore = event.key === '[' || event.key === '{' || event.code === 'BracketLeft';
  const isAfter = event.key === ']' || event.key === '}' || event.code === 'BracketRight';
  if (!isBefore && !isAfter) {
    return false;
  }
  selection.set(piece);
  if (project.project.writable) {
    trim.byFrames(piece, selection.edge, (isBefore ? -1 : 1) * (event.shiftKey ? 10 : 1));
  }
  return true;
}

function onMoveKey(event: KeyboardEvent, piece: Piece, focus: Focus): boolean {
  const { pieces } = view;
  const step = { ArrowLeft: -1, ArrowRight: 1, Home: -pieces.length, End: pieces.length }[event.key];
  if (step === undefined || event.ctrlKey || event.metaKey) {
    return false;
  }
  if (!event.altKey) {
    void focus(pieces[Math.min(Math.max(piece.index + step, 0), pieces.length - 1)]);
  } else if (project.project.writable) {
    void movePiece(piece, piece.index + step).then(() => focus(view.pieces.find((other) => other.piece === piece.piece)));
  }
  return true;
}

function onPieceKey(event: KeyboardEvent, piece: Piece, focus: Focus): boolean {
  const remove = (): void => {
    if (project.project.writable) {
      void removePiece(piece).then(() => focus(selection.piece));
    }
  };
  const work: Record<string, (() => void) | undefined> = {
    Enter: () => void playPiece(piece),
    Delete: remove,
    Backspace: remove,
    e: () => (selection.edge = selection.edge === 'in' ? 'out' : 'in'),
  };
  const chosen = work[event.key.length === 1 ? event.key.toLowerCase() : event.key];
  if (chosen !== undefined) {
    chosen();
    return true;
  }
  if (event.key === 'Escape' && (trim.draft !== null || pieceDrag.holds || selection.number !== null)) {
    trim.cancel();
    pieceDrag.cancel();
    selection.set(null);
    return true;
  }
  return false;
}
