// Many visitors at once: nobody sees another's entries, and nothing is left of them in the end.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { serve } from './site.mjs';
import { Visitor } from './visitor.mjs';

const visitors = 32;
const requests = 200;
const kept = 5;

async function visit(site, name) {
  const visitor = new Visitor(site.address);
  await visitor.open();
  const expected = [];
  for (let i = 1; i < requests; ++i) {
    if (expected.length < kept) {
      const text = `${name}: ${i}`;
      await visitor.command('Save', { id: '', name, text });
      const id = String(Math.max(0, ...expected.map((entry) => Number(entry.id))) + 1);
      expected.unshift({ id, name, text });
    } else {
      await visitor.command('Delete', { id: expected.pop().id });
    }
    assert.equal(visitor.status, 200, site.log.filter((line) => !line.includes('" 200 ')).join('\n'));
    assert.deepEqual(visitor.entries, expected, `request ${i} of ${name}`);
  }
}

test(`${visitors} visitors with ${requests} requests each see their own entries`, async () => {
  const site = await serve('notebook', '--workers', '4');
  try {
    await Promise.all(Array.from({ length: visitors }, (_, i) => visit(site, `visitor-${i}`)));
  } finally {
    assert.equal(await site.stop(), 0, 'no component object is left\n' + site.log.slice(-20).join('\n'));
  }
});
