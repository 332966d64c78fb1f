// The host as a client and an operator see it: what it serves, its session cookie, its log.
import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { once } from 'node:events';
import { mkdtemp, readFile, rm, symlink, writeFile } from 'node:fs/promises';
import { connect } from 'node:net';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { bodyOf, cookieOf, get, raw, statusOf } from './raw.mjs';
import { serve, serveUnder } from './site.mjs';

const folder = fileURLToPath(new URL('host', import.meta.url));

// Serves the folder for one test, and ends it with the exit code that is expected. A test that hangs is told by name.
const served = (name, body, { options = [], code = 0 } = {}) =>
  test(name, { timeout: 300_000 }, async () => {
    const site = await serve(folder, ...options);
    try {
      await body(site);
    } finally {
      assert.equal(await site.stop(), code, site.log.join('\n'));
    }
  });

served('a path names what it says, or nothing', async (site) => {
  const rows = {
    '/two.asp': 200,
    '/folder/Page.ASP': 200,
    '/folder/../two.asp': 200,
    '//./two.asp': 200,
    '/%74wo.asp': 200,
    'http://other/two.asp': 200,
    '/two.asp?x=%00%2f..': 200,
    '/TWO.ASP': 404,
    '/two.asp/': 404,
    '/two.asp/more': 404,
    '/two.asp.': 404,
    '/two.asp%20': 404,
    '/two.asp::$DATA': 404,
    '/two.asp.bak': 404,
    '/%2574wo.asp': 404,
    '/secret.inc': 404,
    '/SECRET.INC': 404,
    '/global.asa': 404,
    '/Global.ASA': 404,
    '/zelto.toml': 404,
    '/Web.config': 404,
    '/web.config': 404,
    '/bin/tool.txt': 404,
    '/bin': 404,
    '/BIN/': 404,
    '/notes.db': 404,
    '/own.cfg': 404,
    '/templates/page.html': 404,
    '/Templates/page.html': 404,
    '/%74emplates/page.html': 404,
    '/../two.asp': 400,
    '/%2e%2e/two.asp': 400,
    '/folder/..%2ftwo.asp': 400,
    '/folder%5c..%5ctwo.asp': 400,
    '/folder\\two.asp': 400,
    '/two.asp%00.txt': 400,
    '/%ff': 400,
  };
  for (const [target, status] of Object.entries(rows)) {
    const answer = await get(site, target);
    assert.equal(statusOf(answer), status, target);
    assert.match(answer, /^X-Content-Type-Options: nosniff\r$/m);
    assert.doesNotMatch(answer, /never served/);
    if (status === 200) assert.equal(bodyOf(answer), '2\n', target);
  }
});

served('what strangers look for is served', async (site) => {
  assert.equal(bodyOf(await get(site, '/.well-known/acme-challenge/_token')), 'token\n');
  assert.equal(statusOf(await get(site, '/.well-known/.hidden')), 404);
});

served('to a client a protected name is one that is not there', async (site) => {
  const missing = await get(site, '/missing');
  assert.equal(statusOf(missing), 404);
  for (const target of ['/Web.config', '/none.config', '/bin/tool.txt', '/%5fpart', '/own.cfg'])
    assert.equal(bodyOf(await get(site, target)), bodyOf(missing), target);
  assert.doesNotMatch(missing, /<p>|protected/);
});

served('an author is told that a name is protected', async (site) => {
  for (const [target, name] of [['/Web.config', 'Web.config'], ['/bin/tool.txt', 'bin'], ['/a/_%3Cb%3E', '_&lt;b&gt;'],
    ['/own.cfg', 'own.cfg'], ['/_%C3%A9', '_\u00E9']]) {
    const answer = await get(site, target);
    assert.equal(statusOf(answer), 404, target);
    assert.ok(bodyOf(answer).includes(`<p>&quot;${name}&quot; is a protected name: `), answer);
    assert.match(answer, /zelto serve --help/);
  }
  assert.doesNotMatch(await get(site, '/missing'), /protected/);
}, { options: ['--debug'] });

served('a link shows nothing that is not served under its own name', async (site) => {
  await writeFile(join(site.folder, 'secret.inc'), 'never served');
  await symlink('secret.inc', join(site.folder, 'notes.txt'));
  await symlink('two.asp', join(site.folder, 'source.txt'));
  const missing = await get(site, '/missing');
  assert.equal(bodyOf(await get(site, '/notes.txt')), bodyOf(missing));
  assert.equal(bodyOf(await get(site, '/source.txt')), '2\n');
});

served('a header that pages could take for another one does not reach them', async (site) => {
  await writeFile(join(site.folder, 'user.asp'), '<%= Request.ServerVariables("HTTP_X_REMOTE_USER") %>');
  const ask = (...lines) => raw(site, ['GET /user.asp HTTP/1.1', 'Host: a', ...lines, 'Connection: close', '', ''].join('\r\n'));
  assert.equal(bodyOf(await ask('X_Remote_User: root')).trim(), '');
  assert.equal(bodyOf(await ask('X_Remote_User: root', 'X-Remote-User: ann')).trim(), 'ann');
  await writeFile(join(site.folder, 'zelto.toml'), 'underscore_headers = true\n');
  process.kill(site.pid, 'SIGHUP');
  await site.logs(/zelto.toml is read again/);
  assert.equal(bodyOf(await ask('X_Remote_User: root')).trim(), 'root');
});

served('an upload of too many parts is refused before a page runs', async (site) => {
  await writeFile(join(site.folder, 'ran.asp'), '<% Application("ran") = 1; %>');
  await writeFile(join(site.folder, 'tell.asp'), '<%= Application("ran") === undefined %>');
  const body = '--x\r\n\r\n'.repeat(20_001) + '--x--\r\n';
  const head = ['POST /ran.asp HTTP/1.1', 'Host: a', 'Content-Type: multipart/form-data; boundary=x',
    `Content-Length: ${body.length}`, 'Connection: close', '', ''].join('\r\n');
  assert.equal(statusOf(await raw(site, head + body)), 413);
  assert.equal(bodyOf(await get(site, '/tell.asp')).trim(), 'True');
});

served('a query string or a form of too many fields is refused in its own words', async (site) => {
  await writeFile(join(site.folder, 'ask.asp'), '<%= Request.QueryString("a").Count %>');
  await writeFile(join(site.folder, 'asks.asp'), '<%= Request.Form("a").Count %>');
  const post = (body) => raw(site, ['POST /asks.asp HTTP/1.1', 'Host: a', 'Content-Type: application/x-www-form-urlencoded',
    `Content-Length: ${body.length}`, 'Connection: close', '', body].join('\r\n'));
  assert.equal(bodyOf(await get(site, `/ask.asp?${'a&'.repeat(1000)}`)).trim(), '1000');
  assert.equal(bodyOf(await post('a&'.repeat(1000))).trim(), '1000');
  const asked = await get(site, `/ask.asp?${'a&'.repeat(1001)}`);
  assert.equal(statusOf(asked), 414);
  assert.match(bodyOf(asked), /414 URI Too Long/);
  await site.logs(/ask\.asp.*The query string has more than 1000 fields\./);
  assert.equal(statusOf(await post('a&'.repeat(1001))), 413);
  await site.logs(/asks\.asp.*The form has more than 1000 fields\./);
  assert.equal(statusOf(await get(site, `/two.asp?${'a&'.repeat(1001)}`)), 200);
});

served('a page that writes with a status without a body sends none', async (site) => {
  for (const status of [204, 205, 304]) {
    await writeFile(join(site.folder, `s${status}.asp`), `<% Response.Status = "${status} X"; Response.Write("body"); %>`);
    await writeFile(join(site.folder, `f${status}.asp`),
      `<% Response.Status = "${status} X"; Response.Write("body"); Response.Flush(); Response.Write("more"); %>`);
    for (const page of [`/s${status}.asp`, `/f${status}.asp`]) {
      const answer = await get(site, page);
      assert.equal(statusOf(answer), status);
      assert.equal(bodyOf(answer), '', page);
    }
  }
});

served('what takes no body is answered before the body comes', async (site) => {
  await writeFile(join(site.folder, 'plain.txt'), 'plain');
  const rows = { '/missing': 404, '/Web.config': 404, '/folder': 301, '/plain.txt': 405, '/two.asp': 200 };
  for (const [target, status] of Object.entries(rows)) {
    const answer = await raw(site, `POST ${target} HTTP/1.1\r\nHost: a\r\nContent-Length: 99999999\r\n\r\n`);
    assert.equal(statusOf(answer), status, target);
    assert.match(answer, /^Connection: close\r$/m);
  }
});

served('a global.asa that is not run is told of at the start', async (site) => {
  await site.logs(/^zelto: global/);
  assert.deepEqual(site.log, [
    'zelto: global.asa is not run: what it declares for the application and its sessions does not happen']);
});

test('a log that is a file has it too', async () => {
  const kept = await mkdtemp(join(tmpdir(), 'kept-'));
  await writeFile(join(kept, 'Global.asa'), '');
  await writeFile(join(kept, 'zelto.toml'), 'log = "host.log"\n');
  const site = await serve(kept);
  await rm(kept, { recursive: true });
  const told = 'zelto: Global.asa is not run: what it declares for the application and its sessions does not happen';
  await site.logs(/^zelto: Global/);
  assert.deepEqual(site.log, [told]);
  assert.equal(await readFile(join(site.folder, 'host.log'), 'utf8'), told + '\n');
  assert.equal(await site.stop(), 0);
});

served('a session cookie is nobody else\'s, and Secure behind a proxy that is trusted', async (site) => {
  const [first, attributes] = cookieOf(await get(site, '/count.asp'));
  assert.match(first, /^zelto_session=[\w-]{22}\.a$/);
  assert.equal(attributes.trim(), '; Path=/; HttpOnly; SameSite=Lax');
  assert.match(bodyOf(await get(site, '/count.asp', `Cookie: ${first}\r\n`)), /^2 /);
  const [, secure] = cookieOf(await get(site, '/count.asp', 'X-Forwarded-Proto: https\r\n'));
  assert.equal(secure.trim(), '; Path=/; HttpOnly; SameSite=Lax; Secure');

  const guessed = `zelto_session=${'A'.repeat(22)}.a`;
  const [given] = cookieOf(await get(site, '/count.asp', `Cookie: ${guessed}\r\n`));
  assert.notEqual(given, guessed);
  assert.equal(cookieOf(await get(site, '/two.asp')), undefined, 'nothing is stored, nothing is set');

  const leaving = await get(site, '/leave.asp', `Cookie: ${first}\r\n`);
  assert.equal(bodyOf(leaving), '2\n', 'values stay to the end of the page');
  assert.match(bodyOf(await get(site, '/count.asp', `Cookie: ${first}\r\n`)), /^1 /);
});

served('requests of one session come one after the other', async (site) => {
  const [cookie] = cookieOf(await get(site, '/count.asp'));
  for (let wave = 0; wave < 5; wave++) {
    const answers = await Promise.all(
      Array.from({ length: 8 }, () => get(site, '/count.asp', `Cookie: ${cookie}\r\n`)));
    const counts = answers.map((answer) => parseInt(bodyOf(answer))).sort((a, b) => a - b);
    assert.deepEqual(counts, Array.from({ length: 8 }, (_, i) => wave * 8 + i + 2));
  }
}, { options: ['--workers', '4'] });

served('no text of a client ends a line of the head', async (site) => {
  for (const text of ['%0d%0aX-Split:1', '%0a', '%0d', '%00']) {
    const answer = await get(site, `/headers.asp?text=${text}`);
    assert.equal(statusOf(answer), 200, text);
    assert.equal(bodyOf(answer).trim(),
      'name,value,status,type,charset,cache,redirect,cookie_path,cookie_domain', text);
    assert.doesNotMatch(answer, /^X-Split/m, text);
    const encoded = text.match(/%../g).join('').toUpperCase();
    assert.ok(answer.includes(`Set-Cookie: b${encoded}`), answer);
  }
});

served('an error is told to nobody but the log, in one line', async (site) => {
  const answer = await get(site, '/fails.asp?text=secret%0aline');
  assert.equal(statusOf(answer), 500);
  assert.doesNotMatch(answer, /secret|fails\.asp/);
  const about = site.log.filter((line) => line.includes('secret') && !line.includes('GET '));
  const [, reference] = answer.match(/Reference: ([0-9a-f]{8})</);
  assert.deepEqual(about, [`/fails.asp:4: secret line (Error, 0x80004005) [${reference}]`]);
  assert.match(site.log.find((line) => line.includes('GET /fails.asp')),
    /^127\.0\.0\.1 - - \[.*\] "GET \/fails\.asp\?text=secret%0aline HTTP\/1\.1" 500 \d+ "-" "-" \d+\.\d{3} noted$/);
});

served('an error is shown to the author, with the lines around it', async (site) => {
  const answer = await get(site, '/fails.asp?text=<b>');
  assert.equal(statusOf(answer), 500);
  for (const shown of ['&lt;b&gt;', '<dt>Source</dt><dd>Error</dd>', '<dt>Code</dt><dd>0x80004005</dd>',
    '<dt>File</dt><dd>/fails.asp</dd>', '<dt>Line</dt><dd>4</dd>', '    3  function fail() {',
    '<span class="here">    4    throw new Error(', '    7  fail();'])
    assert.ok(answer.includes(shown), `${shown}\n${answer}`);
  assert.equal(site.log.filter((line) => line.startsWith('/fails.asp:4: ')).length, 1);
}, { options: ['--debug'] });

// What curl says of a page: its exit code, and the body that it got.
async function curl(site, way, version) {
  const program = spawn('curl', ['--silent', `--http${version}`, `${site.address}?way=${way}`]);
  let body = '';
  program.stdout.on('data', (bytes) => { body += bytes; });
  const [code] = await once(program, 'close');
  return { code, body };
}
const kWhole = 0, kPartial = 18, kReset = 56;

const late = fileURLToPath(new URL('late', import.meta.url));
for (const options of [[], ['--debug']]) {
  test(`what fails with its head sent does not look complete ${options}`, async () => {
    const site = await serve(late, ...options);
    try {
      for (const [way, words] of [['throw', 'too late'], ['time', 'took longer'], ['memory', 'took more memory']]) {
        const chunked = await curl(site, way, '1.1');
        assert.equal(chunked.code, kPartial, way);
        assert.match(chunked.body, /^begun /);
        assert.equal(chunked.body.includes(words), options.length === 1, `${way}: ${chunked.body}`);
        assert.equal((await curl(site, way, '1.0')).code, kReset, way);
      }
      for (const version of ['1.0', '1.1'])
        assert.deepEqual(await curl(site, 'caught', version), { code: kWhole, body: 'begun caught done\n' });
      assert.equal(site.log.filter((line) => line.startsWith('/default.asp')).length, 6, site.log.join('\n'));
    } finally {
      assert.equal(await site.stop(), 0, site.log.join('\n'));
    }
  });
}

test('connections leave pages the files that they need', async () => {
  const site = await serveUnder(['prlimit', '--nofile=100'], folder);
  const { hostname, port } = new URL(site.address);
  const silent = Array.from({ length: 60 }, () => connect(port, hostname));
  const gone = once(silent[0], 'close');
  await Promise.all(silent.map((socket) => once(socket, 'connect')));
  for (let i = 0; i < 30; i++) assert.equal(bodyOf(await get(site, '/two.asp')), '2\n', 'newcomers are answered');
  await gone;  // as the one that was silent longest
  for (const socket of silent) socket.destroy();
  assert.match(site.log[0], /^zelto: 25 connections at a time in place of 4096: .*\(ulimit -n\)/);
  assert.equal(await site.stop(), 0, site.log.join('\n'));
});
