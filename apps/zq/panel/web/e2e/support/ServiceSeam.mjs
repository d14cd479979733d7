// What stands between the program and the service, under the service's own name and certificate, and changes answers or
// holds them back.
import { readFileSync } from 'node:fs';
import { createServer, request } from 'node:https';
import { join } from 'node:path';

export class ServiceSeam {
  // `change(reply, command)` gives the reply to a command in the place of the service's; null leaves it. `bytes(text)`
  // makes bytes of a whole answer.
  change = null;
  bytes = null;
  #holds = null;
  #release = () => {};
  #released = Promise.resolve();

  static async open(service) {
    const seam = new ServiceSeam();
    const file = (name) => readFileSync(join(service.folder, 'data', name));
    seam.server = createServer({ key: file('server.key'), cert: file('server.pem') }, (from, to) => seam.#pass(service.port, from, to));
    await new Promise((resolve) => seam.server.listen(0, '127.0.0.1', resolve));
    seam.port = seam.server.address().port;
    return seam;
  }

  // No request that is of that path or with that command goes on to the service until release().
  hold({ path, command }) {
    this.#holds = (url, form) => (path === undefined ? url.includes('page=api') && commandsOf(form).includes(command) : url.includes(path));
    this.#released = new Promise((resolve) => (this.#release = resolve));
  }

  release() {
    this.#holds = null;
    this.#release();
  }

  async #pass(port, from, to) {
    const parts = [];
    for await (const part of from) {
      parts.push(part);
    }
    const body = Buffer.concat(parts);
    if (this.#holds?.(from.url, body.toString())) {
      await this.#released;
    }
    const options = { host: '127.0.0.1', port, method: from.method, path: from.url, headers: from.headers, rejectUnauthorized: false, agent: false };
    const asked = request(options, (answer) => {
      if (!from.url.includes('page=api') || this.change === null) {
        to.writeHead(answer.statusCode, answer.headers);
        answer.pipe(to);
        return;
      }
      let text = '';
      answer.setEncoding('utf8').on('data', (part) => (text += part)).on('end', () => {
        const { 'content-length': _, ...headers } = answer.headers;
        to.writeHead(answer.statusCode, headers);
        const changed = this.#changed(body.toString(), JSON.parse(text));
        to.end(this.bytes === null ? changed : this.bytes(changed));
      });
    });
    asked.on('error', () => to.destroy());
    to.on('close', () => asked.destroy());
    asked.end(body);
  }

  #changed(form, answer) {
    const commands = commandsOf(form);
    answer.commands = answer.commands?.map((reply, index) => this.change(reply, commands[index]) ?? reply);
    return JSON.stringify(answer);
  }

  end() {
    this.release();
    this.server.closeAllConnections();
    return new Promise((resolve) => this.server.close(resolve));
  }
}

// The names of the commands of a request.
function commandsOf(form) {
  const envelope = JSON.parse(form.slice('api='.length, form.lastIndexOf('}') + 1));
  return JSON.parse(envelope.commands_json).map(({ command }) => command);
}
