// The page that the README shows prints what the README says.
import assert from 'node:assert/strict';
import { execFile } from 'node:child_process';
import { readFile } from 'node:fs/promises';
import { dirname, join } from 'node:path';
import { test } from 'node:test';
import { promisify } from 'node:util';

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
