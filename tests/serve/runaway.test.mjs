// Pages that fail or never end: each is an error of its own request, and the host goes on serving.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { serve } from './site.mjs';

// Asks the folder's page for each way in turn; what the log says of it is in the row. One worker serves them all.
const fails = (name, folder, rows) =>
  test(name, async () => {
    const site = await serve(fileURLToPath(new URL(folder, import.meta.url)), '--workers', '1');
    let cookie = '';
    const get = async (way) => {
      const answer = await fetch(`${site.address}?way=${way}`, { headers: { cookie } });
      cookie = answer.headers.get('set-cookie')?.split(';')[0] ?? cookie;
      return { status: answer.status, text: await answer.text() };
    };
    try {
      for (const [way, line] of rows) {
        site.log.length = 0;
        assert.equal((await get(way)).status, line ? 500 : 200, way);
        assert.match((await get('none')).text, /served$/m, way);
        const said = site.log.filter((text) => !text.includes('"GET '));
        assert.equal(said.length, line ? 1 : 0, `${way}: ${said}`);
        if (line) assert.match(said[0], line, way);
      }
    } finally {
      assert.equal(await site.stop(), 0, site.log.join('\n'));
    }
  });

fails('a page that fails is an error of its own request', 'runaway', [
  ['callback', /^\/default\.asp:9: thrown in a callback; in \(text\):1:1 \(#%thrown#\) \(TypeError, /],
  ['keep_in_session', /^\/default\.asp:13: A script's object ends with its page and cannot be kept in the Session\./],
  ['keep_in_application', /^\/default\.asp:14: The Application keeps plain values and dictionaries only\./],
  ['keep_hidden'],
  ['use_hidden', /^\/default\.asp:20: The page that made this script object has ended /],
  ['recurse', /^\/default\.asp:21: Maximum call stack size exceeded\. \(RangeError, /],
  // Whichever call found the stack used up.
  ['recurse_through_component', /^\/default\.asp:\d+: Out of stack space; in \(text\):1:1 \(#%again#\), .* \(RangeError, /],
  ['grow', /^\/default\.asp:\d+: The page took more memory than the site allows\. /],
  ['grow_dictionary', /^\/default\.asp:\d+: The page took more memory than the site allows\. /],
  ['grow_component', /^\/default\.asp:\d+: The page took more memory than the site allows\. /],
  ['grow_text', /^\/default\.asp:24: Out of memory: a text has 2147483647 characters at most, .* script_memory \(RangeError, /],
]);

fails('a page that never ends is an error of its own request', 'endless', [
  ['script', /^\/default\.asp:\d+: The page took longer than the site allows\. /],
  ['promises', /^\/default\.asp(:\d+)?: The page took longer than the site allows\. /],
  ['awaits', /^\/default\.asp(:\d+)?: The page took longer than the site allows\. /],
  ['thenable', /^\/default\.asp(:\d+)?: The page took longer than the site allows\. /],
  ['transfer', /^\/[a-z]+\.asp(:\d+)?: The page took longer than the site allows\. /],
  ['calls', /^\/default\.asp:\d+: The page took longer than the site allows\. /],
]);
