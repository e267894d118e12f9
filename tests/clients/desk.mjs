// What the clients under test talk to: a gateway as a process of its own, and behind it a push service that
// keeps what it gets.
import { spawn } from 'node:child_process';
import { createECDH, randomBytes } from 'node:crypto';
import { once } from 'node:events';
import { readFileSync } from 'node:fs';
import http2 from 'node:http2';
import { dirname, join } from 'node:path';
import { createInterface } from 'node:readline';

import ece from 'http_ece';

/** Starts a gateway on a port, 0 for any free one; resolves with what it says of itself. */
export async function startGateway(port = 0, options = []) {
  const program = spawn(process.env.BRELLIXCTL, ['--json', 'gateway', '--port', `${port}`, ...options], {
    stdio: ['ignore', 'pipe', 'inherit'],
  });
  const lines = createInterface({ input: program.stdout });
  const first = await Promise.race([once(lines, 'line'), once(program, 'exit')]);
  if (typeof first[0] !== 'string') throw new Error(`the gateway has ended with ${first[0]}`);
  const end = async () => {
    const ended = once(program, 'exit');
    program.kill('SIGTERM');
    const [status] = await ended;
    if (status !== 0) throw new Error(`the gateway has ended with ${status}`);
  };
  return { ...JSON.parse(first[0]), end };
}

/** One subscriber of the push service. */
export class Desktop {
  constructor(service) {
    this.address = `/push/${service.desktops.size}`;
    this.auth = randomBytes(16);
    this.keys = createECDH('prime256v1');
    const p256dh = this.keys.generateKeys('base64url');
    const subscription = {
      endpoint: `https://localhost:${service.port}${this.address}`,
      keys: { auth: this.auth.toString('base64url'), p256dh },
    };
    this.token = Buffer.from(JSON.stringify(subscription)).toString('hex');
    this.messages = [];
    service.desktops.set(this.address, this);
  }

  /** The payload of the only message, as text, and the headers that it came with. */
  read() {
    const [{ headers, body }] = this.messages;
    const options = { version: 'aes128gcm', privateKey: this.keys, authSecret: this.auth.toString('base64url') };
    return { headers, text: ece.decrypt(body, options).toString() };
  }
}

/** A push service over HTTP/2. A desktop's `answer` is its status, with headers where it has some; 201 by itself. */
export class PushService {
  desktops = new Map();
  connections = 0;
  troubles = [];

  static async start(gateway) {
    const service = new PushService();
    const folder = dirname(gateway.authority);
    service.server = http2.createSecureServer({
      cert: readFileSync(join(folder, 'server.pem')),
      key: readFileSync(join(folder, 'server.key')),
    });
    service.server.on('session', () => ++service.connections);
    service.server.on('stream', (stream, headers) => service.take(stream, headers));
    service.server.listen(0, 'localhost');
    await once(service.server, 'listening');
    service.port = service.server.address().port;
    return service;
  }

  take(stream, headers) {
    const pieces = [];
    stream.on('error', (error) => this.troubles.push(error));
    stream.on('data', (piece) => pieces.push(piece));
    stream.on('end', () => {
      const desktop = this.desktops.get(headers[':path']);
      desktop?.messages.push({ headers, body: Buffer.concat(pieces) });
      stream.respond({ ':status': desktop ? 201 : 404, ...desktop?.answer }, { endStream: true });
    });
  }

  end() {
    this.server.close();
  }
}
