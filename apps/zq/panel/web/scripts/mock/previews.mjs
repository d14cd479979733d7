// Two short films to play, made by ffmpeg where it is installed.
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';

const sources = ['testsrc2=size=640x360:rate=25:duration=12', 'mandelbrot=size=640x360:rate=25'];

export function makePreviews() {
  const folder = mkdtempSync(join(tmpdir(), 'zq-panel-mock-'));
  try {
    return sources.map((source, index) => {
      const file = join(folder, `${index}.mp4`);
      execFileSync(
        'ffmpeg',
        ['-v', 'error', '-f', 'lavfi', '-i', source, '-f', 'lavfi', '-i', 'sine=frequency=330', '-t', '12']
          .concat(['-c:v', 'libx264', '-preset', 'veryfast', '-g', '12', '-pix_fmt', 'yuv420p', '-c:a', 'aac'])
          .concat(['-movflags', '+faststart', file]),
      );
      return readFileSync(file);
    });
  } catch {
    console.log('no ffmpeg: the stand-in has no previews');
    return [];
  } finally {
    rmSync(folder, { recursive: true, force: true });
  }
}
