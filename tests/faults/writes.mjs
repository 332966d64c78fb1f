// A host that ends while its pages write, or whose database goes: nothing that was acknowledged may be lost.
import { execFile } from 'node:child_process';
import { readFile, rename, writeFile } from 'node:fs/promises';
import { join } from 'node:path';
import { promisify } from 'node:util';
import { ask, goodClients, pause } from './clients.mjs';
import { allAnswered, latency, row, withHost } from './host.mjs';
import { makePostgres } from './postgres.mjs';
import { family } from './processes.mjs';

// Clients that write one number after the other until stop(); which ones were acknowledged, and which were not. Each
// answer's status is noted in `statuses`, and `slowest` is the longest that one took.
function writers(address, count) {
  let busy = true;
  let next = 0;
  const told = { acknowledged: [], unanswered: [], statuses: [], slowest: 0 };
  const writer = async () => {
    while (busy) {
      const n = next++;
      const { status, text, took } = await ask(address, `/write.asp?n=${n}`);
      told.statuses.push(status);
      told.slowest = Math.max(told.slowest, took);
      if (status === 200 && text.includes('kept')) told.acknowledged.push(n);
      else told.unanswered.push(n);
      if (status !== 200) await pause(5);
    }
  };
  const all = Array.from({ length: count }, writer);
  return Object.assign(told, {
    async stop() {
      busy = false;
      await Promise.all(all);
    },
    // Until so many more are acknowledged; fails after 20 s.
    async go(more) {
      const enough = told.acknowledged.length + more;
      for (let i = 0; told.acknowledged.length < enough; i++) {
        if (i > 2000) throw new Error(`after ${told.acknowledged.length} nothing more is written`);
        await pause(10);
      }
    },
  });
}

async function kept(folder) {
  const { stdout } = await promisify(execFile)('sqlite3', [join(folder, 'app_data/numbers.db'),
    'PRAGMA integrity_check; SELECT n FROM numbers ORDER BY n']);
  const [verdict, ...numbers] = stdout.trim().split('\n');
  return { verdict, numbers: new Set(numbers.map(Number)) };
}

function noneLost(writing, numbers) {
  const lost = writing.acknowledged.filter((n) => !numbers.has(n)).length;
  return row(`of ${writing.acknowledged.length} acknowledged, lost`, lost, '0', lost === 0);
}

const isSound = (verdict) => row('the database is sound', verdict, 'ok', verdict === 'ok');

const ended = (signal) => () => withHost(async (host) => {
  const writing = writers(host.address, 8);
  await writing.go(200);
  const folder = host.folder;
  process.kill(host.pid, signal);
  await pause(500);
  await writing.stop();
  const { verdict, numbers } = await kept(folder);
  const rows = [isSound(verdict), noneLost(writing, numbers)];
  if (signal !== 'SIGTERM') return rows;
  const unanswered = writing.unanswered.filter((n) => numbers.has(n)).length;
  const code = await Promise.race([host.stop(), pause(20000)]);
  return [...rows, row('executed and not answered', unanswered, '0', unanswered === 0),
    row('exit code', code, '0', code === 0)];
});

export const writes = {
  kill_under_writes: ended('SIGKILL'),
  term_under_writes: ended('SIGTERM'),

  kills_under_writes: () => withHost(async (host) => {
    const writing = writers(host.address, 8);
    for (let i = 0; i < 3; i++) {
      await writing.go(100);
      process.kill((await family(host.pid))[1], 'SIGKILL');
    }
    await writing.go(100);
    await writing.stop();
    const { verdict, numbers } = await kept(host.folder);
    const others = [...new Set(writing.statuses)].filter((status) => status !== 200 && status !== 0);
    return [isSound(verdict), noneLost(writing, numbers),
      row('answers but 200 and none', others.join(', ') || 'none', 'none', others.length === 0),
      row('slowest answer', `${writing.slowest.toFixed(0)} ms`, '<= 5 s', writing.slowest <= 5000)];
  }, { supervised: true }),

  full_disk: () => withHost(async (host) => {
    const writing = writers(host.address, 4);
    while (!writing.statuses.includes(500) && writing.acknowledged.length < 20000) await pause(10);
    await pause(200);
    await writing.stop();
    const after = (await ask(host.address, '/default.asp')).status;
    const { verdict, numbers } = await kept(host.folder);
    const others = [...new Set(writing.statuses)].filter((status) => status !== 200 && status !== 500);
    return [isSound(verdict), noneLost(writing, numbers),
      row('answers but 200, and then 500', others.join(', ') || 'none', 'none',
        others.length === 0 && writing.statuses.includes(500)),
      row('another page after that', after, '200', after === 200)];
  }, { command: ['prlimit', '--fsize=16384'] }),

  database_gone: () => withHost(async (host) => {
    const folder = join(host.folder, 'app_data');
    const writing = writers(host.address, 4);
    await writing.go(50);
    const asking = goodClients(host.address, 4, ['/default.asp']);
    await rename(folder, `${folder}_away`);
    await pause(100);  // those on their way
    writing.statuses.length = 0;
    await pause(1000);
    const gone = [...new Set(writing.statuses)].join(', ');
    await rename(`${folder}_away`, folder);
    await writing.go(50);
    await writing.stop();
    const told = await asking.stop();
    const { verdict, numbers } = await kept(host.folder);
    return [allAnswered(told), latency(told), row('writes without the folder', gone, '500', gone === '500'),
      isSound(verdict), noneLost(writing, numbers)];
  }),

  database_server_gone: async () => {
    const postgres = await makePostgres();
    try {
      return await withHost(async (host) => {
        const page = join(host.folder, 'write.asp');
        const source = await readFile(page, 'utf8');
        await writeFile(page, source.replace(/Open\(.*\)/, `Open("${postgres.connection}")`));
        await ask(host.address, '/write.asp?n=-1');  // makes the table
        const writing = writers(host.address, 4);
        await writing.go(50);
        const asking = goodClients(host.address, 4, ['/default.asp']);
        await postgres.stop();
        await pause(100);
        writing.statuses.length = 0;
        await pause(1000);
        const gone = [...new Set(writing.statuses)].join(', ');
        await postgres.start();
        await writing.go(50);
        writing.statuses.length = 0;
        await writing.go(50);
        await writing.stop();
        const back = [...new Set(writing.statuses)].join(', ');
        const told = await asking.stop();
        const numbers = new Set((await postgres.rows('SELECT n FROM numbers')).map(Number));
        return [allAnswered(told), latency(told), row('writes without the server', gone, '500', gone === '500'),
          row('writes when it is back', back, '200', back === '200'), noneLost(writing, numbers),
          row('slowest write', `${writing.slowest.toFixed(0)} ms`, '<= 5 s', writing.slowest <= 5000)];
      });
    } finally {
      await postgres.end();
    }
  },
};
