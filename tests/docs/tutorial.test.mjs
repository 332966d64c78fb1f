// The tutorial, followed by its words alone: what it says to type is typed, what it says to write is written, and after
// each table row the browser shows what stands there. What comes of it is examples/todo.
import assert from 'node:assert/strict';
import { execFile, spawn } from 'node:child_process';
import { once } from 'node:events';
import { existsSync } from 'node:fs';
import { mkdtemp, readFile, readdir, rm, writeFile } from 'node:fs/promises';
import { tmpdir } from 'node:os';
import { delimiter, dirname, join } from 'node:path';
import { createInterface } from 'node:readline';
import { after, test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { promisify } from 'node:util';
import { png } from '../serve/pictures.mjs';
import { Reader } from './reader.mjs';
import { changed, stepsOf } from './steps.mjs';

const root = fileURLToPath(new URL('../..', import.meta.url));
const run = promisify(execFile);
const steps = stepsOf(await readFile(join(root, 'docs', 'tutorial.md'), 'utf8'));
const folder = await mkdtemp(join(tmpdir(), 'tutorial-'));
const site = join(folder, 'todo');
const environment = { ...process.env, PATH: dirname(process.env.ZELTO) + delimiter + process.env.PATH };
const picture = png(2, 1, [200, 30, 30]);
const reader = new Reader(picture);
let host;

async function stopHost() {
  if (!host) return;
  const ended = once(host, 'close');
  host.kill('SIGINT');  // Ctrl-C
  assert.deepEqual(await ended, [0, null], host.log.join('\n'));
  assert.deepEqual(host.log.filter((line) => /warning|error/i.test(line)), []);
  host = undefined;
}

// The command as it stands there, on a port that is free.
async function startHost(words) {
  await stopHost();
  host = spawn(words[0], [...words.slice(1), '--listen', '127.0.0.1:0'], { cwd: folder, env: environment });
  host.log = [];
  createInterface({ input: host.stderr }).on('line', (line) => host.log.push(line));
  process.once('exit', () => host?.kill('SIGKILL'));
  for await (const line of createInterface({ input: host.stdout })) {
    reader.address = line.match(/^Serving.*(http:\/\/\S+)/)?.[1];
    if (reader.address) return;
  }
  assert.fail(host.log.join('\n'));
}

// What the build would put in front of the shell's path stands there already.
const isOfTheBuild = (line) => line === './dev build release zelto mirt' || line === 'export PATH="$PWD/build/release/bin:$PATH"';

async function type({ lines, promise }) {
  for (const line of lines) {
    if (isOfTheBuild(line)) continue;
    if (line.startsWith('zelto serve ')) {
      await startHost(line.split(' '));
      continue;
    }
    const words = line.startsWith('sh todo/test.sh') ? `${line} ${reader.address.replace(/\/$/, '')}` : line;
    const { stdout } = await run('sh', ['-c', words], { cwd: folder, env: environment });
    const [, times] = promise.match(/says `ok` (\w+) times/) ?? [];
    assert.ok(times || !words.startsWith('sh ') || lines.length > 1, `${promise} says nothing of ${line}`);
    if (times) assert.equal(stdout.match(/^ok /gm).length, ['five', 'six', 'seven', 'eight'].indexOf(times) + 5, stdout);
    assert.doesNotMatch(stdout, /^FAIL/m);
  }
}

async function write(step) {
  const path = join(site, step.file);
  if (step.kind !== 'create') return writeFile(path, changed(await readFile(path, 'utf8'), step));
  assert.equal(existsSync(path), !step.isNew, `${step.file} is there`);
  return writeFile(path, step.code);
}

async function browse({ acts, sights }) {
  for (const act of acts) await reader.act(act);
  for (const sight of sights) await reader.assertSees(sight);
}

after(async () => {
  host?.kill('SIGKILL');
  await rm(folder, { recursive: true });
});

const follow = { shell: type, see: browse, create: write, replace: write, append: write };
const headings = [...new Set(steps.map(({ step }) => step))];
test('there are seven steps', () => assert.deepEqual(headings.map((heading) => heading[0]), [...'1234567']));

for (const heading of headings) {
  test(`step ${heading}`, async () => {
    const own = steps.filter(({ step }) => step === heading);
    for (const step of own) await follow[step.kind](step);
    await run(process.env.ZELTO, ['check', site, '--strict']);
    assert.ok(heading.startsWith('7') || own.some(({ kind }) => kind === 'see'), 'it says what the reader sees');
  });
}

test('what comes of it is examples/todo', async () => {
  await stopHost();
  const files = async (of) => (await readdir(of, { recursive: true, withFileTypes: true })).filter((entry) => entry.isFile())
    .map(({ path, name }) => join(path, name).slice(of.length + 1)).filter((name) => name !== 'README.md' && !name.endsWith('.db'))
    .sort();
  const example = join(process.env.EXAMPLES, 'todo');
  assert.deepEqual(await files(site), await files(example));
  for (const name of await files(site)) {
    assert.equal(await readFile(join(site, name), 'utf8'), await readFile(join(example, name), 'utf8'), name);
  }
});
