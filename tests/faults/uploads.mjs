// What the host keeps of large uploads when they are over.
import { ask, pause } from './clients.mjs';
import { residentMemory, row, withHost } from './host.mjs';

const head = Buffer.from('--B\r\nContent-Disposition: form-data; name="f"; filename="a.bin"\r\n\r\n');
const tail = Buffer.from('\r\n--B--\r\n');
const size = (16 << 20) - head.length - tail.length;
const form = Buffer.concat([head, Buffer.alloc(size, 'x'), tail]);

// Posts 48 bodies of 16 MiB, eight at a time; the answers that were not `expected`.
async function upload(host, path, headers, body, expected) {
  const wrong = [];
  const post = async () => {
    for (let i = 0; i < 6; i++) {
      const { status, text } = await ask(host.address, path, { method: 'POST', headers, body });
      if (status !== 200 || text.trim() !== String(expected)) wrong.push(`${status} ${text.slice(0, 60)}`);
    }
  };
  await Promise.all(Array.from({ length: 8 }, post));
  return wrong;
}

const uploads = (path, headers, body, expected) => () => withHost(async (host) => {
  const most = 200;
  const wrong = await upload(host, path, headers, body, expected);
  let left = await residentMemory(host.pid);
  for (let waited = 0; left > most && waited < 5000; waited += 100) {
    await pause(100);
    left = await residentMemory(host.pid);
  }
  return [row('48 uploads of 16 MiB answered', wrong[0] ?? 'all', 'all', wrong.length === 0),
    row('memory that they leave', `${left.toFixed(0)} MB`, `<= ${most} MB`, left <= most)];
});

export const uploads_left = {
  uploads_of_files: uploads('/kept.asp', { 'Content-Type': 'multipart/form-data; boundary=B' }, form, size),
  uploads_of_bytes: uploads('/bytes.asp', { 'Content-Type': 'application/octet-stream' }, form, form.length),
};
