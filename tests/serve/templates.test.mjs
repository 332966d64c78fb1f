// Templates of a running host: parsed once, until their file's time is another.
import assert from 'node:assert/strict';
import { rm, utimes, writeFile } from 'node:fs/promises';
import { join } from 'node:path';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { serve } from './site.mjs';

const folder = fileURLToPath(new URL('templates', import.meta.url));

test('a template is parsed again when the time of its file changes, and only then', async () => {
  const site = await serve(folder);
  const file = join(site.folder, 'parts', 't.html');
  const write = async (text, time) => {
    await writeFile(file, text);
    await utimes(file, time, time);
  };
  const show = async () => (await (await fetch(site.address)).text()).trim();
  const then = new Date('2020-01-02T03:04:05Z');
  const later = new Date(then.getTime() + 1);  // a thousandth of a second
  try {
    await write('first', then);
    assert.equal(await show(), 'first');
    await write('second', then);
    assert.equal(await show(), 'first', 'what was parsed is drawn');
    await write('second', later);
    assert.equal(await show(), 'second');
    await write('third', then);
    assert.equal(await show(), 'third', 'an earlier time is another time');
    await write('fourth', then);
    assert.equal(await show(), 'third');
    await rm(file);
    assert.equal((await fetch(site.address)).status, 500, 'the file is read in any case');
  } finally {
    assert.equal(await site.stop(), 0, site.log.join('\n'));
  }
});
