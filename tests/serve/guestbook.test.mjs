// The guest book over HTTP: its entries lie in a data base that all visitors share.
import assert from 'node:assert/strict';
import { afterEach, beforeEach, test } from 'node:test';
import { serve } from './site.mjs';
import { Visitor } from './visitor.mjs';

let site;
beforeEach(async () => (site = await serve('guestbook')));
afterEach(async () => assert.equal(await site.stop(), 0, site.log.join('\n')));

const entry = { id: '', name: 'Ann', topic: 'idea', mood: 'calm', words: 'Hello' };

async function arrive() {
  const visitor = new Visitor(site.address);
  await visitor.open();
  assert.equal(visitor.status, 200, visitor.page);
  return visitor;
}

test('entries are seen by everybody, whatever is in them', async () => {
  const ann = await arrive();
  await ann.command('Save', { ...entry, name: "O'Brien <b>", words: "'); DROP TABLE entries; -- 日本 😀" });
  assert.equal(ann.notice, "Thank you, O'Brien &lt;b&gt;.");
  const bob = await arrive();
  const expected = [{ id: '1', name: "O'Brien &lt;b&gt;", words: "'); DROP TABLE entries; -- 日本 😀" }];
  const shown = (visitor) => visitor.entries.map(({ id, name, text }) => ({ id, name: name.split(' <span')[0], words: text }));
  assert.deepEqual(shown(bob), expected);
});

test('a command that there is not is not found', async () => {
  const ann = await arrive();
  await ann.command('Nonsense<b>', entry);
  assert.equal(ann.status, 404, ann.page);
  assert.equal(ann.page.trim(), 'There is no such page.');
  assert.deepEqual((await arrive()).entries, []);
});

test('a visitor changes and deletes what is theirs, nobody else does', async () => {
  const ann = await arrive();
  await ann.command('Save', entry);
  const bob = await arrive();
  assert.doesNotMatch(bob.page, />Edit</);
  await bob.command('Delete', { id: '1' });
  await bob.command('Save', { ...entry, id: '1', words: 'not his' });
  assert.equal(bob.entries[0].text, 'Hello');

  await ann.open();
  await ann.request('default.asp' + ann.page.match(/href="([^"]*)">Edit/)[1].replaceAll('&amp;', '&'));
  assert.match(ann.page, /Change an entry/);
  assert.match(ann.page, /value="idea" selected/);
  assert.match(ann.page, /value="calm" checked/);
  await ann.command('Save', { ...entry, id: '1', words: 'Hello again' });
  assert.equal(ann.notice, 'Your changes are saved.');
  assert.equal(ann.entries[0].text, 'Hello again');
  await ann.command('Delete', { id: '1' });
  assert.equal(ann.notice, 'The entry is deleted.');
  assert.deepEqual(ann.entries, []);
});

test('a form that is not complete comes back filled', async () => {
  const visitor = await arrive();
  await visitor.command('Save', { id: '', name: '', topic: 'question', mood: 'curious', hidden: 'yes', words: 'kept "t" <here>' });
  assert.match(visitor.page, /role="alert">Please tell us your name\.</);
  assert.match(visitor.page, /value="question" selected/);
  assert.match(visitor.page, /value="curious" checked/);
  assert.match(visitor.page, /value="yes" checked/);
  assert.match(visitor.page, />\s*kept &quot;t&quot; &lt;here&gt;<\/textarea>/);
  assert.deepEqual(visitor.entries, []);
});

test('every problem is told at once', async () => {
  const visitor = await arrive();
  await visitor.command('Save', { ...entry, name: ' ', words: '' });
  assert.deepEqual([...visitor.page.matchAll(/role="alert">(.*?)</g)].map((found) => found[1]),
    ['Please tell us your name.', 'Please write something.']);
});

test('a form that lies is answered as one that is out of date', async () => {
  const visitor = await arrive();
  for (const id of ['x', '-1', '1e9', '99999999999999999999', "1' OR '1'='1", '0']) {
    for (const command of ['Save', 'Delete']) {
      await visitor.command(command, { ...entry, id });
      assert.equal(visitor.notice, 'That entry is gone, or is not yours.', `${command} ${id}`);
    }
  }
  await visitor.command('Save', { ...entry, name: 'x'.repeat(81), words: 'x'.repeat(2001) });
  assert.deepEqual([...visitor.page.matchAll(/role="alert">(.*?)</g)].map((found) => found[1]),
    ['That name is longer than 80 characters.', 'That is more than 2,000 characters.']);
  assert.deepEqual(visitor.entries, []);
});

test('the end of a line counts once', async () => {
  const visitor = await arrive();
  await visitor.command('Save', { ...entry, words: 'x\r\n'.repeat(999) + 'yy' });
  assert.equal(visitor.entries[0].text.length, 2000);
});

test('a hidden entry is shown to who wrote it', async () => {
  const ann = await arrive();
  await ann.command('Save', { ...entry, hidden: 'yes' });
  assert.equal(ann.entries.length, 1);
  assert.match(ann.page, /only you see this/);
  assert.equal((await arrive()).entries.length, 0);
});

test('the list is cut into pages of five', async () => {
  const ann = await arrive();
  for (let number = 1; number <= 11; number++) await ann.command('Save', { ...entry, words: `words ${number}` });
  assert.match(ann.page, /class="count">11</);
  assert.deepEqual(ann.entries.map(({ text }) => text), [11, 10, 9, 8, 7].map((number) => `words ${number}`));
  const last = [...ann.page.matchAll(/<a href="([^"]*)">3<\/a>/g)][0][1].replaceAll('&amp;', '&');
  await ann.request('default.asp' + last);
  assert.deepEqual(ann.entries.map(({ text }) => text), ['words 1']);
  assert.match(ann.page, /<b>3<\/b>/);
});

test('a form counts once', async () => {
  const visitor = await arrive();
  const form = { ...entry, [visitor.commandField]: 'Save' };
  await visitor.request('default.asp', form);
  await visitor.request('default.asp', form);
  assert.match(visitor.notice, /^Nothing was changed/);
  assert.equal(visitor.entries.length, 1);
  assert.match(visitor.page, new RegExp(`>\\s*${entry.words}</textarea>`), 'what was written is not lost');
});

test('the data base is not served', async () => {
  const visitor = await arrive();
  for (const name of ['app_data/guestbook.db', 'database.inc', 'templates/page.html']) {
    await visitor.request(name);
    assert.equal(visitor.status, 404, name);
  }
});
