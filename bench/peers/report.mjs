// The figures as tables in Markdown.
const table = (rows) => [rows[0], rows[0].map((_, at) => (at ? '---:' : '---')), ...rows.slice(1)]
  .map((cells) => `| ${cells.join(' | ')} |`).join('\n');

const digits = (value) => (value >= 100 ? value.toFixed(0) : value >= 10 ? value.toFixed(1) : value.toFixed(2));
const micro = (seconds) => digits(seconds * 1e6);
const percent = (share) => `±${(share * 100).toFixed(0)} %`;

export function figures(rows) {
  return table([
    ['', 'bytes', 'CPU (µs)', 'spread', 'requests/s', '50 % (ms)', '99 % (ms)', 'memory (MiB)'],
    ...rows.map((row) => [
      row.name, row.bytes, micro(row.processor), percent(row.spread), row.rate.toFixed(0), row.half.toFixed(2),
      row.most.toFixed(2), row.memory.toFixed(0),
    ]),
  ]);
}

// A goal is { row, limits }, each limit { times, of } for so many times another row, or { seconds }.
export function goals(rows, list) {
  const find = (key) => rows.find((row) => row.key === key);
  const limit = ({ times, of, seconds }) => (of ? times * find(of).processor : seconds);
  const words = ({ times, of, seconds }) =>
    of ? `≤ ${times.toFixed(2)} × ${find(of).short}` : `≤ ${micro(seconds)} µs`;
  const is = (processor, { of }) =>
    of ? `${(processor / find(of).processor).toFixed(2)} ×` : `${micro(processor)} µs`;
  const verdict = (processor, one) => (processor <= limit(one) ? 'yes' : 'no');
  return table([
    ['', 'must', 'is', 'holds', 'reach for', 'is', 'holds'],
    ...list.map(({ row, must, reach }) => {
      const { name, processor } = find(row);
      const cells = (one) => (one ? [words(one), is(processor, one), verdict(processor, one)] : ['', '', '']);
      return [name, ...cells(must), ...cells(reach)];
    }),
  ]);
}

// `rows` has those of each name one after the other, in the order of the counts.
export function crowds(counts, rows) {
  const cell = ({ processor, spread, rate, connections }, at) =>
    `${micro(processor)} ${percent(spread)}, ${rate.toFixed(0)}${connections === counts[at] ? '' : ` (${connections})`}`;
  const lines = [];
  for (let at = 0; at < rows.length; at += counts.length)
    lines.push([rows[at].name, ...rows.slice(at, at + counts.length).map(cell)]);
  return table([['', ...counts.map(String)], ...lines]);
}

export function grown({ title, unit, counts, whats, results }) {
  const cell = (what, count) => {
    const { processor, units, spread } = results.find((one) => one.what === what && one.count === count);
    return `${micro(processor / units)} ${percent(spread)}`;
  };
  return table([
    [`µs for ${unit}, of so many ${title}`, ...counts.map((count) => count.toLocaleString('en'))],
    ...whats.map((what) => [what, ...counts.map((count) => cell(what, count))]),
  ]);
}
