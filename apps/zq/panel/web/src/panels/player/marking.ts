// In and out points of the clip in the player, by button and by key alike.
import { nameOf } from '../../browser/columns.ts';
import { t } from '../../i18n/texts.svelte.ts';
import { markedIn, markedOut, noMarks, spanOf, type Marks } from '../../lib/markedRange.ts';
import { timecode } from '../../lib/timecode.ts';
import { notices } from '../../state/notices.svelte.ts';
import { player } from '../../state/player.svelte.ts';
import { project } from '../../state/project.svelte.ts';
import { selection } from '../strip/selection.svelte.ts';
import { playback } from './Playback.svelte.ts';

export const marks = (): Marks => ({ inPoint: player.inPoint, outPoint: player.outPoint });
export const isMarked = (): boolean => player.inPoint !== null || player.outPoint !== null;

// The range that the marks leave.
export const span = () => spanOf(marks(), playback.duration);

export const codeOf = (seconds: number): string => timecode(seconds, player.source?.clip.rateFraction);

function set(next: Marks, said: string): void {
  player.inPoint = next.inPoint;
  player.outPoint = next.outPoint;
  notices.say(said);
}

export function markIn(): void {
  if (playback.isOpen) {
    set(markedIn(marks(), playback.frame, playback.perSecond), t('player.said_in', { time: codeOf(playback.time) }));
  }
}

export function markOut(): void {
  if (playback.isOpen) {
    set(markedOut(marks(), playback.frame, playback.perSecond), t('player.said_out', { time: codeOf(playback.time) }));
  }
}

export function clearMarks(): void {
  set(noMarks, t('player.said_clear'));
}

export function goToIn(): void {
  playback.seekToFrame(Math.round(span().begin * playback.perSecond));
}

// The out point is the end of its frame; what is shown is that frame.
export function goToOut(): void {
  playback.seekToFrame(Math.round(span().end * playback.perSecond) - 1);
}

export function playRange(): void {
  const { source } = player;
  if (source !== null) {
    playback.begin({
      film: `${source.repository} ${source.clip.id}`,
      at: span().begin + 0.5 / playback.perSecond,
      plays: true,
      stopAt: isMarked() ? span().end : null,
    });
  }
}

// Places the clip, or its marked range: at the end, or before the piece that is chosen.
export function place(atSelection: boolean): void {
  const { source } = player;
  if (source !== null) {
    const { repository, clip } = source;
    const at = atSelection && selection.piece !== null ? { at: selection.piece.index } : {};
    void project.place({ repository, clip: clip.id, ...player.rangeOf(repository, clip.id), ...at }, nameOf(clip));
  }
}
