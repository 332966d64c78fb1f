// What a document with a walk-through has its reader do, read out of its Markdown in the order in which it stands there:
// files to create and to change, commands to type, and tables of what the browser shows then.

// { step, kind: 'create' | 'replace' | 'append' | 'shell' | 'see', … }; `step` is the heading above. Of a command,
// `promise` is the line above it.
export function stepsOf(markdown) {
  const steps = [];
  let step = '', sentence = '';
  const parts = markdown.matchAll(/^```(\w+)\n([^]*?)^```\n|^(#+ .*)\n|^\| do \| see \|\n\|[-|]+\|\n((?:\|.*\n)+)|^(.+)\n/gm);
  for (const [, language, code, heading, rows, line] of parts) {
    if (heading) step = heading.replace(/^#+ /, '');
    else if (rows) steps.push(...rows.trimEnd().split('\n').map((row) => ({ step, kind: 'see', ...actsOf(row) })));
    else if (line) sentence = /^\W*by$/.test(line) ? sentence : line.startsWith('|') ? '' : line;
    else if (language === 'sh' && !/^(In|At the end of) `/.test(sentence)) steps.push({ step, kind: 'shell', promise: sentence, lines: code.trimEnd().split('\n') });
    else addChange(steps, step, sentence, code);
  }
  return steps;
}

function addChange(steps, step, sentence, code) {
  const [, verb, file] = sentence.match(/^(Create|Replace all of|In|At the end of) `([^`]+)`(?:[:,]| by)/) ?? [];
  const last = steps.at(-1);
  if (verb === 'Create') steps.push({ step, kind: 'create', file, code, isNew: true });
  else if (verb === 'Replace all of') steps.push({ step, kind: 'create', file, code, isNew: false });
  else if (verb === 'At the end of') steps.push({ step, kind: 'append', file, code });
  else if (verb === 'In' && last?.kind === 'replace' && last.by === undefined) last.by = code;
  else if (verb === 'In' && sentence.endsWith(', replace')) steps.push({ step, kind: 'replace', file, code });
  else throw new Error(`nothing says what to do with\n${code}after "${sentence}"`);
}

// "| write `a`, press `Add` | `a` above `b` |"
function actsOf(row) {
  const [acts, sights] = row.slice(1, -1).split('|').map((cell) => cell.trim().split(/, (?=(?:[^`]*`[^`]*`)*[^`]*$)/));
  return { acts, sights };
}

// The text after a change; a piece that is to be replaced stands in it once.
export function changed(text, change) {
  if (change.kind === 'append') return text + change.code;
  const places = text.split(change.code).length - 1;
  if (places !== 1) throw new Error(`${change.file} has ${places} times\n${change.code}`);
  return text.split(change.code).join(change.by);
}
