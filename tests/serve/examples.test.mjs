// The page that the README shows prints what the README says.
import assert from 'node:assert/strict';
import { execFile } from 'node:child_process';
import { existsSync } from 'node:fs';
import { readFile, readdir } from 'node:fs/promises';
import { dirname, join } from 'node:path';
import { test } from 'node:test';
import { promisify } from 'node:util';
import { serve } from './site.mjs';

const hello = join(process.env.EXAMPLES, 'hello');
const run = promisify(execFile);

test('the README shows the first page, its template and what it prints', async () => {
  const readme = await readFile(process.env.README, 'utf8');
  for (const file of ['default.asp', 'templates/hello.html'])
    assert.ok(readme.includes(await readFile(join(hello, file), 'utf8')), file);
  // As typed in the folder of the README; only the program may have been built elsewhere.
  const [, command] = readme.match(/`build\/release\/bin\/(zelto run .*)` prints/);
  const { stdout } = await run('sh', ['-c', command.replace('zelto', '"$ZELTO"')], { cwd: dirname(process.env.README) });
  assert.ok(stdout.includes('<p>'), stdout);
  assert.ok(readme.includes(stdout.trim()), stdout);
});

for (const { name } of (await readdir(process.env.EXAMPLES, { withFileTypes: true }))) {
  if (!existsSync(join(process.env.EXAMPLES, name, 'default.asp'))) continue;
  test(`opening ${name} gives no warning`, async () => {
    const site = await serve(name, '--debug');
    try {
      assert.equal((await fetch(site.address)).status, 200);
    } finally {
      assert.equal(await site.stop(), 0, site.log.join('\n'));
    }
    assert.deepEqual(site.log.filter((line) => !/ "GET \/ HTTP\/1\.1" 200 /.test(line)), []);
  });
}

for (const [example, page] of [['gallery', ''], ['toolbox', ''], ['notebook', 'visits.asp']]) {
  test(`a command that ${example} does not have is not found`, async () => {
    const site = await serve(example);
    try {
      const body = new FormData();
      body.set('c', 'Nonsense');
      for (const answer of [await fetch(site.address + page + '?c=Nonsense'),
        await fetch(site.address + page, { method: 'POST', body })]) {
        assert.equal(answer.status, 404);
        assert.equal((await answer.text()).trim(), 'There is no such page.');
      }
      assert.equal((await fetch(site.address + page)).status, 200);
    } finally {
      assert.equal(await site.stop(), 0, site.log.join('\n'));
    }
  });
}
