// The embedded service over small footage, with the account "editor" (password "tarn7") and its fault desk.
import { mkdirSync } from 'node:fs';
import { join } from 'node:path';
import { putFootage, usualClips } from './footage.mjs';
import { program } from './places.mjs';
import { Program } from './Program.mjs';

const demoIsMade_ms = 600_000;

export const account = { user: 'editor', password: 'tarn7' };

export class Service {
  // `demo`: the demonstration's footage and account, which take a while to be made.
  static async start(folder, environment, { clips = usualClips, credits = 500, demo = false } = {}) {
    const service = new Service();
    service.folder = folder;
    service.environment = environment;
    service.options = demo ? ['--demo'] : ['--prepare', 'asked'];
    if (demo) {
      mkdirSync(join(folder, 'footage'), { recursive: true });
      await service.#run('127.0.0.1:0');
      return service;
    }
    putFootage(join(folder, 'footage'), clips);
    mkdirSync(join(folder, 'data'), { recursive: true });
    const adding = new Program(
      program('tarn7d'),
      ['account', 'add', account.user, '--credits', String(credits), '--data', join(folder, 'data')],
      environment,
    );
    adding.write(`${account.password}\n${account.password}\n`);
    const status = await adding.finish();
    if (status !== 0) {
      throw new Error(`no account: ${adding.errors}`);
    }
    await service.#run('127.0.0.1:0');
    return service;
  }

  async #run(listen) {
    this.program = new Program(
      program('tarn7d'),
      [
        '--data', join(this.folder, 'data'), '--footage', join(this.folder, 'footage'), ...this.options,
        '--payment-pages', 'local', '--fault-desk', '--listen', listen,
      ],
      this.environment,
    );
    const ready = JSON.parse(await this.program.line(demoIsMade_ms));
    this.port = ready.port;
    this.ca = ready.ca;
    this.desk = ready.faultDesk;
  }

  // Down as a service is whose machine is gone: connections end, and new ones are refused.
  async goDown() {
    await this.program.kill();
  }

  async comeBack() {
    await this.#run(`127.0.0.1:${this.port}`);
  }

  async #ask(method, rules) {
    const answer = await fetch(`http://127.0.0.1:${this.desk.port}/faults`, {
      method,
      headers: { Authorization: `Bearer ${this.desk.token}` },
      body: rules === undefined ? undefined : JSON.stringify(rules),
    });
    if (!answer.ok) {
      throw new Error(`the fault desk says ${answer.status}: ${await answer.text()}`);
    }
    return answer.status === 204 ? null : await answer.json();
  }

  // A rule of the fault desk: goWrong({ command: 'search' }, 'delay', { ms: 500 }, 2)
  goWrong(where, kind, values = {}, count = 1) {
    return this.#ask('POST', { match: where, kind, count, arguments: values });
  }

  // How many requests met a rule, or one for that command.
  async met(command) {
    const { faults } = await this.#ask('GET');
    return faults
      .filter((rule) => command === undefined || rule.match.command === command)
      .reduce((sum, rule) => sum + rule.met, 0);
  }

  goRight() {
    return this.#ask('DELETE');
  }

  end() {
    return this.program.end();
  }
}
