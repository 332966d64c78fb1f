// Runs benchmarks and prints their figures in Markdown, or writes them into a document:
//
//   node bench/figures.mjs NAME…                    a table for each
//   node bench/figures.mjs --into DOCUMENT [NAME]…  fills in what stands between `<!-- NAME -->` and
//                                                   `<!-- end -->`, everywhere or for these names
//
// NAME is "page" for the program bench_page, or "serve.mjs 2 16" for a script with its arguments.
//
// A figure is the median of nine repetitions, taken in random order so that a slow spell of the machine
// does not fall on one benchmark alone; the spread is half the distance from the fastest to the slowest.
import { execFileSync } from 'node:child_process';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { fill, machine } from './document.mjs';

const scripts = dirname(fileURLToPath(import.meta.url));
const programs = join(scripts, '../build/release/bench');
const repetitions = 9;

// A program that measures in a process for each kind prints one document after another.
const parts = (json) => json.split(/^(?=\{)/m).filter(Boolean).map((part) => JSON.parse(part));

// In the order in which the program registers them, which interleaved repetitions do not keep.
function measure(name) {
  const path = join(programs, `bench_${name}`);
  const order = execFileSync(path, ['--benchmark_list_tests'], { encoding: 'utf8' }).split('\n');
  const json = execFileSync(path, [
    '--benchmark_format=json', `--benchmark_repetitions=${repetitions}`, '--benchmark_min_time=0.05',
    '--benchmark_enable_random_interleaving=true',
  ], { encoding: 'utf8', maxBuffer: 1 << 28, stdio: ['ignore', 'pipe', 'inherit'] });
  const runs = new Map();
  for (const run of parts(json).flatMap((part) => part.benchmarks)) {
    if (run.run_type !== 'iteration') continue;
    if (run.error_occurred) throw new Error(`${name} ${run.run_name}: ${run.error_message}`);
    if (!runs.has(run.run_name)) runs.set(run.run_name, []);
    runs.get(run.run_name).push(run);
  }
  return order.filter((name) => runs.has(name)).map((name) => summary(name, runs.get(name)));
}

function summary(name, runs) {
  const nanoseconds = { ns: 1, us: 1e3, ms: 1e6, s: 1e9 }[runs[0].time_unit];
  const times = runs.map((run) => run.real_time * nanoseconds).sort((a, b) => a - b);
  const median = times[times.length >> 1];
  const fitting = runs.find((run) => run.real_time * nanoseconds === median);
  const label = runs[0].label ?? '';
  return {
    name: name.replace(/\/(real_time|process_time|threads:1)/g, '').replace(label ? /\/\d+$/ : '', ''),
    label,
    time: median,
    spread: (times.at(-1) - times[0]) / 2 / median,
    // Given by the processor's time; wanted by the clock's.
    rate: fitting.bytes_per_second * fitting.cpu_time / fitting.real_time,
  };
}

function three_digits(value) {
  const digits = Math.max(0, 2 - Math.floor(Math.log10(value)));
  return value >= 1000 ? Math.round(value).toString() : value.toFixed(digits);
}

function scaled(value, base, units) {
  let unit = 0;
  while (value >= base && unit < units.length - 1) {
    value /= base;
    ++unit;
  }
  return `${three_digits(value)} ${units[unit]}`;
}

const time_text = (time) => scaled(time, 1000, ['ns', 'µs', 'ms', 's']);
const rate_text = (rate) => (rate ? scaled(rate / 1e6, 1000, ['MB/s', 'GB/s']) : '');
const spread_text = (spread) => `±${three_digits(Math.max(spread * 100, 0.1))} %`;

const table = (rows) => [rows[0], rows[0].map(() => '---'), ...rows.slice(1)]
  .map((cells) => `| ${cells.join(' | ')} |`).join('\n');

function list(figures) {
  const has_label = figures.some((figure) => figure.label);
  const has_rate = figures.some((figure) => figure.rate);
  return table([
    ['', ...(has_label ? ['what'] : []), 'median', 'spread', ...(has_rate ? ['rate'] : [])],
    ...figures.map((figure) => [
      `\`${figure.name}\``, ...(has_label ? [figure.label] : []), time_text(figure.time), spread_text(figure.spread),
      ...(has_rate ? [rate_text(figure.rate)] : []),
    ]),
  ]);
}

// One row for what was measured at several sizes, a column for each size.
function by_size(figures) {
  const sizes = [...new Set(figures.map((figure) => figure.name.split('/')[1]))];
  const names = [...new Set(figures.map((figure) => figure.name.split('/')[0]))];
  const find = (name, size) => figures.find((figure) => figure.name === `${name}/${size}`);
  const cell = (figure) => figure
    ? [time_text(figure.time), rate_text(figure.rate), spread_text(figure.spread)].filter(Boolean).join(', ') : '';
  return table([['', ...sizes], ...names.map((name) => [`\`${name}\``, ...sizes.map((size) => cell(find(name, size)))])]);
}

function tables(name) {
  const figures = measure(name);
  const sized = figures.filter((figure) => /^[^/]+\/\d+$/.test(figure.name) && !figure.label);
  const plain = figures.filter((figure) => !sized.includes(figure));
  const groups = new Map();
  for (const figure of sized) {
    const key = figure.name.split('/')[0];
    groups.set(key, [...(groups.get(key) ?? []), figure]);
  }
  const by_columns = new Map();
  for (const group of groups.values()) {
    const key = group.map((figure) => figure.name.split('/')[1]).join();
    by_columns.set(key, [...(by_columns.get(key) ?? []), ...group]);
  }
  return [...[...by_columns.values()].map(by_size), ...(plain.length ? [list(plain)] : [])].join('\n\n');
}

function shown(name) {
  if (!name.includes('.mjs')) return tables(name);
  const [script, ...args] = name.split(' ');
  return `\`\`\`\n${execFileSync('node', [join(scripts, script), ...args], { encoding: 'utf8' })}\`\`\``;
}

const [first, ...rest] = process.argv.slice(2);
if (first === '--into') {
  const [document, ...names] = rest;
  fill(document, (name) => {
    // That one installs what it compares with, so it is run by itself: `./dev bench peers --into DOCUMENT`.
    if (name === 'peers' || (names.length && !names.includes(name))) return undefined;
    console.log(name);
    return shown(name);
  });
} else {
  for (const name of [first, ...rest].filter(Boolean)) console.log(`${name}\n\n${shown(name)}\n\n${machine()}\n`);
}
