// What a page costs here and elsewhere:  node bench/peers.mjs [SECONDS] [--no-growth] [--into DOCUMENT]
//
// One table of 100 rows with four cells, two of them escaped: as pages of ours, by node, by PHP-FPM, and as a file. The
// bytes of all answers are the same, which is checked. Beside them the examples, two workers, few and many connections,
// and how the time of a row, of a template and of a session grows with their number.
//
// A server runs on one core and wrk on another, with 16 connections where nothing else is said; with two workers both
// have both. Rows take turns for that long (3 seconds), five times; each figure is the median, and the spread half the
// distance from the least to the most. The processors' time is that of all processes of a server, what the system did
// for them included. With --into, the figures go into the document's section `<!-- peers -->`, and a chart of them,
// peers.svg, beside it.
//
// `./dev bench peers` installs what this needs.
import { writeFile } from 'node:fs/promises';
import { dirname, join } from 'node:path';
import { parseArgs } from 'node:util';
import { fill, machine } from './document.mjs';
import { chart } from './peers/chart.mjs';
import { growth } from './peers/growth.mjs';
import { cores } from './peers/processes.mjs';
import { crowds, figures, goals, grown } from './peers/report.mjs';
import { measure, requestFile } from './peers/rounds.mjs';
import { example, newSessions, nginxFiles, node, php, table, zelto } from './peers/servers.mjs';

const rounds = 5;
const { values: options, positionals } = parseArgs({
  allowPositionals: true,
  options: { into: { type: 'string' }, 'no-growth': { type: 'boolean' } },
});
const seconds = Number(positionals[0] ?? 3);
if (!(seconds >= 1 && Number.isInteger(seconds)) || positionals.length > 1) {
  console.error('usage: node bench/peers.mjs [SECONDS] [--no-growth] [--into DOCUMENT]');
  process.exit(2);
}

const available = await cores();
if (available.length < 2) throw new Error('two cores are needed, one for the server and one for its clients');
const [one, other] = [[available[0]], [available.at(-1)]];
const both = [available[0], available.at(-1)];
const tell = (text) => console.error(`${new Date().toTimeString().slice(0, 8)}  ${text}`);

// Rows that show the table, by us and by others.
async function tables() {
  const ours = (key, short, path, workers = 1) => ({ key, short, path, workers, ours: true });
  const pages = [
    ours('plain', 'plain page', 'plain.asp'),
    ours('basic', 'plain page in VBScript', 'basic.asp'),
    ours('text', 'text built in script', 'text.asp'),
    ours('marks', 'rows of marks', 'marks.asp'),
    ours('plain2', 'plain page, two workers', 'plain.asp', 2),
    ours('marks2', 'rows of marks, two workers', 'marks.asp', 2),
  ];
  for (const page of pages) {
    page.server = await zelto(page.workers === 1 ? one : both, page.workers, table());
    page.load = page.workers === 1 ? other : both;
  }
  const body = await bytes(pages[0].server.address + pages[0].path);
  const file = (folder) => writeFile(join(folder, 'table.html'), body);
  return [
    { key: 'nginx', short: 'nginx, a file', path: 'table.html', server: await nginxFiles(one, body) },
    { ...ours('file', 'a file', 'table.html'), server: await zelto(one, 1, file) },
    { key: 'eta', short: 'node, a compiled template (eta)', path: '', server: await node(one, 'eta.mjs') },
    { key: 'php', short: 'nginx, PHP-FPM with opcache', path: 'table.php', server: await php(one) },
    { key: 'express', short: 'node, express, nunjucks', path: '', server: await node(one, 'express.mjs') },
    ...pages,
  ].map((row) => ({ load: other, ...row, name: row.ours ? `**ours: ${row.short}**` : row.short }));
}

async function examples() {
  const rows = [
    { key: 'hello', site: 'hello', path: 'default.asp?c=Greet&who=Ann', name: 'hello: a template, two marks' },
    { key: 'notebook', site: 'notebook', path: 'default.asp', name: 'notebook: layout, child templates, new session' },
    { key: 'again', site: 'notebook', path: 'default.asp', name: 'notebook, for visitors who come back' },
    { key: 'guestbook', site: 'guestbook', path: 'default.asp', name: 'guestbook: entries from SQLite, new session' },
  ];
  for (const row of rows) {
    row.server = await zelto(one, 1, example(row.site));
    row.load = other;
    row.short = row.site;
  }
  const again = rows.find((row) => row.key === 'again');
  const cookies = await newSessions(again.server.address + again.path, 64);
  again.requests = await requestFile(cookies.map((cookie) => `/${again.path}\t${cookie}`));
  return rows;
}

async function bytes(url) {
  const answer = await fetch(url);
  if (answer.status !== 200) throw new Error(`${url}: ${answer.status}`);
  return Buffer.from(await answer.arrayBuffer());
}

// Completes the rows. Those of the table must show the same.
async function check(rows, same) {
  for (const row of rows) {
    row.url = row.server.address + row.path;
    row.body = await bytes(row.url);
    row.bytes = row.body.length;
    if (same && !row.body.equals(rows[0].body))
      throw new Error(`${row.short} shows another page than ${rows[0].short}:\n${row.body.subarray(0, 500)}`);
  }
}

// The same rows with so many connections. Of requests for pages no more than 256 may wait: others are refused.
async function crowded(rows, counts) {
  const some = ['nginx', 'file', 'hello'].map((key) => rows.find((row) => row.key === key));
  const asked = some.flatMap((row) => counts.map((count) => ({
    ...row, connections: row.path.includes('.asp') ? Math.min(count, 256) : count,
  })));
  return crowds(counts, await measure(asked, { rounds: 3, seconds }));
}

const wanted = [
  ...['plain', 'text'].map((row) => ({ row, must: { times: 1, of: 'php' }, reach: { times: 1.5, of: 'eta' } })),
  { row: 'basic', must: { times: 1.3, of: 'plain' } },
  { row: 'marks', must: { times: 1, of: 'express' }, reach: { times: 1.5, of: 'php' } },
  { row: 'hello', must: { seconds: 60e-6 }, reach: { seconds: 30e-6 } },
  { row: 'notebook', must: { seconds: 150e-6 }, reach: { seconds: 75e-6 } },
  { row: 'guestbook', must: { times: 2, of: 'notebook' } },
  { row: 'file', must: { times: 1.5, of: 'nginx' }, reach: { times: 1.2, of: 'nginx' } },
  ...['plain', 'marks'].map((of) => ({ row: `${of}2`, must: { times: 1.15, of } })),
];

tell('starting the servers');
const all = [await tables(), await examples()];
await check(all[0], true);
await check(all[1], false);
const found = await measure(all.flat(), { rounds, seconds, tell });
tell('few and many connections');
const crowd = await crowded(all.flat(), [1, 32, 512]);
await Promise.all(found.map((row) => row.server.end()));
const parts = [];
function add(title, ...tables) {
  parts.push(title, ...tables);
  console.log([title, ...tables, ''].join('\n\n'));
}
add(`What a request takes, in ${rounds} rounds of ${seconds} s:`, figures(found));
add('The processors\' time as goals:', goals(found, wanted));
add('The processors\' time (µs) of one, and how many a second, with so many connections:', crowd);
if (!options['no-growth']) {
  const grow = await growth(one, other, { rounds: 3, seconds, tell });
  add('The processors\' time of one when there are many:', ...grow.map(grown));
}
console.log(machine());

if (options.into) {
  const bars = found.slice(0, all[0].length).map((row) => ({
    label: row.ours ? `ours: ${row.short}` : row.short, value: row.processor * 1e6, ours: row.ours,
  }));
  const title = 'Processor time of a request for the table page, in µs';
  const picture = chart(title, machine(), bars, (value) => value.toFixed(0));
  await writeFile(join(dirname(options.into), 'peers.svg'), picture);
  fill(options.into, (name) => (name === 'peers' ? parts.join('\n\n') : undefined));
}
