// What a purchase may hold, and the key that makes it happen once.
import type { BasketClip, Purchase } from '../api/types.ts';

// Clips that are in a purchase whose outcome is open.
export function undecided(purchases: readonly Purchase[]): Set<string> {
  return new Set(
    purchases
      .filter((purchase) => purchase.state === 'running' || purchase.state === 'doubtful')
      .flatMap((purchase) => purchase.clips),
  );
}

// Of the basket, what is to be bought: nothing that is owned or may have been bought just now.
export function buyable(clips: readonly BasketClip[], purchases: readonly Purchase[]): BasketClip[] {
  const open = undecided(purchases);
  return clips.filter((clip) => !clip.owned && !open.has(clip.id));
}

// 128 random bits as a text. One confirmation has one key, however often it is sent.
export function newKey(random: (bytes: Uint8Array) => Uint8Array = (bytes) => crypto.getRandomValues(bytes)): string {
  return [...random(new Uint8Array(16))].map((byte) => byte.toString(16).padStart(2, '0')).join('');
}
