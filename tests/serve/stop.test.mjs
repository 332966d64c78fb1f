// How the host ends: by a signal, with pages running, with something left.
import assert from 'node:assert/strict';
import { cp, mkdtemp, rm, writeFile } from 'node:fs/promises';
import { connect } from 'node:net';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { bodyOf, get } from './raw.mjs';
import { serve } from './site.mjs';

const folder = fileURLToPath(new URL('host', import.meta.url));

// Starts a page that runs for that long; resolves once it has begun. Its end is what comes of it.
async function begin(site, milliseconds) {
  const { hostname, port } = new URL(site.address);
  const socket = connect(port, hostname);
  socket.on('error', () => {});
  socket.write(`GET /wait.asp?ms=${milliseconds} HTTP/1.1\r\nHost: a\r\n\r\n`);
  let received = '';
  const end = new Promise((ended) => socket.once('close', () => ended(received)));
  await new Promise((begun) => socket.on('data', (bytes) => {
    received += bytes;
    if (received.includes('begun')) begun();
  }));
  return { end };
}

test('SIGTERM finishes what runs, and takes nothing new', async () => {
  const site = await serve(folder);
  const page = await begin(site, 500);
  const stopped = site.stop();
  assert.match(await page.end, /done\n\r\n0\r\n\r\n$/);
  assert.equal(await stopped, 0, site.log.join('\n'));
  await assert.rejects(get(site, '/two.asp'), { code: 'ECONNREFUSED' });
});

test('SIGINT does the same', { timeout: 60_000 }, async () => {
  const site = await serve(folder);
  const page = await begin(site, 100);
  const stopped = site.stop('SIGINT');
  assert.match(await page.end, /done\n\r\n0\r\n\r\n$/);
  assert.equal(await stopped, 0, site.log.join('\n'));
});

test('SIGTERM ends a page that goes on for too long', async () => {
  const hasty = await mkdtemp(join(tmpdir(), 'hasty-'));
  await cp(join(folder, 'wait.asp'), join(hasty, 'wait.asp'));
  await writeFile(join(hasty, 'zelto.toml'), 'stop_timeout = 0\n');
  const site = await serve(hasty);
  await rm(hasty, { recursive: true });
  const page = await begin(site, 600_000);
  const stopped = site.stop();
  assert.doesNotMatch(await page.end, /done/);
  assert.equal(await stopped, 1);
  assert.equal(site.log.at(-1), 'zelto: ending without pages that still run after stop_timeout');
});

test('a second signal ends what runs', async () => {
  const site = await serve(folder);
  await begin(site, 600_000);
  process.kill(site.pid, 'SIGTERM');
  await site.says(/^Stopping/);
  assert.equal(await site.stop(), 'SIGTERM');
});

test('the exit code tells that something is left when the host ends', async () => {
  process.env.ASAN_OPTIONS = `${process.env.ASAN_OPTIONS ?? ''}:detect_leaks=0`;  // the host finds it itself
  const site = await serve(folder);
  assert.equal(bodyOf(await get(site, '/cycle.asp')), 'held\n');
  assert.equal(await site.stop(), 3);
  assert.equal(site.log.at(-1), 'zelto: 2 objects are still alive, 0 component modules in use');
});
