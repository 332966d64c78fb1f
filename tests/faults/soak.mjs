// A million requests of every kind: memory stays where it was, and nothing else is kept either.
import { cp, readFile, rename, rm, writeFile } from 'node:fs/promises';
import { loadavg } from 'node:os';
import { join } from 'node:path';
import { pause } from './clients.mjs';
import { row, withHost } from './host.mjs';
import { Client, upload } from './mix.mjs';
import { family, holdings, proportionalMemory } from './processes.mjs';
import { Wire } from './wire.mjs';

const clients = 48;
const collectors = 12;  // for four workers
const samples = 40;

const median = (values) => [...values].sort((a, b) => a - b)[values.length >> 1];

// Between the two spans of a million lie 650,000 requests: one that kept 4 bytes would show as 2.5 MiB, 5 % of the 50 MiB
// that are left once garbage has gone.
const mostGrown = 5;
// Of fewer requests it is told, and not judged: the two spans are seconds apart.
const fewest = 100000;

// Until what the processes hold is no more than that, 40 s at most: idle threads of the engine end after 10.
async function settled(pids, before) {
  let held;
  for (let i = 0; i < 80; i++) {
    held = await holdings(pids);
    if (held.files <= before.files && held.threads <= before.threads && held.spooled <= before.spooled) break;
    await pause(500);
  }
  return held;
}

// All clients rest while a sample is taken.
async function drive(address, counts, total, onSample) {
  const all = Array.from({ length: clients }, (_, seed) => new Client(address, seed, counts));
  for (let next = 1; next <= samples; next++) {
    await Promise.all(all.map(async (client) => {
      while (counts.made < (total * next) / samples) await client.go();
    }));
    await onSample(next);
  }
  all.forEach((client) => client.close());
}

// What is left once garbage has gone: by itself the script engine's heaps hold 15 MiB of it or none. A worker collects it
// after a large upload. Long pages may have every worker a second after the last short one.
async function restingMemory(address, pids) {
  await pause(1500);
  const all = Array.from({ length: collectors }, () => new Wire(address));
  for (let round = 0; round < 3; round++) await Promise.all(all.map((wire) => wire.ask(upload(2 << 20))));
  all.forEach((wire) => wire.close());
  // It is given back to the system little by little.
  let least = Infinity;
  for (let i = 0; i < 10; i++) {
    await pause(250);
    least = Math.min(least, await proportionalMemory(pids));
  }
  return least;
}

const settings = {
  supervised: true,
  lines: ['script_timeout = 3', 'session_limit = 10000', 'session_timeout = 1', 'log = "soak.log"'],
};

// What pages failed of that are not meant to, as the log has it; the log is begun anew.
async function takeErrors(host) {
  const log = join(host.folder, 'soak.log');
  await rename(log, `${log}.1`);
  process.kill(host.pid, 'SIGHUP');
  const lines = (await readFile(`${log}.1`, 'utf8')).split('\n');
  await rm(`${log}.1`);
  return lines.filter((line) => /^\/\S+\.(asp|inc)\b/.test(line) && !/^\/(fails|endless)\.asp/.test(line));
}

// `most` is how much memory there may be in the end, where that is told.
async function soak(host, total, most) {
  for (const example of ['hello', 'notebook', 'guestbook'])
    await cp(join(process.env.EXAMPLES, example), join(host.folder, example), { recursive: true });
  await writeFile(join(host.folder, 'plain.txt'), 'plain');
  const pids = await family(host.pid);
  const counts = { made: 0, endless: 0, unexpected: new Map() };
  // Every page, cache and thread, and what the script engine's heap has when it is warm.
  await drive(host.address, { ...counts, unexpected: new Map() }, Math.max(total / 50, 20000), () => {});
  await pause(1000);
  const before = await holdings(pids);

  const memory = [];
  const errors = [];
  const began = performance.now();
  await drive(host.address, counts, total, async (number) => {
    memory[number] = await restingMemory(host.address, pids);
    if (number % (samples / 10) > 0) return;
    console.log(`      soak  ${String((number * 100) / samples).padStart(3)} %  ${memory[number].toFixed(1)} MiB  ` +
      `${((performance.now() - began) / 1000).toFixed(0)} s  load ${loadavg()[0].toFixed(1)}`);
    errors.push(...await takeErrors(host));
  });
  const after = await settled(pids, before);

  const part = (from, to) => median(memory.slice(from * samples + 1, to * samples + 1));
  const [early, late] = [part(0.1, 0.3), part(0.7, 1)];
  const grown = 100 * (late / early - 1);
  const again = (await family(host.pid)).filter((pid) => !pids.includes(pid));
  const unexpected = [...counts.unexpected].map(([what, times]) => `${times} x ${what}`).join(', ');
  return [row(`answers to ${counts.made} requests`, unexpected || 'as expected', 'as expected', !unexpected),
    row('errors of other pages in the log', errors.slice(0, 3).join('; ') || 'none', 'none', errors.length === 0),
    row('memory (MiB) in 10 to 30 %, in 70 to 100 %', `${early.toFixed(1)}, ${late.toFixed(1)}`,
      total < fewest ? 'not judged' : `<= ${mostGrown} % more`, total < fewest || grown <= mostGrown),
    ...(most ? [row('memory (MiB) in 70 to 100 %', late.toFixed(1), `<= ${most}`, late <= most)] : []),
    row('processes that had to be started again', again.length, '0', again.length === 0),
    row('open files before and after', `${before.files}, ${after.files}`, 'no more', after.files <= before.files),
    row('threads before and after', `${before.threads}, ${after.threads}`, 'no more', after.threads <= before.threads),
    row('bytes in spool files afterwards', after.spooled, '0', after.spooled === 0)];
}

export const soaks = {
  soak: (total = 1000000) => withHost((host) => soak(host, total), settings),
  soak_of_two_workers: (total = 1000000) =>
    withHost((host) => soak(host, total, 80), { ...settings, options: ['--workers', '2'] }),
};
