// Two ordinary clients of the provider protocol, unchanged, behind one face: send() resolves with the status and
// the reason that the client tells its user.
import { readFileSync } from 'node:fs';
import { dirname, join } from 'node:path';

import apn from '@parse/node-apn';
import apns2 from 'apns2';

export class NodeApn {
  static title = '@parse/node-apn';

  /** Without a key it has a certificate, as was usual before there were tokens. */
  constructor({ port, providerKey, authority }) {
    const file = (name) => join(dirname(authority), name);
    const credentials = providerKey
      ? { token: { key: providerKey.file, keyId: providerKey.key, teamId: providerKey.team } }
      : { cert: file('server.pem'), key: file('server.key') };
    this.provider = new apn.Provider({
      address: 'localhost',
      port,
      manageChannelsAddress: 'localhost',
      manageChannelsPort: port,
      requestTimeout: 60_000, // its five seconds are few where a machine has much else to do
      ...credentials,
    });
  }

  async send(devices, { topic, type = 'alert', priority, collapse, expiration, payload, id }) {
    const note = new apn.Notification();
    Object.assign(note, { topic, pushType: type, priority, collapseId: collapse, rawPayload: payload, id });
    if (expiration !== undefined) note.expiry = expiration;
    return this.told(await this.provider.send(note, devices));
  }

  async broadcast(_, { topic }) {
    return this.told(await this.provider.broadcast(new apn.Notification(), topic));
  }

  async readChannels(_, { topic }) {
    return this.told(await this.provider.manageChannels(new apn.Notification(), topic, 'read'));
  }

  told({ sent, failed }) {
    const failures = failed.map(({ status, response, error }) => ({
      status,
      reason: response?.reason ?? error?.message,
      timestamp: response?.timestamp,
    }));
    return [...sent.map(() => ({ status: 200 })), ...failures];
  }

  end() {
    return this.provider.shutdown();
  }
}

export class Apns2 {
  static title = 'apns2';

  constructor({ port, providerKey, folder = '' }) {
    this.client = new apns2.ApnsClient({
      host: `localhost:${port}${folder}`,
      team: providerKey.team,
      keyId: providerKey.key,
      signingKey: Buffer.isBuffer(providerKey.file) ? providerKey.file : readFileSync(providerKey.file),
    });
  }

  async send(devices, { topic, type, priority, collapse, expiration, payload }) {
    const { aps, ...data } = payload;
    const notes = devices.map(
      (device) =>
        new apns2.Notification(device, { topic, type, priority, collapseId: collapse, expiration, aps, data }),
    );
    const answers = await this.client.sendMany(notes);
    return answers.map(({ error }) => {
      if (!error) return { status: 200 };
      return { status: error.statusCode, reason: error.reason ?? error.message, timestamp: error.timestamp };
    });
  }

  end() {}
}
