// The page that the README shows prints what the README says.
import assert from 'node:assert/strict';
import { execFile } from 'node:child_process';
import { readFile } from 'node:fs/promises';
import { join } from 'node:path';
import { test } from 'node:test';
import { promisify } from 'node:util';

const hello = join(process.env.EXAMPLES, 'hello');
const run = promisify(execFile);

test('the README shows the first page, its template and what it prints', async () => {
  const readme = await readFile(process.env.README, 'utf8');
  for (const file of ['default.asp', 'templates/hello.html'])
    assert.ok(readme.includes(await readFile(join(hello, file), 'utf8')), file);
  const command = readme.match(/zelto run examples\/hello\/default\.asp --query '(.*)'/);
  const { stdout } = await run(process.env.ZELTO, ['run', join(hello, 'default.asp'), '--query', command[1]]);
  assert.ok(stdout.includes('<p>'), stdout);
  assert.ok(readme.includes(stdout.trim()), stdout);
});
