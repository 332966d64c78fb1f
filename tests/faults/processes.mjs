// What a host's processes hold, as the system tells it.
import { readFile, readdir, readlink, stat } from 'node:fs/promises';

// The process, and those that it has started.
export async function family(pid) {
  const children = await readFile(`/proc/${pid}/task/${pid}/children`, 'utf8');
  return [pid, ...children.split(' ').filter(Boolean).map(Number)];
}

// Mebibytes: what is shared with others counts in part.
export async function proportionalMemory(pids) {
  const each = await Promise.all(pids.map((pid) => readFile(`/proc/${pid}/smaps_rollup`, 'utf8')));
  return each.reduce((all, text) => all + Number(text.match(/^Pss:\s+(\d+)/m)[1]), 0) / 1024;
}

// Open files, threads, and bytes in files without a name.
export async function holdings(pids) {
  const held = { files: 0, threads: 0, spooled: 0 };
  for (const pid of pids) {
    held.threads += (await readdir(`/proc/${pid}/task`)).length;
    for (const number of await readdir(`/proc/${pid}/fd`)) {
      const file = `/proc/${pid}/fd/${number}`;
      const name = await readlink(file).catch(() => '');
      if (name) held.files++;
      if (!name.startsWith('/') || !name.endsWith(' (deleted)')) continue;
      held.spooled += (await stat(file).catch(() => ({ size: 0 }))).size;
    }
  }
  return held;
}
