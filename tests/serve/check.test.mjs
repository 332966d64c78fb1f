// `zelto check`, as a person and a program read it.
import assert from 'node:assert/strict';
import { execFile } from 'node:child_process';
import { mkdir, mkdtemp, readFile, readdir, rm, writeFile } from 'node:fs/promises';
import { tmpdir } from 'node:os';
import { dirname, join } from 'node:path';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { promisify } from 'node:util';

const check = (...words) => new Promise((resolve) => {
  execFile(process.env.ZELTO, ['check', ...words], (error, stdout, stderr) => resolve({ code: error?.code ?? 0, stdout, stderr }));
});

async function withSite(files, use) {
  const folder = await mkdtemp(join(tmpdir(), 'check-'));
  try {
    for (const [name, text] of Object.entries(files)) {
      await mkdir(dirname(join(folder, name)), { recursive: true });
      await writeFile(join(folder, name), text);
    }
    await use(folder);
  } finally {
    await rm(folder, { recursive: true });
  }
}

test('a line for each finding, in order, and one that counts', () => withSite({
  'b.asp': '<%\nvar a = ;\n%>', 'a.asp': '<!-- #include file="none.inc" -->', 'global.asa': '', 'zelto.toml': '\nworkers = "4"\n',
}, async (folder) => {
  const { code, stdout } = await check(folder);
  assert.equal(code, 1);
  assert.deepEqual(stdout.split('\n'), [
    `${folder}/a.asp:1:21: error: The include file "none.inc" was not found.`,
    `${folder}/b.asp:2:9: error: Unexpected token ';'`,
    `${folder}/global.asa:1:1: warning: This file is not run: what it declares for the application and its sessions does not happen.`,
    `${folder}/zelto.toml:2:11: error: workers has a value of the wrong type; a right one is 4`,
    '2 pages, 0 templates: 3 errors, 1 warning', '']);
}));

test('one object for programs', () => withSite({ 'b.asp': '<%\nvar a = ;\n%>', 'global.asa': '' }, async (folder) => {
  const { code, stdout } = await check(folder, '--json');
  assert.equal(code, 1);
  assert.deepEqual(JSON.parse(stdout), { site: folder, pages: 1, templates: 0, errors: 1, warnings: 1, findings: [
    { file: `${folder}/b.asp`, line: 2, column: 9, severity: 'error', text: "Unexpected token ';'" },
    { file: `${folder}/global.asa`, line: 1, column: 1, severity: 'warning',
      text: 'This file is not run: what it declares for the application and its sessions does not happen.' }] });
}));

test('members of objects that a page makes, of the host and of the component', () => withSite({
  'a.asp': `<% var page = Server.CreateObject("Mirt"), cn = new ActiveXObject("ADODB.Connection");
page.Proces(); var rs = cn.Execute("select 1"); rs.MoveNex(); %>`,
}, async (folder) => {
  const { stdout } = await check(folder);
  assert.deepEqual(stdout.split('\n').slice(0, 2), [
    `${folder}/a.asp:2:6: error: Mirt has no member 'Proces'; did you mean 'Process'?`,
    `${folder}/a.asp:2:52: error: Recordset has no member 'MoveNex'; did you mean 'MoveNext'?`]);
}));

test('warnings fail where they are asked to', () => withSite({ 'global.asa': '' }, async (folder) => {
  assert.equal((await check(folder)).code, 0);
  assert.equal((await check(folder, '--strict')).code, 1);
}));

test('what is no site is wrong use', async () => {
  const { code, stderr } = await check('/no/such/folder');
  assert.equal(code, 2);
  assert.match(stderr, /'\/no\/such\/folder' is not a folder/);
  assert.equal((await check('--jsn')).code, 2);
});

test('the examples have no faults', async () => {
  for (const name of await readdir(process.env.EXAMPLES)) {
    const { code, stdout } = await check(join(process.env.EXAMPLES, name), '--strict');
    assert.equal(code, 0, stdout);
  }
});

test('what docs/check.md shows is what is printed', () => withSite({
  'shop/inc/db.inc': '',
  'shop/cart.asp': '\n\n<!-- #include file="Inc/db.inc" -->',
  'shop/default.asp': `${'\n'.repeat(11)}Response.Wrte(1);
page.TemplateFolder = Server.MapPath("templates"); page.TemplateExt = ".html"; page.DefaultTemplate = "list"; var title;%>`
    .replace(/^/, '<%'),
  'shop/templates/list.html': `${'\n'.repeat(6)}  (#;titel#)`,
}, async (folder) => {
  const document = await readFile(fileURLToPath(new URL('../../docs/check.md', import.meta.url)), 'utf8');
  const shown = document.match(/^```\n(shop[^]*?)^```/m)[1];
  await assert.rejects(promisify(execFile)(process.env.ZELTO, ['check', 'shop'], { cwd: folder }), ({ stdout }) => {
    assert.equal(stdout, shown);
    return true;
  });
}));
