// Requests as bytes, and what comes back.
import { once } from 'node:events';
import { connect } from 'node:net';

// Sends the bytes as they are, and answers everything that comes back until the host closes.
export async function raw(site, request) {
  const { hostname, port } = new URL(site.address);
  const socket = connect(port, hostname);
  const received = [];
  socket.on('data', (bytes) => received.push(bytes));
  socket.write(request);
  await once(socket, 'close');
  return Buffer.concat(received).toString();
}
export const get = (site, target, headers = '') =>
  raw(site, `GET ${target} HTTP/1.1\r\nHost: a\r\nConnection: close\r\n${headers}\r\n`);
export const statusOf = (answer) => Number(answer.split(' ')[1]);
export const cookieOf = (answer) => answer.match(/^Set-Cookie: (zelto_session=[^;]*)(.*)$/im)?.slice(1);
export const bodyOf = (answer) => answer.slice(answer.indexOf('\r\n\r\n') + 4);
