// docs/moving.md, gone through with a site that has what each of its steps looks for.
import assert from 'node:assert/strict';
import { execFile } from 'node:child_process';
import { mkdir, mkdtemp, readFile, rm, writeFile } from 'node:fs/promises';
import { tmpdir } from 'node:os';
import { dirname, join } from 'node:path';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { serve } from '../serve/site.mjs';

const document = await readFile(fileURLToPath(new URL('../../docs/moving.md', import.meta.url)), 'utf8');
const zelto = (line, folder) => new Promise((resolve) => {
  const [program, ...words] = line.split(' ');
  assert.equal(program, 'zelto');
  execFile(process.env.ZELTO, words, { cwd: folder }, (error, stdout) => resolve({ code: error?.code ?? 0, stdout }));
});

const perl = '<%@ Language="PerlScript" %>', page = (code) => `<%@ Language="JavaScript" %>\n<%\n${code}\n%>\n`;
// What a site has, and then has in its place. The last of each row: how the check tells of it.
const faults = [
  ['old.asp', `${perl}<% $Response->Write("a"); %>`, page('Response.Write("a");'), /old\.asp:1:\d+: error: .*PerlScript/],
  ['forms.asp', '<!--#include file="Inc/Db.inc"-->', '<!--#include file="inc/db.inc"-->', /forms\.asp:1:\d+: error: .*in other letter case there is "\/inc\/db\.inc"/],
  ['inc/db.inc', '', '', /(?:)/],
  ['list.asp', page('if (true) {'), page('if (true) {}'), /list\.asp:3:\d+: error: This "\{" is never closed\./],
  ['mail.asp', page('Server.CreateObject("ADODB.Recordst");'), page('Server.CreateObject("ADODB.Recordset");'), /mail\.asp:3:\d+: error: .*did you mean 'ADODB\.Recordset'/],
  ['send.asp', page('Response.Wrte("a");'), page('Response.Write("a");'), /send\.asp:3:\d+: error: Response has no member 'Wrte'/],
  ['index.html', '<a href="inc/db.inc">a</a>', '<a href="list.asp">a</a>', /index\.html:1:\d+: warning: .*never served/],
  ['templates/a.html', '(#*a', '(#*a#)', /templates\/a\.html:1:1: error: /],
];

test('what would fail is said, and once it is mended the site runs', async () => {
  const folder = await mkdtemp(join(tmpdir(), 'moving-'));
  const write = async (which) => {
    for (const [name, ...texts] of faults) {
      await mkdir(dirname(join(folder, 'SITE', name)), { recursive: true });
      await writeFile(join(folder, 'SITE', name), texts[which]);
    }
  };
  const [, check] = document.match(/^```\n(zelto check SITE)\n```$/m);
  const [, run] = document.match(/`(zelto run SITE\/page\.asp --debug)`/);
  try {
    await write(0);
    const { code, stdout } = await zelto(check, folder);
    assert.equal(code, 1);
    for (const [, , , told] of faults) assert.match(stdout, told);
    await write(1);
    assert.deepEqual(await zelto(`${document.match(/`(zelto check --strict)`/)[1]} SITE`, folder),
      { code: 0, stdout: '5 pages, 1 template: 0 errors, 0 warnings\n' });
    assert.deepEqual(await zelto(run.replace('page', 'send'), folder), { code: 0, stdout: 'a\n' });
    const site = await serve(join(folder, 'SITE'), ...document.match(/`zelto serve SITE (--debug)`/).slice(1));
    assert.equal((await (await fetch(new URL('old.asp', site.address))).text()).trim(), 'a');
    assert.equal(await site.stop(), 0, site.log.join('\n'));
  } finally {
    await rm(folder, { recursive: true });
  }
});
