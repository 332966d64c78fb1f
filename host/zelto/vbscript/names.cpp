#include "vbscript/names.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "base/ascii.h"
#include "base/letter_case.h"
#include "language/lexemes.h"

namespace zelto::vbscript {
namespace {

// Beside the words of which language/lexemes knows.
constexpr auto kReserved =
    std::to_array<std::wstring_view>({L"Infinity", L"NaN", L"arguments", L"eval", L"implements", L"interface", L"let",
                                      L"package", L"private", L"protected", L"public", L"static", L"undefined"});

constexpr auto kGlobals = std::to_array<std::wstring_view>({
    L"ActiveXObject",
    L"AggregateError",
    L"Array",
    L"ArrayBuffer",
    L"Atomics",
    L"BigInt",
    L"BigInt64Array",
    L"BigUint64Array",
    L"Boolean",
    L"CollectGarbage",
    L"DataView",
    L"Date",
    L"Enumerator",
    L"Error",
    L"EvalError",
    L"FinalizationRegistry",
    L"Float32Array",
    L"Float64Array",
    L"Function",
    L"Infinity",
    L"Int16Array",
    L"Int32Array",
    L"Int8Array",
    L"Intl",
    L"Iterator",
    L"JSON",
    L"Map",
    L"Math",
    L"Number",
    L"Object",
    L"Promise",
    L"Proxy",
    L"RangeError",
    L"ReferenceError",
    L"Reflect",
    L"RegExp",
    L"ScriptEngine",
    L"ScriptEngineBuildVersion",
    L"ScriptEngineMajorVersion",
    L"ScriptEngineMinorVersion",
    L"Set",
    L"SharedArrayBuffer",
    L"String",
    L"Symbol",
    L"SyntaxError",
    L"TypeError",
    L"URIError",
    L"Uint16Array",
    L"Uint32Array",
    L"Uint8Array",
    L"Uint8ClampedArray",
    L"VBArray",
    L"WeakMap",
    L"WeakRef",
    L"WeakSet",
    L"WebAssembly",
    L"console",
    L"decodeURI",
    L"decodeURIComponent",
    L"encodeURI",
    L"encodeURIComponent",
    L"escape",
    L"globalThis",
    L"isFinite",
    L"isNaN",
    L"parseFloat",
    L"parseInt",
    L"unescape",
    L"constructor",
    L"hasOwnProperty",
    L"isPrototypeOf",
    L"propertyIsEnumerable",
    L"toLocaleString",
    L"toString",
    L"valueOf",
});

constexpr auto kHosts = std::to_array<std::wstring_view>(
    {L"Application", L"ObjectContext", L"Request", L"Response", L"ScriptingContext", L"Server", L"Session"});

template <class List>
bool contains(const List& list, std::wstring_view word) {
  return std::ranges::find(list, word) != list.end();
}

constexpr wchar_t kFirstBeyond = 0xC0;

std::wstring in_plain_letters(std::wstring_view name) {
  std::wstring made;
  for (const wchar_t c : name) {
    const bool is_plain =
        base::is_alphanumeric(c) || c == L'_' || (c >= kFirstBeyond && c < 0x250 && c != 0xD7 && c != 0xF7);
    if (is_plain && !(made.empty() && base::is_digit(c))) {
      made += c;
    } else {
      for (const char digit : fmt::format("${:x}_", static_cast<unsigned>(c))) made += static_cast<wchar_t>(digit);
    }
  }
  return made.empty() ? L"$empty" : made;
}

}  // namespace

std::wstring script_name(std::wstring_view name, bool is_top_level) {
  std::wstring made = in_plain_letters(name);
  const bool is_taken = !language::is_plain_name(made) || contains(kReserved, made) ||
                        (is_top_level && (contains(kGlobals, made) || contains(kHosts, made)));
  if (is_taken) made += L'$';
  return made;
}

std::wstring_view host_name(std::wstring_view folded_name) {
  const auto* const found =
      std::ranges::find_if(kHosts, [&](std::wstring_view host) { return base::equal_ascii(host, folded_name); });
  return found == kHosts.end() ? std::wstring_view() : *found;
}

}  // namespace zelto::vbscript
