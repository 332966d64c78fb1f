// The service, the rotation of the log and the back-up, as docs/serving.md has them.
import assert from 'node:assert/strict';
import { execFile } from 'node:child_process';
import { mkdtemp, readFile, rm, writeFile } from 'node:fs/promises';
import { tmpdir, userInfo } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { promisify } from 'node:util';
import { serve } from '../serve/site.mjs';

const run = promisify(execFile);
const document = await readFile(fileURLToPath(new URL('../../docs/serving.md', import.meta.url)), 'utf8');
const block = (pattern) => [...document.matchAll(/^```\w*\n([^]*?)^```/gm)].map(([, text]) => text).find((text) => pattern.test(text));
const sbin = { ...process.env, PATH: `${process.env.PATH}:/usr/sbin:/sbin` };

async function withFolder(use) {
  const folder = await mkdtemp(join(tmpdir(), 'service-'));
  try {
    await use(folder);
  } finally {
    await rm(folder, { recursive: true });
  }
}

test('systemd takes the unit', () => withFolder(async (folder) => {
  const unit = join(folder, 'site.service');
  const text = block(/^\[Unit\]/m).replace('/opt/zelto/bin/zelto', process.env.ZELTO).replace('User=site', `User=${userInfo().username}`);
  await writeFile(unit, text);
  const { stdout, stderr } = await run('systemd-analyze', ['verify', '--man=no', unit]);
  const ours = (output) => output.split('\n').filter((line) => line.includes('site.service'));
  assert.deepEqual(ours(stdout + stderr), []);
  // It does object: to a key that there is not.
  await writeFile(unit, text.replace('Restart=', 'Rstart='));
  const wrong = await run('systemd-analyze', ['verify', '--man=no', unit]).catch((error) => error);
  assert.notDeepEqual(ours(wrong.stdout + wrong.stderr), []);
}));

test('logrotate begins a new log', () => withFolder(async (folder) => {
  await writeFile(join(folder, 'zelto.toml'), 'log = "zelto.log"\n');
  await writeFile(join(folder, 'a.txt'), 'a');
  const site = await serve(folder);
  try {
    const file = (name) => join(site.folder, name);
    const isInLog = async (text) => (await readFile(file('zelto.log'), 'utf8').catch(() => '')).includes(text);
    // Requests are logged at their own pace.
    assert.equal((await fetch(new URL('a.txt', site.address))).status, 200);
    while (!await isInLog('/a.txt')) await fetch(new URL('b.txt', site.address));
    // Where systemctl stands for it, the signal that the unit's ExecReload sends.
    assert.match(document, /^ExecReload=\/bin\/kill -HUP \$MAINPID$/m);
    await writeFile(file('rotate'), block(/logrotate|postrotate/).replace('/var/log/zelto.log', file('zelto.log'))
      .replace('systemctl reload site', `kill -HUP ${site.pid}`), { mode: 0o644 });
    await run('logrotate', ['--force', '--state', file('state'), file('rotate')], { env: sbin });
    while (!await isInLog('/c.txt')) await fetch(new URL('c.txt', site.address));
    assert.match(await readFile(file('zelto.log.1'), 'utf8'), /\/a\.txt/);
    assert.ok(!await isInLog('/a.txt'));
  } finally {
    assert.equal(await site.stop(), 0, site.log.join('\n'));
  }
}));

test('a database is copied while the site runs', () => withFolder(async (folder) => {
  const made = join(folder, 'site'), copy = join(folder, 'copy.db');
  await run(process.env.ZELTO, ['init', made]);
  const site = await serve(made);
  try {
    await run('sh', [join(made, 'test.sh'), site.address.replace(/\/$/, '')]);
    const [, command] = document.match(/`(sqlite3 FILE "\.backup COPY")`/);
    await run('sh', ['-c', command.replace('FILE', `'${join(site.folder, 'app_data', 'list.db')}'`).replace('COPY', copy)]);
    assert.equal((await run('sqlite3', [copy, 'PRAGMA integrity_check; SELECT count(*) FROM items'])).stdout, 'ok\n0\n');
  } finally {
    assert.equal(await site.stop(), 0, site.log.join('\n'));
  }
}));
