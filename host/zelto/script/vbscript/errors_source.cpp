// Err, and what an exception means to it.
#include "script/vbscript/sources.h"

namespace zelto::script::vbscript {

const std::u16string_view kErrorsSource =
    uR"js(
const state = Symbol("state");  // what the library's own objects keep, where no name leads

const err_state = { number: 0, source: "", description: "", file: "", context: 0, is_set: false };
const clear = () => {
  if (err_state.is_set) set_err(0, "", "");
  err_state.is_set = false;
};
const set_err = (number, source, description) => {
  err_state.number = number;
  err_state.source = source;
  err_state.description = description;
  err_state.file = "";
  err_state.context = 0;
  err_state.is_set = true;
};
// What Next does of a loop that could not begin, the statements of which have run once.
const not_begun = () => set_err(92, kRuntime, words_of(92));
function* once_of(v) {
  yield v;
  not_begun();
}
const once = v => new Steps(once_of(v));
class ErrObject extends Instance {
  "get number"() { return err_state.number; }
  "let number"(v) { err_state.number = to_long(num(v)); err_state.is_set = true; }
  "get source"() { return err_state.source; }
  "let source"(v) { err_state.source = text(v); err_state.is_set = true; }
  "get description"() { return err_state.description; }
  "let description"(v) { err_state.description = text(v); err_state.is_set = true; }
  "get helpfile"() { return err_state.file; }
  "let helpfile"(v) { err_state.file = text(v); err_state.is_set = true; }
  "get helpcontext"() { return err_state.context; }
  "let helpcontext"(v) { err_state.context = to_long(num(v)); err_state.is_set = true; }
  clear() { clear(); }
}
// A method is called with as many arguments as it names, but for these.
const optional_arguments = (made, name, least, most, f) => {
  defineProperty(made.prototype, name, { value: function (...given) {
    return given.length >= least && given.length <= most ? apply(f, this, given) : raise(450);
  } });
  defineProperty(made.prototype[name], " any", { value: true });
};
optional_arguments(ErrObject, "raise", 1, 5, (number, source, description, file, context) => {
  const n = to_long(num(number));
  if (n === 0) return raise(5);
  const said = is_given(description) ? text(description) : words_of(error_number(n));
  const error = new VbError(n, said, is_given(source) ? text(source) : undefined);
  defineProperty(error, "help", { value: [is_given(file) ? text(file) : "", int(context, 0)] });
  throw error;
});
defineProperty(ErrObject.prototype, " name", { value: "Object" });
defineProperty(ErrObject.prototype, " default", { value: "number" });
const err = freeze(new ErrObject());

// Results of the host that scripts know by a number of their own.
const kResults = new Map([[0x80004001, 445], [0x80004002, 430], [0x8007000E, 7], [0x80020003, 438], [0x80020005, 13],
  [0x80020006, 438], [0x80020007, 446], [0x80020008, 458], [0x8002000A, 6], [0x8002000B, 9], [0x8002000D, 10],
  [0x8002000E, 450], [0x8002000F, 449], [0x80020004, 449], [0x80020012, 11], 
  [0x80030002, 53], [0x80030005, 70], [0x80070005, 70]]);
const error_number = n => (n & 0xFFFF0000) === (0x800A0000 | 0) ? n & 0xFFFF : kResults.get(n >>> 0) ?? n;
// The engine's own errors.
const engine_number = (name, message) => {
  if (message.includes("Maximum call stack") || message.includes("Out of stack")) return 28;
  if (message.includes("Out of memory")) return 7;
  if (name === "ReferenceError") return 500;
  if (name === "SyntaxError") return 1002;
  if (name !== "TypeError") return 507;
  return message.includes("is not a function") ? 13 : message.includes("is not an object") ? 424 : 13;
};
// What a page did not end with comes here; a page that has ended goes on being ended.
const caught = error => {
  native.check();
  if (typeof error !== "object" || error === null) return set_err(507, kRuntime, words_of(507));
  const { name, message, number, source, help } = error, said = `${message ?? ""}`;
  if (typeof number !== "number") {
    const known = engine_number(`${name}`, said);
    return set_err(known, kRuntime, kWords[known] ?? said);
  }
  const known = error_number(number | 0);
  // Words of the host end with its own number, which is not the one that scripts know.
  const at = known === (number | 0) ? -1 : said.lastIndexOf(" (0x");
  set_err(known, typeof source === "string" && source !== "" ? source : kRuntime,
    at > 0 && said.endsWith(")") ? said.slice(0, at) : said);
  if (help !== undefined) [err_state.file, err_state.context] = help;
};
)js";

}  // namespace zelto::script::vbscript
