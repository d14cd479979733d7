// A proxy of this machine that opens tunnels, as asked for by CONNECT, and keeps what was asked for.
import { createServer } from 'node:http';
import { connect } from 'node:net';

export class ConnectProxy {
  asked = []; // "host:port", in their order
  #sockets = new Set();

  // Every tunnel leads to that port of this machine, whatever was asked for.
  static async start(target) {
    const proxy = new ConnectProxy();
    proxy.server = createServer((_, response) => response.writeHead(405).end());
    proxy.server.on('connection', (socket) => {
      proxy.#sockets.add(socket);
      socket.on('close', () => proxy.#sockets.delete(socket));
    });
    proxy.server.on('connect', (request, near, head) => {
      proxy.asked.push(request.url);
      const far = connect(target, '127.0.0.1', () => {
        near.write('HTTP/1.1 200 Connection established\r\n\r\n');
        far.write(head);
        near.pipe(far).pipe(near);
      });
      near.on('error', () => far.destroy());
      far.on('error', () => near.destroy());
      near.on('close', () => far.destroy());
    });
    await new Promise((resolve) => proxy.server.listen(0, '127.0.0.1', resolve));
    proxy.address = `http://127.0.0.1:${proxy.server.address().port}`;
    return proxy;
  }

  async end() {
    const closed = new Promise((resolve) => this.server.close(resolve));
    this.#sockets.forEach((socket) => socket.destroy());
    await closed;
  }
}
