// Sections of a document that benchmarks write: what stands between `<!-- NAME -->` and `<!-- end -->`.
import { readFileSync, writeFileSync } from 'node:fs';
import { cpus } from 'node:os';

export const machine = () =>
  `${new Date().toISOString().slice(0, 10)}, ${cpus()[0].model.trim()}, ${cpus().length} cores, Debian 12, ` +
  'release build.';

// Writes what `shown` says of each name, and where and when; a section that it says nothing of stays.
export function fill(document, shown) {
  const text = readFileSync(document, 'utf8');
  writeFileSync(document, text.replace(/(<!-- (\w[^>]*) -->\n)[^]*?(<!-- end -->)/g, (whole, start, name, end) => {
    const section = shown(name);
    return section === undefined ? whole : `${start}\n${section}\n\nMeasured ${machine()}\n\n${end}`;
  }));
}
