// The table page by express and nunjucks, as their manuals join them.
import { fileURLToPath } from 'node:url';
import express from 'express';
import nunjucks from 'nunjucks';
import { announce, entries } from './entries.mjs';

const folder = fileURLToPath(new URL('.', import.meta.url));
const app = express();
nunjucks.configure(folder, { autoescape: true, trimBlocks: true, express: app });
app.get('/', (request, response) => response.render('table.njk', { entries: entries() }));
app.listen(0, '127.0.0.1', announce);
