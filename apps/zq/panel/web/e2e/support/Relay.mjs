// The way between the program and the service: a port of this machine that passes on every byte, and that can be cut
// and mended while both ends live on.
import { createServer, connect } from 'node:net';

export class Relay {
  #sockets = new Set();

  static async start(target) {
    const relay = new Relay();
    relay.target = target;
    await relay.#listen(0);
    return relay;
  }

  #listen(port) {
    this.server = createServer((near) => {
      const far = connect(this.target, '127.0.0.1');
      for (const [one, other] of [[near, far], [far, near]]) {
        this.#sockets.add(one);
        one.on('error', () => other.destroy());
        one.on('close', () => {
          this.#sockets.delete(one);
          other.destroy();
        });
        one.pipe(other);
      }
    });
    return new Promise((resolve, reject) => {
      this.server.on('error', reject);
      this.server.listen(port, '127.0.0.1', () => {
        this.port = this.server.address().port;
        resolve();
      });
    });
  }

  // Connections end, and new ones are refused.
  async cut() {
    const closed = new Promise((resolve) => this.server.close(resolve));
    this.#sockets.forEach((socket) => socket.destroy());
    await closed;
  }

  // At the same port as before.
  async mend() {
    if (!this.server.listening) {
      await this.#listen(this.port);
    }
  }

  async end() {
    if (this.server.listening) {
      await this.cut();
    }
  }
}
