// What an upload costs the host in memory:  node bench/upload_memory.mjs [MB] [--chunked]
// Posts one file of that size (100) to the gallery of a fresh host and prints the process's peak before
// and after, how often the peak holds the file, and what the process keeps.
import { spawn } from 'node:child_process';
import { cp, mkdtemp, readFile, rm } from 'node:fs/promises';
import { request } from 'node:http';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { createInterface } from 'node:readline';
import { fileURLToPath } from 'node:url';

const root = fileURLToPath(new URL('..', import.meta.url));
const words = process.argv.slice(2);
const chunked = words.includes('--chunked');
const size = Number(words.find((word) => word !== '--chunked') ?? 100) * 1e6;
if (!(size > 0)) {
  console.error('usage: node bench/upload_memory.mjs [MB] [--chunked]');
  process.exit(2);
}
const site = await mkdtemp(join(tmpdir(), 'gallery-'));
await cp(join(root, 'examples/gallery'), site, { recursive: true });
const options = ['--listen', '127.0.0.1:0', '--workers', '1', '--no-supervisor'];
const host = spawn(join(root, 'build/release/bin/zelto'), ['serve', site, ...options], {
  stdio: ['ignore', 'pipe', 'ignore'],
});
const address = await new Promise((found) =>
  createInterface({ input: host.stdout }).once('line', (line) => found(line.match(/http:\S+/)[0])));
const memory = async () => {
  const status = await readFile(`/proc/${host.pid}/status`, 'utf8');
  const bytes = (name) => Number(status.match(new RegExp(`${name}:\\s+(\\d+) kB`))[1]) * 1024;
  return { peak: bytes('VmHWM'), resident: bytes('VmRSS') };
};

const head = Buffer.from('--B\r\nContent-Disposition: form-data; name="c"\r\n\r\nUpload\r\n' +
  '--B\r\nContent-Disposition: form-data; name="pictures"; filename="a.png"\r\n\r\n\x89PNG\r\n\x1a\n', 'latin1');
const tail = Buffer.from('\r\n--B--\r\n');

// `chunked` sends no length in advance.
function post(bytes, chunked) {
  return new Promise((resolve, reject) => {
    const sent = request(address, { method: 'POST', headers: {
      'Content-Type': 'multipart/form-data; boundary=B',
      ...(chunked ? {} : { 'Content-Length': head.length + bytes + tail.length }),
    } }, (answer) => answer.resume().on('end', () => resolve(answer.statusCode)));
    sent.on('error', reject);
    sent.write(head);
    const piece = Buffer.alloc(1e6, 'x');
    let left = bytes;
    const more = () => {
      while (left > 0) {
        const now = Math.min(left, piece.length);
        left -= now;
        if (!sent.write(piece.subarray(0, now))) return void sent.once('drain', more);
      }
      sent.end(tail);
    };
    more();
  });
}

await post(1000, chunked);  // the page is compiled, the worker has run once
const before = await memory();
const began = performance.now();
const status = await post(size, chunked);
const taken = performance.now() - began;
const after = await memory();
const mb = (bytes) => (bytes / 1e6).toFixed(0).padStart(6) + ' MB';
console.log(`${mb(size)}  body, answered with ${status} after ${(taken / 1000).toFixed(2)} s`);
console.log(`${mb(before.peak)}  peak before`);
console.log(`${mb(after.peak)}  peak after: ${((after.peak - before.peak) / size).toFixed(2)} times the body more`);
console.log(`${mb(after.resident)}  resident once it is answered`);
host.kill();
await rm(site, { recursive: true });
