// Files, memory and disk that are used up.
import { execFileSync } from 'node:child_process';
import { readFile, writeFile } from 'node:fs/promises';
import { join } from 'node:path';
import { ask, get, goodClients, pause, slowClients } from './clients.mjs';
import { allAnswered, latency, residentMemory, row, withHost } from './host.mjs';
import { family } from './processes.mjs';

// How often each status came, "20 x 200".
function counted(answers) {
  const counts = new Map();
  for (const { status } of answers) counts.set(status, (counts.get(status) ?? 0) + 1);
  return [...counts].sort().map(([status, times]) => `${times} x ${status}`).join(', ');
}

async function askTimes(host, times, path) {
  const answers = [];
  for (let i = 0; i < times; i++) answers.push(await ask(host.address, path));
  return answers;
}

const begun = (path, length) => `POST ${path} HTTP/1.1\r\nHost: a\r\nContent-Length: ${length}\r\n\r\n`;

// The server may take so many bytes more than it has now. One that is started again has no limit: it stands for the
// machine on which memory is free again.
async function limitMemory(pid, more) {
  const status = await readFile(`/proc/${pid}/status`, 'utf8');
  execFileSync('prlimit', ['--pid', String(pid), `--as=${Number(status.match(/^VmSize:\s+(\d+)/m)[1]) * 1024 + more}`]);
}

// Requests that take all memory: each is refused or fails, or the server dies of them and is there again at once. Some
// may find enough of it, `orAnswered`.
const withoutMemory = (more, requests, orAnswered = false) => withHost(async (host) => {
  await askTimes(host, 20, '/default.asp');
  const [, server] = await family(host.pid);
  await limitMemory(server, more);
  const asking = goodClients(host.address, 4, ['/default.asp']);
  const answers = await Promise.all(requests.map(([path, how]) => ask(host.address, path, how)));
  await pause(1000);
  const after = counted(await askTimes(host, 5, '/default.asp'));
  const told = await asking.stop();
  const isAnother = (await family(host.pid))[1] !== server;
  // The server that took its place may have answered those that came late.
  const mayBe = [500, 503, ...(isAnother ? [0] : []), ...(isAnother || orAnswered ? [200] : [])];
  const wrong = answers.filter(({ status }) => !mayBe.includes(status));
  const worst = Math.max(told.worst, ...answers.map(({ took }) => took));
  return [row(`they${isAnother ? ', by whom the server died' : ''}`, counted(answers),
    orAnswered ? 'answered, failed or refused' : 'failed or refused', wrong.length === 0),
  row('good clients meanwhile', told.others || 'all answered', isAnother ? 'broken off once' : 'all answered',
    !told.others || (isAnother && /^[1-4] x 0$/.test(told.others))),
  row('slowest answer of all', `${worst.toFixed(0)} ms`, '<= 10 s', worst <= 10000),
  row('pages after that', after, '5 x 200', after === '5 x 200')];
}, { supervised: true, lines: ['script_timeout = 20'] });

const taking = (kind) => () => withoutMemory(300 << 20, Array(3).fill([`/takes.asp?kind=${kind}`]));

export const used_up = {
  downloads_3000: () => withHost(async (host) => {
    await writeFile(join(host.folder, 'large.bin'), Buffer.alloc(20 << 20, 'x'));
    const readers = slowClients(host.address, 3000, get('/large.bin'), 1);
    await pause(6000);
    const answers = await askTimes(host, 20, '/default.asp');
    readers.stop();
    const is = counted(answers);
    return [row('a page beside 3,000 slow downloads', is, '20 x 200', is === '20 x 200')];
  }),

  few_files: () => withHost(async (host) => {
    const readers = slowClients(host.address, 300, get('/large.asp'), 1);
    await pause(2000);
    const answers = await askTimes(host, 20, '/default.asp');
    readers.stop();
    await pause(1000);
    const after = counted(await askTimes(host, 20, '/default.asp'));
    const wrong = answers.filter(({ status }) => status !== 200 && status !== 503);
    return [row('a page with 100 files for 300 clients', counted(answers), '200 or 503', wrong.length === 0),
      row('once they have gone', after, '20 x 200', after === '20 x 200')];
  }, { command: ['prlimit', '--nofile=100'] }),

  bodies_for_nothing: () => withHost(async (host) => {
    const before = await residentMemory(host.pid);
    const part = Buffer.alloc(15 << 20, 'x');
    const senders = slowClients(host.address, 80, begun('/missing', 16 << 20));
    for (const socket of senders.sockets) socket.write(part);
    await pause(3000);
    const grown = (await residentMemory(host.pid)) - before;
    senders.stop();
    return [row('memory for 80 bodies of a missing target', `${grown.toFixed(0)} MB`, '<= 20 MB', grown <= 20)];
  }),

  bodies: () => withHost(async (host) => {
    const before = await residentMemory(host.pid);
    const part = Buffer.alloc(15 << 20, 'x');
    const asking = goodClients(host.address, 2, ['/default.asp']);
    const senders = slowClients(host.address, 80, begun('/size.asp', 16 << 20));
    for (const socket of senders.sockets) socket.write(part);
    await pause(6000);
    const grown = (await residentMemory(host.pid)) - before;
    for (const socket of senders.sockets) socket.resume().write(Buffer.alloc(1 << 20, 'x'));
    await pause(2000);
    senders.stop();
    const told = await asking.stop();
    return [allAnswered(told), latency(told),
      row('memory for 80 bodies of 15 MiB', `${grown.toFixed(0)} MB`, '<= 200 MB', grown <= 200)];
  }),

  no_spool: () => withHost(async (host) => {
    const answers = await Promise.all(Array.from({ length: 4 }, () =>
      ask(host.address, '/size.asp', { method: 'POST', body: Buffer.alloc(4 << 20, 'x') })));
    const after = await askTimes(host, 5, '/default.asp');
    const sound = answers.every(({ status }) => status === 503 || status === 0);
    return [row('bodies without room', counted(answers), '503', sound),
      row('pages after that', counted(after), '5 x 200', counted(after) === '5 x 200')];
  }, { lines: ['buffer_memory = 1000000', 'spool_limit = 1000000'] }),

  // A file may have 1 MB, as on a disk that is then full.
  full_spool: () => withHost(async (host) => {
    const readers = slowClients(host.address, 4, get('/large.asp'), 1000);
    const answers = await Promise.all(Array.from({ length: 4 }, () =>
      ask(host.address, '/size.asp', { method: 'POST', body: Buffer.alloc(4 << 20, 'x') })));
    readers.stop();
    const length = (await ask(host.address, '/large.asp')).text.trim().length;
    const after = counted(await askTimes(host, 5, '/default.asp'));
    const sound = answers.every(({ status }) => status === 503 || status === 0);
    const told = host.log.filter((line) => /^zelto: .*File too large/.test(line)).length;
    return [row('bodies without room on the disk', counted(answers), '503', sound),
      row('a large answer for one who takes it', length, '20000000', length === 20000000),
      row('pages after that', after, '5 x 200', after === '5 x 200'),
      row('lines of the log about it', told, 'some', told > 0)];
  }, { command: ['prlimit', '--fsize=1000000'], lines: ['buffer_memory = 1000000'] }),

  memory_objects: taking('objects'),
  memory_text: taking('text'),
  memory_dictionary: taking('dictionary'),
  memory_stream: taking('stream'),
  memory_bodies: () => withoutMemory(24 << 20,
    Array(8).fill(['/size.asp', { method: 'POST', body: Buffer.alloc(15 << 20, 'x') }]), true),

  full_log: () => withHost(async (host) => {
    const answers = await askTimes(host, 20, '/default.asp');
    return [row('pages with a log that takes nothing', counted(answers), '20 x 200', counted(answers) === '20 x 200')];
  }, { lines: ['log = "/dev/full"'] }),
};
