#include "vbscript/operators.h"

#include <fmt/xchar.h>

#include <functional>
#include <map>

namespace zelto::vbscript {
namespace {

using Operations = std::map<std::wstring_view, Operation, std::less<>>;

// Their parameters need no dollar: no name of a script is seen from within.

std::wstring is_number(std::wstring_view name) { return fmt::format(L"typeof {} === \"number\"", name); }
std::wstring is_string(std::wstring_view name) { return fmt::format(L"typeof {} === \"string\"", name); }
std::wstring is_integer(std::wstring_view name) {
  return fmt::format(L"typeof {0} === \"number\" && ({0} | 0) === {0}", name);
}
// Of an index, below what the array has in that direction.
std::wstring is_within(std::wstring_view name, std::wstring_view count) {
  return fmt::format(L"{0} && {1} >= 0 && {1} < a.{2}", is_integer(name), name, count);
}

std::wstring numbers() { return is_number(L"a") + L" && " + is_number(L"b"); }
std::wstring array() { return L"typeof a === \"object\" && a !== null && a.constructor === $VbArray"; }
std::wstring element() { return array() + L" && " + is_within(L"i", L"n"); }
std::wstring element_of_two() { return array() + L" && " + is_within(L"i", L"m") + L" && " + is_within(L"j", L"h"); }
std::wstring plain(std::wstring_view name) {
  return fmt::format(L"{} || {} || typeof {} === \"boolean\"", is_number(name), is_string(name), name);
}

// Numbers first, then Doubles that are objects of their own.
void add_arithmetic(std::wstring_view name, std::wstring_view reals, std::wstring_view symbol, Operations* all) {
  all->emplace(name,
               Operation{fmt::format(L"(a, b) => {{ if ({}) {{ const r = a {} b; if ((r | 0) !== r ? r - r === 0 : "
                                     L"(a | 0) === a && (b | 0) === b) return r; }} return ${}(a, b); }}",
                                     numbers(), symbol, reals),
                         reals});
  all->emplace(reals,
               Operation{fmt::format(L"(a, b) => {{ const m = $real(a), n = $real(b), r = m {} n; return r - r !== "
                                     L"0 ? $zelto_vb.{}(a, b) : (r | 0) === r ? new $Double(r) : r; }}",
                                     symbol, name),
                         L"real"});
}

void add_division(std::wstring_view name, std::wstring_view symbol, Operations* all) {
  all->emplace(name,
               Operation{fmt::format(L"(a, b) => {{ if ({} && {} && b > 0) return a {} b | 0; return $zelto_vb.{}(a, "
                                     L"b); }}",
                                     is_integer(L"a"), is_integer(L"b"), symbol, name)});
}

// `w` tells which operand is written in the script, if one is.
void add_order(std::wstring_view name, std::wstring_view symbol, Operations* all) {
  all->emplace(name,
               Operation{fmt::format(L"(a, b, w) => {} ? a {} b : $zelto_vb.{}(a, b, w)", numbers(), symbol, name)});
}
void add_equality(std::wstring_view name, std::wstring_view symbol, Operations* all) {
  all->emplace(name,
               Operation{fmt::format(L"(a, b, w) => {{ if ({0}) return a {1} b; if ({2} && {3}) return a {1} b; return "
                                     L"$zelto_vb.{4}(a, b, w); }}",
                                     numbers(), symbol, is_string(L"a"), is_string(L"b"), name)});
}

void add_elements(Operations* all) {
  constexpr std::wstring_view kNeeds = L"VbArray";
  const std::wstring value = plain(L"v");
  all->emplace(L"real1", Operation{fmt::format(L"(a, i) => {} ? $real(a.d[i]) : NaN", element()), L"real"});
  all->emplace(L"real2",
               Operation{fmt::format(L"(a, i, j) => {} ? $real(a.d[j * a.m + i]) : NaN", element_of_two()), L"real"});
  all->emplace(L"at1", Operation{fmt::format(L"(a, i) => {} ? a.d[i] : undefined", element()), kNeeds});
  all->emplace(L"at2",
               Operation{fmt::format(L"(a, i, j) => {} ? a.d[j * a.m + i] : undefined", element_of_two()), kNeeds});
  all->emplace(L"ix1", Operation{fmt::format(L"(a, i) => {} ? a.d[i] : $zelto_vb.ix1(a, i)", element()), kNeeds});
  all->emplace(
      L"ix2",
      Operation{fmt::format(L"(a, i, j) => {{ if ({}) return a.d[j * a.m + i]; return $zelto_vb.ix(a, i, j); }}",
                            element_of_two()),
                kNeeds});
  all->emplace(L"put1",
               Operation{fmt::format(L"(a, v, i) => {{ if (({}) && {}) a.d[i] = v; else $zelto_vb.put1(a, v, i); }}",
                                     value, element()),
                         kNeeds});
  all->emplace(L"put2", Operation{fmt::format(L"(a, v, i, j) => {{ if (({}) && {}) a.d[j * a.m + i] = v; else "
                                              L"$zelto_vb.putix(a, v, i, j); }}",
                                              value, element_of_two()),
                                  kNeeds});
}

Operations made() {
  Operations all = {
      {L"cat",
       {L"(a, b) => { if (typeof a === \"string\") { if (typeof b === \"string\") return a + b; "
        L"if (typeof b === \"number\" && (b | 0) === b) return a + (b | 0); } return $zelto_vb.cat(a, b); }"}},
      {L"cond", {L"a => a === true || a !== false && $zelto_vb.cond(a)"}},
      {L"div",
       {L"(a, b) => { if (typeof a === \"number\" && typeof b === \"number\" && b !== 0) { const r = a / b; "
        L"if (r - r === 0) return (r | 0) === r ? new $Double(r) : r; } return $zelto_vb.div(a, b); }",
        L"Double"}},
      {L"forn",
       {fmt::format(
           L"(a, b, c) => {} && {} && {} ? {{ at: a, to: b, step: c, box: undefined }} : $zelto_vb.forn(a, b, c)",
           is_integer(L"a"), is_number(L"b"), is_integer(L"c"))}},
      {L"not", {L"a => typeof a === \"boolean\" ? !a : $zelto_vb.not(a)"}},
      {L"num", {L"a => typeof a === \"number\" ? a : $zelto_vb.num(a)"}},
      {L"real",
       {L"v => typeof v === \"number\" ? v : typeof v === \"object\" && v !== null && v.constructor === $Double ? v.v "
        L": "
        L"NaN",
        L"Double"}},
      {L"real_idiv", {L"(a, b) => (a | 0) === a ? a / b | 0 : NaN"}},
      {L"real_mod", {L"(a, b) => (a | 0) === a ? a % b | 0 : NaN"}},
      {L"real_value", {L"n => (n | 0) === n ? new $Double(n) : n", L"Double"}},
      {L"val", {fmt::format(L"a => {} ? a : $zelto_vb.val(a)", plain(L"a"))}},
  };
  add_arithmetic(L"add", L"add_reals", L"+", &all);
  add_arithmetic(L"mul", L"mul_reals", L"*", &all);
  add_arithmetic(L"sub", L"sub_reals", L"-", &all);
  add_division(L"idiv", L"/", &all);
  add_division(L"mod", L"%", &all);
  add_order(L"ge", L">=", &all);
  add_order(L"gt", L">", &all);
  add_order(L"le", L"<=", &all);
  add_order(L"lt", L"<", &all);
  add_equality(L"eq", L"===", &all);
  add_equality(L"ne", L"!==", &all);
  add_elements(&all);
  return all;
}

}  // namespace

const Operation* operation_of(std::wstring_view name) {
  static const Operations all = made();
  const auto found = all.find(name);
  return found == all.end() ? nullptr : &found->second;
}

}  // namespace zelto::vbscript
