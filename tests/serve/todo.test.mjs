// The list of things to do, as a visitor uses it.
import assert from 'node:assert/strict';
import { readdir } from 'node:fs/promises';
import { join } from 'node:path';
import { test } from 'node:test';
import { serve } from './site.mjs';
import { Visitor } from './visitor.mjs';

const png = Buffer.from('iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNkYPhfDwAChwGA60e6kgAAAABJRU5ErkJggg==',
  'base64');

class Author extends Visitor {
  // The name of the buttons in the page that was drawn last.
  get commandField() { return this.page.match(/<button[^>]* name="([A-Z0-9]+)"/)[1]; }
  add(words, picture) {
    const form = new FormData();
    form.set('words', words);
    form.set('picture', picture ? new Blob([picture]) : new Blob([]), picture ? 'a.png' : '');
    form.set(this.commandField, 'Add');
    return this.request('default.asp', form);
  }
  get items() {
    return [...this.page.matchAll(/<li class="(open|done)">[^]*?name="id" value="(\d+)"[^]*?<span>(.*?)<\/span>([^]*?)<\/li>/g)]
      .map(([, state, id, words, rest]) => ({ state, id, words, hasPicture: rest.includes('<img') }));
  }
}

test('a list is kept for whoever knows the password', async () => {
  const site = await serve('todo');
  try {
    const ann = new Author(site.address);
    assert.match(await ann.open(), /<button name="[A-Z0-9]+" value="Login">/);
    assert.match(await ann.command('Add', { words: 'no' }), /value="Login"/, 'who is not known changes nothing');
    assert.match(await ann.command('Login', { password: 'wrong' }), /That is not the password\./);
    const before = new Map(ann.cookies);
    assert.match(await ann.command('Login', { password: 'change me' }), /Nothing to do\./);
    assert.notDeepEqual(ann.cookies, before, 'the session has another identifier');

    assert.match(await ann.add('  '), /Please write something\./);
    assert.match(await ann.add('x'.repeat(201)), /more than 200 characters/);
    assert.match(await ann.add('a picture', Buffer.from('<script>')), /not a PNG, JPEG or GIF picture/);
    await ann.add('Water <the> plants');
    await ann.add('Paint', png);
    assert.deepEqual(ann.items.map(({ words, state, hasPicture }) => [words, state, hasPicture]),
      [['Paint', 'open', true], ['Water &lt;the&gt; plants', 'open', false]]);
    const [paint, water] = ann.items;

    await ann.command('Done', { id: paint.id });
    assert.deepEqual(ann.items.map(({ id, state }) => [id, state]), [[water.id, 'open'], [paint.id, 'done']]);
    await ann.request(`picture.asp?id=${paint.id}`);
    assert.equal(ann.headers.get('content-type'), 'image/png');
    assert.deepEqual(ann.bytes, png);
    await ann.request(`picture.asp?id=${water.id}`);
    assert.equal(ann.status, 404);

    const bob = new Author(site.address);
    await bob.request(`picture.asp?id=${paint.id}`);
    assert.equal(bob.status, 404, 'who is not known sees no picture');

    await ann.open();
    await ann.command('Delete', { id: paint.id });
    assert.deepEqual(ann.items.map(({ id }) => id), [water.id]);
    assert.deepEqual((await readdir(join(site.folder, 'app_data'))).filter((name) => name.endsWith('.png')), []);
    await ann.command('Delete', { id: '1 OR 1' });
    assert.equal(ann.items.length, 1);
    await ann.request('default.asp?' + new URLSearchParams({ [ann.commandField]: 'Nonsense' }));
    assert.equal(ann.status, 404);
    await ann.open();
    assert.match(await ann.command('Logout'), /value="Login"/);
  } finally {
    assert.equal(await site.stop(), 0, site.log.join('\n'));
  }
  assert.deepEqual(site.log.filter((line) => line.startsWith('/')), []);
});
