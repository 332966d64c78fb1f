// What `zelto init` makes is served, and passes its own test.
import assert from 'node:assert/strict';
import { execFile } from 'node:child_process';
import { mkdtemp, readFile, rm, writeFile } from 'node:fs/promises';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';
import { promisify } from 'node:util';
import { serve } from './site.mjs';

const run = promisify(execFile);

test('a new site is served, and passes its own test', async () => {
  const folder = await mkdtemp(join(tmpdir(), 'new-'));
  try {
    const made = join(folder, "a site, Ann's");
    const { stdout } = await run(process.env.ZELTO, ['init', made]);
    // What it says to type next, a shell reads as it was meant.
    const [, serving, testing] = stdout.match(/^ {2}zelto serve (.*) --debug {2,}# .*\n {2}sh (.*?) {2,}# /m);
    assert.equal((await run('sh', ['-c', `printf '%s|' ${serving} ${testing}`])).stdout, `${made}|${made}/test.sh|`);
    const site = await serve(made);
    try {
      const words = (await run('sh', [join(made, 'test.sh'), site.address.replace(/\/$/, '')])).stdout;
      assert.equal(words.match(/^ok /gm).length, 5, words);
      for (const own of ['test.sh', 'README.md', 'app_data/list.db'])
        assert.equal((await fetch(new URL(own, site.address))).status, 404, own);
      await writeFile(join(site.folder, 'templates', 'page.html'), '<h2>(#!#)');
      await assert.rejects(run('sh', [join(made, 'test.sh'), site.address.replace(/\/$/, '')]), ({ stdout }) => /^FAIL/m.test(stdout));
    } finally {
      assert.equal(await site.stop(), 0, site.log.join('\n'));
    }
    // Its settings are the defaults, once they are no comments.
    const settings = await readFile(join(made, 'zelto.toml'), 'utf8');
    const folderOfLog = settings.replace(/^# log = .*$/m, '# log = "a.log"');
    await writeFile(join(made, 'zelto.toml'), folderOfLog.replace(/^# (?=\w+ = )/gm, ''));
    assert.equal(await (await serve(made)).stop(), 0);
    await assert.rejects(run(process.env.ZELTO, ['init', made]), /is not empty; a new site takes a folder of its own/);
  } finally {
    await rm(folder, { recursive: true });
  }
});
