// The table page by node's own server and a template that is compiled once.
import { createServer } from 'node:http';
import { fileURLToPath } from 'node:url';
import { Eta } from 'eta';
import { announce, entries } from './entries.mjs';

const folder = fileURLToPath(new URL('.', import.meta.url));
const eta = new Eta({ views: folder, cache: true });
createServer((request, response) => {
  const body = eta.render('./table', { entries: entries() });
  response.writeHead(200, { 'Content-Type': 'text/html; charset=utf-8', 'Content-Length': Buffer.byteLength(body) });
  response.end(body);
}).listen(0, '127.0.0.1', announce);
