// The servers of the bench, each on a site in a temporary folder: addresses, processes, and end().
import { appendFile, copyFile, cp, mkdir, readFile, readdir, writeFile } from 'node:fs/promises';
import { createServer } from 'node:net';
import { userInfo } from 'node:os';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { start, temporaryFolder } from './processes.mjs';

export const root = fileURLToPath(new URL('../..', import.meta.url));
const here = join(root, 'bench/peers');
const installed = join(root, 'build/peers');

// A host of ours. `fill` puts the site into the folder that it is called with.
export async function zelto(on, workers, fill) {
  const folder = temporaryFolder();
  await fill(folder);
  const { pid, found, end } = await start([
    join(root, 'build/release/bin/zelto'), 'serve', folder, '--listen', '127.0.0.1:0', '--workers', String(workers),
  ], on, /http:\S+/);
  return { address: found, folder, pids: [pid], end };
}

export const example = (name) => (folder) => cp(join(root, 'examples', name), folder, { recursive: true });

// The table pages, with that many rows.
export const table = (rows = 100) => async (folder) => {
  await cp(join(here, 'site'), folder, { recursive: true });
  for (const name of ['plain.asp', 'text.asp', 'marks.asp']) {
    const text = await readFile(join(folder, name), 'utf8');
    if (!text.includes('count = 100;')) throw new Error(`${name} has no count of rows`);
    await writeFile(join(folder, name), text.replace('count = 100;', `count = ${rows};`));
  }
};

export const templates = (number) => async (folder) => {
  await copyFile(join(here, 'growth/template.asp'), join(folder, 'template.asp'));
  await mkdir(join(folder, 'templates'));
  for (let at = 0; at < number; at++)
    await writeFile(join(folder, `templates/t${at}.html`), `<p>Template ${at} says (#*Word#).</p>\n`);
};

export const sessions = async (folder) => {
  await copyFile(join(here, 'growth/session.asp'), join(folder, 'session.asp'));
  await appendFile(join(folder, 'zelto.toml'), 'session_limit = 60000\n');
};

async function newSession(url) {
  const answer = await fetch(url);
  await answer.arrayBuffer();
  return answer.headers.get('set-cookie').match(/^[^;]+/)[0];
}

// Cookies of that many visitors.
export async function newSessions(url, count) {
  const cookies = [];
  while (cookies.length < count) {
    const some = Math.min(16, count - cookies.length);
    cookies.push(...await Promise.all(Array.from({ length: some }, () => newSession(url))));
  }
  return cookies;
}

export async function node(on, script) {
  const { pid, found, end } = await start(['node', join(installed, script)], on, /http:\S+/);
  return { address: found, pids: [pid], end };
}

// One that nobody listens at. Unlike the others, nginx cannot tell which one the system has given it.
const freePort = () => new Promise((resolve, reject) => {
  const server = createServer().once('error', reject).listen(0, '127.0.0.1', () => {
    const { port } = server.address();
    server.close(() => resolve(port));
  });
});

// nginx as Debian sets it up where it says anything, but for its log of requests, with one worker.
async function nginx(on, folder, location) {
  const port = await freePort();
  const user = process.getuid() === 0 ? `user ${userInfo().username};` : '';
  const scratch = ['client_body', 'proxy', 'fastcgi', 'uwsgi', 'scgi']
    .map((name) => `${name}_temp_path ${folder}/${name};`).join(' ');
  await writeFile(join(folder, 'nginx.conf'), `
    ${user} daemon off; worker_processes 1; pid ${folder}/nginx.pid; error_log stderr notice;
    events { worker_connections 768; }
    http {
      include /etc/nginx/mime.types; default_type application/octet-stream; ${scratch}
      sendfile on; tcp_nopush on; types_hash_max_size 2048; access_log off; gzip on;
      server { listen 127.0.0.1:${port}; root ${folder}/site; ${location} }
    }`);
  const { pid, end } = await start([
    '/usr/sbin/nginx', '-e', 'stderr', '-p', folder, '-c', join(folder, 'nginx.conf'),
  ], on, /start worker process \d+/);
  return { address: `http://127.0.0.1:${port}/`, pids: [pid], end };
}

export async function nginxFiles(on, body) {
  const folder = temporaryFolder();
  await mkdir(join(folder, 'site'));
  await writeFile(join(folder, 'site/table.html'), body);
  return nginx(on, folder, '');
}

export async function phpFpm() {
  const names = (await readdir('/usr/sbin')).filter((name) => /^php-fpm[\d.]+$/.test(name)).sort();
  if (!names.length) throw new Error('there is no php-fpm; ./dev bench peers installs it');
  return join('/usr/sbin', names.at(-1));
}

// nginx and PHP-FPM, joined by a socket in the way of Debian's snippets, with the settings of its php.ini: opcache is
// on, its compiler to machine code is off.
export async function php(on) {
  const folder = temporaryFolder();
  await mkdir(join(folder, 'site'));
  await copyFile(join(here, 'php/table.php'), join(folder, 'site/table.php'));
  const user = process.getuid() === 0 ? `user = ${userInfo().username}` : '';
  await writeFile(join(folder, 'fpm.conf'), `
[global]
error_log = ${folder}/fpm.log
daemonize = no
[www]
${user}
listen = ${folder}/php.sock
pm = static
pm.max_children = 4
`);
  const fpm = await start([
    await phpFpm(), ...(user ? ['--allow-to-run-as-root'] : []), '--nodaemonize', '--force-stderr',
    '--fpm-config', join(folder, 'fpm.conf'),
  ], on, /ready to handle connections/);
  const front = await nginx(on, folder, `location ~ \\.php$ {
    include /etc/nginx/fastcgi.conf; fastcgi_pass unix:${folder}/php.sock; }`);
  return {
    address: front.address,
    pids: [...front.pids, fpm.pid],
    async end() {
      await front.end();
      await fpm.end();
    },
  };
}
