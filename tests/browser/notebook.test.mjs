// The notebook as a visitor sees it in a browser.
import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';
import { serve } from '../serve/site.mjs';
import { Browser } from './browser.mjs';

let site;
before(async () => (site = await serve('notebook')));
after(async () => assert.equal(await site.stop(), 0, site.log.join('\n')));

async function withBrowser(options, use) {
  const browser = await Browser.start(options);
  try {
    await browser.open(site.address);
    await use(browser);
  } finally {
    await browser.quit();
  }
}

async function sign(browser, name, text) {
  await browser.fill('input[name=name]', name);
  await browser.fill('textarea[name=text]', text);
  await browser.follow('#sign button');
}

test('an entry is posted, kept, changed and deleted', () => withBrowser({}, async (browser) => {
  assert.equal(await browser.title(), 'Notebook');
  assert.equal(await browser.textOf('.empty'), 'Nothing is written yet.');
  await sign(browser, 'Änne "A" <script>', 'Schöne Grüße\n& 日本');
  assert.equal(await browser.textOf('.notice'), 'Thank you, Änne "A" <script>.');
  assert.equal(await browser.textOf('article h3'), 'Änne "A" <script>');
  assert.equal(await browser.textOf('article p'), 'Schöne Grüße\n& 日本');

  await browser.open(site.address);
  assert.equal(await browser.textOf('.count'), '1', 'the bag remembers');

  await browser.follow('article a');
  assert.equal(await browser.textOf('#sign h2'), 'Change an entry');
  assert.equal(await (await browser.find('input[name=name]')).value(), 'Änne "A" <script>');
  await sign(browser, 'Anne', 'Changed');
  assert.equal(await browser.textOf('article h3'), 'Anne');
  assert.equal((await browser.findAll('article')).length, 1);

  await browser.follow('article .quiet');
  assert.equal(await browser.textOf('.notice'), 'The entry is deleted.');
  assert.equal((await browser.findAll('article')).length, 0);
}));

test('a form that the back button brings back changes nothing', () => withBrowser({}, async (browser) => {
  await sign(browser, 'Bob', 'once');
  assert.equal((await browser.findAll('article')).length, 1);
  await browser.back();
  await sign(browser, 'Bob', 'twice');
  assert.match(await browser.textOf('.notice'), /^Nothing was changed/);
  assert.equal((await browser.findAll('article')).length, 1);
  assert.equal(await browser.textOf('article p'), 'once');
  await sign(browser, 'Bob', 'with the fresh form');
  assert.equal((await browser.findAll('article')).length, 2);
}));

test('a form that is not complete says so and keeps its text', () => withBrowser({}, async (browser) => {
  await sign(browser, 'Carl', '');
  assert.equal(await browser.textOf('.problem'), 'Please write something.');
  assert.equal(await (await browser.find('input[name=name]')).value(), 'Carl');
}));

test('with cookies off the page works and keeps nothing', () => withBrowser({ cookies: false }, async (browser) => {
  await sign(browser, 'Dora', 'lost');
  assert.match(await browser.textOf('.notice'), /your browser keeps no cookies/);
  assert.equal((await browser.findAll('article')).length, 0);
}));

test('visits are counted and forgotten', () => withBrowser({}, async (browser) => {
  await browser.follow('nav a:last-child');
  assert.equal(await browser.textOf('#mine'), '1');
  await browser.follow('main a');
  assert.equal(await browser.textOf('#mine'), '2');
  await browser.follow('main a.quiet');
  assert.match(await browser.textOf('#forgotten'), /^Your visits are forgotten/);
  await browser.follow('main a');
  assert.equal(await browser.textOf('#mine'), '1');
}));
