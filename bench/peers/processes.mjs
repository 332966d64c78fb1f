// The servers that are measured, and what the system tells of them.
import { spawn } from 'node:child_process';
import { once } from 'node:events';
import { mkdtempSync, rmSync } from 'node:fs';
import { readFile, readdir } from 'node:fs/promises';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { createInterface } from 'node:readline';
import { text } from 'node:stream/consumers';

const running = new Set();
const folders = [];

// However the bench ends: by itself, with an error, or with a signal. One that is killed leaves no process either,
// because the system tells each of them to end with the bench.
process.once('exit', () => {
  for (const child of running) child.kill();
  for (const folder of folders) rmSync(folder, { recursive: true, force: true, maxRetries: 3 });
});
for (const [signal, number] of [['SIGINT', 2], ['SIGTERM', 15], ['SIGHUP', 1]])
  process.once(signal, () => process.exit(128 + number));

export function temporaryFolder() {
  folders.push(mkdtempSync(join(tmpdir(), 'peers-')));
  return folders.at(-1);
}

// Those that this process may use, as in "0-1,4".
export async function cores() {
  const status = await readFile('/proc/self/status', 'utf8');
  return status.match(/^Cpus_allowed_list:\s+(\S+)/m)[1].split(',').flatMap((range) => {
    const [first, last = first] = range.split('-').map(Number);
    return Array.from({ length: last - first + 1 }, (_, at) => first + at);
  });
}

function startOn(cores, command) {
  const child = spawn('setpriv', ['--pdeathsig', 'TERM', 'taskset', '-c', cores.join(), ...command], {
    stdio: ['ignore', 'pipe', 'pipe'],
    env: { ...process.env, NODE_ENV: 'production' },
  });
  running.add(child);
  child.once('close', () => running.delete(child));
  return child;
}

// Runs a program on these cores to its end: what it writes.
export async function run(command, cores) {
  const child = startOn(cores, command);
  const closed = once(child, 'close');
  const [output, errors] = await Promise.all([text(child.stdout), text(child.stderr)]);
  const [code] = await closed;
  if (code !== 0) throw new Error(`${command.join(' ')} ended with ${code}:\n${output}${errors}`);
  return output;
}

// Starts a server on these cores: its process, what `ready` found in a line that it wrote, and end().
export async function start(command, cores, ready) {
  const child = startOn(cores, command);
  const ended = once(child, 'close').then(([code]) => code);
  const lines = [];
  const found = await new Promise((resolve, reject) => {
    const read = (line) => {
      if (lines.length < 50) lines.push(line);
      if (line.match(ready)) resolve(line.match(ready)[0]);
    };
    for (const stream of [child.stdout, child.stderr]) createInterface({ input: stream }).on('line', read);
    ended.then((code) => reject(new Error(`${command[0]} ended with ${code}:\n${lines.join('\n')}`)));
  });
  return {
    pid: child.pid,
    found,
    async end() {
      child.kill();
      await ended;
    },
  };
}

// The processes, and all that they have started.
export async function family(pids) {
  const all = [...pids];
  for (const pid of all) {
    for (const thread of await readdir(`/proc/${pid}/task`)) {
      const children = await readFile(`/proc/${pid}/task/${thread}/children`, 'utf8').catch(() => '');
      all.push(...children.split(' ').filter(Boolean).map(Number));
    }
  }
  return all;
}

// Seconds of the processors that they have used. The system counts in hundredths.
export async function processorTime(pids) {
  let ticks = 0;
  for (const pid of pids) {
    const fields = (await readFile(`/proc/${pid}/stat`, 'utf8')).replace(/^.*\) /s, '').split(' ');
    ticks += Number(fields[11]) + Number(fields[12]);
  }
  return ticks / 100;
}

// MiB: what they would take if nobody else had the same files mapped, as several servers of one kind here do. Their own
// memory counts by shares (PSS), so that what they share among themselves counts once; a file's part in memory does so
// too, as much as the one has that has most of it.
export async function memory(pids) {
  let own = 0;
  const files = new Map();
  for (const pid of pids) {
    const rollup = await readFile(`/proc/${pid}/smaps_rollup`, 'utf8');
    for (const kind of ['Anon', 'Shmem']) own += Number(rollup.match(new RegExp(`^Pss_${kind}:\\s+(\\d+)`, 'm'))[1]);
    const maps = await readFile(`/proc/${pid}/smaps`, 'utf8');
    for (const map of maps.split(/^(?=[0-9a-f]+-[0-9a-f]+ )/m)) {
      const [, offset, device, inode, path] = map.match(/^\S+ \S+ (\S+) (\S+) (\d+) *(.*)/);
      if (!path.startsWith('/') || /^\/(dev\/zero|memfd:|SYSV)/.test(path)) continue;
      const here = Number(map.match(/^Rss:\s+(\d+)/m)[1]) - Number(map.match(/^Anonymous:\s+(\d+)/m)[1]);
      const key = `${device} ${inode} ${offset}`;
      files.set(key, Math.max(files.get(key) ?? 0, here));
    }
  }
  return [...files.values()].reduce((sum, size) => sum + size, own) / 1024;
}
