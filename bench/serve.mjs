// Requests per second and latency of the host:  node bench/serve.mjs [SECONDS] [CONNECTIONS]
//
// wrk drives each row five times for that long (2 seconds) over that many connections (16), with the page
// warm. Below each page stands a file of the page's very bytes, served between the page's rounds: what the
// connection and the machine allow. The driver keeps no cookie, so a page that stores something starts a
// session with each request. What is printed is the median of the rounds; the spread is half the distance
// from the slowest to the fastest.
import { execFile, spawn } from 'node:child_process';
import { cp, mkdtemp, rm, writeFile } from 'node:fs/promises';
import { cpus, tmpdir } from 'node:os';
import { join } from 'node:path';
import { createInterface } from 'node:readline';
import { fileURLToPath } from 'node:url';
import { promisify } from 'node:util';

const root = fileURLToPath(new URL('..', import.meta.url));
const rounds = 5;
const [seconds = 2, connections = 16] = process.argv.slice(2).map(Number);
if (!(seconds >= 1 && connections >= 2)) {
  console.error('usage: node bench/serve.mjs [SECONDS] [CONNECTIONS]');
  process.exit(2);
}

const pages = [
  { name: 'a page of one expression', site: 'hello', path: 'one.asp', text: '<%= 1 + 1 %>\n' },
  { name: 'hello: a template, two marks', site: 'hello', path: 'default.asp?c=Greet&who=Ann' },
  { name: 'notebook: layout, child templates, session', site: 'notebook', path: 'default.asp' },
  { name: 'guestbook: the same, entries from SQLite', site: 'guestbook', path: 'default.asp' },
];

// A host on a copy of an example: its address, and end().
async function serve(example) {
  const folder = await mkdtemp(join(tmpdir(), 'bench-'));
  await cp(join(root, 'examples', example), folder, { recursive: true });
  const host = spawn(join(root, 'build/release/bin/zelto'), ['serve', folder, '--listen', '127.0.0.1:0'], {
    stdio: ['ignore', 'pipe', 'ignore'],
  });
  process.once('exit', () => host.kill());  // also when a row fails
  const ended = new Promise((resolve) => host.once('exit', resolve));
  const address = await new Promise((found) =>
    createInterface({ input: host.stdout }).once('line', (line) => found(line.match(/http:\S+/)[0])));
  return {
    address,
    folder,
    async end() {
      host.kill();
      const code = await ended;
      await rm(folder, { recursive: true });
      if (code !== 0) throw new Error(`the host of ${example} ended with ${code}`);
    },
  };
}

async function drive(url) {
  const { stdout } = await promisify(execFile)('wrk', [
    '--latency', '-t2', `-c${connections}`, `-d${seconds}s`, url,
  ]);
  if (/Non-2xx|Socket errors/.test(stdout)) throw new Error(`${url}\n${stdout}`);
  const found = (pattern) => stdout.match(pattern).slice(1);
  const milliseconds = ([value, unit]) => Number(value) * { us: 1e-3, ms: 1, s: 1e3 }[unit];
  return {
    rate: Number(found(/Requests\/sec:\s+(\S+)/)[0]),
    half: milliseconds(found(/50%\s+([\d.]+)(\w+)/)),
    most: milliseconds(found(/99%\s+([\d.]+)(\w+)/)),
  };
}

const sorted = (runs, key) => runs.map((run) => run[key]).sort((a, b) => a - b);
const median = (runs, key) => sorted(runs, key)[rounds >> 1];

function row(name, bytes, runs) {
  const rates = sorted(runs, 'rate');
  const spread = (100 * (rates.at(-1) - rates[0])) / 2 / median(runs, 'rate');
  return [
    name.padEnd(44), String(bytes).padStart(7), median(runs, 'rate').toFixed(0).padStart(12),
    `±${spread.toFixed(0)} %`.padStart(8), `${median(runs, 'half').toFixed(2)} ms`.padStart(11),
    `${median(runs, 'most').toFixed(2)} ms`.padStart(11),
  ].join('');
}

console.log(`${cpus().length} cores for host and driver, ${connections} connections, ${rounds} rounds of ${seconds} s`);
console.log(`${''.padEnd(44)}  bytes  requests/s  spread       50 %       99 %`);
for (const { name, site, path, text } of pages) {
  const host = await serve(site);
  if (text) await writeFile(join(host.folder, path), text);
  const url = host.address + path;
  const body = Buffer.from(await (await fetch(url)).arrayBuffer());
  await writeFile(join(host.folder, 'same-bytes.html'), body);
  const page = [];
  const file = [];
  for (let round = 0; round < rounds; ++round) {
    page.push(await drive(url));
    file.push(await drive(host.address + 'same-bytes.html'));
  }
  console.log(row(name, body.length, page));
  console.log(row('  a file of the same bytes', body.length, file));
  await host.end();
}
