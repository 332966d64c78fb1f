// Every link from one document to another, or to a place in it, leads somewhere.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { existsSync, readFileSync } from 'node:fs';
import { dirname, join, normalize } from 'node:path';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';

const root = fileURLToPath(new URL('../..', import.meta.url));
const documents = execFileSync('find', ['.', '-name', '*.md', '-not', '-path', './build/*', '-not', '-path',
  '*/node_modules/*'], { cwd: root, encoding: 'utf8' }).trim().split('\n').map(normalize);

// The text without blocks of code.
const prose = (file) => readFileSync(join(root, file), 'utf8').replace(/^```[^]*?^```/gm, '');

// What a heading is called in a link.
const anchors = (file) => [...prose(file).matchAll(/^#+ +(.*)$/gm)].map(([, title]) =>
  title.toLowerCase().replace(/[^\p{L}\p{N} _-]/gu, '').replaceAll(' ', '-'));

test('there are documents', () => assert.ok(documents.includes('README.md') && documents.length > 5, documents.join()));

for (const file of documents) {
  test(`the links of ${file} lead somewhere`, () => {
    for (const [, link] of prose(file).replace(/`[^`\n]*`/g, '').matchAll(/\]\(([^)\s]+)\)/g)) {
      if (/^[a-z]+:/.test(link)) continue;
      const [path, anchor] = link.split('#');
      const target = path ? normalize(join(dirname(file), path)) : file;
      assert.ok(existsSync(join(root, target)), `${link} in ${file}`);
      if (anchor) assert.ok(anchors(target).includes(anchor), `${link} in ${file}: there are ${anchors(target).join(', ')}`);
    }
  });
}

// So that a reader who came to one page of docs/ finds the others.
const pages = documents.filter((file) => dirname(file) === 'docs' && file !== 'docs/README.md' && file !== 'docs/figures.md');
const linksOf = (file) => [...prose(file).matchAll(/\]\((\w+\.md)/g)].map(([, link]) => link);
test('the index has every page', () => assert.deepEqual([...new Set(linksOf('docs/README.md'))].sort(),
  [...pages, 'docs/figures.md'].map((file) => file.slice(5)).sort()));
for (const page of pages) {
  test(`${page} has a title of its own and leads to its neighbours`, () => {
    const [, title] = prose(page).match(/^# (.*)\n/);
    assert.ok(title.split(' ').length >= 4, title);
    assert.ok(linksOf(page).length > 0);
  });
}
