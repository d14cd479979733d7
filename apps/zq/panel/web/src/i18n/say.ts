// What is said by a code, in the page's language.
import type { Values } from '../lib/fillIn.ts';
import type { Said } from '../lib/wording.ts';
import { formatNumber, t, tn } from './texts.svelte.ts';

export function say({ key, count, values = {} }: Said): string {
  const filled: Values = {};
  for (const [name, value] of Object.entries(values)) {
    filled[name] = typeof value === 'string' ? value : typeof value === 'number' ? formatNumber(value) : say(value);
  }
  return count === undefined ? t(key, filled) : tn(key, count, filled);
}
