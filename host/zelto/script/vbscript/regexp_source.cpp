// The RegExp object, its matches and their parts.
#include "script/vbscript/sources.h"

namespace zelto::script::vbscript {

const std::u16string_view kRegExpSource =
    uR"js(
// Read-only collections that are counted from 0.
class Items extends Instance {
  constructor(items) {
    super();
    this[state] = { items };
  }
  "get count"() { return this[state].items.length; }
  "get item"(i) {
    const { items } = this[state], at = to_long(num(i));
    return at >= 0 && at < items.length ? items[at] : raise(5);
  }
}
class Matches extends Items { }
class SubMatches extends Items { }
class Match extends Instance {
  constructor(found) {
    super();
    this[state] = { found, parts: new SubMatches(found.slice(1)) };
  }
  "get value"() { return this[state].found[0]; }
  "get firstindex"() { return this[state].found.index; }
  "get length"() { return this[state].found[0].length; }
  "get submatches"() { return this[state].parts; }
}

// The numbers for what the engine finds wrong in a pattern.
const kPatternErrors = [["missing )", 5020], ["unmatched", 5020], ["missing terminating ]", 5019],
  ["nothing to repeat", 5018], ["out of order", 5021]];
const compiled = of => {
  if (of.made !== undefined) return of.made;
  // What the dialect does not have, and the engine does.
  if (/\(\?<|\\[pPk]\{|\\k</.test(of.pattern.replace(/\\[\\(]/g, ""))) return raise(5017);
  const flags = (of.global ? "g" : "") + (of.ignorecase ? "i" : "") + (of.multiline ? "m" : "");
  try {
    return of.made = new RegExp(of.pattern, flags);
  } catch (error) {
    const known = kPatternErrors.find(([words]) => `${error.message}`.includes(words));
    return raise(known === undefined ? 5017 : known[1]);
  }
};
class RegExpObject extends Instance {
  constructor() {
    super();
    this[state] = { pattern: "", global: false, ignorecase: false, multiline: false, made: undefined };
  }
  "get pattern"() { return this[state].pattern; }
  "let pattern"(v) {
    this[state].pattern = text(v);
    this[state].made = undefined;
  }
  test(s) {
    const expression = compiled(this[state]);
    expression.lastIndex = 0;
    return expression.test(text(s));
  }
  execute(s) {
    const expression = compiled(this[state]), whole = text(s), found = [];
    expression.lastIndex = 0;
    for (let match = expression.exec(whole); match !== null; match = expression.exec(whole)) {
      found.push(new Match(match));
      if (!this[state].global) break;
      if (match[0] === "") expression.lastIndex++;
    }
    return new Matches(found);
  }
  // By a text with $1 and its like, or by what a function makes of match, parts, index and the whole text.
  replace(s, by) {
    const expression = compiled(this[state]), whole = text(s);
    expression.lastIndex = 0;
    if (typeof by === "function" && !is_host(by)) {
      return whole.replace(expression, (...parts) => text(invoke(by, undefined, parts)));
    }
    return whole.replace(expression, text(by));
  }
}
for (const flag of ["global", "ignorecase", "multiline"]) {
  defineProperty(RegExpObject.prototype, `get ${flag}`, { value: function () { return this[state][flag]; } });
  defineProperty(RegExpObject.prototype, `let ${flag}`, { value: function (v) {
    this[state][flag] = boolean(v);
    this[state].made = undefined;
  } });
}
for (const [made, name, key] of [[RegExpObject, "IRegExp2"], [Matches, "IMatchCollection2", "item"],
  [SubMatches, "ISubMatches", "item"], [Match, "IMatch2", "value"]]) {
  defineProperty(made.prototype, " name", { value: name });
  if (key !== undefined) defineProperty(made.prototype, " default", { value: key });
}
const regexp = () => new RegExpObject();
// For the host: an object of it keeps what is told to the expression (regexp_object.cpp). Matches become one array.
const regexp_from_host = (member, pattern, global, ignorecase, multiline, ...given) => {
  const asked = new RegExpObject();
  asked[state] = { pattern, global, ignorecase, multiline, made: undefined };
  const answer = asked[member](...given);
  if (!(answer instanceof Matches)) return answer;
  const list = [];
  for (const match of answer[state].items) {
    const { found } = match[state];
    if (list.length === 0) list.push(found.length + 2);
    list.push(found.index, found[0].length, ...found);
  }
  return list;
};
)js";

}  // namespace zelto::script::vbscript
