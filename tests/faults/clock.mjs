// The clock on the wall is set while the host serves.
import { mkdtemp, open, readFile, rename, rm, utimes, writeFile } from 'node:fs/promises';
import { tmpdir } from 'node:os';
import { dirname, join } from 'node:path';
import { ask, goodClients, pause } from './clients.mjs';
import { allAnswered, latency, row, withHost } from './host.mjs';
import { family } from './processes.mjs';
import { status } from './wire.mjs';

// Begins what takes its time, and answers its result and how long it took, in seconds.
async function timed(what) {
  const began = performance.now();
  const result = await what;
  return [result, (performance.now() - began) / 1000];
}

const within = (time, limit) => Promise.race([time, pause(limit).then(() => 'nothing')]);

// A clock for one program: `set` has it wrong by so many seconds, `now` is what it shows, in milliseconds.
async function makeClock() {
  const folder = await mkdtemp(join(tmpdir(), 'clock-'));
  const name = join(folder, 'clock');
  await writeFile(name, Buffer.alloc(16));
  const file = await open(name, 'r+');
  const number = Buffer.alloc(8);
  let offset = 0;
  return {
    command: ['env', `CLOCK_FILE=${name}`,
      `LD_PRELOAD=${process.env.SET_CLOCK ?? join(dirname(process.env.ZELTO), '../tests/libset_clock.so')}`],
    now: () => Date.now() + offset * 1000,
    async set(seconds) {
      offset = seconds;
      number.writeBigInt64LE(BigInt(seconds));
      await file.write(number, 0, 8, 0);
    },
    async waits() { return Number((await file.read(Buffer.alloc(8), 0, 8, 8)).buffer.readBigInt64LE()); },
    async end() {
      await file.close();
      await rm(folder, { recursive: true });
    },
  };
}

async function visit(host, cookie) {
  const answer = await fetch(`${host.address}count.asp`, { headers: cookie ? { cookie } : {} });
  return [(await answer.text()).trim(), answer.headers.get('set-cookie')?.split(';')[0] ?? cookie];
}

// Files are given the times that they would have by that clock.
async function writeAt(clock, file, text) {
  await writeFile(file, text);
  await utimes(file, clock.now() / 1000, clock.now() / 1000);
}

async function draws(host, clock, text) {
  await writeAt(clock, join(host.folder, 'drawn.html'), text);
  return (await ask(host.address, '/drawn.asp')).text.trim();
}

// The log's first line once the file has been taken away, and when it says that it was written.
async function nextLog(host) {
  const log = join(host.folder, 'clock.log');
  await rename(log, `${log}.1`);
  process.kill(host.pid, 'SIGHUP');
  for (let i = 0; i < 100; i++) {
    await ask(host.address, '/default.asp');
    const found = (await readFile(log, 'utf8').catch(() => '')).match(/\[(\d+)\/(\w+)\/(\d+):([\d:]+) \+0000\]/);
    if (found) return Date.parse(`${found[1]} ${found[2]} ${found[3]} ${found[4]} UTC`);
    await pause(50);
  }
  return NaN;
}

// What it says when that differs from the clock by more than a few seconds, else nothing.
const wrongBy = (clock, time, ahead = 0) => {
  const seconds = (time - clock.now()) / 1000 - ahead;
  return Math.abs(seconds) < 5 ? '' : `${seconds.toFixed(0)} s`;
};

// Sets the clock while pages, sessions and clients are on their way.
async function setWhileServing(host, clock, seconds, name) {
  const [server] = (await family(host.pid)).slice(1);
  const [, cookie] = await visit(host);
  const first = await draws(host, clock, `before ${name}`);
  const kept = [await ask(host.address, `/write.asp?n=${seconds}`)];
  const asking = goodClients(host.address, 4, ['/default.asp', '/drawn.asp']);
  const endless = timed(within(ask(host.address, '/endless.asp'), 20000));
  const silent = timed(within(status(host.address, 'GET / HTTP/1.1\r\nHos'), 20000));
  await pause(500);
  await clock.set(seconds);

  const told = await fetch(`${host.address}cookie.asp`);
  const wrong = {
    date: wrongBy(clock, Date.parse(told.headers.get('date'))),
    cookie: wrongBy(clock, Date.parse(told.headers.get('set-cookie').match(/expires=([^;]*)/i)[1]), 3600),
  };
  const [second] = await visit(host, cookie);
  kept.push(await ask(host.address, `/write.asp?n=${seconds + 1}`));
  const drawn = [first, await draws(host, clock, `after ${name}`)];
  wrong.log = wrongBy(clock, await nextLog(host));
  const [page, pageTook] = await endless;
  const [head, headTook] = await silent;
  await pause(8000);  // a look for sessions that are over comes each 15 s, one for a server that hangs each 5
  const [third] = await visit(host, cookie);
  const good = await asking.stop();
  const same = (await family(host.pid))[1] === server;
  const statuses = kept.map(({ status: is }) => is).join(', ');
  const drawnRight = `before ${name}, after ${name}`;
  return [allAnswered(good), latency(good),
    row(`${name}: the Date of an answer is wrong by`, wrong.date || 'nothing', 'nothing', !wrong.date),
    row(`${name}: the end of a cookie by`, wrong.cookie || 'nothing', 'nothing', !wrong.cookie),
    row(`${name}: the first line of a new log by`, wrong.log || 'nothing', 'nothing', !wrong.log),
    row(`${name}: a session's visits, 20 s apart`, `${second}, ${third}`, '2, 3', second === '2' && third === '3'),
    row(`${name}: writes to a database`, statuses, '200, 200', statuses === '200, 200'),
    row(`${name}: a template, changed`, drawn.join(', '), drawnRight, drawn.join(', ') === drawnRight),
    row(`${name}: a page with 2 s ends`, `${page.status} in ${pageTook.toFixed(1)} s`, '500, <= 4 s',
      page.status === 500 && pageTook <= 4),
    row(`${name}: half a head has 10 s`, `${head} in ${headTook.toFixed(1)} s`, '408, 9 to 13 s',
      head === 408 && headTook >= 9 && headTook <= 13),
    row(`${name}: the server is the same`, same ? 'yes' : 'no', 'yes', same)];
}

// The supervisor's pauses are none of the clock's business either.
async function diesAndReturns(host) {
  const [, server] = await family(host.pid);
  process.kill(server, 'SIGKILL');
  const [answer, took] = await timed(within((async () => {
    for (;;) {
      const { status: is } = await ask(host.address, '/default.asp');
      if (is === 200 && (await family(host.pid))[1] !== server) return is;
      await pause(20);
    }
  })(), 20000));
  return row('a server that is killed is back', `${answer} in ${took.toFixed(1)} s`, '200, <= 2 s',
    answer === 200 && took <= 2);
}

export const clocks = {
  clock_set: async () => {
    const clock = await makeClock();
    try {
      return await withHost(async (host) => {
        const rows = await setWhileServing(host, clock, -3600, 'back');
        rows.push(await diesAndReturns(host));
        rows.push(...await setWhileServing(host, clock, 3600, 'ahead'));
        const waits = await clock.waits();
        const code = await within(host.stop(), 20000);
        return [...rows, row('waits for a moment of that clock', waits, '0', waits === 0),
          row('exit code in the end', code, '0', code === 0)];
      }, { supervised: true, command: clock.command,
        lines: ['script_timeout = 2', 'hang_timeout = 5', 'log = "clock.log"'] });
    } finally {
      await clock.end();
    }
  },
};
