// Ordinary clients, pointed at a gateway instead of at the phone maker: what they send arrives, and what is wrong
// they tell in the words of the protocol.
import assert from 'node:assert/strict';
import { generateKeyPairSync } from 'node:crypto';
import { after, before, describe, test } from 'node:test';

import { Apns2, NodeApn } from './clients.mjs';
import { Desktop, PushService, startGateway } from './desk.mjs';

const topic = 'com.example.app';
const payload = { aps: { alert: { title: 'Storm over the bay', body: 'é' } }, more: [1] };
const inAnHour = Math.floor(Date.now() / 1000) + 3600;

const refusals = [
  { reason: 'BadDeviceToken', status: 400, device: 'abc' },
  { reason: 'BadDeviceToken', status: 400, device: Buffer.from('{"endpoint":1}').toString('hex') },
  { reason: 'MissingDeviceToken', status: 400, device: '' },
  { reason: 'MissingTopic', status: 400, with: { topic: undefined } },
  { reason: 'TopicDisallowed', status: 400, with: { topic: 'com.example.other' } },
  { reason: 'BadTopic', status: 400, with: { topic: 'com example' } },
  { reason: 'BadCollapseId', status: 400, with: { collapse: 'x'.repeat(65) } },
  { reason: 'BadExpirationDate', status: 400, with: { expiration: -1 }, only: Apns2 },
  { reason: 'BadPriority', status: 400, with: { priority: 3 } },
  { reason: 'BadPriority', status: 400, with: { type: 'background', priority: 10 }, only: NodeApn },
  { reason: 'InvalidPushType', status: 400, with: { type: 'shout' } },
  { reason: 'BadMessageId', status: 400, with: { id: 'no uuid' }, only: NodeApn },
  { reason: 'PayloadEmpty', status: 400, with: { payload: [] }, only: NodeApn },
  { reason: 'PayloadTooLarge', status: 413, with: { payload: { aps: {}, text: 'x'.repeat(4096) } } },
  { reason: 'PayloadTooLarge', status: 413, with: { payload: { aps: {}, text: 'x'.repeat(3950) } } },
  { reason: 'PayloadTooLarge', status: 413, with: { type: 'voip', topic: `${topic}.voip` } },
  { reason: 'MissingProviderToken', status: 403, made: { providerKey: undefined }, only: NodeApn },
  { reason: 'BadPath', status: 404, made: { folder: '/push' }, only: Apns2 },
  { reason: 'BadPath', status: 404, ask: 'broadcast', only: NodeApn },
  { reason: 'MethodNotAllowed', status: 405, ask: 'readChannels', only: NodeApn },
];

/** What push services answer, and what becomes of it. */
const answers = [
  { service: { ':status': 404 }, status: 410, reason: 'Unregistered' },
  { service: { ':status': 410 }, status: 410, reason: 'Unregistered' },
  { service: { ':status': 403 }, status: 400, reason: 'BadDeviceToken' },
  { service: { ':status': 413 }, status: 413, reason: 'PayloadTooLarge' },
  { service: { ':status': 429, 'retry-after': '0' }, status: 429, reason: 'TooManyRequests' },
  { service: { ':status': 500 }, status: 503, reason: 'ServiceUnavailable' },
];

for (const Client of [NodeApn, Apns2]) {
  describe(Client.title, () => {
    let gateway, service, client;
    const options = () => ['--topic', topic, '--local-push-services', '--trust', process.env.NODE_EXTRA_CA_CERTS];

    before(async () => {
      gateway = await startGateway(0, options());
      service = await PushService.start(gateway);
      client = new Client(gateway);
    });
    after(async () => {
      await client.end();
      await gateway.end();
      service.end();
    });

    test('what is sent arrives, with all that was said of it', async () => {
      const desktop = new Desktop(service);
      const said = { topic, priority: 5, collapse: 'storm', expiration: inAnHour, payload };
      const sent = await client.send([desktop.token], said);
      assert.deepEqual(sent, [{ status: 200 }]);
      const { headers, text } = desktop.read();
      assert.equal(headers.urgency, 'normal');
      assert.match(headers.topic, /^[\w-]{32}$/);
      assert.ok(headers.ttl > 3500 && headers.ttl <= 3600, headers.ttl);
      const { vorselGateway, ...rest } = JSON.parse(text);
      assert.deepEqual(rest, payload);
      assert.match(vorselGateway.id, /^[0-9a-f-]{36}$/);
      assert.equal(vorselGateway['collapse-id'], 'storm');
      assert.equal(vorselGateway.expiration, inAnHour);
    });

    test('what is wrong is told in the words of the protocol', async () => {
      const desktop = new Desktop(service);
      for (const { reason, status, only = Client, device, made, ask = 'send', with: changes } of refusals) {
        if (only !== Client) continue;
        const asking = made ? new Client({ ...gateway, ...made }) : client;
        const [answer] = await asking[ask]([device ?? desktop.token], { topic, payload, ...changes });
        assert.deepEqual([answer.status, answer.reason], [status, reason], JSON.stringify(changes));
        if (made) await asking.end();
      }
      assert.equal(desktop.messages.length, 0);
    });

    test("a push service's answer becomes the protocol's", async () => {
      for (const { service: answered, status, reason } of answers) {
        const desktop = new Desktop(service);
        desktop.answer = answered;
        const [answer] = await client.send([desktop.token], { topic, payload });
        assert.deepEqual([answer.status, answer.reason], [status, reason]);
        if (status === 410) assert.ok(Math.abs(answer.timestamp - Date.now()) < 60_000);
      }
    });

    test('a key that nobody knows opens nothing', async () => {
      const { privateKey } = generateKeyPairSync('ec', { namedCurve: 'P-256' });
      const key = Buffer.from(privateKey.export({ format: 'pem', type: 'pkcs8' }));
      const stranger = new Client({ ...gateway, providerKey: { ...gateway.providerKey, file: key } });
      const [answer] = await stranger.send([new Desktop(service).token], { topic, payload });
      assert.deepEqual([answer.status, answer.reason], [403, 'InvalidProviderToken']);
      await stranger.end();
    });

    test('a token that has expired is followed by a new one', async () => {
      const { now } = Date;
      Date.now = () => now() - 2 * 3600 * 1000;
      const late = new Client(gateway);
      const devices = [new Desktop(service).token];
      const [answer] = await late.send(devices, { topic, payload }).finally(() => (Date.now = now));
      assert.deepEqual([answer.status, answer.reason], [403, 'ExpiredProviderToken']);
      assert.deepEqual(await late.send(devices, { topic, payload }), [{ status: 200 }]);
      await late.end();
    });

    // Only one of them takes a new token when it is told to.
    const renewing = Client === Apns2 ? test : () => {};
    renewing('a new token for each notification is too many', async () => {
      const hasty = new Client(gateway);
      const devices = [new Desktop(service).token];
      await hasty.send(devices, { topic, payload });
      hasty.client.emit('ExpiredProviderToken');
      const [answer] = await hasty.send(devices, { topic, payload });
      assert.deepEqual([answer.status, answer.reason], [429, 'TooManyProviderTokenUpdates']);
    });

    test('ten thousand go through, each once', async () => {
      const before = service.connections;
      // Node holds no more requests of this length at once for one connection, whatever the server.
      for (let sent = 0; sent < 10_000; sent += 1000) {
        const desktops = Array.from({ length: 1000 }, () => new Desktop(service));
        await new Promise(setImmediate); // else timers begin before all this work, and end early
        const answers = await client.send(desktops.map(({ token }) => token), { topic, payload });
        assert.deepEqual(answers.filter(({ status }) => status !== 200), []);
        for (const { messages } of desktops) assert.equal(messages.length, 1);
        assert.deepEqual(JSON.parse(desktops.at(-1).read().text).aps, payload.aps);
      }
      const connections = service.connections - before;
      assert.ok(connections <= 12 * 6, `${connections} connections`);
    });

    test('a gateway that was replaced is found again', async () => {
      const desktop = new Desktop(service);
      await gateway.end();
      gateway = await startGateway(gateway.port, options());
      const sent = await client.send([desktop.token], { topic, payload });
      assert.deepEqual(sent, [{ status: 200 }]);
      assert.equal(desktop.messages.length, 1);
    });
  });
}
