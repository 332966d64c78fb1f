#include "vbscript/operators.h"

#include <algorithm>

namespace zelto::vbscript {
namespace {

// Their parameters need no dollar: no name of a script is seen from within.
constexpr Operation kOperations[] = {
    {L"add",
     L"(a, b) => { if (typeof a === \"number\" && typeof b === \"number\") { const r = a + b; "
     L"if ((r | 0) !== r ? r - r === 0 : (a | 0) === a && (b | 0) === b) return r; } return $add_reals(a, b); }",
     L"add_reals"},
    {L"add_reals",
     L"(a, b) => { const m = $real(a), n = $real(b), r = m + n; return r - r !== 0 ? $zelto_vb.add(a, b) : (r | 0) === "
     L"r ? new $Double(r) : r; }",
     L"real"},
    {L"cat",
     L"(a, b) => { if (typeof a === \"string\") { if (typeof b === \"string\") return a + b; "
     L"if (typeof b === \"number\" && (b | 0) === b) return a + (b | 0); } return $zelto_vb.cat(a, b); }"},
    {L"cond", L"a => a === true || a !== false && $zelto_vb.cond(a)"},
    {L"div",
     L"(a, b) => { if (typeof a === \"number\" && typeof b === \"number\" && b !== 0) { const r = a / b; "
     L"if (r - r === 0) return (r | 0) === r ? new $Double(r) : r; } return $zelto_vb.div(a, b); }",
     L"Double"},
    {L"eq",
     L"(a, b, w) => { if (typeof a === \"number\" && typeof b === \"number\") return a === b; "
     L"if (typeof a === \"string\" && typeof b === \"string\") return a === b; return $zelto_vb.eq(a, b, w); }"},
    {L"forn",
     L"(a, b, c) => typeof a === \"number\" && (a | 0) === a && typeof b === \"number\" && typeof c === \"number\" && "
     L"(c | 0) === c ? { at: a, to: b, step: c, box: undefined } : $zelto_vb.forn(a, b, c)"},
    {L"ge", L"(a, b, w) => typeof a === \"number\" && typeof b === \"number\" ? a >= b : $zelto_vb.ge(a, b, w)"},
    {L"gt", L"(a, b, w) => typeof a === \"number\" && typeof b === \"number\" ? a > b : $zelto_vb.gt(a, b, w)"},
    {L"idiv",
     L"(a, b) => { if (typeof a === \"number\" && (a | 0) === a && typeof b === \"number\" && (b | 0) === b "
     L"&& b > 0) return a / b | 0; return $zelto_vb.idiv(a, b); }"},
    {L"ix1",
     L"(a, i) => typeof a === \"object\" && a !== null && a.constructor === $VbArray && typeof i === \"number\" && "
     L"(i | 0) === i && i >= 0 && i < a.n ? a.d[i] : $zelto_vb.ix1(a, i)",
     L"VbArray"},
    {L"ix2",
     L"(a, i, j) => { if (typeof a === \"object\" && a !== null && a.constructor === $VbArray && typeof i === "
     L"\"number\" && (i | 0) === i && i >= 0 && i < a.m && typeof j === \"number\" && (j | 0) === j && j >= 0 && "
     L"j < a.h) return a.d[j * a.m + i]; return $zelto_vb.ix(a, i, j); }",
     L"VbArray"},
    {L"le", L"(a, b, w) => typeof a === \"number\" && typeof b === \"number\" ? a <= b : $zelto_vb.le(a, b, w)"},
    {L"lt", L"(a, b, w) => typeof a === \"number\" && typeof b === \"number\" ? a < b : $zelto_vb.lt(a, b, w)"},
    {L"mod",
     L"(a, b) => { if (typeof a === \"number\" && (a | 0) === a && typeof b === \"number\" && (b | 0) === b "
     L"&& b > 0) return a % b | 0; return $zelto_vb.mod(a, b); }"},
    {L"mul",
     L"(a, b) => { if (typeof a === \"number\" && typeof b === \"number\") { const r = a * b; "
     L"if ((r | 0) !== r ? r - r === 0 : (a | 0) === a && (b | 0) === b) return r; } return $mul_reals(a, b); }",
     L"mul_reals"},
    {L"mul_reals",
     L"(a, b) => { const m = $real(a), n = $real(b), r = m * n; return r - r !== 0 ? $zelto_vb.mul(a, b) : (r | 0) === "
     L"r ? new $Double(r) : r; }",
     L"real"},
    {L"ne",
     L"(a, b, w) => { if (typeof a === \"number\" && typeof b === \"number\") return a !== b; "
     L"if (typeof a === \"string\" && typeof b === \"string\") return a !== b; return $zelto_vb.ne(a, b, w); }"},
    {L"not", L"a => typeof a === \"boolean\" ? !a : $zelto_vb.not(a)"},
    {L"num", L"a => typeof a === \"number\" ? a : $zelto_vb.num(a)"},
    {L"put1",
     L"(a, v, i) => { if ((typeof v === \"number\" || typeof v === \"string\" || typeof v === \"boolean\") && "
     L"typeof a === \"object\" && a !== null && a.constructor === $VbArray && typeof i === \"number\" && "
     L"(i | 0) === i && i >= 0 && i < a.n) a.d[i] = v; else $zelto_vb.put1(a, v, i); }",
     L"VbArray"},
    {L"put2",
     L"(a, v, i, j) => { if ((typeof v === \"number\" || typeof v === \"string\" || typeof v === \"boolean\") && "
     L"typeof a === \"object\" && a !== null && a.constructor === $VbArray && typeof i === \"number\" && "
     L"(i | 0) === i && i >= 0 && i < a.m && typeof j === \"number\" && (j | 0) === j && j >= 0 && j < a.h) "
     L"a.d[j * a.m + i] = v; else $zelto_vb.putix(a, v, i, j); }",
     L"VbArray"},
    {L"real",
     L"v => typeof v === \"number\" ? v : typeof v === \"object\" && v !== null && v.constructor === $Double ? v.v : "
     L"NaN",
     L"Double"},
    {L"sub",
     L"(a, b) => { if (typeof a === \"number\" && typeof b === \"number\") { const r = a - b; "
     L"if ((r | 0) !== r ? r - r === 0 : (a | 0) === a && (b | 0) === b) return r; } return $sub_reals(a, b); }",
     L"sub_reals"},
    {L"sub_reals",
     L"(a, b) => { const m = $real(a), n = $real(b), r = m - n; return r - r !== 0 ? $zelto_vb.sub(a, b) : (r | 0) === "
     L"r ? new $Double(r) : r; }",
     L"real"},
    {L"val",
     L"a => typeof a === \"number\" || typeof a === \"string\" || typeof a === \"boolean\" ? a : "
     L"$zelto_vb.val(a)"},
};
static_assert(std::ranges::is_sorted(kOperations, {}, &Operation::name));

}  // namespace

const Operation* operation_of(std::wstring_view name) {
  const auto* const found = std::ranges::lower_bound(kOperations, name, {}, &Operation::name);
  return found != std::end(kOperations) && found->name == name ? found : nullptr;
}

}  // namespace zelto::vbscript
