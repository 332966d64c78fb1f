// What docs/serving.md says of settings is what the program says, and its servers in front work as they stand there.
import assert from 'node:assert/strict';
import { execFile, spawn } from 'node:child_process';
import { once } from 'node:events';
import { mkdir, mkdtemp, readFile, rm, writeFile } from 'node:fs/promises';
import { request } from 'node:https';
import { createServer } from 'node:net';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { promisify } from 'node:util';
import { serve } from '../serve/site.mjs';

const run = promisify(execFile);
const document = await readFile(fileURLToPath(new URL('../../docs/serving.md', import.meta.url)), 'utf8');
const block = (language) => document.match(new RegExp('^```' + language + '\n([^]*?)^```', 'm'))[1];

test('the settings are those of the program', async () => {
  const { stdout } = await run(process.env.ZELTO, ['serve', '--help']);
  const lines = stdout.split('\n').filter((line) => /^ {2}\w+ = /.test(line)).map((line) => line.slice(2));
  assert.deepEqual(block('toml').trim().split('\n'), lines);
});

async function freePort() {
  const server = createServer().listen(0, '127.0.0.1');
  await once(server, 'listening');
  const { port } = server.address();
  server.close();
  return port;
}

const get = (port) => new Promise((resolve, reject) => {
  request({ port, host: '127.0.0.1', path: '/a.asp', rejectUnauthorized: false, headers: { Host: 'www.example.org' } },
    async (response) => {
      let text = '';
      for await (const piece of response) text += piece;
      resolve({ text, cookie: String(response.headers['set-cookie']) });
    }).on('error', reject).end();
});

// Asks until the server in front listens, or has ended.
async function firstAnswer(program, port) {
  for (;;) {
    try {
      return await get(port);
    } catch (error) {
      assert.ok(error.code === 'ECONNREFUSED' && program.exitCode === null, error.message);
      await Promise.race([once(program, 'exit'), new Promise((next) => { setTimeout(next, 20); })]);
    }
  }
}

const fronts = {
  nginx: (folder, text) => ({
    words: ['nginx', '-p', folder, '-e', 'stderr', '-c', join(folder, 'front.conf'), '-g', 'daemon off;'],
    text: `pid ${folder}/pid;\nevents {}\nhttp {\naccess_log off;\n${['client_body', 'proxy', 'fastcgi', 'uwsgi', 'scgi']
      .map((kind) => `${kind}_temp_path ${folder}/${kind};`).join('\n')}\n${text}}\n`,
  }),
  haproxy: (folder, text) => ({ words: ['haproxy', '-db', '-f', join(folder, 'front.conf')], text }),
};

for (const [name, front] of Object.entries(fronts)) {
  test(`${name} stands in front of a site`, async () => {
    const folder = await mkdtemp(join(tmpdir(), 'front-'));
    const site = join(folder, 'site');
    await mkdir(site);
    await writeFile(join(site, 'zelto.toml'), [...document.matchAll(/^trusted_proxies = .*"\]$/gm)].at(-1)[0]);
    await writeFile(join(site, 'a.asp'), `<% Session("a") = 1; Response.Write(["HTTPS", "HTTP_HOST", "HTTP_X_FORWARDED_FOR"].map(
      function (name) { return String(Request.ServerVariables(name)); }).join(" ")); %>`);
    const served = await serve(site);
    try {
      const key = join(folder, 'key.pem'), certificate = join(folder, 'certificate.pem');
      await run('openssl', ['req', '-x509', '-newkey', 'rsa:2048', '-nodes', '-subj', '/CN=www.example.org', '-keyout', key,
        '-out', certificate]);
      await writeFile(join(folder, 'both.pem'), await readFile(key, 'utf8') + await readFile(certificate, 'utf8'));
      const port = await freePort();
      const { words, text } = front(folder, block(name).replace('127.0.0.1:8080', new URL(served.address).host)
        .replace('listen 443', `listen 127.0.0.1:${port}`).replace('bind :443', `bind 127.0.0.1:${port}`)
        .replace('/etc/ssl/site.pem', certificate).replace('/etc/ssl/site.key', key)
        .replace('/etc/ssl/site-and-key.pem', join(folder, 'both.pem')));
      await writeFile(join(folder, 'front.conf'), text);
      const program = spawn(words[0], words.slice(1), { stdio: 'ignore',
        env: { ...process.env, PATH: `${process.env.PATH}:/usr/sbin:/sbin` } });
      try {
        const answer = await firstAnswer(program, port);
        assert.equal(answer.text, 'on www.example.org 127.0.0.1');
        assert.match(answer.cookie, /; Secure/i);
      } finally {
        const ended = once(program, 'exit');
        program.kill();
        await ended;
      }
    } finally {
      assert.equal(await served.stop(), 0, served.log.join('\n'));
      await rm(folder, { recursive: true });
    }
  });
}
