// What the soak asks for: a little of everything, in the same order each time.
import { Wire, breakOff, status } from './wire.mjs';

// A generator of numbers below 1 that begins the same way each time.
function numbers(seed) {
  return () => {
    seed = (seed + 0x6d2b79f5) | 0;
    let t = Math.imul(seed ^ (seed >>> 15), 1 | seed);
    t = (t + Math.imul(t ^ (t >>> 7), 61 | t)) ^ t;
    return ((t ^ (t >>> 14)) >>> 0) / 2 ** 32;
  };
}

const request = (path, { method = 'GET', headers = '', body } = {}) => Buffer.concat([
  Buffer.from(`${method} ${path} HTTP/1.1\r\nHost: a\r\n${headers}` +
    (body ? `Content-Length: ${body.length}\r\n\r\n` : '\r\n')), ...(body ? [body] : [])]);

const part = 'Content-Type: multipart/form-data; boundary=cut\r\n';
export function upload(size) {
  const head = '--cut\r\nContent-Disposition: form-data; name="file"; filename="a.bin"\r\n' +
    'Content-Type: application/octet-stream\r\n\r\n';
  return request('/upload.asp', { method: 'POST', headers: part,
    body: Buffer.concat([Buffer.from(head), Buffer.alloc(size, 'x'), Buffer.from('\r\n--cut--\r\n')]) });
}

const large = 2 << 20;
const malformed = [
  ['GET / HTTP/1.1\r\r\n\r\n', 400], ['GET / HTTP/1.1\r\nHost: a%zz\r\n\r\n', 400], ['GET /\r\n\r\n', 400],
  ['POST /size.asp HTTP/1.1\r\nHost: a\r\nContent-Length: 1\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n', 400],
  [`GET / HTTP/1.1\r\nHost: a\r\nX: ${'x'.repeat(20000)}\r\n\r\n`, 431], ['\0\x01\x02\x03\r\n\r\n', 400],
];

// Requests that need nothing of each other, with what is expected: [weight, kind, status, bytes].
const single = [
  [250, 'hello', 200, request('/hello/default.asp?c=Greet&who=Ann')],
  [80, 'guestbook', 200, request('/guestbook/default.asp')],
  [60, 'rows', 200, request('/rows.asp')],
  [80, 'small page', 200, request('/default.asp')],
  [40, 'dictionary and stream', 200, request('/tables.asp')],
  [30, 'session that is left alone', 200, request('/count.asp')],
  [20, 'session that ends', 200, request('/leave.asp')],
  [30, 'redirect', 302, request('/away.asp')],
  [20, 'error', 500, request('/fails.asp')],
  [120, 'file', 200, request('/guestbook/style.css')],
  [40, 'part of a file', 206, request('/guestbook/style.css', { headers: 'Range: bytes=10-99\r\n' })],
  [80, 'known file', 304, request('/plain.txt', { headers: 'If-None-Match: *\r\n' })],
  [20, 'head of a page', 200, request('/default.asp', { method: 'HEAD' })],
  [40, 'missing page', 404, request('/missing.asp')],
  [20, 'missing file', 404, request('/missing/a.css')],
  [10, 'method', 405, request('/plain.txt', { method: 'DELETE' })],
  [20, 'small upload', 200, upload(1000)],
];

// Steps that take a connection, or several, of their own: [weight, run], which answers how many requests it was.
const steps = [
  [6, (client) => client.visit('notebook', { id: '', name: 'Ann', text: 'soaked' })],
  [2, (client) => client.visit('guestbook', { id: '', name: 'Ann', topic: 'idea', mood: 'calm', words: 'soaked' })],
  [1, (client) => client.one('large upload', 200, upload(large))],
  [4, async (client) => {
    const [bytes, expected] = malformed[client.below(malformed.length)];
    client.check('malformed', expected, await status(client.address, bytes));
    return 1;
  }],
  [3, (client) => client.leave('GET /default.asp HTTP/1.1\r\nHos')],
  [3, (client) => client.leave('POST /size.asp HTTP/1.1\r\nHost: a\r\nContent-Length: 200000\r\n\r\nbegins')],
  [1, (client) => client.leave('GET /large.asp HTTP/1.1\r\nHost: a\r\n\r\n', 100000)],
];

const sum = (table) => table.reduce((all, [weight]) => all + weight, 0);
const weights = { single: sum(single), steps: sum(steps) };
const pipelined = 4;
const mostOnOneWire = 900;  // the host closes after 1,000
const endlessEach = 100000;

export class Client {
  // `counts` is shared: { made, endless, unexpected }, the last by kind and status.
  constructor(address, seed, counts) {
    this.address = address;
    this.counts = counts;
    this.random = numbers(seed);
    this.wire = new Wire(address);
  }

  below(n) { return Math.floor(this.random() * n); }

  pick(table, all) {
    let left = this.random() * all;
    return table.find(([weight]) => (left -= weight) < 0) ?? table[0];
  }

  check(kind, expected, is) {
    if (is === expected) return;
    const what = `${kind}: ${is}`;
    this.counts.unexpected.set(what, (this.counts.unexpected.get(what) ?? 0) + 1);
  }

  // One step, or some requests at once.
  async go() {
    if (this.wire.asked >= mostOnOneWire || this.wire.socket.destroyed) {
      this.wire.close();
      this.wire = new Wire(this.address);
    }
    if (this.below(1000) < 40) {
      this.counts.made += await this.pick(steps, weights.steps)[1](this);
    } else {
      const some = Array.from({ length: pipelined }, () => this.pick(single, weights.single));
      await Promise.all(some.map(([, kind, expected, bytes]) => this.one(kind, expected, bytes)));
      this.counts.made += some.length;
    }
    if (this.counts.made < (this.counts.endless + 1) * endlessEach) return;
    this.counts.endless++;
    this.counts.made += await this.one('endless page', 500, request('/endless.asp'));
  }

  async one(kind, expected, bytes) {
    this.check(kind, expected, (await this.wire.ask(bytes)).status);
    return 1;
  }

  async leave(bytes, after) {
    await breakOff(this.address, bytes, after);
    return 1;
  }

  // Comes with no cookie, writes an entry, and sees it; deletes it again where others see it too.
  async visit(site, entry) {
    const path = `/${site}/default.asp`;
    const first = await this.wire.ask(request(path), { wanted: true });
    const cookies = [...first.head.matchAll(/^Set-Cookie: ([^;]*)/gim)].map((found) => found[1]).join('; ');
    const send = (page, command, fields) => {
      const button = page.match(/<button name="([A-Z0-9]+)" value="Save">/)?.[1];
      return this.wire.ask(request(path, {
        method: 'POST', headers: `Cookie: ${cookies}\r\nContent-Type: application/x-www-form-urlencoded\r\n`,
        body: Buffer.from(new URLSearchParams({ ...fields, [button]: command }).toString()),
      }), { wanted: true });
    };
    const words = `soaked ${this.random()}`;
    const saved = await send(first.text, 'Save', { ...entry, text: words, words });
    this.check(`${site} entry`, true, saved.text.includes('Thank you, Ann.'));
    if (site !== 'guestbook') return 2;
    const own = [...saved.text.matchAll(/id="entry-(\d+)">[^]*?<\/article>/g)].find(([text]) => text.includes(words));
    if (!own) return 2;  // others have written five since
    const deleted = await send(saved.text, 'Delete', { id: own[1] });
    this.check(`${site} entry deleted`, true, deleted.text.includes('The entry is deleted.'));
    return 3;
  }

  close() { this.wire.close(); }
}
