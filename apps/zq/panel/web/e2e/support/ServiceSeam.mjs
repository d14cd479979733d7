// What stands between the program and the service, under the service's own name and certificate, and changes answers.
import { readFileSync, writeFileSync } from 'node:fs';
import { createServer, request } from 'node:https';
import { join } from 'node:path';

export class ServiceSeam {
  // `change(reply, command)` gives the reply to a command in the place of the service's; null leaves it. `bytes(text)`
  // makes bytes of a whole answer.
  change = null;
  bytes = null;

  static async open(service) {
    const seam = new ServiceSeam();
    const file = (name) => readFileSync(join(service.folder, 'data', name));
    seam.server = createServer({ key: file('server.key'), cert: file('server.pem') }, (from, to) => seam.#pass(service.port, from, to));
    await new Promise((resolve) => seam.server.listen(0, '127.0.0.1', resolve));
    seam.port = seam.server.address().port;
    return seam;
  }

  // Has the world's program reach the service through this.
  async stand(world) {
    const settings = join(world.environment.ZQ_HOME, 'host.toml');
    writeFileSync(settings, readFileSync(settings, 'utf8').replace(`127.0.0.1:${world.service.port}`, `127.0.0.1:${this.port}`));
    await world.program.end();
    await world.startProgram();
  }

  async #pass(port, from, to) {
    const parts = [];
    for await (const part of from) {
      parts.push(part);
    }
    const body = Buffer.concat(parts);
    const options = { host: '127.0.0.1', port, method: from.method, path: from.url, headers: from.headers, rejectUnauthorized: false };
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
    asked.end(body);
  }

  #changed(form, answer) {
    const envelope = JSON.parse(form.slice('api='.length, form.lastIndexOf('}') + 1));
    const commands = JSON.parse(envelope.commands_json);
    answer.commands = answer.commands?.map((reply, index) => this.change(reply, commands[index].command) ?? reply);
    return JSON.stringify(answer);
  }

  end() {
    this.server.closeAllConnections();
    return new Promise((resolve) => this.server.close(resolve));
  }
}
