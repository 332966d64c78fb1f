// A PostgreSQL server on a socket in a folder of its own, to be stopped and started again.
import { execFile } from 'node:child_process';
import { chmod, chown, mkdtemp, readFile, readdir, rm } from 'node:fs/promises';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { promisify } from 'node:util';

// It refuses to run as root, so root becomes "postgres" or "nobody" for it.
async function user() {
  if (process.getuid() !== 0) return {};
  const users = (await readFile('/etc/passwd', 'utf8')).split('\n').map((line) => line.split(':'));
  const [, , uid, gid] = users.find(([name]) => name === 'postgres') ?? users.find(([name]) => name === 'nobody');
  return { uid: Number(uid), gid: Number(gid) };
}

// The newest version's programs, which Debian keeps out of the search path.
async function programs() {
  const versions = await readdir('/usr/lib/postgresql').catch(() => []);
  const newest = versions.sort((a, b) => a - b).at(-1);
  return newest ? `/usr/lib/postgresql/${newest}/bin/` : '';
}

export async function makePostgres() {
  const folder = await mkdtemp(join(tmpdir(), 'postgres-'));
  const who = await user();
  await chmod(folder, 0o755);
  if (who.uid) await chown(folder, who.uid, who.gid);
  const place = await programs();
  const data = join(folder, 'data');
  const run = (name, ...words) => promisify(execFile)(place + name, words, { cwd: '/', ...who });
  // What the server says later must not hold up whoever waits for its beginning.
  const start = () => run('pg_ctl', '-D', data, '-w', '-s', '-l', join(folder, 'log'), '-o',
    `-c listen_addresses='' -k '${folder}'`, 'start');
  const stop = () => run('pg_ctl', '-D', data, '-m', 'immediate', '-w', '-s', 'stop');
  await run('initdb', '-D', data, '-U', 'tester', '-A', 'trust', '-E', 'UTF8', '--locale=C.UTF-8', '--no-sync');
  await start();
  return {
    connection: `Driver=PostgreSQL Unicode;Servername=${folder};Port=5432;Username=tester;Database=postgres`,
    start,
    stop,
    // The rows of a query of one column.
    async rows(query) {
      const { stdout } = await run('psql', '-h', folder, '-U', 'tester', '-d', 'postgres', '-A', '-t', '-c', query);
      return stdout.split('\n').filter(Boolean);
    },
    async end() {
      await stop().catch(() => {});
      await rm(folder, { recursive: true });
    },
  };
}
