// The clients of the fault tests: good ones, whose worst latency counts, and those that are slow, silent or gone.
import { Agent, request } from 'node:http';
import { connect } from 'node:net';

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

// Good clients, one request each after the other until stop(), which answers how many were answered, the worst latency
// and every status that was not 200.
export function goodClients(address, count, paths) {
  let busy = true;
  let answered = 0;
  let worst = 0;
  const others = new Map();
  const agent = new Agent({ keepAlive: true, maxSockets: count });
  const client = async (first) => {
    for (let i = first; busy; i++) {
      const { status, took } = await ask(address, paths[i % paths.length], { agent });
      answered++;
      worst = Math.max(worst, took);
      if (status !== 200) others.set(status, (others.get(status) ?? 0) + 1);
      await new Promise((next) => setTimeout(next, 10));
    }
  };
  const all = Array.from({ length: count }, (_, i) => client(i));
  return {
    async stop() {
      busy = false;
      await Promise.all(all);
      agent.destroy();
      return { answered, worst, others: [...others].map(([status, times]) => `${times} x ${status}`).join(', ') };
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
