// A connection on which requests are written as bytes, many without waiting, and answers are told apart.
import { connect } from 'node:net';

const endOfHead = Buffer.from('\r\n\r\n');
const none = Buffer.alloc(0);
const nothing = { status: 0, head: '', text: '' };

export class Wire {
  constructor(address) {
    const { hostname, port } = new URL(address);
    this.asked = 0;
    this.waiting = [];  // for their answers, in the order in which they were asked
    this.bytes = none;
    this.answer = null;  // that has begun to arrive
    this.socket = connect({ host: hostname, port, noDelay: true });
    this.socket.on('data', (bytes) => this.take(bytes));
    this.socket.on('error', () => {});
    this.socket.on('close', () => this.waiting.splice(0).forEach(({ resolve }) => resolve(nothing)));
  }

  // The answer's status, 0 when none came, its head, and its text where that is `wanted`.
  ask(bytes, { wanted = false } = {}) {
    this.asked++;
    return new Promise((resolve) => {
      if (this.socket.destroyed) return resolve(nothing);
      this.waiting.push({ resolve, wanted, bodiless: bytes.subarray(0, 5).toString() === 'HEAD ' });
      this.socket.write(bytes);
    });
  }

  take(bytes) {
    this.bytes = this.bytes.length ? Buffer.concat([this.bytes, bytes]) : bytes;
    while (this.waiting.length && (this.answer ?? this.readHead()) && this.readBody()) this.end();
  }

  readHead() {
    const end = this.bytes.indexOf(endOfHead);
    if (end < 0) return null;
    const head = this.bytes.latin1Slice(0, end + 2);
    this.bytes = this.bytes.subarray(end + 4);
    const status = Number(head.slice(9, 12));
    const bodiless = this.waiting[0].bodiless || status === 204 || status === 304;
    const chunked = !bodiless && /\r\nTransfer-Encoding: chunked\r\n/i.test(head);
    const length = bodiless ? 0 : Number(head.match(/\r\nContent-Length: (\d+)\r\n/i)?.[1] ?? 0);
    return (this.answer = { status, head, chunked, left: chunked ? -1 : length, parts: [] });
  }

  // True once the whole has come. Of a chunked body `left` is what its chunk still has, or -1 before its size.
  readBody() {
    const { answer } = this;
    for (;;) {
      if (answer.left < 0 && !this.readChunkSize()) return false;
      const part = this.bytes.subarray(0, answer.left);
      if (this.waiting[0].wanted) answer.parts.push(part);
      this.bytes = this.bytes.subarray(part.length);
      answer.left -= part.length;
      if (answer.left > 0) return false;
      if (!answer.chunked || answer.last) return true;
      answer.left = -1;
    }
  }

  // With the line's end that closes the chunk before.
  readChunkSize() {
    const { answer } = this;
    const from = answer.begun ? 2 : 0;
    const end = this.bytes.indexOf('\r\n', from);
    if (end < from) return false;
    const size = parseInt(this.bytes.latin1Slice(from, end), 16);
    if (size === 0 && this.bytes.length < end + 4) return false;
    this.bytes = this.bytes.subarray(end + (size === 0 ? 4 : 2));
    answer.left = size;
    answer.begun = true;
    answer.last = size === 0;
    return true;
  }

  end() {
    const { status, head, parts } = this.answer;
    this.answer = null;
    const { resolve, wanted } = this.waiting.shift();
    resolve({ status, head, text: wanted ? Buffer.concat(parts).toString() : '' });
  }

  close() { this.socket.destroy(); }
}

// The status that comes for these bytes on a connection of their own, which is then broken off; 0 when none does.
export function status(address, bytes) {
  const { hostname, port } = new URL(address);
  return new Promise((resolve) => {
    const socket = connect({ host: hostname, port });
    socket.on('error', () => {});
    socket.on('close', () => resolve(0));
    socket.on('data', (answer) => {
      resolve(Number(answer.latin1Slice(9, 12)));
      socket.destroy();
    });
    socket.write(bytes);
  });
}

// Sends these bytes, and breaks the connection off: at once when they have gone, or after so many bytes of an answer.
export function breakOff(address, bytes, after = 0) {
  const { hostname, port } = new URL(address);
  return new Promise((resolve) => {
    let came = 0;
    const socket = connect({ host: hostname, port });
    socket.on('error', () => {});
    socket.on('close', resolve);
    socket.on('data', (part) => {
      came += part.length;
      if (after && came >= after) socket.resetAndDestroy();
    });
    socket.write(bytes, () => after || socket.destroy());
  });
}
