// Pages over a database one after the other, on the one connection of the one worker.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { serve } from './site.mjs';

test('a transaction ends with its page, however that ends', async () => {
  const site = await serve(fileURLToPath(new URL('database', import.meta.url)), '--workers', '1');
  const sale = (query) => fetch(new URL(`/sale.asp?${query}`, site.address), { redirect: 'manual' });
  const count = async () => (await sale('end=count')).text();
  try {
    assert.equal((await sale('end=new')).status, 200);
    const ends = { none: 200, end: 200, redirect: 302, error: 500, time: 500, kept: 200 };
    for (const begun of ['call', 'words']) {
      for (const [end, status] of Object.entries(ends)) {
        if (begun === 'words' && end === 'kept') continue;  // goes on with its connection, in the Session
        assert.equal((await sale(`begin=${begun}&end=${end}`)).status, status, end);
        assert.equal(await count(), '0', `begun by ${begun}, ended by ${end}`);
      }
    }
    assert.equal((await sale('end=commit')).status, 200, 'neither autocommit nor a lock is left over');
    assert.equal(await count(), '1');
  } finally {
    assert.equal(await site.stop(), 0, site.log.join('\n'));
  }
});
