// Loops in VBScript and the same in JavaScript:  node bench/vbscript_loops.mjs [ROUNDS] [NAME]…
//
// Each pair of pages in vbscript_loops/ is asked for in turns by one client, so that a slow spell of the machine falls
// on both. Beforehand both are asked for until they are compiled as well as they will be. What is told is the
// processors' time of the host for one request, the median of the rounds (31), and of each round's ratio the median
// and half the distance from the first to the last quarter.
import { spawn } from 'node:child_process';
import { readFile, readdir } from 'node:fs/promises';
import { join } from 'node:path';
import { createInterface } from 'node:readline';
import { fileURLToPath } from 'node:url';

const pages = fileURLToPath(new URL('vbscript_loops', import.meta.url));
const zelto = process.env.ZELTO ?? fileURLToPath(new URL('../build/release/bin/zelto', import.meta.url));
const most = 2;
const requests = 4;  // of a page in each round

const [first = '31', ...wanted] = process.argv.slice(2);
const rounds = Number(first);
if (!(rounds >= 3)) {
  console.error('usage: node bench/vbscript_loops.mjs [ROUNDS] [NAME]…');
  process.exit(2);
}

const host = spawn(zelto, ['serve', pages, '--listen', '127.0.0.1:0', '--no-supervisor', '--workers', '1'], {
  stdio: ['ignore', 'pipe', 'ignore'],
});
process.once('exit', () => host.kill());  // also when a page fails
const address = await new Promise((found) =>
  createInterface({ input: host.stdout }).once('line', (line) => found(line.match(/http:\S+/)[0])));

// What the host's threads have run for so far, in milliseconds.
async function processorTime() {
  const tasks = `/proc/${host.pid}/task`;
  let sum = 0;
  for (const task of await readdir(tasks)) {
    const text = await readFile(join(tasks, task, 'schedstat'), 'utf8').catch(() => '0');
    sum += Number(text.split(' ')[0]);
  }
  return sum / 1e6;
}

async function ask(page) {
  const answer = await fetch(address + page);
  const text = await answer.text();
  if (answer.status !== 200) throw new Error(`${page}: ${answer.status}\n${text}`);
  return text.trim();
}

async function timeOf(page) {
  const before = await processorTime();
  for (let i = 0; i < requests; ++i) await ask(page);
  return ((await processorTime()) - before) / requests;
}

const sorted = (values) => [...values].sort((a, b) => a - b);
const median = (values) => sorted(values)[values.length >> 1];
const spread = (values) => (sorted(values)[(values.length * 3) >> 2] - sorted(values)[values.length >> 2]) / 2;

const files = (await readdir(pages)).filter((file) => file.endsWith('.vb.asp'));
const names = files.map((file) => file.replace('.vb.asp', '')).filter((name) => !wanted.length || wanted.includes(name));
console.log('                       JavaScript (ms)  VBScript (ms)   ratio   spread');
for (const name of names.sort()) {
  const [script, basic] = [`${name}.js.asp`, `${name}.vb.asp`];
  const [expected, told] = [await ask(script), await ask(basic)];
  if (expected !== told) throw new Error(`${name}: "${expected}" and "${told}"`);
  for (let i = 0; i < 10; ++i) await timeOf(script), await timeOf(basic);
  const times = [];
  for (let round = 0; round < rounds; ++round) times.push([await timeOf(script), await timeOf(basic)]);
  const ratios = times.map(([a, b]) => b / a);
  console.log([
    name.replaceAll('_', ' ').padEnd(23), median(times.map(([a]) => a)).toFixed(2).padStart(15),
    median(times.map(([, b]) => b)).toFixed(2).padStart(15), median(ratios).toFixed(2).padStart(8),
    `±${spread(ratios).toFixed(2)}`.padStart(9), median(ratios) <= most ? '' : `  above ${most}`,
  ].join(''));
}
host.kill();
