// Functions of texts that are bytes.
#include "script/vbscript/sources.h"

namespace zelto::script::vbscript {

const std::u16string_view kBytesSource =
    uR"js(
// Null in, Null out; else something that byte_at() reads.
const of_bytes_of = f => (v, ...rest) => {
  const value = value_of(v);
  return value === null ? null : f(byte_source_of(value), ...rest);
};
const is_at = (s, at, sought) => {
  for (let i = 0; i < sought.length; i++) if (byte_at(s, at + i) !== sought.charCodeAt(i)) return false;
  return true;
};
const byte_index_of = (s, sought, from) => {
  const last = byte_length(s) - sought.length, first = sought.charCodeAt(0);
  if (s instanceof Uint8Array) {
    for (let at = s.indexOf(first, from); at >= 0 && at <= last; at = s.indexOf(first, at + 1)) {
      if (is_at(s, at, sought)) return at;
    }
    return -1;
  }
  for (let at = from; at <= last; at++) if (byte_at(s, at) === first && is_at(s, at, sought)) return at;
  return -1;
};

const byte_functions = {
  lenb: of_bytes_of(byte_length),
  leftb: of_bytes_of((s, n) => {
    const count = count_of(n), length = byte_length(s);
    return byte_slice(s, 0, count < length ? count : length);
  }),
  rightb: of_bytes_of((s, n) => {
    const count = count_of(n), length = byte_length(s);
    return byte_slice(s, count < length ? length - count : 0, length);
  }),
  midb: of_bytes_of((s, start, count) => {
    const from = int(start) - 1, length = byte_length(s);
    if (from < 0) return raise(5);
    if (from >= length) return "";
    const to = is_omitted(count) ? length : from + count_of(count);
    return byte_slice(s, from, to < length ? to : length);
  }),
  instrb: (...given) => {
    const [start, whole, part] = split_start(given), a = value_of(whole), b = value_of(part);
    if (a === null || b === null) return null;
    if (start < 1) return raise(5);
    const s = byte_source_of(a), sought = bytes_of(b);
    if (byte_length(s) === 0 || start > byte_length(s)) return 0;
    return sought === "" ? start : byte_index_of(s, sought, start - 1) + 1;
  },
  ascb: v => {
    const s = byte_source_of(value_of(v) ?? raise(94));
    return new Byt(byte_length(s) > 0 ? byte_at(s, 0) : raise(5));
  },
  chrb: n => {
    const code = int(n);
    return code >= 0 && code <= 255 ? new ByteString(fromCharCode(code)) : raise(6);
  },
};
)js";

}  // namespace zelto::script::vbscript
