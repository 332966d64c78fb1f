// What the table page shows, and where its server is.
export const entries = () => Array.from({ length: 100 }, (_, at) => ({
  id: at + 1,
  name: `Entry <${at + 1}> of the list`,
  words: `What was said & done about entry ${at + 1}, in about as many words as a line of a list or a table has`,
  amount: (at + 1) * 37,
}));

// As the bench expects it.
export function announce() { console.log(`http://127.0.0.1:${this.address().port}/`); }
