// The thread of the good clients.
import { Agent } from 'node:http';
import { monitorEventLoopDelay } from 'node:perf_hooks';
import { parentPort, workerData } from 'node:worker_threads';
import { ask, pause } from './clients.mjs';

const { address, count, paths } = workerData;
let busy = true;
let answered = 0;
let worst = 0;
const others = new Map();
const agent = new Agent({ keepAlive: true, maxSockets: count });
const delays = monitorEventLoopDelay({ resolution: 1 });

async function client(first) {
  for (let i = first; busy; i++) {
    const { status, took } = await ask(address, paths[i % paths.length], { agent });
    answered++;
    worst = Math.max(worst, took);
    if (status !== 200) others.set(status, (others.get(status) ?? 0) + 1);
    await pause(10);
  }
}

parentPort.once('message', () => { busy = false; });
delays.enable();
await Promise.all(Array.from({ length: count }, (_, i) => client(i)));
agent.destroy();
parentPort.postMessage({
  answered, worst, late: delays.max / 1e6,
  others: [...others].map(([status, times]) => `${times} x ${status}`).join(', '),
});
