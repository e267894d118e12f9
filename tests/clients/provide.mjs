// Sends a text-only payload to a device by each client of the provider protocol, one after the other, as a new
// word on the same matter: provide.mjs GATEWAY DEVICE TOPIC, the gateway as it describes itself. Prints each answer.
import { Apns2, NodeApn } from './clients.mjs';

const [gateway, device, topic] = process.argv.slice(2);
for (const Client of [NodeApn, Apns2]) {
  const client = new Client(JSON.parse(gateway));
  const payload = { aps: { alert: { title: Client.title, body: 'text' } } };
  const [answer] = await client.send([device], { topic, collapse: 'storm', payload });
  console.log(JSON.stringify(answer));
  await client.end();
}
process.exit(0); // one of them keeps its connection
