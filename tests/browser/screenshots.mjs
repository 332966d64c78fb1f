// Pictures of the examples for the documents: `./dev screenshots`, which puts them into docs/images.
import { mkdir, writeFile } from 'node:fs/promises';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { serve } from '../serve/site.mjs';
import { Browser } from './browser.mjs';

const folder = fileURLToPath(new URL('../../docs/images', import.meta.url));

const scenes = {
  async guestbook(browser) {
    for (const [name, words] of [['Ann', 'What a lovely page!'], ['Bo', 'Where is the map of the garden?']]) {
      await browser.fill('input[name=name]', name);
      await browser.fill('textarea[name=words]', words);
      await browser.follow('#sign button');
    }
  },
  async todo(browser) {
    await browser.fill('input[type=password]', 'change me');
    await browser.follow('button');
    for (const what of ['Water the plants', 'Send the invitations', 'Call the printer']) {
      await browser.fill('input[name=words]', what);
      await browser.follow('form.card button');
    }
  },
  async toolbox() {},
};

await mkdir(folder, { recursive: true });
for (const [example, play] of Object.entries(scenes)) {
  const site = await serve(example);
  const browser = await Browser.start();
  try {
    await browser.open(site.address);
    await play(browser);
    const picture = await browser.picture({ width: 800, height: 600 });
    await writeFile(join(folder, `${example}.webp`), picture);
    console.log(`docs/images/${example}.webp: ${picture.length} bytes`);
  } finally {
    await browser.quit();
    await site.stop();
  }
}
