// Reads the files of the page's texts: tables, dotted and quoted keys, basic strings. That is all they use.
import { readFileSync } from 'node:fs';
import { fileURLToPath } from 'node:url';

export const textsFolder = fileURLToPath(new URL('../../../../../../resources/panel/', import.meta.url));

export function parseTexts(toml) {
  const texts = {};
  let table = '';
  toml.split('\n').forEach((raw, index) => {
    const line = raw.trim();
    if (line === '' || line.startsWith('#')) {
      return;
    }
    const heading = /^\[([A-Za-z0-9_.-]+)\]$/.exec(line);
    if (heading) {
      table = `${heading[1]}.`;
      return;
    }
    const pair = /^"?([A-Za-z0-9_.-]+)"?\s*=\s*("(?:[^"\\]|\\.)*")$/.exec(line);
    if (!pair) {
      throw new Error(`line ${index + 1} is no text: ${raw}`);
    }
    const key = table + pair[1];
    if (key in texts) {
      throw new Error(`line ${index + 1}: ${key} is there twice`);
    }
    texts[key] = JSON.parse(pair[2]);
  });
  return texts;
}

// English stands in where a language has no text.
export function readTexts(language) {
  const english = parseTexts(readFileSync(`${textsFolder}en.toml`, 'utf8'));
  try {
    return { ...english, ...parseTexts(readFileSync(`${textsFolder}${language}.toml`, 'utf8')) };
  } catch (error) {
    if (error.code === 'ENOENT') {
      return english;
    }
    throw error;
  }
}
