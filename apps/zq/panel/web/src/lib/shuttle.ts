// Speeds as J, K and L choose them.

const speeds = [-8, -4, -2, -1, 0, 1, 2, 4, 8] as const;

export type ShuttleKey = 'j' | 'k' | 'l';

// The speed after the key: L one step faster forward, J one step towards and then faster backward, K stops. From the
// one direction the other is reached without a stop between them.
export function shuttled(speed: number, key: ShuttleKey): number {
  if (key === 'k') {
    return 0;
  }
  const step = key === 'l' ? 1 : -1;
  if (speed === 0) {
    return step;
  }
  // A speed that is none of the list is taken for the slowest of its direction.
  const known = speeds.indexOf(speed as (typeof speeds)[number]);
  const at = known >= 0 ? known : speeds.indexOf(speed > 0 ? 1 : -1);
  const next = speeds[Math.min(Math.max(at + step, 0), speeds.length - 1)] ?? 0;
  return next === 0 ? step : next;
}
