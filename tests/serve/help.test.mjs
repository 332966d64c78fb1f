// `zelto help` has an entry for whatever a page can name.
import assert from 'node:assert/strict';
import { execFile } from 'node:child_process';
import { readFile, readdir } from 'node:fs/promises';
import { join } from 'node:path';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';

const root = fileURLToPath(new URL('../..', import.meta.url));
const source = (name) => readFile(join(root, name), 'utf8');
const help = (...names) => new Promise((resolve) => {
  execFile(process.env.ZELTO, ['help', '--', ...names], (error, stdout, stderr) => resolve({ code: error?.code ?? 0, stdout, stderr }));
});
const matches = (text, pattern) => [...text.matchAll(pattern)].map(([, name]) => name);

async function haveEntries(names) {
  const { code, stderr } = await help(...names);
  assert.equal(code, 0, stderr);
}

test('every member of the component', async () => {
  const tables = await source('mirt/frame/member_tables.cpp');
  const names = matches(tables, /\(L"(\w+)"\)|\.name = L"(\w+)"/g).concat(matches(tables, /\.name = L"(\w+)"/g)).filter(Boolean);
  assert.ok(names.length > 60 && names.includes('SetView') && names.includes('ToCommand'), names.join());
  await haveEntries(names);
});

for (const [object, file] of [['Request', 'request_object'], ['Response', 'response_object'], ['Server', 'server_object'],
  ['Session', 'session_object'], ['Application', 'application']]) {
  test(`every member of ${object}`, async () => {
    const table = (await source(`host/zelto/intrinsics/${file}.cpp`)).match(/korlib::Member table\[\] = \{([^]*?)\n {2}\};/)[1];
    const names = matches(table, /\(L"(\w+)"\)/g);
    assert.ok(names.length > 3, table);
    await haveEntries(names.map((name) => `${object}.${name}`));
  });
}

test('a mark with a backtick', async () => {
  const { stdout } = await help("(#`#)");
  assert.match(stdout, /\(#`lists\\rows#\)/);
});

test('every type of mark', async () => {
  const types = matches(await source('mirt/templator/marks.h'), /\{L'(\\?.)', MarkSource/g).map((type) => type.at(-1));
  assert.equal(types.length, 17);
  await haveEntries(types);
  await haveEntries(types.map((type) => `(#${type}name#)`));
});

test('every event', async () => {
  const names = new Set();
  for (const file of await readdir(join(root, 'mirt/page')))
    for (const name of matches(await source(join('mirt/page', file)), /L"(On(?:Command|DrawTemplate|Template|Draw|_\w+)_?\w*)"/g)) names.add(name);
  assert.ok(names.has('On_StartDraw') && names.has('OnCommand_'), [...names].join());
  // What the component draws itself stands in marks without what begins the name of a script's function.
  await haveEntries([...names].map((name) => (name.endsWith('_') ? `${name}Name` : name.replace(/^OnDraw_(?=_)/, ''))));
});

test('every key of zelto.toml', async () => {
  const { stdout } = await new Promise((resolve) => {
    execFile(process.env.ZELTO, ['serve', '--help'], (error, out) => resolve({ stdout: out }));
  });
  const keys = matches(stdout, /^ {2}(\w+) = /gm);
  assert.ok(keys.length > 20, stdout);
  await haveEntries(keys);
});

test('every property of an error in a template', () => haveEntries(['template', 'line', 'column', 'mark', 'templates'].map((name) => `e.${name}`)));

test('every sign that marks are made of', async () => {
  const { stdout, stderr } = await help('(#', '#)', '#|#', '|', '^', '#');
  assert.equal(stderr, '');
  for (const sign of ['(#: opens', '#): closes', '|: begins its first', '#|#: begins each further', '^: in front of', '#: text'])
    assert.ok(stdout.includes(`docs/templates.md, What a mark is made of:\n  ${sign}`), stdout);
});

test('a word is found in the text where nothing is called so', async () => {
  const { code, stdout } = await help('logrotate');
  assert.equal(code, 0);
  assert.match(stdout, /^docs\/serving\.md, The log:\n/);
  assert.equal((await help('ogrotate')).code, 1, 'a part of a word is none');
  assert.equal((await help('')).code, 1);
});

test('a mark is found without its bracket, an option as it is given, a letter in no text', async () => {
  const told = (...names) => new Promise((resolve) => {
    execFile(process.env.ZELTO, ['help', ...names], (error, stdout, stderr) => resolve({ code: error?.code ?? 0, stdout, stderr }));
  });
  assert.equal((await told('#*')).stdout, (await told('(#*#)')).stdout);
  assert.equal((await told('#%Rows')).stdout, (await told('(#%Rows#)')).stdout);
  assert.match((await told('--workers')).stdout, /^docs\/commands\.md, serve:\n {2}--workers NUMBER/);
  assert.match((await told('uploads', '--strict')).stdout, /--strict: fails for warnings/);
  assert.match((await told('--wrkers')).stderr, /nothing about '--wrkers'; did you mean/);
  const { code, stdout, stderr } = await told('a', 'b');
  assert.deepEqual([code, stdout], [1, '']);
  assert.match(stderr, /nothing about 'a'.*\n.*nothing about 'b'/);
});

test('an object without the member behind its point is the object, a blank is nothing', async () => {
  assert.equal((await help('Response.')).stdout, (await help('Response')).stdout);
  assert.equal((await help(' DateAdd ')).stdout, (await help('DateAdd')).stdout);
  const { code, stdout } = await help(' ');
  assert.deepEqual([code, stdout], [1, '']);
});

test('an object is told of by its members', async () => {
  assert.match((await help('console')).stdout, /^docs\/pages\.md, Errors:\n {2}console\.log, info, warn/);
});

test('every word of VBScript', async () => {
  const functions = matches(await source('host/zelto/vbscript/functions.cpp'), /L"(\w+)"/g);
  const constants = matches(await source('host/zelto/vbscript/constants.cpp'), /L"(\w+)"/g);
  const words = matches(await source('host/zelto/vbscript/words.cpp'), /L"(\w+)"/g);
  assert.ok(functions.includes('dateadd') && constants.includes('vbcrlf') && words.includes('redim'), [functions, constants, words].join());
  await haveEntries([...functions, ...constants, ...words, 'For Each', 'Select Case', 'On Error Resume Next', 'Option Explicit']);
});

test('a word of VBScript is told of where it stands', async () => {
  for (const [name, told] of [
    ['DateAdd', 'Functions:\n  DateAdd(unit, n, d) DateDiff('],
    ['For Each', 'Statements:\n  For Each: through the elements'],
    ['select case', 'Statements:\n  Select Case Case Case Else'],
    ['vbCrLf', 'Constants:\n  vbCrLf vbNewLine'],
    ['13', 'Errors:\n  13: Type mismatch\n'],
    ['0x800a000d', 'Errors:\n  13: Type mismatch\n'],
    ['0x800A0400', 'Errors:\n  1024: Expected statement\n'],
  ]) {
    const { stdout } = await help(name);
    assert.ok(stdout.startsWith(`docs/vbscript.md, ${told}`), `${name}: ${stdout}`);
  }
  assert.doesNotMatch((await help('(#^#)')).stdout, /vbscript/, 'an operator is no mark');
});

test('a short word of VBScript is not what was meant', async () => {
  assert.doesNotMatch((await help('Rndd')).stderr, /did you mean/);
  assert.match((await help('DateAd')).stderr, /did you mean 'DateAdd'/);
});

// The lists of docs/README.md for whoever writes pages and runs sites, but for the figures, which benchmarks write, and
// the pages of the others in VBScript.
const listed = (await source('docs/README.md')).split('To change the programs:')[0];
const documents = matches(listed, /^- \[(\w+)\.md\]/gm).filter((name) => name !== 'figures' && name !== 'vbscript_examples');

test('every document, and every word of a title in one', async () => {
  assert.ok(documents.length > 10, documents.join());
  await haveEntries(documents);
  const words = new Set(['sessions', 'uploads', 'caching', 'session', 'upload']);
  for (const document of documents) {
    const prose = (await source(`docs/${document}.md`)).replace(/^```[^]*?^```/gm, '');
    for (const heading of matches(prose, /^#+ (.*)$/gm)) for (const word of heading.match(/[A-Za-z]{4,}/g) ?? []) words.add(word);
  }
  await haveEntries([...words]);
});

test('without a name, the documents are listed', async () => {
  const { code, stdout } = await help();
  assert.equal(code, 0);
  assert.deepEqual(matches(stdout, /^ {2}(\w+) {2,}\S/gm).sort(), documents.sort());
});

test('a topic is told of by its sections, a section as a whole', async () => {
  const { stdout: topic } = await help('templates');
  assert.match(topic, /^docs\/templates\.md, Templates: .*:\n {2}A template is the text of a page/);
  assert.match(topic, /\n {2}Sections: What a mark is made of, Values, /);
  const { stdout: section } = await help('uploads');
  assert.match(section, /^docs\/controller\.md, Uploads:\n/);
  assert.match(section, /\bFileName2\b/);
});

for (const command of ['init', 'serve', 'run', 'check', 'help', 'register']) {
  test(`${command} is told of, with the options that it has`, async () => {
    const { stdout } = await help(command);
    assert.match(stdout, new RegExp(`^docs/commands\\.md, ${command}:\n`));
    const section = stdout.match(/^docs\/commands[^]*?(?=^docs\/|$(?![^]))/m)[0];
    const usage = await new Promise((resolve) => {
      execFile(process.env.ZELTO, [command, '--help'], (error, out) => resolve(out));
    });
    const options = (text) => matches(text, /^ {2}(--\w[\w-]*)/gm).sort();
    assert.deepEqual(options(section), options(usage.replace(/--help/g, '')));
  });
}

test('an entry says where it stands, in any letter case', async () => {
  for (const name of ['Response.Redirect', 'rESPONSE.redirect']) {
    const { stdout } = await help(name);
    assert.equal(stdout, 'docs/objects.md, Response:\n  Redirect(url): answers 302 and ends the page\n\n');
  }
});

test('a member that several objects have is told of all', async () => {
  const { stdout } = await help('LCID');
  assert.deepEqual(matches(stdout, /^docs\/(.*):$/gm), ['objects.md, Response', 'objects.md, Session and Application']);
});

test('a mistyped name is told the nearest', async () => {
  const { code, stdout, stderr } = await help('SetVeiw');
  assert.equal(code, 1);
  assert.equal(stdout, '');
  assert.equal(stderr, "zelto: the documents say nothing about 'SetVeiw'; did you mean 'SetView'?\n");
  assert.equal((await help('Response.SetView')).code, 1);
});
