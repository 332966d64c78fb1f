// What one row, template or session more costs when there are many: the time of each, which should not grow.
import { measure, requestFile } from './rounds.mjs';
import { newSessions, sessions, table, templates, zelto } from './servers.mjs';

// Rows of the table, in the three ways of writing it. One visitor: a page of 10,000 rows takes a while.
async function rows(on, load, counts) {
  const rows = [];
  for (const count of counts) {
    const server = await zelto(on, 1, table(count));
    for (const way of ['plain', 'text', 'marks'])
      rows.push({ what: way, count, server, load, url: `${server.address}${way}.asp`, connections: 1, units: count });
  }
  return rows;
}

// A page that draws the next one of so many template files.
async function templateFiles(on, load, counts) {
  const rows = [];
  for (const count of counts) {
    const server = await zelto(on, 1, templates(count));
    const requests = await requestFile(Array.from({ length: count }, (_, at) => `/template.asp?number=${at}`));
    rows.push({
      what: 'template', count, server, load, url: server.address, connections: 1, requests, units: 1, warm: 2 * count,
    });
  }
  return rows;
}

// A page that counts its visits in the session, asked for by the next one of so many visitors.
async function visitors(on, load, counts) {
  const rows = [];
  for (const count of counts) {
    const server = await zelto(on, 1, sessions);
    const cookies = await newSessions(`${server.address}session.asp`, count);
    const requests = await requestFile(cookies.map((cookie) => `/session.asp\t${cookie}`));
    rows.push({ what: 'session', count, server, load, url: server.address, connections: 1, requests, units: 1 });
  }
  return rows;
}

const kinds = [
  { title: 'rows', unit: 'a row', counts: [10, 100, 1000, 10000], set_up: rows },
  { title: 'templates', unit: 'a request for the next template', counts: [1, 100, 10000], set_up: templateFiles },
  { title: 'sessions', unit: 'a request of the next visitor', counts: [1, 100, 10000, 50000], set_up: visitors },
];

// For each kind, the time of a unit by what is measured and how many there are.
export async function growth(on, load, { rounds, seconds, tell }) {
  const found = [];
  for (const { title, unit, counts, set_up } of kinds) {
    tell(`growth: ${title}`);
    const rows = await set_up(on, load, counts);
    const results = await measure(rows, { rounds, seconds });
    await Promise.all([...new Set(rows.map((row) => row.server))].map((server) => server.end()));
    found.push({ title, unit, counts, whats: [...new Set(rows.map((row) => row.what))], results });
  }
  return found;
}
