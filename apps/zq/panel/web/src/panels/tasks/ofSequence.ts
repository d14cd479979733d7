// The clips of the sequence that is worked on, by repository, for what is done with all of them.
import * as api from '../../api/client.ts';
import type { Check, Piece } from '../../api/types.ts';
import { attempt } from '../../state/failure.ts';
import { project } from '../../state/project.svelte.ts';

function byRepository(pieces: readonly Piece[]): Map<string, string[]> {
  const clips = new Map<string, string[]>();
  for (const piece of pieces) {
    const list = clips.get(piece.repository) ?? [];
    if (!list.includes(piece.clip)) {
      clips.set(piece.repository, [...list, piece.clip]);
    }
  }
  return clips;
}

// Fetches what is owned of the sequence and not here in full. Gives the number of clips; undefined where the program
// could not say what is owned.
export async function fetchOwned(): Promise<number | undefined> {
  const usage = await attempt(() => api.getUsage(project.name));
  if (usage === undefined) {
    return undefined;
  }
  const owned = new Set(usage.uses.filter((use) => use.owned === 'owned').map((use) => use.number));
  const wanted = (project.sequence?.pieces ?? []).filter(
    (piece) => owned.has(piece.piece) && (piece.state === 'preview' || piece.state === 'missing'),
  );
  let count = 0;
  for (const [repository, clips] of byRepository(wanted)) {
    if ((await attempt(() => api.fetchClips(repository, clips))) !== undefined) {
      count += clips.length;
    }
  }
  return count;
}

export interface SequenceCheck {
  checks: Check[];
  unknown: number; // pieces of services that are not loaded: nobody can say anything of these
}

// What relinking would do to each clip of the sequence.
export async function checkSequence(): Promise<SequenceCheck | undefined> {
  const pieces = project.sequence?.pieces ?? [];
  const known = pieces.filter((piece) => piece.repository !== '');
  const checks: Check[] = [];
  for (const [repository, clips] of byRepository(known)) {
    const answer = await attempt(() => api.checkClips(repository, clips));
    if (answer === undefined) {
      return undefined;
    }
    checks.push(...answer.checks);
  }
  return { checks, unknown: pieces.length - known.length };
}
