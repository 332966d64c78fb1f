// Pictures to upload: made here, so that a test needs no files of its own.
import * as zlib from 'node:zlib';

function chunk(type, data) {
  const body = Buffer.concat([Buffer.from(type, 'latin1'), data]);
  const framed = Buffer.alloc(body.length + 8);
  framed.writeUInt32BE(data.length, 0);
  body.copy(framed, 4);
  framed.writeUInt32BE(sum(body), body.length + 4);
  return framed;
}

// Node has crc32 from version 20.15 and 22.2 on.
function sum(bytes) {
  if (zlib.crc32) return zlib.crc32(bytes);
  let crc = ~0;
  for (const byte of bytes) {
    crc ^= byte;
    for (let bit = 0; bit < 8; ++bit) crc = (crc >>> 1) ^ (crc & 1 ? 0xedb88320 : 0);
  }
  return ~crc >>> 0;
}

const signature = Buffer.from('\x89PNG\r\n\x1a\n', 'latin1');

// A PNG of one colour.
export function png(width, height, [red, green, blue]) {
  const header = Buffer.alloc(13);
  header.writeUInt32BE(width, 0);
  header.writeUInt32BE(height, 4);
  header.set([8, 2], 8);
  const line = Buffer.concat([Buffer.from([0]), Buffer.alloc(3 * width, Buffer.from([red, green, blue]))]);
  const lines = Buffer.concat(Array(height).fill(line));
  return Buffer.concat([signature, chunk('IHDR', header), chunk('IDAT', zlib.deflateSync(lines)), chunk('IEND', Buffer.alloc(0))]);
}

// The beginning of a PNG and any bytes after it, the same ones for the same size.
export function largePicture(size) {
  const bytes = new Uint32Array(Math.ceil(size / 4));
  let state = 1;
  for (let i = 0; i < bytes.length; ++i) bytes[i] = state = Math.imul(state, 1664525) + 1013904223;
  const picture = Buffer.from(bytes.buffer, 0, size);
  signature.copy(picture);
  return picture;
}
