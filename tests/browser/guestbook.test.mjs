// The guest book as a visitor sees it in a browser.
import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';
import { serve } from '../serve/site.mjs';
import { Browser } from './browser.mjs';

let site;
let browser;
before(async () => {
  site = await serve('guestbook');
  browser = await Browser.start();
});
after(async () => {
  await browser.quit();
  assert.equal(await site.stop(), 0, site.log.join('\n'));
});

const checked = (selector) => browser.run(`return document.querySelector('${selector}').checked`);
const chosen = () => browser.run("return document.querySelector('select[name=topic]').value");

test('a form with every kind of field comes back filled, then is kept', async () => {
  await browser.open(site.address);
  await browser.click('option[value=question]');
  await browser.click('input[value=curious]');
  await browser.click('input[name=hidden]');
  await browser.fill('textarea[name=words]', 'Schöne Grüße\n& 日本');
  await browser.follow('#sign button');
  assert.equal(await browser.textOf('.problem'), 'Please tell us your name.');
  assert.equal(await chosen(), 'question');
  assert.equal(await checked('input[value=curious]'), true);
  assert.equal(await checked('input[name=hidden]'), true);
  assert.equal(await (await browser.find('textarea')).value(), 'Schöne Grüße\n& 日本');

  await browser.fill('input[name=name]', 'Änne "A" <script>');
  await browser.follow('#sign button');
  assert.equal(await browser.textOf('.notice'), 'Thank you, Änne "A" <script>.');
  assert.equal(await browser.textOf('article h3'), 'Änne "A" <script> question curious only you see this');
  assert.equal(await browser.textOf('article p'), 'Schöne Grüße\n& 日本');
  assert.equal(await checked('input[name=hidden]'), false, 'the form is new again');
});

test('an entry is changed and deleted', async () => {
  await browser.open(site.address);
  await browser.follow('article a.button');
  assert.equal(await browser.textOf('#sign h2'), 'Change an entry');
  assert.equal(await chosen(), 'question');
  await browser.fill('textarea[name=words]', 'Changed');
  await browser.follow('#sign button');
  assert.equal(await browser.textOf('article p'), 'Changed');
  await browser.follow('article button');
  assert.equal(await browser.textOf('.notice'), 'The entry is deleted.');
  assert.equal((await browser.findAll('article')).length, 0);
});

test('an entry is left as it is, and a form that was sent counts once', async () => {
  await browser.open(site.address);
  await browser.fill('input[name=name]', 'Carl');
  await browser.fill('textarea[name=words]', 'Once');
  await browser.follow('#sign button');
  await browser.follow('article a.button');
  await browser.follow('#sign a.button');
  assert.equal(await browser.textOf('#sign h2'), 'Sign the book');
  await browser.back();
  await browser.back();
  await browser.back();
  await browser.fill('input[name=name]', 'Carl');
  await browser.fill('textarea[name=words]', 'Twice');
  await browser.follow('#sign button');
  assert.match(await browser.textOf('.notice'), /^Nothing was changed/);
  assert.deepEqual(await browser.textsOf('article p'), ['Once']);
  await browser.follow('#sign button');
  assert.deepEqual(await browser.textsOf('article p'), ['Twice', 'Once'], 'what was written is still in the form');
  await browser.follow('article button');
  await browser.follow('article button');
});

test('links lead through the pages of the list', async () => {
  await browser.open(site.address);
  for (let number = 1; number <= 6; number++) {
    await browser.fill('input[name=name]', 'Bob');
    await browser.fill('textarea[name=words]', `words ${number}`);
    await browser.follow('#sign button');
  }
  assert.equal(await browser.textOf('.count'), '6');
  assert.equal((await browser.findAll('article')).length, 5);
  await browser.follow('#pages a');
  assert.deepEqual(await browser.textsOf('article p'), ['words 1']);
  assert.equal(await browser.textOf('#pages b'), '2');
  await browser.follow('#pages a');
  assert.equal((await browser.findAll('article')).length, 5);
});

test('nothing is wider than a telephone', async () => {
  await browser.open(site.address);
  await browser.fill('input[name=name]', 'Dora');
  await browser.fill('textarea[name=words]', 'Donaudampfschifffahrtsgesellschaft'.repeat(8));
  await browser.follow('#sign button');
  await browser.post('window/rect', { width: 390, height: 844 });
  assert.equal(await browser.run('return document.documentElement.scrollWidth - document.documentElement.clientWidth'), 0);
});
