// What a purchase may hold.
import type { Basket, BasketClip, Purchase } from '../api/types.ts';

// Clips that are in a purchase of that account whose outcome is open, as the purchases or the basket tell.
export function undecided(
  clips: readonly BasketClip[],
  purchases: readonly Purchase[],
  user: string,
): Set<string> {
  return new Set([
    ...clips.filter((clip) => clip.undecided).map((clip) => clip.id),
    ...purchases
      .filter((purchase) => purchase.user === user || purchase.user === '')
      .filter((purchase) => purchase.state === 'running' || purchase.state === 'doubtful')
      .flatMap((purchase) => purchase.clips),
  ]);
}

// Of the basket, what is to be bought: nothing that is owned or may have been bought just now.
export function buyable(
  clips: readonly BasketClip[],
  purchases: readonly Purchase[],
  user: string,
): BasketClip[] {
  const open = undecided(clips, purchases, user);
  return clips.filter((clip) => !clip.owned && !open.has(clip.id));
}

// What these clips cost; empty where that is not known. The basket's total is that of what it says can be bought: when
// the page knows of a purchase that the basket does not know yet, it is the total of something else.
export function totalOf({ clips, total }: Basket, wanted: readonly BasketClip[]): string {
  const summed = clips.filter((clip) => !clip.owned && !clip.undecided).map((clip) => clip.id);
  const ids = new Set(wanted.map((clip) => clip.id));
  return summed.length === ids.size && summed.every((id) => ids.has(id)) ? total : '';
}
