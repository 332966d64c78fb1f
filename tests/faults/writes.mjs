// A host that ends while its pages write: nothing that was acknowledged may be lost.
import { execFile } from 'node:child_process';
import { rename } from 'node:fs/promises';
import { join } from 'node:path';
import { promisify } from 'node:util';
import { ask, pause } from './clients.mjs';
import { row, withHost } from './host.mjs';

// Clients that write one number after the other until stop(); which ones were acknowledged, and which were not answered.
function writers(address, count) {
  let busy = true;
  let next = 0;
  const acknowledged = [];
  const unanswered = [];
  const writer = async () => {
    while (busy) {
      const n = next++;
      const { status, text } = await ask(address, `/write.asp?n=${n}`);
      if (status === 200 && text.includes('kept')) acknowledged.push(n);
      else unanswered.push(n);
      if (status === 0) await pause(5);
    }
  };
  const all = Array.from({ length: count }, writer);
  return { acknowledged, unanswered, async stop() { busy = false; await Promise.all(all); } };
}

async function kept(folder) {
  const { stdout } = await promisify(execFile)('sqlite3', [join(folder, 'app_data/numbers.db'),
    'PRAGMA integrity_check; SELECT n FROM numbers ORDER BY n']);
  const [verdict, ...numbers] = stdout.trim().split('\n');
  return { verdict, numbers: new Set(numbers.map(Number)) };
}

const ended = (signal) => () => withHost(async (host) => {
  const writing = writers(host.address, 8);
  while (writing.acknowledged.length < 200) await pause(10);
  const folder = host.folder;
  process.kill(host.pid, signal);
  await pause(500);
  await writing.stop();
  const { verdict, numbers } = await kept(folder);
  const lost = writing.acknowledged.filter((n) => !numbers.has(n)).length;
  const unanswered = writing.unanswered.filter((n) => numbers.has(n)).length;
  return [row('the database is sound', verdict, 'ok', verdict === 'ok'),
    row(`of ${writing.acknowledged.length} acknowledged, lost`, lost, '0', lost === 0),
    ...(signal === 'SIGTERM' ? [row('executed and not answered', unanswered, '0', unanswered === 0)] : [])];
});

export const writes = {
  kill_under_writes: ended('SIGKILL'),
  term_under_writes: ended('SIGTERM'),

  database_gone: () => withHost(async (host) => {
    const folder = join(host.folder, 'app_data');
    const first = await ask(host.address, '/write.asp?n=1');
    await rename(folder, `${folder}_away`);
    const gone = await ask(host.address, '/write.asp?n=2');
    await rename(`${folder}_away`, folder);
    const back = await ask(host.address, '/write.asp?n=3');
    const is = [first, gone, back].map(({ status }) => status).join(', ');
    return [row('before, without its folder, afterwards', is, '200, 500, 200', is === '200, 500, 200')];
  }),
};
