// Clients that are slow, silent or many.
import { writeFile } from 'node:fs/promises';
import { join } from 'node:path';
import { ask, get, goodClients, pause, slowClients } from './clients.mjs';
import { allAnswered, latency, residentMemory, row, withHost } from './host.mjs';

const good = ['/default.asp', '/plain.txt'];

// Good clients ask while `trouble` goes on.
const during = (trouble, settings, clients = 4) => withHost(async (host) => {
  await writeFile(join(host.folder, 'plain.txt'), 'plain');
  await writeFile(join(host.folder, 'large.bin'), Buffer.alloc(20 << 20, 'x'));
  await ask(host.address, '/default.asp');
  const asking = goodClients(host.address, clients, good);
  const rows = await trouble(host);
  const told = await asking.stop();
  return [allAnswered(told), latency(told), ...(rows ?? [])];
}, settings);

export const slow = {
  slow_readers: () => during(async (host) => {
    const before = await residentMemory(host.pid);
    const readers = ['/large.bin', '/large.asp'].map((path) => slowClients(host.address, 8, get(path), 50));
    await pause(5000);
    const grown = (await residentMemory(host.pid)) - before;
    readers.forEach((some) => some.stop());
    return [row('memory for 16 readers of 20 MB', `${grown.toFixed(0)} MB`, '<= 60 MB', grown <= 60)];
  }),

  slow_writers: () => during(async (host) => {
    const writers = slowClients(host.address, 64,
      'POST /size.asp HTTP/1.1\r\nHost: a\r\nContent-Length: 1000000\r\n\r\nbegins');
    const heads = slowClients(host.address, 64, 'GET /default.asp HTTP/1.1\r\nHos');
    await pause(4000);
    writers.stop();
    heads.stop();
  }),

  clients_64: () => during(async (host) => {
    const some = slowClients(host.address, 16, get('/large.asp'), 100);
    await pause(5000);
    some.stop();
  }, {}, 48),

  clients_2000: () => during(async (host) => {
    const silent = slowClients(host.address, 1500, '');
    const readers = slowClients(host.address, 400, get('/large.bin'), 10);
    await pause(8000);
    silent.stop();
    readers.stop();
  }, {}, 100),

  newcomers: () => withHost(async (host) => {
    const silent = slowClients(host.address, 300, '');
    await pause(500);
    const answers = [];
    for (let i = 0; i < 20; i++) answers.push((await ask(host.address, '/default.asp')).status);
    silent.stop();
    const answered = answers.filter((status) => status === 200).length;
    return [row('newcomers answered beside 300 silent clients', `${answered} of 20`, 'all', answered === 20)];
  }, { lines: ['connections = 200'] }),

  one_session: () => during(async (host) => {
    const first = await new Promise((found) => {
      fetch(`${host.address}count.asp`).then((answer) => found(answer.headers.get('set-cookie').split(';')[0]));
    });
    await ask(host.address, '/hold.asp', { headers: { cookie: first } });
    const answers = await Promise.all(Array.from({ length: 24 }, () =>
      ask(host.address, '/hold.asp', { headers: { cookie: first } })));
    const statuses = answers.map(({ status }) => status);
    const held = statuses.filter((status) => status === 200).length;
    const refused = statuses.filter((status) => status === 503).length;
    return [row('of 24 at once: answered in turn, refused', `${held}, ${refused}`, '9, 15', held === 9 && refused === 15)];
  }),
};
