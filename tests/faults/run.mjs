// What the host bears:  node tests/faults/run.mjs [NAME [NUMBER]]…
//
// Each fault starts a host of its own, does to it what its name says while good clients go on asking, and tells what was
// measured beside what it must be. The exit code is 1 when one does not hold. A number is for the fault before it; what
// takes many minutes runs only when it is named: soak [REQUESTS], soak_of_two_workers [REQUESTS].
import { clocks } from './clock.mjs';
import { slow } from './slow.mjs';
import { soaks } from './soak.mjs';
import { uploads_left } from './uploads.mjs';
import { used_up } from './used_up.mjs';
import { writes } from './writes.mjs';

const wanted = new Map();
for (const word of process.argv.slice(2)) {
  const last = [...wanted.keys()].at(-1);
  if (/^\d+$/.test(word) && last) wanted.set(last, Number(word));
  else wanted.set(word, undefined);
}
const usual = { ...slow, ...used_up, ...uploads_left, ...writes, ...clocks };
const faults = { ...usual, ...soaks };
const unknown = [...wanted.keys()].filter((name) => !faults[name]);
if (unknown.length) {
  console.error(`there is no fault ${unknown.join(', ')}; there are ${Object.keys(faults).join(', ')}`);
  process.exit(2);
}

let failed = 0;
for (const [name, fault] of Object.entries(faults)) {
  if (wanted.size ? !wanted.has(name) : !usual[name]) continue;
  const began = performance.now();
  let rows;
  try {
    rows = await fault(wanted.get(name));
  } catch (error) {
    rows = [{ what: 'runs to its end', is: error.message, must: '', holds: false }];
  }
  for (const { what, is, must, holds } of rows) {
    if (!holds) failed++;
    console.log(`${holds ? 'ok  ' : 'FAIL'}  ${name.padEnd(19)} ${what.padEnd(46)} ${String(is).padStart(14)}  ${must}`);
  }
  console.log(`      ${name.padEnd(19)} ${((performance.now() - began) / 1000).toFixed(1)} s`);
}
process.exit(failed ? 1 : 0);
