#include "vbscript/constants.h"

#include <algorithm>
#include <utility>

namespace zelto::vbscript {
namespace {

using Entry = std::pair<std::wstring_view, ConstantValue>;

using namespace std::string_view_literals;

// Sorted by name.
constexpr Entry kConstants[] = {
    {L"vbabort", 3},
    {L"vbabortretryignore", 2},
    {L"vbapplicationmodal", 0},
    {L"vbarray", 8192},
    {L"vbbinarycompare", 0},
    {L"vbblack", 0},
    {L"vbblue", 0xFF0000},
    {L"vbboolean", 11},
    {L"vbbyte", 17},
    {L"vbcancel", 2},
    {L"vbcr", L"\r"sv},
    {L"vbcritical", 16},
    {L"vbcrlf", L"\r\n"sv},
    {L"vbcurrency", 6},
    {L"vbcyan", 0xFFFF00},
    {L"vbdatabasecompare", 2},
    {L"vbdataobject", 13},
    {L"vbdate", 7},
    {L"vbdecimal", 14},
    {L"vbdefaultbutton1", 0},
    {L"vbdefaultbutton2", 256},
    {L"vbdefaultbutton3", 512},
    {L"vbdefaultbutton4", 768},
    {L"vbdouble", 5},
    {L"vbempty", 0},
    {L"vberror", 10},
    {L"vbexclamation", 48},
    {L"vbfalse", 0},
    {L"vbfirstfourdays", 2},
    {L"vbfirstfullweek", 3},
    {L"vbfirstjan1", 1},
    {L"vbformfeed", L"\f"sv},
    {L"vbfriday", 6},
    {L"vbgeneraldate", 0},
    {L"vbgreen", 0xFF00},
    {L"vbignore", 5},
    {L"vbinformation", 64},
    {L"vbinteger", 2},
    {L"vblf", L"\n"sv},
    {L"vblong", 3},
    {L"vblongdate", 1},
    {L"vblongtime", 3},
    {L"vbmagenta", 0xFF00FF},
    {L"vbmonday", 2},
    {L"vbmsgboxhelpbutton", 16384},
    {L"vbmsgboxright", 524288},
    {L"vbmsgboxrtlreading", 1048576},
    {L"vbmsgboxsetforeground", 65536},
    {L"vbnewline", L"\r\n"sv},
    {L"vbno", 7},
    {L"vbnull", 1},
    {L"vbnullchar", L"\0"sv},
    {L"vbnullstring", L""sv},
    {L"vbobject", 9},
    {L"vbobjecterror", -2147221504},
    {L"vbok", 1},
    {L"vbokcancel", 1},
    {L"vbokonly", 0},
    {L"vbquestion", 32},
    {L"vbred", 0xFF},
    {L"vbretry", 4},
    {L"vbretrycancel", 5},
    {L"vbsaturday", 7},
    {L"vbshortdate", 2},
    {L"vbshorttime", 4},
    {L"vbsingle", 4},
    {L"vbstring", 8},
    {L"vbsunday", 1},
    {L"vbsystemmodal", 4096},
    {L"vbtab", L"\t"sv},
    {L"vbtextcompare", 1},
    {L"vbthursday", 5},
    {L"vbtrue", -1},
    {L"vbtuesday", 3},
    {L"vbusedefault", -2},
    {L"vbusesystem", 0},
    {L"vbusesystemdayofweek", 0},
    {L"vbvariant", 12},
    {L"vbverticaltab", L"\v"sv},
    {L"vbwednesday", 4},
    {L"vbwhite", 0xFFFFFF},
    {L"vbyellow", 0xFFFF},
    {L"vbyes", 6},
    {L"vbyesno", 4},
    {L"vbyesnocancel", 3},
};

static_assert(std::ranges::is_sorted(kConstants, {}, &Entry::first));

}  // namespace

std::optional<ConstantValue> constant_of(std::wstring_view folded_name) {
  const auto* const found = std::ranges::lower_bound(kConstants, folded_name, {}, &Entry::first);
  if (found == std::end(kConstants) || found->first != folded_name) return std::nullopt;
  return found->second;
}

}  // namespace zelto::vbscript
