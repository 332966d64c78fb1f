// Drives servers in rounds, and tells what a request took.
import { writeFile } from 'node:fs/promises';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { family, memory, processorTime, run, temporaryFolder } from './processes.mjs';

const script = fileURLToPath(new URL('requests.lua', import.meta.url));

async function wrk({ url, connections = 16, requests }, on, seconds) {
  const told = await run([
    'wrk', '--latency', '-t1', `-c${connections}`, `-d${seconds}s`,
    ...(requests ? ['-s', script, url, '--', requests] : [url]),
  ], on);
  if (/Non-2xx|Socket errors/.test(told)) throw new Error(`${url}\n${told}`);
  const found = (pattern) => told.match(pattern).slice(1);
  const milliseconds = ([value, unit]) => Number(value) * { us: 1e-3, ms: 1, s: 1e3 }[unit];
  return {
    requests: Number(found(/(\d+) requests in/)[0]),
    rate: Number(found(/Requests\/sec:\s+(\S+)/)[0]),
    half: milliseconds(found(/50%\s+([\d.]+)(\w+)/)),
    most: milliseconds(found(/99%\s+([\d.]+)(\w+)/)),
  };
}

// The file of requests for `wrk`, from lines of a path, and of a cookie or nothing after a tab.
let files = 0;
export async function requestFile(lines) {
  const file = join(temporaryFolder(), `requests${files++}`);
  await writeFile(file, lines.join('\n') + '\n');
  return file;
}

export function median(values) {
  const sorted = [...values].sort((a, b) => a - b);
  return sorted[sorted.length >> 1];
}

// Half the distance from the fastest to the slowest.
const spread = (values) => (Math.max(...values) - Math.min(...values)) / 2 / median(values);

async function drive(row, seconds) {
  const pids = await family(row.server.pids);
  const before = await processorTime(pids);
  const figures = await wrk(row, row.load, seconds);
  return { ...figures, processor: ((await processorTime(pids)) - before) / figures.requests };
}

// Each row is { name, server, url, load } and what else wrk() takes; `load` is where wrk runs. All are warmed up for
// two seconds at least, then take turns, so that a slow spell of the machine does not fall on one of them alone. A row
// may say how often it must have been asked to be warm.
export async function measure(rows, { rounds, seconds, tell = () => {} }) {
  for (const row of rows) {
    let asked = 0;
    do asked += (await drive(row, Math.max(seconds, 2))).requests; while (asked < (row.warm ?? 0));
  }
  const runs = rows.map(() => []);
  for (let round = 1; round <= rounds; round++) {
    tell(`round ${round} of ${rounds}`);
    for (const [at, row] of rows.entries()) runs[at].push(await drive(row, seconds));
  }
  return Promise.all(rows.map(async (row, at) => {
    const all = (key) => runs[at].map((one) => one[key]);
    return {
      ...row,
      processor: median(all('processor')),
      spread: spread(all('processor')),
      rate: median(all('rate')),
      half: median(all('half')),
      most: median(all('most')),
      memory: await memory(await family(row.server.pids)),
    };
  }));
}
