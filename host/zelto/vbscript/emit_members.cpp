// Members of instances of the script's own classes. Which object a name stands for is known only when the script runs;
// so each class has its public members a second time, under names that tell how many arguments they take, and a call
// asks the object for that first: the engine learns where it is. Anything else, and an error, is left to the library.
// Not for procedures that take references, nor where references to instances are counted.
#include <fmt/xchar.h>

#include <algorithm>

#include "base/letter_case.h"
#include "vbscript/emitter.h"

namespace zelto::vbscript {
namespace {

constexpr std::size_t kMostArguments = 4;
constexpr std::wstring_view kParameters[] = {L"", L", a", L", a, b", L", a, b, c", L", a, b, c, d"};

std::wstring written(std::wstring_view text) {
  ScriptWriter literal;
  literal.put_string(text);
  return literal.text();
}

// No name of a script begins with a blank.
std::wstring key_of_call(std::wstring_view folded, std::size_t count) { return fmt::format(L" {} {}", folded, count); }
std::wstring key_of_let(std::wstring_view folded) { return fmt::format(L" {} =", folded); }

bool takes_values(const ProcedureInfo& procedure) {
  return std::ranges::find(procedure.references, true) == procedure.references.end();
}

bool has_call(const ClassInfo::Member& member, std::size_t count) {
  if (member.is_private) return false;
  if (member.field) return count == 0;
  const ProcedureInfo* const called = member.method ? member.method : member.get;
  return called && !called->tree->is_private && called->references.size() == count && takes_values(*called);
}
bool has_let(const ClassInfo::Member& member) {
  if (member.field) return !member.is_private;
  return member.let && !member.let->tree->is_private && member.let->references.size() == 1 && takes_values(*member.let);
}

bool is_in_a_class(const ScriptNames& names, std::wstring_view folded,
                   const std::function<bool(const ClassInfo::Member&)>& has_it) {
  return std::ranges::any_of(names.classes, [&](const ClassInfo& one) {
    const auto found = one.members.find(folded);
    return found != one.members.end() && has_it(found->second);
  });
}

}  // namespace

// The name of a function that stands in front of all.
std::wstring Emitter::member_function(const std::wstring& text) {
  const auto known = std::ranges::find(member_functions_, text);
  const auto number = known - member_functions_.begin();
  if (known == member_functions_.end()) member_functions_.push_back(text);
  return L"$m" + std::to_wstring(number);
}

// What calls such a member of an object; empty where no class has it. The arguments in these places are variables,
// whose new values an object of a component may answer.
std::wstring Emitter::quick_call(const Expression& e, const Expression& member, unsigned places) {
  const std::size_t count = e.kind == Expression::call ? e.parts.size() - 1 : 0;
  const std::wstring folded = base::folded(member.text);
  const auto has_it = [&](const ClassInfo::Member& one) { return has_call(one, count); };
  const bool has_all = e.kind != Expression::call ||
                       std::ranges::all_of(e.parts, [](const ExpressionPtr& part) { return part != nullptr; });
  if (is_fragment_ || counts_ || !has_all || count > kMostArguments || !is_in_a_class(names_, folded, has_it))
    return {};
  const std::wstring key = written(key_of_call(folded, count));
  const std::wstring_view parameters = kParameters[count];
  const std::wstring asked = places != 0 ? fmt::format(L", {}", places) : std::wstring();
  return member_function(
      fmt::format(L"(o{0}) => typeof o === \"object\" && o !== null && typeof o[{1}] === \"function\" ? o[{1}]({2}) : "
                  L"{3}(o, {4}{5}{0})",
                  parameters, key, count == 0 ? parameters : parameters.substr(2),
                  library(places != 0 ? L"ask" : L"get"), written(member.text), asked));
}

// The same of what assigns to it.
std::wstring Emitter::quick_let(const Expression& member) {
  const std::wstring folded = base::folded(member.text);
  if (is_fragment_ || counts_ || !is_in_a_class(names_, folded, has_let)) return {};
  const std::wstring key = written(key_of_let(folded));
  return member_function(fmt::format(
      L"(o, v) => typeof o === \"object\" && o !== null && typeof o[{0}] === \"function\" ? o[{0}]({1}(v)) : "
      L"{2}(o, {3}, v)",
      key, library(L"val"), library(L"let"), written(member.text)));
}

// Behind the members of a class.
void Emitter::quick_members(const ClassInfo& info) {
  if (is_fragment_ || counts_) return;
  std::wstring again;
  for (const auto& [folded, member] : info.members) {
    const ProcedureInfo* const called = member.method ? member.method : member.get;
    const std::size_t count = called ? called->references.size() : 0;
    if (member.field && has_call(member, 0)) {
      put(fmt::format(L"[{}]() {{ return this[{}]; }} ", written(key_of_call(folded, 0)), written(member.key)));
      put(fmt::format(L"[{}](v) {{ this[{}] = v; }} ", written(key_of_let(folded)), written(member.key)));
    } else if (called && has_call(member, count)) {
      again += fmt::format(L", {}, {}", written(called->text), written(key_of_call(folded, count)));
    }
    if (!member.field && has_let(member)) {
      again += fmt::format(L", {}, {}", written(member.let->text), written(key_of_let(folded)));
    }
  }
  if (!again.empty()) put(fmt::format(L"static {{ {}(this.prototype{}); }} ", library(L"again"), again));
}

}  // namespace zelto::vbscript
