// Each example has an icon that a browser finds and can draw, so that nothing of a site is missing in its log.
import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';
import { serve } from '../serve/site.mjs';
import { Browser } from './browser.mjs';

let browser;
before(async () => { browser = await Browser.start(); });
after(() => browser.quit());

for (const example of ['gallery', 'guestbook', 'hello', 'notebook', 'todo', 'toolbox']) {
  test(`${example} has an icon`, async () => {
    const site = await serve(example);
    try {
      await browser.open(site.address);
      const width = await browser.run(`
        const icon = new Image();
        icon.src = document.querySelector('link[rel=icon]')?.href ?? '/favicon.ico';
        return icon.decode().then(() => icon.width, () => 0);`);
      assert.ok(width > 0);
    } finally {
      assert.equal(await site.stop(), 0, site.log.join('\n'));
    }
    assert.deepEqual(site.log.filter((line) => / 404\b/.test(line)), []);
  });
}
