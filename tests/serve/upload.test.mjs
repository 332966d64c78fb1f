// Uploads by real clients over HTTP, and by ones that misbehave.
import assert from 'node:assert/strict';
import { File } from 'node:buffer';
import { execFile } from 'node:child_process';
import { createHash } from 'node:crypto';
import { once } from 'node:events';
import { mkdtemp, readFile, readdir, rm, writeFile } from 'node:fs/promises';
import { request } from 'node:http';
import { connect } from 'node:net';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { promisify } from 'node:util';
import { largePicture } from './pictures.mjs';
import { serve } from './site.mjs';

const run = promisify(execFile);
const page = fileURLToPath(new URL('upload', import.meta.url));
const sha1 = (bytes) => createHash('sha1').update(bytes).digest('hex');
const sha256 = (bytes) => createHash('sha256').update(bytes).digest('hex');

let folder;
let site;  // one worker: whoever holds it is noticed
before(async () => {
  folder = await mkdtemp(join(tmpdir(), 'upload-'));
  site = await serve(page, '--workers', '1');
});
after(async () => {
  await rm(folder, { recursive: true });
  assert.equal(await site.stop(), 0, site.log.join('\n'));
});

const at = (names) => new URL(`?names=${names}`, site.address).href;
const valuesOf = (answer) => Object.fromEntries(answer.fields.map(({ name, values }) => [name, values]));

function multipart(fields) {
  const parts = fields.flatMap(([header, content]) => [
    `--B\r\nContent-Disposition: form-data; ${header}\r\n\r\n`, content, '\r\n']);
  return Buffer.concat([...parts, '--B--\r\n'].map((part) => Buffer.from(part)));
}

// A connection that sends what it is told and gathers the answer, until the host closes it.
function dial(address = site.address) {
  const { hostname, port } = new URL(address);
  const socket = connect(port, hostname);
  const received = [];
  socket.on('data', (bytes) => received.push(bytes));
  const closed = once(socket, 'close').then(() => Buffer.concat(received).toString());
  return { socket, closed };
}

const head = (lines, target = '/?names=a') =>
  `POST ${target} HTTP/1.1\r\nHost: a\r\nContent-Type: multipart/form-data; boundary=B\r\n${lines}\r\n`;

// The rows of what is expected of a recorded body, their columns as bytes.
async function rowsOf(file) {
  const plain = { r: '\r', n: '\n', t: '\t', 0: '\0', '\\': '\\' };
  const unescaped = (text) => text.replace(/\\(?:x(..)|(.))/g, (_, hex, c) => (hex ? String.fromCharCode('0x' + hex) : plain[c]));
  const lines = (await readFile(file, 'latin1')).split('\n').filter((line) => line && line[0] !== '#');
  return lines.map((line) => line.split('\t').map((column) => Buffer.from(unescaped(column), 'latin1')));
}

const bodies = fileURLToPath(new URL('../data/multipart', import.meta.url));
test('recorded and hostile bodies give what is expected of them', async () => {
  for (const folder of await readdir(bodies)) {
    const only = {};  // the rows of which there is one
    const values = [];
    for (const [kind, first, index, ...rest] of await rowsOf(join(bodies, folder, 'expected'))) {
      const texts = rest.slice(0, 3).map(String);
      if (kind == 'text') values.push([String(first), index, texts[0]]);
      else if (kind == 'file') values.push([String(first), index, [...texts, rest[3].length, sha1(rest[3])]]);
      else only[kind] = String(first);
    }
    const names = [...new Set(values.map(([name]) => name))];
    const answer = await (await fetch(at(names.map(encodeURIComponent)), {
      method: 'POST', body: await readFile(join(bodies, folder, 'body')),
      headers: { 'Content-Type': `multipart/form-data; boundary=${only.boundary}` },
    })).json();
    assert.equal('error' in answer, only.result !== '00000000', `${folder}: ${answer.error}`);
    assert.equal(answer.count, Number(only.count), folder);
    for (const [name, index, value] of values)
      assert.deepEqual(valuesOf(answer)[name][index - 1], value, `${folder}: ${name} ${index}`);
  }
});

test('curl -F', async () => {
  const bytes = largePicture(300_000);
  await writeFile(join(folder, 'Grüße "日本".png'), bytes);
  await writeFile(join(folder, 'empty.txt'), '');
  const { stdout } = await run('curl', ['-sS', '-F', 'text=Grüße', '-F', 'tags=a', '-F', 'tags=b',
    '-F', 'f=@"Grüße \\"日本\\".png"', '-F', 'empty=@empty.txt', at('text,tags,f,empty,none')], { cwd: folder });
  const answer = JSON.parse(stdout);
  assert.equal(answer.count, 4);
  assert.deepEqual(valuesOf(answer), {
    text: ['Grüße'], tags: ['a', 'b'], none: [],
    f: [['Grüße %22日本%22.png', 'Grüße %22日本%22.png', 'image/png', 300_000, sha1(bytes)]],
    empty: [['empty.txt', 'empty.txt', 'text/plain', 0, sha1('')]],
  });
});

test('curl -F of several files, chunked', async () => {
  await writeFile(join(folder, 'one.bin'), largePicture(100_000));
  await writeFile(join(folder, 'two.bin'), '\r\n--\r\n');
  const { stdout } = await run('curl', ['-sS', '-H', 'Transfer-Encoding: chunked', '-F', 'f=@one.bin', '-F', 'f=@two.bin',
    at('f')], { cwd: folder });
  assert.deepEqual(valuesOf(JSON.parse(stdout)).f.map(([name, , , size, sum]) => [name, size, sum]), [
    ['one.bin', 100_000, sha1(largePicture(100_000))],
    ['two.bin', 6, sha1('\r\n--\r\n')],
  ]);
});

test('curl that waits for 100 Continue', async () => {
  await writeFile(join(folder, 'c.bin'), largePicture(2_000_000));
  const { stdout, stderr } = await run('curl', ['-sSv', '--expect100-timeout', '600', '-H', 'Expect: 100-continue',
    '-F', 'f=@c.bin', at('f')], { cwd: folder });
  assert.match(stderr, /< HTTP\/1\.1 100 Continue/);
  assert.equal(valuesOf(JSON.parse(stdout)).f[0][4], sha1(largePicture(2_000_000)));
});

test('FormData', async () => {
  const form = new FormData();
  const bytes = largePicture(70_000);
  form.append('名前', '値 é 😀');
  form.append('quo"te', 'x');
  form.append('f', new File([bytes], 'C:\\dir\\日本 "1".png', { type: 'image/png' }));
  form.append('f', new File([], 'nothing'));
  const answer = await (await fetch(at(encodeURIComponent('名前,quo%22te,f')), { method: 'POST', body: form })).json();
  assert.deepEqual(valuesOf(answer), {
    名前: ['値 é 😀'], 'quo%22te': ['x'],
    f: [
      ['C:\\dir\\日本 %221%22.png', '日本 %221%22.png', 'image/png', 70_000, sha1(bytes)],
      ['nothing', 'nothing', 'application/octet-stream', 0, sha1('')],
    ],
  });
});

test('100 MB arrive byte for byte in the gallery', async () => {
  const gallery = await serve('gallery', '--workers', '1');
  try {
    const bytes = largePicture(100_000_000);
    await writeFile(join(folder, 'large.png'), bytes);
    const { stdout } = await run('curl', ['-sS', '-o', '/dev/null', '-w', '%{http_code}', '-F', 'c=Upload',
      '-F', 'pictures=@large.png', gallery.address], { cwd: folder });
    assert.equal(stdout, '302', gallery.log.join('\n'));
    const shown = await (await fetch(gallery.address)).text();
    const [, id] = shown.match(/picture\.asp\?id=(\w+)/);
    const saved = await fetch(new URL(`picture.asp?id=${id}`, gallery.address));
    assert.equal(sha256(Buffer.from(await saved.arrayBuffer())), sha256(bytes));
    for (const name of [`app_data/${id}.png`, 'app_data/index.json', 'App_Data/index.json', 'zelto.toml', 'store.inc'])
      assert.equal((await fetch(new URL(name, gallery.address))).status, 404, name);
  } finally {
    assert.equal(await gallery.stop(), 0, gallery.log.join('\n'));
  }
});

test('the gallery says what it cannot do', async () => {
  const gallery = await serve('gallery', '--workers', '1');
  try {
    let cookie = '';
    const said = async (body) => {
      const posted = await fetch(gallery.address, {
        method: 'POST', body, redirect: 'manual', headers: { cookie, 'Content-Type': 'multipart/form-data; boundary=B' },
      });
      assert.equal(posted.status, 302);
      cookie ||= posted.headers.get('set-cookie').split(';')[0];
      const page = await (await fetch(gallery.address, { headers: { cookie } })).text();
      return page.match(/<li class="refused">(.*?)<\/li>/)[1];
    };
    assert.equal(await said('no upload'), 'The upload did not arrive in a form that can be read.');
    assert.equal(await said(multipart([['name="c"', 'Upload']])), 'Choose at least one picture.');
    assert.equal(await said(multipart([['name="c"', 'Delete'], ['name="id"', '../index']])), 'That picture is gone already.');
    for (const id of ['', '../index', 'index.json'])
      assert.equal((await fetch(new URL(`picture.asp?id=${id}`, gallery.address))).status, 404, id);
  } finally {
    assert.equal(await gallery.stop(), 0, gallery.log.join('\n'));
  }
});

test('a body over the limit is told with its size', async () => {
  const body = multipart([['name="a"', 'x'.repeat(17 << 20)]]);
  const answer = await (await fetch(at('a'), {
    method: 'POST', body, headers: { 'Content-Type': 'multipart/form-data; boundary=B' },
  })).json();
  assert.deepEqual(answer, {
    total: body.length, error: `Upload size exceeds maximum limit.[${body.length}B]`,
  });
});

test('a body at the limit is taken', async () => {
  const frame = multipart([['name="a"', '']]).length;
  const body = multipart([['name="a"', 'x'.repeat((16 << 20) - frame)]]);
  assert.equal(body.length, 16 << 20);
  const answer = await (await fetch(at('a'), {
    method: 'POST', body, headers: { 'Content-Type': 'multipart/form-data; boundary=B' },
  })).json();
  assert.equal(valuesOf(answer).a[0].length, (16 << 20) - frame);
});

test('a chunked body over the limit is refused without a reset', async () => {
  const { socket, closed } = dial();
  const lost = [];
  socket.on('error', (error) => lost.push(error.code));
  socket.write(head('Transfer-Encoding: chunked\r\n'));
  const size = 1 << 20;
  for (let i = 0; i < 24; ++i) {
    socket.write(`${size.toString(16)}\r\n`);
    socket.write(Buffer.alloc(size, 'x'));
    socket.write('\r\n');
  }
  socket.end('0\r\n\r\n');
  const answer = await closed;
  assert.deepEqual(lost, []);
  assert.match(answer, /Upload size exceeds maximum limit\.\[17825792B\]/, 'what was counted until then');
});

test('a gigabyte announced and ten bytes sent is answered at once', async () => {
  const { socket, closed } = dial();
  socket.write(head(`Content-Length: ${1 << 30}\r\n`) + '--B\r\n01234');
  const [first] = await once(socket, 'data');
  assert.match(first.toString(), /^HTTP\/1\.1 200 /);
  socket.end();
  assert.match(await closed, /Upload size exceeds maximum limit\.\[1073741824B\]/);
});

// More than TotalBytes, which ends at 2147483647, can say.
test('three gigabytes announced are told as such', async () => {
  const { socket, closed } = dial();
  socket.write(head('Content-Length: 3221225472\r\n') + '--B\r\n01234');
  const [first] = await once(socket, 'data');
  assert.match(first.toString(), /^HTTP\/1\.1 200 /);
  socket.end();
  assert.match(await closed, /"total":2147483647,.*Upload size exceeds maximum limit\.\[3221225472B\]/);
});

test('a client that asks before it sends too much is answered instead of told to go on', async () => {
  const { socket, closed } = dial();
  socket.write(head('Content-Length: 99999999\r\nExpect: 100-continue\r\n'));
  await once(socket, 'data');
  socket.end();
  const answer = await closed;
  assert.match(answer, /^HTTP\/1\.1 200 /);
  assert.match(answer, /Upload size exceeds maximum limit\.\[99999999B\]/);
});

// The end of the host tells that no object of such an upload is left, and nothing waits for its rest.
test('a connection that is lost in the middle of an upload runs no page', async () => {
  const lines = site.log.length;
  const body = multipart([['name="a"', 'x'.repeat(100_000)], ['name="f"; filename="f"', 'x'.repeat(100_000)]]);
  const whole = Buffer.concat([Buffer.from(head(`Content-Length: ${body.length}\r\n`)), body]);
  const chunked = Buffer.concat([Buffer.from(head('Transfer-Encoding: chunked\r\n')), Buffer.from('186A0\r\n'), body]);
  const start = whole.length - body.length;
  const sent = [whole.subarray(0, 40), whole.subarray(0, start), whole.subarray(0, start + 20),
    whole.subarray(0, start + 150_000), whole.subarray(0, -1), chunked.subarray(0, 50_000), chunked.subarray(0, 100_000)];
  for (const bytes of sent) {
    const { socket, closed } = dial();
    await new Promise((written) => socket.write(bytes, written));
    socket.resetAndDestroy();
    await closed;
    assert.equal(await (await fetch(new URL('quick.asp', site.address))).text(), 'quick');
  }
  assert.ok(site.log.slice(lines).every((line) => !line.includes('POST')), site.log.slice(lines).join('\n'));
});

test('a slow upload holds no worker', async () => {
  const body = multipart([['name="a"', 'slow']]);
  const uploads = Array.from({ length: 8 }, () => {
    const upload = dial();
    upload.socket.write(head(`Content-Length: ${body.length}\r\nConnection: close\r\n`));
    upload.socket.write(body.subarray(0, 20));
    return upload;
  });
  await Promise.all(uploads.map(({ socket }) => once(socket, 'connect')));
  // The only worker is free as long as none of them is complete.
  for (let i = 0; i < 3; ++i) assert.equal(await (await fetch(new URL('quick.asp', site.address))).text(), 'quick');
  for (const { socket } of uploads) socket.write(body.subarray(20));
  for (const { closed } of uploads) assert.match(await closed, /"values":\["slow"\]/);
});

test('a body that is not an upload after all is an error without a text', async () => {
  const answer = await (await fetch(at('a'), {
    method: 'POST', body: 'no delimiter', headers: { 'Content-Type': 'multipart/form-data; boundary=B' },
  })).json();
  assert.equal(answer.total, 12);
  assert.ok('error' in answer);
  assert.doesNotMatch(answer.error, /^Upload/);
});
