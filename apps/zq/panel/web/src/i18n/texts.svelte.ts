// The page's texts by key, in the program's language.
import { getTexts } from '../api/client.ts';
import { fillIn, pluralKey, type Values } from '../lib/fillIn.ts';

let texts = $state.raw<Record<string, string>>({});
let language = $state('en');

let asked = 0;

// The texts in the language that the program has now; what was asked for last holds. Throws as getTexts.
export async function loadTexts(): Promise<void> {
  const number = ++asked;
  const answer = await getTexts();
  if (number === asked) {
    ({ texts, language } = answer);
    document.documentElement.lang = knownLanguage();
  }
}

// The text of that key. A key without a text shows itself, so that a gap is seen and not hidden.
export function t(key: string, values?: Values): string {
  return fillIn(texts[key] ?? key, values);
}

// The text of that key for a count, which fills $COUNT$.
export function tn(key: string, count: number, values: Values = {}): string {
  return t(pluralKey(texts, key, count, language), { count: formatNumber(count), ...values });
}

export function currentLanguage(): string {
  return language;
}

export function formatNumber(value: number): string {
  return new Intl.NumberFormat(knownLanguage()).format(value);
}

// Of a fraction from 0 to 1, in whole percent.
export function formatPercent(fraction: number): string {
  return new Intl.NumberFormat(knownLanguage(), { style: 'percent', maximumFractionDigits: 0 }).format(fraction);
}

// The language as the browser knows it: the pseudo-language of the tests is none.
export function knownLanguage(): string {
  return language.startsWith('qps') ? 'en' : language;
}
