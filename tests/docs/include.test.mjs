// The include for databases that docs/databases.md shows is that of a new site, and its page prints what stands there.
import assert from 'node:assert/strict';
import { execFile } from 'node:child_process';
import { mkdir, mkdtemp, readFile, rm, writeFile } from 'node:fs/promises';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { promisify } from 'node:util';

const run = promisify(execFile);
const document = await readFile(fileURLToPath(new URL('../../docs/databases.md', import.meta.url)), 'utf8');
const block = (info) => document.match(new RegExp('^```' + info + '\n([^]*?)^```', 'm'))[1];

test('the include is that of a new site, and serves a page', async () => {
  const folder = await mkdtemp(join(tmpdir(), 'include-'));
  try {
    await run(process.env.ZELTO, ['init', join(folder, 'site')]);
    assert.equal(block('asp database\\.inc'), await readFile(join(folder, 'site', 'database.inc'), 'utf8'));
    await mkdir(join(folder, 'own', 'app_data'), { recursive: true });
    for (const name of ['database.inc', 'list.asp']) await writeFile(join(folder, 'own', name), block(`asp ${name.replace('.', '\\.')}`));
    const { stdout, stderr } = await run(process.env.ZELTO, ['run', join(folder, 'own', 'list.asp')]);
    assert.deepEqual([stdout.trim(), stderr], [block('output').trim(), '']);
  } finally {
    await rm(folder, { recursive: true });
  }
});
