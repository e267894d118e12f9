// A publisher's server in short: publish.mjs SUBSCRIPTION FILE sends a payload to a desktop, through a gateway of
// its own, as it would send it to a phone.
import { readFileSync } from 'node:fs';

import { NodeApn } from './clients.mjs';
import { startGateway } from './desk.mjs';

const [subscription, file] = process.argv.slice(2);
const payload = JSON.parse(readFileSync(file));
const gateway = await startGateway(0, ['--local-push-services']);
const client = new NodeApn(gateway);
const silent = !payload.aps.alert;
const [answer] = await client.send([Buffer.from(subscription).toString('hex')], {
  topic: 'com.example.reader',
  type: silent ? 'background' : 'alert',
  priority: silent ? 5 : 10,
  payload,
});
await client.end();
await gateway.end();
console.log(JSON.stringify(answer));
process.exitCode = answer.status === 200 ? 0 : 1;
