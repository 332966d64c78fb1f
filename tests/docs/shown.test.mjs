// Files that a document shows under their names, with a command and what it prints: "```asp NAME", "```sh", "```output".
import assert from 'node:assert/strict';
import { execFile } from 'node:child_process';
import { mkdir, mkdtemp, readFile, rm, writeFile } from 'node:fs/promises';
import { tmpdir } from 'node:os';
import { delimiter, dirname, join } from 'node:path';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { promisify } from 'node:util';

const run = promisify(execFile);
const environment = { ...process.env, PATH: dirname(process.env.ZELTO) + delimiter + process.env.PATH };
const textOf = (name) => readFile(fileURLToPath(new URL(`../../docs/${name}`, import.meta.url)), 'utf8');
const blocksOf = (text) => [...text.matchAll(/^```(\w+)(?: (\S+\.\w+))?\n([^]*?)^```$/gm)]
  .map(([, language, file, code]) => ({ language, file, code }));
const lines = (text) => text.trim().split('\n').filter((line) => line.trim() !== '');

for (const [document, commands] of [['databases.md', 1], ['controller.md', 2], ['vbscript_examples.md', 3]]) {
  test(`${document} shows files, and what running them prints`, async () => {
    const folder = await mkdtemp(join(tmpdir(), 'shown-'));
    try {
      await mkdir(join(folder, 'app_data'));
      let ran = 0, printed;
      for (const { language, file, code } of blocksOf(await textOf(document))) {
        if (file) {
          await mkdir(dirname(join(folder, file)), { recursive: true });
          await writeFile(join(folder, file), code);
        } else if (language === 'sh') {
          printed = await run('sh', ['-c', `${code.trim()} --debug`], { cwd: folder, env: environment });
        } else if (language === 'output') {
          assert.deepEqual([lines(printed.stdout), printed.stderr], [lines(code), '']);
          ++ran;
        }
      }
      assert.equal(ran, commands);
    } finally {
      await rm(folder, { recursive: true });
    }
  });
}

test('the include for databases is that of a new site', async () => {
  const folder = await mkdtemp(join(tmpdir(), 'shown-'));
  try {
    await run(process.env.ZELTO, ['init', join(folder, 'site')]);
    const shown = blocksOf(await textOf('databases.md')).find(({ file }) => file === 'database.inc').code;
    assert.equal(shown, await readFile(join(folder, 'site', 'database.inc'), 'utf8'));
  } finally {
    await rm(folder, { recursive: true });
  }
});
