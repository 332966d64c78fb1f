// Requests per second and latency of the host:  node bench/serve.mjs [SECONDS] [CONNECTIONS]
//
// wrk drives each row for that long (5 seconds) over that many connections (16), with the page warm. Below
// each page stands a file of the page's very bytes, served in the same run: what the connection and the
// machine allow. The driver keeps no cookie, so a page that stores something starts a session with each request.
import { execFile, spawn } from 'node:child_process';
import { cp, mkdtemp, rm, writeFile } from 'node:fs/promises';
import { cpus, tmpdir } from 'node:os';
import { join } from 'node:path';
import { createInterface } from 'node:readline';
import { fileURLToPath } from 'node:url';
import { promisify } from 'node:util';

const root = fileURLToPath(new URL('..', import.meta.url));
const [seconds = 5, connections = 16] = process.argv.slice(2).map(Number);
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
  const found = (pattern) => stdout.match(pattern)?.[1];
  if (/Non-2xx|Socket errors/.test(stdout)) throw new Error(`${url}\n${stdout}`);
  return { rate: Number(found(/Requests\/sec:\s+(\S+)/)), half: found(/50%\s+(\S+)/), most: found(/99%\s+(\S+)/) };
}

const row = (name, bytes, rate, half, most) =>
  console.log(name.padEnd(46) + String(bytes).padStart(8) + String(rate).padStart(12) + half.padStart(11) + most.padStart(11));

console.log(`${cpus().length} cores for host and driver, ${connections} connections, ${seconds} s a row`);
row('', 'bytes', 'requests/s', '50 %', '99 %');
for (const { name, site, path, text } of pages) {
  const host = await serve(site);
  if (text) await writeFile(join(host.folder, path), text);
  const url = host.address + path;
  const body = Buffer.from(await (await fetch(url)).arrayBuffer());
  await writeFile(join(host.folder, 'same-bytes.html'), body);
  const page = await drive(url);
  row(name, body.length, page.rate.toFixed(0), page.half, page.most);
  const file = await drive(host.address + 'same-bytes.html');
  row('  a file of the same bytes', body.length, file.rate.toFixed(0), file.half, file.most);
  await host.end();
}
