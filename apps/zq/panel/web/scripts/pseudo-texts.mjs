// Writes the pseudo-language qps from the English texts: letters with accents, a third longer, in brackets. A page in
// it shows at once which words are not from the texts, which are cut off, and which have no room.
//   node scripts/pseudo-texts.mjs [--check]
import { readFileSync, writeFileSync } from 'node:fs';
import { fileURLToPath } from 'node:url';
import { parseTexts, textsFolder } from './mock/texts.mjs';

const accents = {
  a: 'á', b: 'ƀ', c: 'ç', d: 'ð', e: 'é', f: 'ƒ', g: 'ĝ', h: 'ĥ', i: 'í', j: 'ĵ', k: 'ķ', l: 'ļ', m: 'ɱ',
  n: 'ñ', o: 'ó', p: 'þ', q: 'ɋ', r: 'ŕ', s: 'š', t: 'ţ', u: 'ú', v: 'ṽ', w: 'ŵ', x: 'ẋ', y: 'ý', z: 'ž',
  A: 'Á', B: 'Ɓ', C: 'Ç', D: 'Ð', E: 'É', F: 'Ƒ', G: 'Ĝ', H: 'Ĥ', I: 'Í', J: 'Ĵ', K: 'Ķ', L: 'Ļ', M: 'Ṁ',
  N: 'Ñ', O: 'Ó', P: 'Þ', Q: 'Ɋ', R: 'Ŕ', S: 'Š', T: 'Ţ', U: 'Ú', V: 'Ṽ', W: 'Ŵ', X: 'Ẋ', Y: 'Ý', Z: 'Ž',
};
const longerBy = 0.3;
const filler = ' one two three four five six seven eight nine ten eleven twelve thirteen fourteen fifteen';

// Place-holders stay as they are.
export function pseudo(text) {
  const accented = text
    .split(/(\$[A-Z_]+\$)/)
    .map((part, index) => (index % 2 === 1 ? part : part.replace(/[A-Za-z]/g, (letter) => accents[letter] ?? letter)))
    .join('');
  const more = Math.max(2, Math.ceil(text.length * longerBy));
  let padding = '';
  while (padding.length < more) {
    padding += filler;
  }
  return `[${accented}${padding.slice(0, more)}]`;
}

// The tables, keys and order of the English file, without its comments.
export function pseudoFile(english) {
  const head = '# Pseudo-language for tests. Written by scripts/pseudo-texts.mjs from the English texts; do not edit.\n';
  const groups = new Map();
  for (const [key, text] of Object.entries(parseTexts(english))) {
    const dot = key.indexOf('.');
    const table = key.slice(0, dot);
    const lines = groups.get(table) ?? [];
    lines.push(`${key.slice(dot + 1)} = ${JSON.stringify(pseudo(text))}`);
    groups.set(table, lines);
  }
  return head + [...groups].map(([table, lines]) => `\n[${table}]\n${lines.join('\n')}\n`).join('');
}

if (process.argv[1] === fileURLToPath(import.meta.url)) {
  const wanted = pseudoFile(readFileSync(`${textsFolder}en.toml`, 'utf8'));
  if (process.argv.includes('--check')) {
    if (readFileSync(`${textsFolder}qps.toml`, 'utf8') !== wanted) {
      console.error('qps.toml is not that of en.toml: run "npm run texts"');
      process.exitCode = 1;
    }
  } else {
    writeFileSync(`${textsFolder}qps.toml`, wanted);
  }
}
