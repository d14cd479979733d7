// The basket from the sequence that is worked on.
import * as api from '../../api/client.ts';
import { attempt } from '../../state/failure.ts';
import { basket } from '../../state/basket.svelte.ts';
import { project } from '../../state/project.svelte.ts';
import { repositories } from '../../state/repositories.svelte.ts';

// Adds what the sequence uses of the repository and the account does not own, as far as is known. Gives how many came
// in; undefined where it failed.
export async function fillFromSequence(): Promise<number | undefined> {
  const usage = await attempt(() => api.getUsage(project.name));
  if (usage === undefined) {
    return undefined;
  }
  const ours = new Set(
    (project.sequence?.pieces ?? [])
      .filter((piece) => piece.repository === repositories.shortName)
      .map((piece) => piece.piece),
  );
  const had = basket.basket.clips.map((clip) => clip.id);
  const unowned = usage.uses.filter((use) => ours.has(use.number) && use.owned !== 'owned').map((use) => use.clip);
  const wanted = [...new Set([...had, ...unowned])];
  if (wanted.length === had.length) {
    return 0;
  }
  return (await basket.replace(wanted)) ? wanted.length - had.length : undefined;
}
