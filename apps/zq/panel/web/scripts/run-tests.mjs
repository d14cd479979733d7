// Compiles the tests and the logic that they test, and runs them with node's own test runner.
import { spawnSync } from 'node:child_process';
import { mkdtempSync, readdirSync, rmSync, symlinkSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';

const root = fileURLToPath(new URL('..', import.meta.url));
const folder = mkdtempSync(join(tmpdir(), 'zq-panel-tests-'));
const run = (program, ...rest) =>
  spawnSync(process.execPath, [program, ...rest], {
    cwd: root,
    stdio: 'inherit',
    env: { ...process.env, ZQ_PANEL_WEB: root },
  }).status ?? 1;

try {
  writeFileSync(join(folder, 'package.json'), '{"type":"module"}');
  symlinkSync(join(root, 'node_modules'), join(folder, 'node_modules'));
  const compiled = run('node_modules/typescript/bin/tsc', '-p', 'tsconfig.test.json', '--noEmit', 'false', '--outDir', folder);
  const tests = join(folder, 'test');
  process.exitCode =
    compiled === 0
      ? run('--test', ...readdirSync(tests).filter((name) => name.endsWith('.test.js')).map((name) => join(tests, name)))
      : compiled;
} finally {
  rmSync(folder, { recursive: true, force: true });
}
