// Each piece of code in the tutorial stands in the site that it leads to.
import assert from 'node:assert/strict';
import { readdirSync, readFileSync, statSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';

const root = fileURLToPath(new URL('../..', import.meta.url));
const tutorial = readFileSync(join(root, 'docs', 'tutorial.md'), 'utf8');

const filesIn = (folder) => readdirSync(folder).map((name) => join(folder, name)).flatMap((path) =>
  statSync(path).isDirectory() ? filesIn(path) : [path]);
const site = filesIn(join(root, 'examples', 'todo')).filter((path) => !path.includes('app_data'))
  .map((path) => readFileSync(path, 'utf8'));
const blocks = [...tutorial.matchAll(/^```(?:asp|html|toml)\n([^]*?)^```/gm)].map(([, code]) => code.trimEnd());

test('the tutorial shows code', () => assert.ok(blocks.length >= 12, `${blocks.length}`));
for (const block of blocks) {
  test(`the site has ${JSON.stringify(block.slice(0, 60))}`, () => {
    assert.ok(site.some((text) => text.includes(block)), block);
  });
}
