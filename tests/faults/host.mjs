// A host for one fault, and the rows that tell what was measured.
import { appendFile, cp, mkdtemp, readFile, rm } from 'node:fs/promises';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';

const root = fileURLToPath(new URL('../..', import.meta.url));
process.env.ZELTO ??= join(root, 'build/release/bin/zelto');
process.env.EXAMPLES ??= join(root, 'examples');
const { serveUnder } = await import('../serve/site.mjs');

// Runs `body` with a host on a copy of the site, `lines` added to its zelto.toml, started by `command`. The files of
// the site, its database too, are in the host's `folder` until the end.
export async function withHost(body, { command = [], lines = [], options = [], supervised = false } = {}) {
  const folder = await mkdtemp(join(tmpdir(), 'fault-'));
  await cp(fileURLToPath(new URL('site', import.meta.url)), folder, { recursive: true });
  await appendFile(join(folder, 'zelto.toml'), lines.join('\n') + '\n');
  // Mostly its memory is to be measured, and its end seen: no process in front of it.
  const host = await serveUnder(command, folder, ...(supervised ? [] : ['--no-supervisor']), ...options);
  try {
    return await body(host);
  } finally {
    await host.stop().catch(() => {});
    await rm(folder, { recursive: true });
  }
}

// Mebibytes of memory that the process holds, without what it has only mapped from files.
export async function residentMemory(pid) {
  const status = await readFile(`/proc/${pid}/status`, 'utf8');
  return Number(status.match(/^RssAnon:\s+(\d+)/m)[1]) / 1024;
}

export const row = (what, is, must, holds) => ({ what, is, must, holds });
export const latency = ({ worst, late }) =>
  row(`worst latency of a good client (late by ${late.toFixed(0)})`, `${worst.toFixed(0)} ms`, '<= 250 ms', worst <= 250);
export const allAnswered = ({ answered, others }) =>
  row('good clients answered with 200', others || answered, 'all', answered > 0 && !others);
