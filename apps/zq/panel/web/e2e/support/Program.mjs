// A program as a child process: its lines, its errors and its end.
import { spawn } from 'node:child_process';
import { createInterface } from 'node:readline';

const patience_ms = 60_000;

export class Program {
  errors = '';
  #child;
  #lines = [];
  #waiting = [];
  #ended;

  constructor(file, words, environment) {
    this.name = file.replace(/.*\//, '');
    this.#child = spawn(file, words, { env: environment, stdio: ['pipe', 'pipe', 'pipe'] });
    this.#child.stdin.on('error', () => {}); // a program that has ended reads nothing, which its status tells
    this.#child.stderr.setEncoding('utf8').on('data', (text) => (this.errors += text));
    createInterface({ input: this.#child.stdout }).on('line', (line) => {
      this.#lines.push(line);
      this.#waiting.splice(0).forEach((wake) => wake());
    });
    this.#ended = new Promise((resolve) => {
      const end = (status) => {
        resolve(status);
        this.#waiting.splice(0).forEach((wake) => wake());
      };
      this.#child.on('close', (status, signal) => end(status ?? signal));
      this.#child.on('error', (error) => {
        this.errors += String(error);
        end(-1);
      });
    });
  }

  // The next line of what it says. Throws where it ends before, or says nothing for so long.
  async line(wait_ms = patience_ms) {
    const deadline = Date.now() + wait_ms;
    while (this.#lines.length === 0) {
      if (Date.now() > deadline || this.#child.exitCode !== null || this.#child.signalCode !== null) {
        throw new Error(`${this.name} said nothing: ${this.errors}`);
      }
      await new Promise((resolve) => {
        const timer = setTimeout(resolve, 1000);
        this.#waiting.push(() => {
          clearTimeout(timer);
          resolve();
        });
      });
    }
    return this.#lines.shift();
  }

  write(text) {
    this.#child.stdin.write(text);
  }

  // Stops it where it stands, and lets it go on.
  freeze() {
    this.#child.kill('SIGSTOP');
  }

  thaw() {
    this.#child.kill('SIGCONT');
  }

  kill() {
    this.#child.kill('SIGKILL');
    return this.#ended;
  }

  // Closes its input and waits for its own end; gives its status.
  finish() {
    this.#child.stdin.end();
    return this.#ended;
  }

  // Asks it to end; one that does not within the patience of a test is killed, which is a failure.
  async end() {
    if (this.#child.exitCode !== null || this.#child.signalCode !== null) {
      return;
    }
    this.#child.kill('SIGTERM');
    const late = Symbol('late');
    let timer;
    const status = await Promise.race([
      this.#ended,
      new Promise((resolve) => (timer = setTimeout(() => resolve(late), patience_ms))),
    ]);
    clearTimeout(timer);
    if (status === late) {
      this.#child.kill('SIGKILL');
      await this.#ended;
      throw new Error(`${this.name} did not end when it was told to: ${this.errors}`);
    }
  }
}
