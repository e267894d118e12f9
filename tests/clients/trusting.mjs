// Runs a program of Node's that trusts the authority of a gateway on this desk: trusting.mjs FILE [ARGUMENT…]. A
// process reads whom it trusts when it starts, so the gateway is asked before.
import { spawnSync } from 'node:child_process';

import { startGateway } from './desk.mjs';

const gateway = await startGateway();
await gateway.end();
const { status } = spawnSync(process.execPath, process.argv.slice(2), {
  stdio: 'inherit',
  env: { ...process.env, NODE_EXTRA_CA_CERTS: gateway.authority },
});
process.exit(status ?? 1);
