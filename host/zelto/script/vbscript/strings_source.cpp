// Functions of texts.
#include "script/vbscript/sources.h"

namespace zelto::script::vbscript {

const std::u16string_view kStringsSource =
    uR"js(
// Null in, Null out; else the text.
// Letters become one letter each: "ß" stays.
const upper = s => {
  const text = s.toUpperCase();
  if (text.length === s.length) return text;
  return Array.from(s, c => c.toUpperCase().length === c.length ? c.toUpperCase() : c).join("");
};
const of_text = f => (v, ...rest) => {
  if (typeof v === "string") return f(v, ...rest);
  const value = value_of(v);
  return value === null ? null : f(text_of(value), ...rest);
};
const count_of = v => {
  const n = int(v);
  return n >= 0 ? n : raise(5);
};
// vbBinaryCompare and vbTextCompare.
const same = s => s;
const folded = s => s.toLowerCase();
const folding = mode => {
  const n = int(mode, 0);
  return n === 0 ? same : n === 1 ? folded : raise(5);
};
const is_blank = code => code === 32;
const left_end = s => {
  let at = 0;
  while (at < s.length && is_blank(s.charCodeAt(at))) at++;
  return at;
};
const right_end = s => {
  let at = s.length;
  while (at > 0 && is_blank(s.charCodeAt(at - 1))) at--;
  return at;
};
const limited = n => n <= 1 << 28 ? n : raise(14);
const first_code = v => {
  const s = text(v);
  return s.length > 0 ? s.charCodeAt(0) : raise(5);
};
// The code page of Asc and Chr is that of Western Europe on Windows.
const kWestern = "\u20AC\x81\u201A\u0192\u201E\u2026\u2020\u2021\u02C6\u2030\u0160\u2039\u0152\x8D\u017D\x8F" +
  "\x90\u2018\u2019\u201C\u201D\u2022\u2013\u2014\u02DC\u2122\u0161\u203A\u0153\x9D\u017E\u0178";
const code_in_page = code => {
  const at = code < 128 ? -1 : kWestern.indexOf(fromCharCode(code));
  return at >= 0 ? 128 + at : code <= 255 ? code : 63;
};
// The letters of ASCII by their codes, which is what most pages ask for.
const kLetters = Array.from({ length: 128 }, (_, code) => fromCharCode(code));
const asc = v => {
  if (typeof v === "string" && v.length > 0) {
    const code = v.charCodeAt(0);
    if (code < 128) return code;
  }
  return code_in_page(first_code(v));
};
const chr = n => typeof n === "number" && (n | 0) === n && n >= 0 && n < 128 ? kLetters[n] : chr_of(int(n));
const chr_of = code => {
  if (code < 0 || code > 255) return raise(5);
  return code >= 128 && code < 160 ? kWestern[code - 128] : fromCharCode(code);
};
const is_omitted = v => v === undefined || v === missing;

// instr([start,] in, what [, mode])
const split_start = given => {
  if (given.length < 2 || given.length > 4) return raise(450);
  if (given.length === 2) return [1, given[0], given[1], missing];
  const [start, whole, part, mode] = given, n = value_of(start);
  return [n === null ? raise(94) : int(n, 1), whole, part, mode];
};
const instr = (...given) => {
  if (given.length === 2 && typeof given[0] === "string" && typeof given[1] === "string") {
    return given[0].indexOf(given[1]) + 1;
  }
  const [start, whole, part, mode] = split_start(given), a = value_of(whole), b = value_of(part);
  if (a === null || b === null) return null;
  if (start < 1) return raise(5);
  const fold = folding(mode), s = fold(text_of(a)), sought = fold(text_of(b));
  if (s.length === 0 || start > s.length) return 0;
  return sought.length === 0 ? start : s.indexOf(sought, start - 1) + 1;
};
const instrrev = (whole, part, start, mode) => {
  const a = value_of(whole), b = value_of(part), from = int(optional(start, -1));
  if (a === null || b === null) return null;
  if (from === 0 || from < -1) return raise(5);
  const fold = folding(mode), s = fold(text_of(a)), sought = fold(text_of(b));
  const end = from === -1 ? s.length : from;
  if (s.length === 0 || end > s.length) return 0;
  if (sought.length === 0) return end;
  return end < sought.length ? 0 : s.lastIndexOf(sought, end - sought.length) + 1;
};
// A text that was joined of many parts is put together by the first look at one of its characters; the engine would go
// through all parts with each cut.
const piece_of = (s, from, to) => from < s.length && s.charCodeAt(from) >= 0 ? s.slice(from, to) : "";
const mid = (v, start, length) => {
  if (typeof v === "string" && length === 1 && typeof start === "number" && (start | 0) === start && start > 0) {
    return v.charAt(start - 1);
  }
  return mid_of_text(v, start, length);
};
const mid_of_text = of_text((s, start, length) => {
  const from = int(start);
  if (from < 1) return raise(5);
  return piece_of(s, from - 1, is_omitted(length) ? s.length : from - 1 + count_of(length));
});
const replace = (whole, part, by, start, count, mode) => {
  const s = text(whole), sought = text(part), instead = text(by), from = int(start, 1), most = int(count, -1);
  const fold = folding(mode);
  if (from < 1 || most < -1) return raise(5);
  const rest = s.slice(from - 1);
  if (sought === "" || rest === "" || most === 0) return rest;
  if (fold === same && most === -1) return rest.replaceAll(sought, () => instead);
  const key = fold(sought), where = fold(rest);
  let made = "", at = 0;
  for (let n = 0; n !== most; n++) {
    const found = where.indexOf(key, at);
    if (found < 0) break;
    made += rest.slice(at, found) + instead;
    at = found + key.length;
  }
  return made + rest.slice(at);
};
const split = (whole, separator, count, mode) => {
  const s = text(whole), between = is_given(separator) ? text(separator) : " ", most = int(count, -1);
  const fold = folding(mode);
  if (most < -1) return raise(5);
  if (s === "" || most === 0) return made_array([]);
  if (between === "") return made_array([s]);
  if (fold === same && most === -1) return made_array(s.split(between));
  const key = fold(between), where = fold(s), parts = [];
  let at = 0;
  while (parts.length + 1 !== most) {
    const found = where.indexOf(key, at);
    if (found < 0) break;
    parts.push(s.slice(at, found));
    at = found + key.length;
  }
  parts.push(s.slice(at));
  return made_array(parts);
};
const strcomp = (a, b, mode) => {
  const x = value_of(a), y = value_of(b);
  if (x === null || y === null) return null;
  const fold = folding(mode), s = fold(text_of(x)), t = fold(text_of(y));
  return s < t ? -1 : s > t ? 1 : 0;
};
// Like escape() of JavaScript, but for the characters that stay.
const kStays = /[A-Za-z0-9@*_+\-.\/]/;
const escape = of_text(s => {
  let made = "";
  for (let i = 0; i < s.length; i++) {
    const c = s[i], code = s.charCodeAt(i), digits = code.toString(16).toUpperCase();
    made += kStays.test(c) ? c : code < 256 ? `%${digits.padStart(2, "0")}` : `%u${digits.padStart(4, "0")}`;
  }
  return made;
});
const unescape = of_text(s => s.replace(/%u([0-9a-fA-F]{4})|%([0-9a-fA-F]{2})/g,
  (_, wide, narrow) => fromCharCode(Number.parseInt(wide ?? narrow, 16))));

const string_functions = {
  len: v => {
    if (typeof v === "string") return v.length;
    const value = value_of(v);
    return value === null ? null : text_of(value).length;
  },
  left: of_text((s, n) => piece_of(s, 0, count_of(n))),
  right: of_text((s, n) => {
    const count = count_of(n);
    return count >= s.length ? s : piece_of(s, s.length - count, s.length);
  }),
  mid, instr, instrrev, replace, split, strcomp, escape, unescape,
  ltrim: of_text(s => s.slice(left_end(s))),
  rtrim: of_text(s => s.slice(0, right_end(s))),
  trim: of_text(s => s.slice(left_end(s), right_end(s))),
  lcase: of_text(s => s.toLowerCase()),
  ucase: of_text(s => upper(s)),
  space: n => " ".repeat(limited(count_of(n))),
  string: (n, c) => {
    const given = value_of(n), value = value_of(c);
    if (given === null || value === null) return null;
    const count = limited(count_of(given));
    if (typeof value !== "string") return fromCharCode(to_long(number_of(value)) & 255).repeat(count);
    return value === "" ? raise(5) : value[0].repeat(count);
  },
  strreverse: v => {
    const s = text(v);
    let made = "";
    for (let i = s.length - 1; i >= 0; i--) made += s[i];
    return made;
  },
  asc,
  ascw: v => first_code(v) << 16 >> 16,
  chr,
  chrw: n => {
    const code = int(n);
    return code >= -32768 && code <= 65535 ? fromCharCode(code & 65535) : raise(5);
  },
};
)js";

}  // namespace zelto::script::vbscript
