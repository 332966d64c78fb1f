// Records what real clients send:  node tests/mirt/upload/record_clients.mjs [FOLDER]
// Each client posts the same form to a server on this machine; body and expected go into a folder of its
// own under FOLDER (tests/data/multipart), where RecordedBody finds them. What is expected is written from
// the form and from how such clients escape names (a quote becomes %22), not from what a parser said.
import { File } from 'node:buffer';
import { execFile } from 'node:child_process';
import { mkdir, mkdtemp, rm, writeFile } from 'node:fs/promises';
import { createServer } from 'node:http';
import { tmpdir } from 'node:os';
import { join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';
import { promisify } from 'node:util';
import { Browser } from '../../browser/browser.mjs';
import { png } from '../../serve/pictures.mjs';

const target = resolve(process.argv[2] ?? fileURLToPath(new URL('../../data/multipart', import.meta.url)));

const fields = [
  ['caption', 'Grüße & "日本" <b>'],
  ['empty', ''],
  ['notes', 'one\r\n--two;\tthree'],
  ['quo"te', '\\'],
  ['tags', 'holiday'],
  ['tags', 'work'],
];
const files = [
  ['Grüße.png', 'image/png', png(2, 2, [10, 13, 0])],
  ['日本 "1".txt', 'text/plain', Buffer.from('a\r\n--\0\r\nb')],
  ['back\\slash.txt', 'text/plain', Buffer.from('\r\n')],
  ['one; two.txt', 'text/plain', Buffer.alloc(0)],
];

// What comes of them. A semicolon ends a file name, even in quotes.
const expectedFields = fields.map(([name, value]) => [name.replace('"', '%22'), value]);
const expectedFiles = [
  ['Grüße.png', 'Grüße.png'],
  ['日本 %221%22.txt', '日本 %221%22.txt'],
  ['back\\slash.txt', 'slash.txt'],
  ['"one', '"one'],
].map((names, i) => [...names, files[i][1], files[i][2]]);

const folder = await mkdtemp(join(tmpdir(), 'record-'));
await Promise.all(files.map(([name, , bytes]) => writeFile(join(folder, name), bytes)));

async function curl(address) {
  const quoted = (name) => `"${name.replace(/[\\"]/g, '\\$&')}"`;
  await promisify(execFile)('curl', [
    '-sS', ...fields.flatMap(([name, value]) => ['--form-string', `${name}=${value}`]),
    ...files.flatMap(([name, type]) => ['-F', `files=@${quoted(name)};type=${type}`]), address], { cwd: folder });
}

async function formData(address) {
  const data = new FormData();
  for (const [name, value] of fields) data.append(name, value);
  for (const [name, type, bytes] of files) data.append('files', new File([bytes], name, { type }));
  await (await fetch(address, { method: 'POST', body: data })).text();
}

const form = `<!DOCTYPE html><meta charset="utf-8"><form method="post" enctype="multipart/form-data">
  <input name="caption"><input name="empty"><textarea name="notes"></textarea><input name='quo"te'>
  <select name="tags" multiple><option>holiday<option>family<option>work</select>
  <input type="file" name="files" multiple><input type="file" name="none"><button>Send</button></form>`;

async function chromium(address) {
  const browser = await Browser.start();
  try {
    await browser.open(address);
    await browser.run(`
      const form = document.querySelector('form');
      for (const [name, value] of arguments[0]) {
        const field = form.elements[name];
        if (name === 'tags') [...field.options].find((option) => option.text === value).selected = true;
        else field.value = value;
      }`, fields);
    await (await browser.find('[name=files]')).type(files.map(([name]) => join(folder, name)).join('\n'));
    await browser.follow('button');
  } finally {
    await browser.quit();
  }
}

const escapes = { '\r': '\\r', '\n': '\\n', '\t': '\\t', '\0': '\\0', '\\': '\\\\' };
// Bytes that are no UTF-8 text are written as \xNN, all of them.
function escaped(value) {
  const bytes = Buffer.isBuffer(value) ? value : Buffer.from(String(value));
  const text = bytes.toString();
  if (!bytes.equals(Buffer.from(text))) return [...bytes].map((b) => '\\x' + b.toString(16).padStart(2, '0')).join('');
  return text.replace(/[\r\n\t\0\\]/g, (c) => escapes[c]);
}

function expectation(type, more) {
  const seen = {};
  const index = (name) => (seen[name] = (seen[name] ?? 0) + 1);
  const rows = [
    ['boundary', type.slice(type.indexOf('boundary=') + 9)], ['result', '00000000'],
    ...[...expectedFields, ...more].map(([name, value]) => ['text', name, index(name), value]),
    ...expectedFiles.map((file) => ['file', 'files', index('files'), ...file]),
  ];
  rows.splice(2, 0, ['count', Object.keys(seen).length]);
  return rows.map((row) => row.map(escaped).join('\t') + '\n').join('');
}

async function record(name, client, more = []) {
  let posted;
  const server = createServer(async (request, response) => {
    if (request.method === 'POST') {
      const pieces = [];
      for await (const piece of request) pieces.push(piece);
      posted = { type: request.headers['content-type'], body: Buffer.concat(pieces) };
    }
    response.setHeader('Content-Type', 'text/html');
    response.end(form);
  });
  await new Promise((listening) => server.listen(0, '127.0.0.1', listening));
  await client(`http://127.0.0.1:${server.address().port}/`);
  server.close();
  server.closeAllConnections();
  await mkdir(join(target, name), { recursive: true });
  await writeFile(join(target, name, 'body'), posted.body);
  await writeFile(join(target, name, 'expected'), expectation(posted.type, more));
}

await record('recorded_curl', curl);
await record('recorded_formdata', formData);
await record('recorded_chromium', chromium, [['none', '']]);  // a field without a file is an empty text
await rm(folder, { recursive: true });
