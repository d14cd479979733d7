// Small real films for the tests, made once and kept in the build folder.
import { spawnSync } from 'node:child_process';
import { copyFileSync, existsSync, mkdirSync, renameSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { build } from './places.mjs';

const folder = join(build, 'tests/panel-footage');
const picture = (size, rate, seconds) => ['-f', 'lavfi', '-i', `testsrc2=s=${size}:r=${rate}:d=${seconds}`];
const quick = ['-c:v', 'libx264', '-preset', 'ultrafast', '-pix_fmt', 'yuv420p'];

const films = {
  'small.mov': [...picture('320x240', '25', 6), '-c:v', 'mpeg4'],
  'large.mp4': [
    ...picture('1920x1080', '24000/1001', 3), '-f', 'lavfi', '-i', 'sine=f=440:d=3', ...quick, '-c:a', 'aac', '-ac', '1',
  ],
  'fast.mp4': [...picture('1280x720', '50', 2), ...quick],
  'ntsc.mp4': [...picture('640x360', '30000/1001', 4), ...quick],
  'long.mp4': [...picture('640x480', '25', 40), ...quick],
};

function film(name) {
  const kept = join(folder, name);
  if (!existsSync(kept)) {
    mkdirSync(folder, { recursive: true });
    // Two tests may make the same file at a time, each under its own name.
    const made = join(folder, `${process.pid}-${name}`);
    const { status, stderr } = spawnSync('ffmpeg', ['-nostdin', '-v', 'error', '-y', ...films[name], made]);
    if (status !== 0) {
      throw new Error(`no footage: ${stderr}`);
    }
    renameSync(made, kept);
  }
  return kept;
}

// The clips that a service has unless a test wants others.
export const usualClips = [
  { film: 'small.mov', title: 'Red car', price: 9 },
  { film: 'large.mp4', title: 'Sea at noon', price: 49 },
  { film: 'fast.mp4', title: 'Sea birds', price: 19 },
  { film: 'small.mov', title: 'Green meadow', price: 12.5 },
  { film: 'small.mov', title: 'Old harbour', price: 5 },
];

// A film under that name, without anything beside it.
export function putFilm(folder, name, kind = 'small.mov') {
  mkdirSync(folder, { recursive: true });
  copyFileSync(film(kind), join(folder, name));
}

// Films with side files that give their titles, of whatever characters.
export function putFootage(target, clips) {
  mkdirSync(target, { recursive: true });
  clips.forEach((clip, index) => {
    const file = join(target, `clip-${index}`);
    copyFileSync(film(clip.film), file + clip.film.slice(clip.film.indexOf('.')));
    writeFileSync(`${file}.toml`, `title = ${tomlText(clip.title)}\nprice = ${clip.price}\n`);
  });
}

function tomlText(text) {
  const escaped = [...text].map((letter) => {
    const code = letter.codePointAt(0);
    const isPlain = code >= 0x20 && code !== 0x7f && letter !== '"' && letter !== '\\';
    return isPlain ? letter : `\\u${code.toString(16).padStart(4, '0')}`;
  });
  return `"${escaped.join('')}"`;
}
