// The notebook over HTTP, and the host around it.
import assert from 'node:assert/strict';
import { writeFile } from 'node:fs/promises';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import { serve } from './site.mjs';
import { Visitor } from './visitor.mjs';

let site;
before(async () => (site = await serve('notebook')));
after(async () => assert.equal(await site.stop(), 0, site.log.join('\n')));

test('a visitor signs, changes and deletes an entry', async () => {
  const visitor = new Visitor(site.address);
  await visitor.open();
  assert.equal(visitor.status, 200);
  assert.match(visitor.page, /Nothing is written yet/);
  await visitor.command('Save', { id: '', name: 'Ann <b>', text: 'First & foremost: Grüße 日本 😀' });
  assert.equal(visitor.notice, 'Thank you, Ann &lt;b&gt;.');
  assert.deepEqual(visitor.entries, [
    { id: '1', name: 'Ann &lt;b&gt;', text: 'First &amp; foremost: Grüße 日本 😀' },
  ]);
  const edit = visitor.page.match(/href="([^"]*)">Edit/)[1].replaceAll('&amp;', '&');
  await visitor.request('default.asp' + edit);
  assert.match(visitor.page, /Change an entry/);
  assert.match(visitor.page, /name="id" value="1"/);
  await visitor.command('Save', { id: '1', name: 'Ann', text: 'Second' });
  assert.deepEqual(visitor.entries, [{ id: '1', name: 'Ann', text: 'Second' }]);
  await visitor.command('Delete', { id: '1' });
  assert.deepEqual(visitor.entries, []);
});

test('a form that is not complete comes back filled', async () => {
  const visitor = new Visitor(site.address);
  await visitor.open();
  await visitor.command('Save', { id: '', name: '', text: 'kept "text" <here>' });
  assert.match(visitor.page, /role="alert">Please tell us your name\./);
  assert.match(visitor.page, />kept &quot;text&quot; &lt;here&gt;<\/textarea>/);
  assert.deepEqual(visitor.entries, []);
});

test('a command that there is not is not found', async () => {
  const visitor = new Visitor(site.address);
  await visitor.open();
  await visitor.command('Nonsense', { id: '', name: 'Ann', text: 'First' });
  assert.equal(visitor.status, 404, visitor.page);
  await visitor.open();
  assert.deepEqual([visitor.status, visitor.entries], [200, []]);
});

test('a form counts once', async () => {
  const visitor = new Visitor(site.address);
  await visitor.open();
  const field = visitor.commandField;
  const form = { id: '', name: 'Bob', text: 'once', [field]: 'Save' };
  await visitor.request('default.asp', form);
  await visitor.request('default.asp', form);
  assert.match(visitor.notice, /^Nothing was changed/);
  assert.equal(visitor.entries.length, 1);
  assert.notEqual(visitor.commandField, field);
});

test('visitors see their own entries only', async () => {
  const ann = new Visitor(site.address);
  const bob = new Visitor(site.address);
  await ann.open();
  await ann.command('Save', { id: '', name: 'Ann', text: 'hers' });
  await bob.open();
  assert.deepEqual(bob.entries, []);
  assert.equal(ann.entries.length, 1);
});

test('a visitor without cookies is told that nothing is kept', async () => {
  const visitor = new Visitor(site.address);
  await visitor.open();
  visitor.cookies.clear();
  await visitor.command('Save', { id: '', name: 'Ann', text: 'lost' });
  assert.match(visitor.notice, /keeps no cookies/);
  assert.deepEqual(visitor.entries, []);
});

test('a session cookie that nobody was given is replaced', async () => {
  const visitor = new Visitor(site.address);
  await visitor.open();
  const [[name, value]] = visitor.cookies;
  assert.ok(value.length >= 22, '128 random bits');
  const stranger = new Visitor(site.address);
  stranger.cookies.set(name, 'A'.repeat(value.length));
  await stranger.open();
  assert.notEqual(stranger.cookies.get(name), 'A'.repeat(value.length));
  assert.match(stranger.headers.get('set-cookie'), /HttpOnly/i);
  assert.match(stranger.headers.get('set-cookie'), /SameSite=Lax/i);
});

test('visits are counted for one and for all', async () => {
  const ann = new Visitor(site.address);
  const count = async (visitor, id) => {
    await visitor.request('visits.asp');
    return Number(visitor.page.match(new RegExp(`id="${id}">(\\d+)<`))[1]);
  };
  assert.equal(await count(ann, 'mine'), 1);
  assert.equal(await count(ann, 'mine'), 2);
  const all = await count(ann, 'all');
  assert.equal(await count(new Visitor(site.address), 'all'), all + 1);
  await ann.request('visits.asp?c=Forget');
  assert.match(ann.page, /Your visits are forgotten/);
  assert.equal(await count(ann, 'mine'), 1);
});

test('templates, includes and hidden files are not served', async () => {
  const visitor = new Visitor(site.address);
  for (const name of ['templates/layout.html', 'templates/', 'page.inc', 'global.asa', '.hidden', 'none.asp']) {
    await visitor.request(name);
    assert.equal(visitor.status, 404, name);
  }
  await visitor.request('style.css');
  assert.equal(visitor.status, 200);
  await visitor.request('');
  assert.match(visitor.page, /Notebook/, 'the default document');
});

test('a template that is edited shows on the next request', async () => {
  const visitor = new Visitor(site.address);
  await visitor.open();
  await writeFile(join(site.folder, 'templates', 'footer.html'), '<footer>edited (#;title#)</footer>');
  await visitor.open();
  assert.match(visitor.page, /<footer>edited Notebook<\/footer>/);
});

test('a template that is missing is a page error and one line in the log', async () => {
  const visitor = new Visitor(site.address);
  await writeFile(join(site.folder, 'broken.asp'), [
    '<%',
    'var page = Server.CreateObject("Mirt");',
    'page.AddScript(this);',
    'page.TemplateFolder = Server.MapPath("templates");',
    'page.DefaultTemplate = "none";',
    'page.Process();',
    '%>',
  ].join('\n'));
  await visitor.request('broken.asp');
  assert.equal(visitor.status, 500);
  assert.doesNotMatch(visitor.page, /templates/, 'a visitor learns nothing about the inside');
  assert.equal(site.log.filter((line) => line.includes("Template file can't read.[")).length, 1, site.log.join('\n'));
});
