// All that a test needs: the service, the panel's program connected to it, and a browser; in a folder of its own.
import { copyFileSync, existsSync, mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { basename, join } from 'node:path';
import { chromium } from 'playwright-core';
import { Panel } from './Panel.mjs';
import { browserFile, program } from './places.mjs';
import { Program } from './Program.mjs';
import { Relay } from './Relay.mjs';
import { Service } from './Service.mjs';
import { ServiceSeam } from './ServiceSeam.mjs';

// One that several worlds of a file may share: its pages have nothing in common.
export const openBrowser = () => chromium.launch({ executablePath: browserFile });

export class World {
  #panels = [];
  #ownBrowser;

  // `relay`, `seam`: what stands between the program and the service. `browser`: one that outlives the world; without it
  // the world has its own.
  static async start(options = {}) {
    const world = new World();
    world.folder = mkdtempSync(join(tmpdir(), 'zq-panel-'));
    try {
      // It comes up while the programs do.
      world.#ownBrowser = options.browser === undefined ? openBrowser() : undefined;
      world.#ownBrowser?.catch(() => {}); // told where it is waited for
      world.environment = {
        PATH: process.env.PATH,
        HOME: world.folder,
        ZQ_HOME: join(world.folder, 'home'),
        ZQ_BROWSER: join(world.folder, 'browser'),
        LANG: 'C.UTF-8',
        TERM: 'xterm',
      };
      // What the program opens in the machine's browser is kept, to be followed by a test.
      writeFileSync(
        world.environment.ZQ_BROWSER,
        `#!/bin/sh\nprintf '%s\\n' "$1" >>'${join(world.folder, 'opened')}'\n`,
        { mode: 0o700 },
      );
      if (options.modules === undefined) {
        world.service = await Service.start(join(world.folder, 'service'), world.environment, options);
      }
      if (options.relay) {
        world.relay = await Relay.start(world.service.port);
      }
      if (options.seam) {
        world.seam = await ServiceSeam.open(world.service);
      }
      world.configure(options);
      await world.startProgram();
      world.browser = options.browser ?? (await world.#ownBrowser);
    } catch (error) {
      await world.end();
      throw error;
    }
    return world;
  }

  // `settings`: more lines of the settings file. `modules`: files of modules in the place of the usual one, whose
  // service is not started then.
  configure({ settings: more = '', modules: files = [program('tarn7.zqd')] } = {}) {
    const modules = join(this.folder, 'modules');
    mkdirSync(modules, { recursive: true });
    mkdirSync(this.environment.ZQ_HOME, { recursive: true });
    files.forEach((file) => copyFileSync(file, join(modules, basename(file))));
    const network =
      this.service === undefined
        ? ''
        : `[network]\nconnect = { "www.tarn7.example:443" = "127.0.0.1:${(this.relay ?? this.seam ?? this.service).port}" }\n` +
          `ca_file = ${JSON.stringify(this.service.ca)}\n`;
    writeFileSync(
      join(this.environment.ZQ_HOME, 'host.toml'),
      `[modules]\npath = [${JSON.stringify(modules)}]\n${network}${more}`,
    );
  }

  async startProgram(words = [], options = []) {
    this.program = new Program(program('zq'), [...options, 'panel', '--no-browser', ...words], this.environment);
    this.address = await this.program.line();
    this.origin = new URL(this.address).origin;
  }

  // The addresses that the program has opened in the machine's browser.
  opened() {
    const file = join(this.folder, 'opened');
    return existsSync(file) ? readFileSync(file, 'utf8').split('\n').filter(Boolean) : [];
  }

  // A page of its own: cookies, size and colours are nobody else's.
  async openPanel(options = {}) {
    const panel = await Panel.open(this.browser, this.address, options);
    this.#panels.push(panel);
    return panel;
  }

  // The panels of a test that has ended. What went wrong in a page without being seen is a failure.
  async closePanels() {
    const problems = [];
    for (const panel of this.#panels.splice(0)) {
      problems.push(...panel.problems);
      await panel.context.close();
    }
    if (problems.length > 0) {
      throw new Error(`in the page:\n${problems.join('\n')}`);
    }
  }

  async end() {
    try {
      const browser = await this.#ownBrowser?.catch(() => undefined);
      await browser?.close();
      await this.program?.end();
      await this.relay?.end();
      await this.seam?.end();
      await this.service?.end();
    } finally {
      rmSync(this.folder, { recursive: true, force: true });
    }
  }
}
