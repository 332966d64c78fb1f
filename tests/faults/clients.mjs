// The clients of the fault tests: good ones, whose worst latency counts, and those that are slow, silent or gone.
import { request } from 'node:http';
import { connect } from 'node:net';
import { Worker } from 'node:worker_threads';

// Asks for the path, and answers the status, the body and the milliseconds that it took. A connection that breaks is
// status 0.
export function ask(address, path, { agent, method = 'GET', headers = {}, body } = {}) {
  const began = performance.now();
  return new Promise((resolve) => {
    const done = (status, text) => resolve({ status, text, took: performance.now() - began });
    const asked = request(new URL(path, address), { agent, method, headers }, (answer) => {
      let text = '';
      answer.on('data', (bytes) => { text += bytes; });
      answer.on('end', () => done(answer.statusCode, text));
      answer.on('error', () => done(0, text));
    });
    asked.on('error', () => done(0, ''));
    asked.end(body);
  });
}

// Good clients, one request each after the other until stop(), which answers how many were answered, the worst latency,
// every status that was not 200, and by how much the clients themselves were late at most. They have a thread of their
// own: what the trouble beside them costs this one is none of the host's latency.
export function goodClients(address, count, paths) {
  const clients = new Worker(new URL('good_clients.mjs', import.meta.url), { workerData: { address, count, paths } });
  const told = new Promise((resolve, reject) => clients.once('message', resolve).once('error', reject));
  return {
    stop() {
      clients.postMessage('stop');
      return told;
    },
  };
}

// Connections that send these bytes, and then take `rate` bytes a second of what comes; 0 takes nothing at all.
export function slowClients(address, count, bytes, rate = 0) {
  const { hostname, port } = new URL(address);
  const sockets = Array.from({ length: count }, () => {
    const socket = connect({ host: hostname, port, highWaterMark: 16 });
    socket.on('error', () => {});
    socket.pause();
    socket.write(bytes);
    if (rate > 0) {
      const timer = setInterval(() => socket.read(Math.max(1, rate / 10 | 0)), 100);
      socket.on('close', () => clearInterval(timer));
    }
    return socket;
  });
  return { sockets, stop: () => sockets.forEach((socket) => socket.destroy()) };
}

export const get = (path) => `GET ${path} HTTP/1.1\r\nHost: a\r\n\r\n`;
export const pause = (milliseconds) => new Promise((go) => setTimeout(go, milliseconds));
