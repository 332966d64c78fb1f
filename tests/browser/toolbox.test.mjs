// The toolbox as a visitor sees it in a browser. What each conversion must give comes from Node.
import assert from 'node:assert/strict';
import { createHash } from 'node:crypto';
import { after, before, test } from 'node:test';
import { serve } from '../serve/site.mjs';
import { Browser } from './browser.mjs';

let site;
let browser;
before(async () => {
  site = await serve('toolbox');
  browser = await Browser.start();
});
after(async () => {
  await browser.quit();
  assert.equal(await site.stop(), 0, site.log.join('\n'));
});

const hash = (name, text) => createHash(name).update(text).digest('hex');
const base64 = (text, encoding) => Buffer.from(text, encoding).toString('base64');
const inMemory = (text) => Buffer.from(Uint32Array.from([...text].map((c) => c.codePointAt(0))).buffer).toString('base64');
const percent = (text) => encodeURIComponent(text).replace(/[!'()*]/g, (c) => '%' + c.charCodeAt(0).toString(16).toUpperCase());

// Types the text and answers { call: result } for every row.
async function convert(text) {
  await browser.open(site.address);
  await browser.run("document.querySelector('textarea').value = arguments[0]", text);
  await browser.follow('form button');
  return browser.run(`
    return Object.fromEntries([...document.querySelectorAll('tr:not(.group)')].map((row) => [
      row.querySelector('code').textContent, row.querySelector('output').textContent]));`);
}

const failed = 'not possible for this text (0x80004005)';

test('every conversion of a text is shown', async () => {
  const text = 'Grüße & <日本> "1" 😀';
  const shown = await convert(text);
  assert.equal(await (await browser.find('textarea')).value(), text);
  assert.equal(shown['mirt.HTMLEncode(text)'], 'Grüße &amp; &lt;日本&gt; &quot;1&quot; 😀');
  assert.equal(shown['mirt.URLEncode(text, 65001)'].toUpperCase(), percent(text).toUpperCase());
  assert.equal(shown['mirt.Base64Encode(text, 65001)'], base64(text));
  assert.equal(shown['mirt.Base64Encode(text, -1)'], inMemory(text));
  assert.equal(shown['mirt.MD5(text, 65001)'], hash('md5', text));
  assert.equal(shown['mirt.SHA1(text, 65001)'], hash('sha1', text));
  assert.equal(shown['mirt.SHA1(utf8(text))'], hash('sha1', text));
  assert.equal(shown['mirt.HanToZen(text)'], 'Ｇｒüßｅ　＆　＜日本＞　＂１＂　😀');
  assert.equal(shown['mirt.Base64Decode(text, -2)'], failed);
  assert.match(shown['mirt.MakeGUID(false)'], /^\{[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\}$/);
  assert.match(shown['mirt.MakeGUID(true)'], /^[0-9A-F]{32}$/);
  const key = shown['mirt.MakeKey(16, text)'];
  assert.ok([...key].every((c) => [...text].includes(c)), key);
  assert.equal(Object.keys(shown).length, 18);
});

test('what can be decoded is', async () => {
  let shown = await convert('4pyTIMOp');
  assert.equal(shown['mirt.Base64Decode(text, 65001)'], '✓ é');
  assert.equal(shown['mirt.Base64Decode(text, -2)'], 'e2 9c 93 20 c3 a9');
  shown = await convert('%E2%9C%93%20a');
  assert.equal(shown['mirt.URLDecode(text, 65001)'], '✓ a');
  shown = await convert('&#26085;&#x672C; &amp;');
  assert.equal(shown['mirt.SubmitDecode(text)'].slice(0, 2), '日本');
  shown = await convert('ガギ パ');
  assert.equal(shown['mirt.ZenToHan(text)'], 'ｶﾞｷﾞ ﾊﾟ');
  assert.equal(shown['mirt.HanToZen(text)'], 'ガギ　パ');
  shown = await convert('maybe');
  assert.match(shown['mirt.FindString(["yes", "no", "maybe"], text)'], /^yes$/);
});

test('no text, and a text of markup, stay what they are', async () => {
  let shown = await convert('');
  assert.equal(shown['mirt.MD5(text, 65001)'], hash('md5', ''));
  assert.equal(shown['mirt.HTMLEncode(text)'], '');
  const markup = '</textarea><script>document.title = 1</script>(#x#)^';
  shown = await convert(markup);
  assert.equal(await (await browser.find('textarea')).value(), markup);
  assert.equal(shown['mirt.Trim(text)'], markup);
  assert.equal(await browser.title(), 'Toolbox');
});

test('an address without a text shows the example', async () => {
  await browser.open(site.address);
  assert.notEqual(await (await browser.find('textarea')).value(), '');
});
