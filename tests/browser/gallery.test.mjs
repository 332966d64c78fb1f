// The gallery as a visitor sees it in a browser.
import assert from 'node:assert/strict';
import { mkdtemp, readdir, rm, writeFile } from 'node:fs/promises';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import { largePicture, png } from '../serve/pictures.mjs';
import { serve } from '../serve/site.mjs';
import { Browser } from './browser.mjs';

let folder;
before(async () => (folder = await mkdtemp(join(tmpdir(), 'pictures-'))));
after(() => rm(folder, { recursive: true }));

async function inGallery(options, use) {
  const site = await serve('gallery', ...options);
  const browser = await Browser.start();
  try {
    await browser.open(site.address);
    await use(browser, site);
  } finally {
    await browser.quit();
    assert.equal(await site.stop(), 0, site.log.join('\n'));
  }
}

// Files of these names and contents, chosen in the form together.
async function choose(browser, files) {
  const paths = files.map(([name]) => join(folder, name));
  await Promise.all(files.map(([, bytes], i) => writeFile(paths[i], bytes)));
  await (await browser.find('input[type=file]')).type(paths.join('\n'));
}

const stored = (site) => readdir(join(site.folder, 'app_data'));

test('pictures are added, shown, kept and deleted', () => inGallery([], async (browser, site) => {
  assert.equal(await browser.textOf('.empty'), 'No pictures yet.');
  await choose(browser, [['sun.png', png(64, 40, [250, 190, 60])], ['sea.png', png(40, 64, [30, 90, 160])]]);
  await browser.fill('input[name=caption]', 'Sun & <sea> (#x#)');
  await browser.run("for (const i of [0, 2]) document.querySelector('select').options[i].selected = true");
  await browser.click('#upload button');
  await browser.wait('figure:nth-of-type(2)');
  assert.deepEqual(await browser.textsOf('#notices li'), ['sun.png was added.', 'sea.png was added.']);
  assert.deepEqual(await browser.textsOf('figcaption strong'), Array(2).fill('Sun & <sea> (#x#)'));
  assert.deepEqual(await browser.textsOf('.tags'), Array(2).fill('holiday, work'));

  await browser.open(site.address);
  assert.deepEqual(await browser.textsOf('#notices li'), [], 'said once');
  const sizes = await browser.run(`
    return Promise.all([...document.querySelectorAll('figure img')].map(async (image) => {
      image.loading = 'eager';
      await image.decode();
      return [image.naturalWidth, image.naturalHeight];
    }));`);
  assert.deepEqual(sizes, [[40, 64], [64, 40]], 'the newest first');

  const link = await (await browser.find('.actions a')).attribute('href');
  const saved = await fetch(new URL(link, site.address));
  assert.equal(saved.headers.get('content-disposition'), "attachment; filename*=UTF-8''sea.png");
  assert.deepEqual(Buffer.from(await saved.arrayBuffer()), png(40, 64, [30, 90, 160]));

  await browser.follow('.actions button');
  assert.deepEqual(await browser.textsOf('#notices li'), ['sea.png was deleted.']);
  assert.deepEqual(await browser.textsOf('.file'), ['sun.png · 1 KiB']);
  assert.equal((await stored(site)).filter((name) => name.endsWith('.png')).length, 1);
}));

test('names are shown as they are and stored under other ones', () => inGallery([], async (browser, site) => {
  const names = [
    'Grüße aus Köln.png', '日本の写真.png', '🏖️ 😀.png', 'say "hello".png', 'one; two=3; filename=x.png',
    'back\\slash\\..\\up.png', '../up/and over.png',
    '%22 100% &amp; (#x#) ^.png', '<img src=x onerror=document.title=1>.png', '..png', 'line\nbreak.png',
  ];
  const picture = png(8, 8, [1, 2, 3]);
  // A line break cannot be typed into the field of a file.
  await browser.run(`
    const [names, bytes] = arguments;
    const chosen = new DataTransfer();
    for (const name of names) chosen.items.add(new File([Uint8Array.from(bytes)], name, { type: 'image/png' }));
    document.querySelector('input[type=file]').files = chosen.files;`, names, [...picture]);
  await browser.click('#upload button');
  await browser.wait(`figure:nth-of-type(${names.length})`);
  const shown = await browser.run("return [...document.querySelectorAll('.file')].map((one) => one.textContent)");
  assert.deepEqual(shown, names.map((name) => `${name} · 1 KiB`).reverse());
  const said = await browser.run("return [...document.querySelectorAll('#notices strong')].map((one) => one.textContent)");
  assert.deepEqual(said, names);
  assert.equal(await browser.title(), 'Gallery');

  const files = await stored(site);
  assert.equal(files.length, names.length + 2);
  for (const name of files) assert.match(name, /^([0-9A-F]{32}\.png|index\.json|\.gitignore)$/);
  const links = await browser.run("return [...document.querySelectorAll('.actions a')].map((one) => one.href)");
  const saved = await Promise.all(links.map(async (link) => (await fetch(link)).headers.get('content-disposition')));
  assert.deepEqual(saved.map((header) => decodeURIComponent(header.split("''")[1])).reverse(), [
    'Grüße aus Köln.png', '日本の写真.png', '🏖️ 😀.png', 'say "hello".png', 'one; two=3; filename=x.png', 'up.png',
    'and over.png',
    '%22 100% &amp; (#x#) ^.png', '<img src=x onerror=document.title=1>.png', '..png', 'linebreak.png',
  ]);
}));

test('a file of another type is refused and the others are added', () => inGallery([], async (browser, site) => {
  await choose(browser, [['notes.png', 'only <b>text</b>'], ['empty.png', ''], ['dot.png', png(1, 1, [0, 0, 0])]]);
  await browser.click('#upload button');
  await browser.wait('figure');
  assert.deepEqual(await browser.textsOf('#notices .refused'), [
    'notes.png is not a PNG, JPEG or GIF picture.',
    'empty.png is not a PNG, JPEG or GIF picture.',
  ]);
  assert.deepEqual(await browser.textsOf('#notices .done'), ['dot.png was added.']);
  assert.deepEqual(await browser.textsOf('figcaption'), ['dot.png · 1 KiB\nDownload\nDelete'], 'its name once');
  assert.equal((await stored(site)).filter((name) => name.endsWith('.png')).length, 1);
}));

test('an upload that is too large is refused with its size', () =>
  inGallery(['--body-limit', '1MiB'], async (browser, site) => {
    const refusal = 'The upload is too large: 24.0 MiB at once cannot be taken.';
    await choose(browser, [['large.png', largePicture(24 << 20)]]);
    await browser.click('#upload button');
    await browser.wait('#notices .refused');
    assert.equal(await browser.textOf('#notices .refused'), refusal);
    assert.deepEqual(await stored(site), ['.gitignore']);

    await choose(browser, [['large.png', largePicture(24 << 20)]]);
    await browser.run("document.querySelector('#notices').replaceChildren(); document.querySelector('#upload').submit()");
    await browser.wait('#notices .refused');
    assert.equal(await browser.textOf('#notices .refused'), refusal, 'without scripts as well');

    await choose(browser, [['small.png', png(1, 1, [0, 0, 0])]]);
    await browser.click('#upload button');
    await browser.wait('figure');
    assert.deepEqual(await browser.textsOf('#notices li'), ['small.png was added.']);
  }));

test('a bar shows how far the upload is', () => inGallery([], async (browser) => {
  await choose(browser, [['medium.png', largePicture(20 << 20)]]);
  await browser.run(`
    const bar = document.querySelector('progress');
    window.seen = [];
    new MutationObserver(() => window.seen.push([bar.hidden, bar.value])).observe(bar, { attributes: true });`);
  await browser.click('#upload button');
  await browser.wait('figure');
  const seen = await browser.run('return window.seen');
  assert.deepEqual(seen[0], [false, 0]);
  assert.deepEqual(seen.at(-1), [false, 100]);
  assert.equal(await browser.textOf('.file'), 'medium.png · 20.0 MiB', 'more than the limit of other sites');
}));

test('an upload that is lost or refused is told, and can be sent again', () => inGallery([], async (browser, site) => {
  await choose(browser, [['again.png', png(2, 2, [9, 9, 9])]]);
  const sendTo = async (address) => {
    await browser.run(`
      document.querySelector('#notices').replaceChildren();
      document.querySelector('#upload').action = arguments[0];`, address);
    await browser.click('#upload button');
    await browser.wait('#notices li');
    return browser.textsOf('#notices li');
  };
  // A browser makes no connection to port 1, and the host has no page of that name.
  assert.deepEqual(await sendTo('http://127.0.0.1:1/'), ['The connection was lost before the upload arrived.']);
  assert.deepEqual(await sendTo(`${site.address}none.asp`), ['The gallery could not take the upload.']);
  const [hasBar, hasButton] = await browser.run(`
    return [!document.querySelector('progress').hidden, !document.querySelector('#upload button').disabled];`);
  assert.deepEqual([hasBar, hasButton], [false, true]);
  assert.deepEqual(await sendTo(site.address), ['again.png was added.']);
}));

test('the page fits a phone', () => inGallery([], async (browser) => {
  await browser.post('window/rect', { width: 375, height: 800 });
  await choose(browser, [[`${'long'.repeat(40)}.png`, png(640, 40, [9, 9, 9])]]);
  await browser.fill('input[name=caption]', 'caption'.repeat(20));
  await browser.click('#upload button');
  await browser.wait('figure');
  const [visible, needed] = await browser.run('return [innerWidth, document.documentElement.scrollWidth]');
  assert.ok(visible < 600, `a window of ${visible} is not that of a phone`);
  assert.ok(needed <= visible, `${needed} pixels in a window of ${visible}`);
  const height = await browser.run("return document.querySelector('.file').offsetHeight");
  assert.ok(height < 30, `a long name and the size share a line, which is ${height} pixels high`);
}));

test('without scripts the form posts itself', () => inGallery([], async (browser) => {
  await choose(browser, [['plain.png', png(2, 2, [9, 9, 9])], ['Größe.png', png(2, 2, [9, 9, 9])]]);
  await browser.run("document.querySelector('#upload').submit()");
  await browser.wait('figure:nth-of-type(2)');
  assert.deepEqual(await browser.textsOf('#notices li'), ['plain.png was added.', 'Größe.png was added.']);
  await browser.run("document.querySelector('#upload').submit()");
  await browser.wait('#notices .refused');
  assert.deepEqual(await browser.textsOf('#notices li'), ['Choose at least one picture.']);
}));
