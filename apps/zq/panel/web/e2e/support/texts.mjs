// The page's texts by key, so that a test names what a person reads without spelling it a second time.
import { readTexts } from '../../scripts/mock/texts.mjs';

let texts = readTexts('en');

// The language that a test reads the page in from here on; English at first.
export function readIn(language) {
  texts = readTexts(language);
}

// Throws where there is no such text: a test that waits for a key would wait for ever.
export function t(key, values = {}) {
  const text = texts[key];
  if (text === undefined) {
    throw new Error(`there is no text "${key}"`);
  }
  return text.replace(/\$([A-Z_]+)\$/g, (holder, name) => String(values[name.toLowerCase()] ?? holder));
}
