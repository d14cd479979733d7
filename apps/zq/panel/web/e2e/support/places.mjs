// Where the programs, the page and the browser are.
import { existsSync } from 'node:fs';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';

export const web = fileURLToPath(new URL('../..', import.meta.url));
export const build = process.env.ZQ_BUILD ?? join(web, '../../../../build/dev');
export const browserFile = process.env.CHROMIUM ?? '/usr/bin/chromium';

// A program of the build.
export function program(name) {
  return built(join('bin', name));
}

// A file of the build. Throws where it has not been built: a test that cannot run has failed.
export function built(name) {
  const file = join(build, name);
  if (!existsSync(file)) {
    throw new Error(`${file} has not been built`);
  }
  return file;
}
