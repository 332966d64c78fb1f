// Counting references to instances, in scripts whose classes have a Class_Terminate; the library has the rules
// (script/vbscript/lifetimes_source.cpp). In all other scripts nothing of this is written.
#include <fmt/xchar.h>

#include <algorithm>
#include <array>

#include "base/letter_case.h"
#include "vbscript/emitter.h"
#include "vbscript/operators.h"

namespace zelto::vbscript {
namespace {

// What stands for a parameter by reference counts by itself.
bool counts_itself(std::wstring_view text) { return text.ends_with(L".v"); }

// Parts of the library that leave nothing with the statement.
constexpr auto kSilent =
    std::to_array<std::wstring_view>({L"after", L"caught", L"clear", L"drain", L"drop", L"hold", L"Instance", L"leave",
                                      L"missing", L"nothing", L"pool", L"raise", L"settle", L"swap"});

}  // namespace

// What the next statement need not know of has gone.
void Emitter::note_pooled(std::wstring_view name) {
  const bool is_silent = std::ranges::find(kSilent, name) != kSilent.end();
  // Of the operations only this one makes anything; what default members give goes with a later statement.
  if (!is_silent && (name == L"val" || !operation_of(name))) pools_ = true;
}

void Emitter::kept(const Emit& what) {
  if (!counts_) return what();
  put(library(L"keep") + L"(");
  what();
  put(L")");
}

// Of what is used before anything else runs.
void Emitter::value_at_once(Expression& e) {
  if (const std::wstring variable = counts_ ? plain_variable(e) : std::wstring(); !variable.empty()) {
    return put(variable);
  }
  value(e);
}

// What a variable has; one that only other code may declare need not be there.
std::wstring Emitter::old_value(const std::wstring& variable) const {
  const bool is_there = (!names_.makes_code && !is_fragment_) || variable.starts_with(L"this[");
  return is_there ? variable : fmt::format(L"(typeof {0} === \"undefined\" ? undefined : {0})", variable);
}

// The old value goes when the new one has its place.
void Emitter::store(const std::wstring& variable, const Emit& value) {
  if (!counts_ || counts_itself(variable)) {
    put(variable + L" = ");
    return value();
  }
  put(library(L"swap") + L"($new = " + library(L"hold") + L"(");
  value();
  put(fmt::format(L"), {0}, {1} = $new)", old_value(variable), variable));
}

std::wstring Emitter::reference_to(const std::wstring& variable) {
  std::wstring setter = variable + L" = $v";
  if (counts_ && !counts_itself(variable)) {
    setter = fmt::format(L"{}({}($v), {}, {})", library(L"swap"), library(L"hold"), old_value(variable), setter);
  }
  return fmt::format(L"{}(() => {}, $v => {{ {}; }})", library(L"ref"), variable, setter);
}

// Written in front of what makes it a number.
void Emitter::empty_counter(const std::wstring& variable) {
  if (!counts_ || counts_itself(variable)) return;
  put(fmt::format(L"{}(0, {}, {} = undefined), ", library(L"swap"), old_value(variable), variable));
}

// A statement's end.
void Emitter::drain() {
  if (counts_ && std::exchange(pools_, false)) put(L"$pool.length > $p && $drain($p); ");
}
void Emitter::drained(bool is_quiet, const Emit& what) {
  if (!counts_ || is_quiet) return what();
  put(library(L"after") + L"($p, ");
  what();
  put(L")");
}

// Whether nothing is called, but for default members.
bool Emitter::is_quiet(Expression& e) {
  switch (e.kind) {
    case Expression::name:
      return type_of(e) != Type::any || !plain_variable(e).empty();
    case Expression::operation:
    case Expression::parenthesized:
      return std::ranges::all_of(e.parts, [&](const ExpressionPtr& part) { return is_quiet(*part); });
    case Expression::call:
    case Expression::member:
    case Expression::instance:
      return false;
    default:
      return true;
  }
}

// Whether reading them runs nothing: what stands in front of them is still there afterwards.
bool Emitter::are_still(const Expression& call) {
  return std::ranges::all_of(call.parts.begin() + 1, call.parts.end(), [&](const ExpressionPtr& part) {
    if (!part) return true;
    const bool is_simple = part->kind != Expression::operation && part->kind != Expression::parenthesized;
    return is_simple ? is_quiet(*part) : type_of(*part) == Type::integer || type_of(*part) == Type::number;
  });
}

// What With and For Each have until they are left.
std::wstring Emitter::holder() {
  holders_.push_back(temporary());
  all_holders_.push_back(holders_.back());
  return holders_.back();
}
void Emitter::release_holders(std::size_t from) {
  if (from >= holders_.size()) return;
  guarded([&] {
    for (std::size_t i = holders_.size(); i-- > from;) {
      put(fmt::format(L"{0}(0, {1}, {1} = undefined); ", library(L"swap"), holders_[i]));
    }
  });
}
void Emitter::end_holder() {
  if (!counts_) return;
  release_holders(holders_.size() - 1);
  holders_.pop_back();
}

// Parameters that are values, and the object itself, are there until the procedure has ended.
void Emitter::begin_counting(const ProcedureInfo& info) {
  put(L"const $p = $pool.length; var $new, $failed; ");
  for (const std::wstring& one : counted_parameters(info)) put(library(L"hold") + L"(" + one + L"); ");
}

std::vector<std::wstring> Emitter::counted_parameters(const ProcedureInfo& info) {
  std::vector<std::wstring> all;
  for (std::size_t i = 0; i < info.references.size(); ++i) {
    if (!info.references[i]) all.push_back(info.names.at(base::folded(info.tree->parameters[i].name)).text);
  }
  if (info.in) all.emplace_back(L"this");
  return all;
}

void Emitter::end_counting(const ProcedureInfo& info, std::vector<std::wstring> locals) {
  const bool has_result = !locals.empty() && locals.front() == L"$r";
  if (has_result) locals.erase(locals.begin());
  std::ranges::copy(all_holders_, std::back_inserter(locals));
  std::ranges::copy(counted_parameters(info), std::back_inserter(locals));
  std::wstring all;
  for (const std::wstring& one : locals) all += (all.empty() ? L"" : L", ") + one;
  put(fmt::format(L"}} catch ($e) {{ $failed = {{ error: $e }}; throw $e; }} finally {{ {}($p, {}, [{}], $failed); }} ",
                  library(L"leave"), has_result ? L"$r" : L"undefined", all));
}

}  // namespace zelto::vbscript
