// What becomes of the host's service when its server dies, hangs or cannot write its log.
import assert from 'node:assert/strict';
import { execFileSync, spawn, spawnSync } from 'node:child_process';
import { once } from 'node:events';
import { constants, openSync } from 'node:fs';
import { mkdtemp, readFile, readdir, rm, writeFile } from 'node:fs/promises';
import { Socket, connect, createServer } from 'node:net';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { createInterface } from 'node:readline';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { serve, serveUnder } from './site.mjs';

const folder = fileURLToPath(new URL('supervised', import.meta.url));
const limit = { timeout: 300_000 };

// Serves the folder for one test, and ends it with the exit code that is expected. A test that hangs is told by name.
const served = (name, body, { options = [], code = 0 } = {}) =>
  test(name, limit, async () => {
    const site = await serve(folder, ...options);
    try {
      await body(site);
    } finally {
      assert.equal(await site.stop(), code, site.log.join('\n'));
    }
  });

const serversOf = async (site) =>
  (await readFile(`/proc/${site.pid}/task/${site.pid}/children`, 'utf8')).split(' ').filter(Boolean).map(Number);
async function serverOf(site) {
  const servers = await serversOf(site);
  assert.equal(servers.length, 1);
  return servers[0];
}

// Stops all of its threads: from then on it accepts nobody.
async function freeze(server) {
  process.kill(server, 'SIGSTOP');
  for (let running = true; running;) {
    const threads = await readdir(`/proc/${server}/task`);
    const states = await Promise.all(threads.map((id) => readFile(`/proc/${server}/task/${id}/stat`, 'utf8')));
    running = states.some((state) => !/\) T /.test(state));
  }
}

// Sends a request on a connection of its own. `connected` once the system has taken it; `answer` is what comes back.
function ask(site, path = '') {
  const { hostname, port } = new URL(site.address);
  const socket = connect(port, hostname);
  const connected = once(socket, 'connect');
  socket.write(`GET /${path} HTTP/1.1\r\nHost: a\r\nConnection: close\r\n\r\n`);
  let received = '';
  const answer = new Promise((resolve, reject) => {
    socket.on('error', reject);
    socket.on('close', () => resolve(received));
  });
  for (const awaited of [connected, answer]) awaited.catch(() => {});
  const begun = new Promise((resolve) => socket.on('data', (bytes) => {
    received += bytes;
    if (received.includes('begun')) resolve();
  }));
  return { connected, answer, begun };
}

const isServed = async ({ answer }) => assert.match(await answer, /^HTTP\/1\.1 200 OK\r\n[^]*\r\n\r\nserved\n$/);
const told = (site) => site.log.filter((line) => line.startsWith('zelto: '));

served('nobody is refused while a server that was killed is replaced', async (site) => {
  const first = await serverOf(site);
  const page = ask(site, 'wait.asp');
  await page.begun;
  await freeze(first);
  const clients = Array.from({ length: 100 }, () => ask(site));
  await Promise.all(clients.map((client) => client.connected));
  process.kill(first, 'SIGKILL');
  for (const client of clients) await isServed(client);
  assert.doesNotMatch(await page.answer.catch(() => 'reset'), /0\r\n\r\n$/);
  assert.deepEqual(told(site), ['zelto: the server was ended by SIGKILL while it ran GET /wait.asp; it is started again']);
  assert.notEqual(await serverOf(site), first);
});

served('a server that dies again and again is started after a growing pause', async (site) => {
  for (const [index, words] of ['', ' in 1 s', ' in 2 s'].entries()) {
    process.kill(await serverOf(site), index === 1 ? 'SIGABRT' : 'SIGKILL');
    await site.logs(new RegExp(`again${words}$`));
    await isServed(ask(site));
    assert.equal(told(site)[index], `zelto: the server was ended by ${index === 1 ? 'SIGABRT' : 'SIGKILL'}; ` +
      `it is started again${words}`);
  }
  process.kill(await serverOf(site), 'SIGKILL');
  await site.logs(/in 4 s$/);
  // The operator is heard meanwhile.
  process.kill(site.pid, 'SIGHUP');
  await site.logs(/^zelto: zelto\.toml is read again/);
});

test('a server that lives is left alone', limit, async () => {
  const site = await serve(folder, '--workers', '1');
  const server = await serverOf(site);
  await writeFile(join(site.folder, 'zelto.toml'), 'hang_timeout = 5\n');
  process.kill(site.pid, 'SIGHUP');
  await site.logs(/^zelto: zelto\.toml is read again/);
  // Another host's supervisor, which counts as this one does, tells when the limit has passed.
  const other = await serve(folder, '--workers', '1');
  await writeFile(join(other.folder, 'zelto.toml'), 'hang_timeout = 8\n');
  process.kill(other.pid, 'SIGHUP');
  await other.logs(/^zelto: zelto\.toml is read again/);
  await freeze(await serverOf(other));
  await other.logs(/gave no sign of life for 8 s/);
  assert.equal(await serverOf(site), server);
  assert.deepEqual(told(site), ['zelto: zelto.toml is read again']);
  assert.equal(await other.stop(), 0, other.log.join('\n'));
  assert.equal(await site.stop(), 0, site.log.join('\n'));
});

test('a server that hangs is replaced', limit, async () => {
  const site = await serve(folder, '--workers', '1');
  await writeFile(join(site.folder, 'zelto.toml'), 'hang_timeout = 4\n');
  process.kill(site.pid, 'SIGHUP');
  await site.logs(/^zelto: zelto\.toml is read again/);
  const page = ask(site, 'wait.asp');
  await page.begun;
  await freeze(await serverOf(site));
  await isServed(ask(site));
  assert.equal(told(site)[1], 'zelto: the server gave no sign of life for 4 s and was ended while it ran ' +
    'GET /wait.asp; it is started again');
  assert.equal(await site.stop(), 0, site.log.join('\n'));
});

// Another worker's page is answered first, and nobody is refused.
test('a server is replaced when a page goes on after its time', limit, async () => {
  const site = await serve(folder, '--workers', '2');
  await writeFile(join(site.folder, 'zelto.toml'), 'hang_timeout = 2\nscript_timeout = 1\n');
  process.kill(site.pid, 'SIGHUP');
  await site.logs(/^zelto: zelto\.toml is read again/);
  const server = await serverOf(site);
  const stuck = ask(site, 'stuck.asp');
  await stuck.begun;
  await isServed(ask(site));
  await site.logs(/started again$/);
  await isServed(ask(site));
  assert.notEqual(await serverOf(site), server);
  assert.equal(told(site).at(-1), 'zelto: the server could not end a page whose time was over, and was ended ' +
    'while it ran GET /stuck.asp; it is started again');
  assert.equal(await site.stop(), 0, site.log.join('\n'));
});

served('a server starts again with the settings that were last right', async (site) => {
  await writeFile(join(site.folder, 'zelto.toml'), 'default_documents = ["wait.asp"]\n');
  await writeFile(join(site.folder, 'go.txt'), '');
  process.kill(site.pid, 'SIGHUP');
  await site.logs(/^zelto: zelto\.toml is read again/);
  await writeFile(join(site.folder, 'zelto.toml'), 'colour = 1\n');
  process.kill(site.pid, 'SIGHUP');
  await site.logs(/the settings stay as they were$/);
  process.kill(await serverOf(site), 'SIGKILL');
  await site.logs(/started again$/);
  assert.match(await ask(site).answer, /begun/);
});

test('a server does not outlive its supervisor', limit, async () => {
  const site = await serve(folder);
  await isServed(ask(site));
  assert.equal(await site.stop('SIGKILL'), 'SIGKILL');  // once nobody holds the log's pipe
  await assert.rejects(ask(site).answer, { code: 'ECONNREFUSED' });
});

for (const signal of ['SIGINT', 'SIGTERM']) {
  test(`${signal} to all of the host's processes ends it once`, limit, async () => {
    const site = await serve(folder, '--workers', '1');
    const page = ask(site, 'wait.asp');
    await page.begun;
    process.kill(await serverOf(site), signal);
    const stopped = site.stop(signal);
    await site.says(/^Stopping/);
    await writeFile(join(site.folder, 'go.txt'), '');
    await page.answer.catch(() => {});
    assert.equal(await stopped, 0, site.log.join('\n'));
    const told = site.log.filter((line) => line.startsWith('/wait.asp:')).join('\n');
    assert.match(told, /^\/wait\.asp:8: told to the author \(Error, 0x80004005\) \[[0-9a-f]{8}\]$/,
      'the page came to its end');
  });
}

test('a second signal ends a server that hangs', limit, async () => {
  const site = await serve(folder);
  await freeze(await serverOf(site));
  process.kill(site.pid, 'SIGTERM');
  await site.says(/^Stopping/);
  assert.equal(await site.stop(), 'SIGTERM');
  await assert.rejects(ask(site).answer, { code: 'ECONNREFUSED' });
});

test('a server that dies while it stops is not started again', limit, async () => {
  const site = await serve(folder);
  const server = await serverOf(site);
  await freeze(server);
  process.kill(site.pid, 'SIGTERM');
  await site.says(/^Stopping/);
  process.kill(server, 'SIGKILL');
  await site.logs(/^zelto: the server was ended by SIGKILL; it was to end anyway$/);
  assert.equal(await site.stop('SIGCHLD'), 1);
});

for (const [name, options, text] of [['option', ['--no-supervisor'], ''], ['key', [], 'supervise = false\n']]) {
  test(`an ${name} has the server be the only process`.replace('an key', 'a key'), limit, async () => {
    const site = await mkdtemp(join(tmpdir(), 'alone-'));
    await writeFile(join(site, 'zelto.toml'), text);
    await writeFile(join(site, 'default.asp'), 'served\n');
    const host = await serve(site, ...options);
    await rm(site, { recursive: true });
    assert.deepEqual(await serversOf(host), []);
    await isServed(ask(host));
    assert.equal(await host.stop(), 0, host.log.join('\n'));
  });
}

// The exit code, and what was said on standard error, of a host that does not come to serve.
async function fail(command, ...options) {
  const [first, ...words] = [...command, process.env.ZELTO, 'serve', folder, ...options];
  const program = spawn(first, words, { stdio: ['ignore', 'pipe', 'pipe'] });
  const [output, errors] = [program.stdout, program.stderr].map((stream) => {
    const received = [];
    stream.on('data', (bytes) => received.push(bytes));
    return received;
  });
  const [code] = await once(program, 'close');
  assert.equal(Buffer.concat(output).toString(), '');
  return { code, lines: Buffer.concat(errors).toString().split('\n').slice(0, -1) };
}

test('a server that cannot start is not started again', limit, async () => {
  const other = createServer().listen(0, '127.0.0.1');
  await once(other, 'listening');
  const address = `127.0.0.1:${other.address().port}`;
  assert.deepEqual(await fail([], '--listen', address), { code: 1, lines: [
    `zelto: listening on ${address}: Address already in use; --listen, or listen in zelto.toml, takes another one`] });
  other.close();
});

const little = ['prlimit', '--as=1000000000'];
// A sanitizer takes more than that for itself.
const starts = spawnSync(little[0], [...little.slice(1), process.env.ZELTO, '--version']).status === 0;
test('a start without memory says so', { ...limit, skip: !starts }, async () => {
  const { code, lines } = await fail(little, '--listen', '127.0.0.1:0');
  assert.equal(code, 1);
  assert.equal(lines.length, 1, lines.join('\n'));
  assert.match(lines[0], /^zelto: .*memory/);
});

test('a start without room for the stacks of its workers says so', { ...limit, skip: !starts }, async () => {
  const { code, lines } = await fail(['prlimit', '--as=6000000000'], '--listen', '127.0.0.1:0', '--workers', '1024');
  assert.equal(code, 1);
  assert.equal(lines.length, 1, lines.join('\n'));
  assert.match(lines[0], /^zelto: .*memory/);
});

test('a log that cannot be written stops nothing, and says how much it lacks', limit, async () => {
  const site = await mkdtemp(join(tmpdir(), 'full-'));
  await writeFile(join(site, 'zelto.toml'), 'log = "/dev/full"\n');
  await writeFile(join(site, 'default.asp'), 'served\n');
  const host = await serve(site);
  await rm(site, { recursive: true });
  for (let i = 0; i < 5; i++) await isServed(ask(host));
  await writeFile(join(host.folder, 'zelto.toml'), 'log = "lines.txt"\n');
  process.kill(host.pid, 'SIGHUP');
  let lines = '';
  for (let asked = 0; asked < 5000 && !/read again/.test(lines); asked++) {
    await isServed(ask(host));
    lines = await readFile(join(host.folder, 'lines.txt'), 'utf8').catch(() => '');
  }
  const [, lost] = lines.match(/^zelto: (\d+) lines of the log lost: No space left on device\n/);
  assert.ok(lost >= 5, lost);
  assert.equal(await host.stop(), 0);
});

test('a log that nobody reads stops nothing, and says how much it lacks', limit, async () => {
  const place = await mkdtemp(join(tmpdir(), 'unread-'));
  const pipe = join(place, 'pipe');
  execFileSync('mkfifo', [pipe]);
  const reader = openSync(pipe, constants.O_RDONLY | constants.O_NONBLOCK);
  const host = await serveUnder(['sh', '-c', `exec "$0" "$@" 2> ${pipe}`], folder, '--workers', '2');
  const path = '?' + 'x'.repeat(7000);
  // Twice what the pipe and the host have room for.
  const fill = async () => {
    for (let i = 0; i < 32; i++) await Promise.all(Array.from({ length: 10 }, () => isServed(ask(host, path))));
  };
  await fill();
  const first = await serverOf(host);
  process.kill(first, 'SIGKILL');  // its supervisor does not wait either
  while ((await serversOf(host)).includes(first));
  await fill();
  const read = createInterface({ input: new Socket({ fd: reader, readable: true }) });
  let lines = 0;
  await new Promise((resolve) => read.on('line', (line) => {
    lines++;
    if (/^zelto: \d+ lines of the log lost: nobody read them$/.test(line)) resolve();
  }));
  assert.ok(lines > 100, 'some were kept');
  assert.equal(await host.stop(), 0);
  read.close();
  await rm(place, { recursive: true });
});
