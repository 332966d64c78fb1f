// What an operator's signals do to the running host: SIGHUP rereads zelto.toml and opens the log anew, others are none
// of its business.
import assert from 'node:assert/strict';
import { once } from 'node:events';
import { readFile, rename, rm, writeFile } from 'node:fs/promises';
import { connect } from 'node:net';
import { constants } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { serve } from './site.mjs';

const folder = fileURLToPath(new URL('signals', import.meta.url));

// Serves the folder for one test; the host ends in good order, whatever was sent to it. A test that hangs is told by name.
const served = (name, body, ...options) =>
  test(name, { timeout: 300_000 }, async () => {
    const site = await serve(folder, ...options);
    try {
      await body(site);
    } finally {
      assert.equal(await site.stop(), 0, site.log.join('\n'));
    }
  });

async function ask(site, path, options = {}) {
  const answer = await fetch(site.address + path, options);
  return { status: answer.status, text: await answer.text(), cookie: answer.headers.get('set-cookie')?.split(';')[0] };
}

const configure = (site, text) => writeFile(join(site.folder, 'zelto.toml'), text);
const rereads = 'zelto: zelto.toml is read again';

// Sends SIGHUP, and waits for what the host then logs first. Requests are logged at their own pace.
async function hangUp(site) {
  site.log.length = 0;
  process.kill(site.pid, 'SIGHUP');
  await site.logs(/^zelto: /);
}
const told = (site) => site.log.filter((line) => line.startsWith('zelto: '));

// Ends by themselves, stop, leave a core file, or belong to the C library.
const meant = ['SIGINT', 'SIGTERM', 'SIGKILL', 'SIGQUIT', 'SIGILL', 'SIGTRAP', 'SIGABRT', 'SIGBUS', 'SIGFPE', 'SIGSEGV',
  'SIGXCPU', 'SIGSYS', 'SIGSTOP', 'SIGTSTP', 'SIGTTIN', 'SIGTTOU'].map((name) => constants.signals[name]);
const harmless = Array.from({ length: 64 }, (_, i) => i + 1)
  .filter((number) => !meant.includes(number) && number !== 32 && number !== 33);

served('no signal ends the host by accident, whatever its pages do', async (site) => {
  let busy = true;
  let answered = 0;
  const client = async () => {
    for (; busy; answered++) {
      const answer = await ask(site, '');
      assert.equal(answer.status, 200);
      assert.equal(answer.text, '494950\n');  // 4900 + … + 4999
    }
  };
  const clients = Array.from({ length: 6 }, client);
  for (let round = 0; round < 20; round++) {
    for (const number of harmless) process.kill(site.pid, number);
    for (let i = 0; i < 20; i++) for (const name of ['SIGUSR1', 'SIGSTKFLT']) process.kill(site.pid, name);
    assert.equal((await ask(site, 'count.asp')).text, '1 of 20 minutes\n');
  }
  busy = false;
  await Promise.all(clients);
  assert.ok(answered >= 6);
  assert.ok(harmless.includes(constants.signals.SIGUSR1) && harmless.includes(constants.signals.SIGHUP));
}, '--workers', '4');

served('SIGHUP has zelto.toml hold from then on', async (site) => {
  const first = await ask(site, 'count.asp');
  const headers = { cookie: first.cookie };
  assert.doesNotMatch((await ask(site, 'fails.asp')).text, /told to the author/);
  await configure(site, `debug = true
    protect = ["form.asp"]
    default_documents = ["fails.asp"]
    body_limit = 5
    session_timeout = 7
  `);
  assert.doesNotMatch((await ask(site, 'fails.asp')).text, /told to the author/, 'nobody has said so yet');
  await hangUp(site);
  assert.deepEqual(told(site), [rereads]);
  const shown = await ask(site, '');
  assert.equal(shown.status, 500);
  assert.match(shown.text, /told to the author/);
  assert.match((await ask(site, 'form.asp')).text, /is a protected name/);
  assert.equal((await ask(site, 'count.asp', { headers })).text, '2 of 20 minutes\n', 'the session keeps its time');
  assert.equal((await ask(site, 'count.asp')).text, '1 of 7 minutes\n');

  await rm(join(site.folder, 'zelto.toml'));
  await hangUp(site);
  assert.equal((await ask(site, '')).text, '494950\n');
  assert.equal((await ask(site, 'count.asp', { headers })).text, '3 of 20 minutes\n', 'the session is there');
});

// Posts on a connection that is kept open; answers the status.
async function post(socket, body) {
  socket.write('POST /form.asp HTTP/1.1\r\nHost: a\r\nContent-Type: application/x-www-form-urlencoded\r\n' +
    `Content-Length: ${body.length}\r\n\r\n${body}`);
  const [bytes] = await once(socket, 'data');
  return Number(bytes.toString().split(' ')[1]);
}

served('a connection keeps the limits that it began with', async (site) => {
  const { hostname, port } = new URL(site.address);
  const old = connect(port, hostname);
  assert.equal(await post(old, 'a=12345'), 200);
  await configure(site, 'body_limit = 5\ntrusted_proxies = ["127.0.0.1"]\n');
  await hangUp(site);
  const fresh = connect(port, hostname);
  assert.equal(await post(fresh, 'a=12345'), 413);
  assert.equal(await post(old, 'a=12345'), 200);
  const secure = { 'x-forwarded-proto': 'https' };
  const answer = await fetch(`${site.address}count.asp`, { headers: { ...secure, connection: 'close' } });
  assert.match(answer.headers.get('set-cookie'), /; Secure$/);
  for (const socket of [old, fresh]) socket.destroy();
});

served('SIGHUP leaves alone what has begun', async (site) => {
  const { hostname, port } = new URL(site.address);
  const socket = connect(port, hostname);
  const closed = once(socket, 'close');
  let received = '';
  socket.on('data', (bytes) => { received += bytes; });
  socket.write('GET /wait.asp HTTP/1.1\r\nHost: a\r\n\r\n');
  while (!received.includes('begun')) await once(socket, 'data');
  await configure(site, 'debug = true\n');
  await hangUp(site);
  assert.match((await ask(site, 'fails.asp')).text, /told to the author/);
  await writeFile(join(site.folder, 'go.txt'), '');
  await closed;
  assert.doesNotMatch(received, /told to the author/);
});

served('a zelto.toml that is wrong changes nothing', async (site) => {
  await configure(site, 'debug = true\n');
  await hangUp(site);
  for (const [text, words] of [['debug = maybe\n', /zelto\.toml:1: .*; the settings stay as they were$/],
    ['debug = false\ncolour = 1\n', /zelto\.toml:2: colour is not known; .*; the settings stay as they were$/],
    ['debug = false\nlog = "none/of/these"\n', /zelto\.toml:2: log is in a folder that there is not; .*; the settings stay/],
    ['debug = false\nlog = "."\n', /opening the log .*: Is a directory; the settings stay/]]) {
    await configure(site, text);
    await hangUp(site);
    assert.equal(told(site).length, 1);
    assert.match(told(site)[0], words);
    assert.match((await ask(site, 'fails.asp')).text, /told to the author/);
  }
});

served('what takes a restart is said', async (site) => {
  await configure(site, 'workers = 9\nsession_node = "b"\nlisten = "127.0.0.2:9"\n');
  for (let i = 0; i < 2; i++) {
    await hangUp(site);
    await site.logs(/^zelto: session_node/);
    assert.deepEqual(told(site), [rereads, 'zelto: workers takes a restart to change',
      'zelto: session_node takes a restart to change'], 'the command line says where to listen');
  }
  assert.doesNotMatch((await ask(site, 'count.asp')).cookie, /\.b$/);
});

served('the log is a file that can be put away, and served to nobody', async (site) => {
  const file = (name) => join(site.folder, name);
  await configure(site, 'log = "lines.txt"\n');
  await writeFile(file('lines.txt'), 'what was there before\n');
  process.kill(site.pid, 'SIGHUP');
  // Until the host has done so, lines go to where they went before.
  const until = async (name, pattern) => {
    for (let asked = 0; asked < 5000; asked++) {
      assert.equal((await ask(site, 'count.asp')).status, 200);
      if (pattern.test(await readFile(file(name), 'utf8').catch(() => ''))) return;
    }
    assert.fail(`${name} never has ${pattern}`);
  };
  await until('lines.txt', new RegExp(`^${rereads}$`, 'm'));
  assert.match(await readFile(file('lines.txt'), 'utf8'), /^what was there before\n/);
  assert.equal((await ask(site, 'lines.txt')).status, 404);
  await rename(file('lines.txt'), file('lines.1.txt'));
  await until('lines.1.txt', /GET \/count\.asp/);
  process.kill(site.pid, 'SIGHUP');
  await until('lines.txt', new RegExp(`^${rereads}$`, 'm'));
  const kept = await readFile(file('lines.1.txt'), 'utf8');
  await ask(site, 'fails.asp');
  await until('lines.txt', /^\/fails\.asp:1: told to the author/m);
  assert.equal(await readFile(file('lines.1.txt'), 'utf8'), kept);
  // Also when the settings themselves cannot be had.
  await rename(file('lines.txt'), file('lines.2.txt'));
  await configure(site, 'colour = 1\n');
  process.kill(site.pid, 'SIGHUP');
  await until('lines.txt', /^zelto: .*colour is not known/m);
});

test('SIGHUP while the host stops changes nothing', { timeout: 60_000 }, async () => {
  const site = await serve(folder);
  const begun = await fetch(site.address + 'wait.asp');
  const waiting = begun.text().catch(() => 'broken off, as the page fails in the end');
  const stopped = site.stop();
  await site.says(/^Stopping/);
  for (let i = 0; i < 20; i++) process.kill(site.pid, 'SIGHUP');
  await writeFile(join(site.folder, 'go.txt'), '');
  await waiting;
  assert.equal(await stopped, 0, site.log.join('\n'));
});
