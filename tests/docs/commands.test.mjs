// What documents have their reader type exists: commands of ./dev and of zelto, and options of the latter.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { readFileSync, readdirSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';

const root = fileURLToPath(new URL('../..', import.meta.url));
const documents = ['README.md', 'CONTRIBUTING.md', 'SECURITY.md', ...readdirSync(join(root, 'docs')).map((name) => join('docs', name)),
  ...readdirSync(process.env.EXAMPLES).map((name) => join('examples', name, 'README.md'))].filter((name) => name.endsWith('.md'));
const texts = documents.flatMap((name) => {
  try {
    return [readFileSync(join(root, name), 'utf8')];
  } catch {
    return [];  // an example without a page
  }
}).join('\n');
const code = [...texts.matchAll(/^```\w*\n([^]*?)^```|`([^`\n]+)`|^ {4}(.*)$/gm)].map((found) => found[1] ?? found[2] ?? found[3]).join('\n');
const all = (text, pattern) => new Set([...text.matchAll(pattern)].map(([, word]) => word));
const zelto = (...words) => execFileSync(process.env.ZELTO, words, { encoding: 'utf8' });

test('every command of ./dev', () => {
  const known = all(execFileSync(join(root, 'dev'), ['help'], { encoding: 'utf8' }), /^ {2}([a-z]+)/gm);
  const used = all(code, /(?:^|[\s`])\.\/dev ([a-z]+)/gm);
  assert.ok(used.size > 5 && used.has('build'), [...used].join());
  assert.deepEqual([...used].filter((word) => !known.has(word)), []);
});

test('every command of zelto, with its options', () => {
  const lines = [...code.matchAll(/(?:^|\/)zelto (?!--|\w+ --help)([a-z]+)(.*)$/gm)].map(([, command, rest]) => [command, rest.replace(/ #.*/, '')]);
  assert.ok(lines.length > 10, `${lines.length}`);
  for (const [command, rest] of lines) {
    const usage = zelto(command, '--help');
    for (const option of all(rest, / (--[a-z][\w-]*)/g)) assert.ok(usage.includes(`${option} `) || usage.includes(`${option}\n`), `zelto ${command} ${option}`);
  }
});
