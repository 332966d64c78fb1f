// Arguments that objects of the host may assign to.
#include <fmt/xchar.h>

#include <algorithm>

#include "base/letter_case.h"
#include "vbscript/emitter.h"
#include "vbscript/names.h"

namespace zelto::vbscript {

// Of an object that assigns to none of its arguments, but for the members that are known to.
bool Emitter::is_of_library(const Expression& member) {
  if (member.parts.empty()) return false;
  const Expression& object = *member.parts[0];
  if (object.kind == Expression::me) return procedure_->in != nullptr;
  if (object.kind != Expression::name) return false;
  const std::wstring folded = base::folded(object.text);
  if (is_own_name(folded)) return false;
  return folded == L"err" || (!host_name(folded).empty() && !base::equal_ascii(member.text, L"binaryread"));
}

// How the variable is written that an argument is; empty for anything else. The counter of a loop stays what the loop
// makes it.
std::wstring Emitter::asked_variable(const Expression* argument) {
  if (!argument || argument->kind != Expression::name) return {};
  const std::wstring folded = base::folded(argument->text);
  if (std::ranges::find(steady_, folded) != steady_.end()) return {};
  const Symbol* const symbol = find(folded);
  const bool is_variable =
      symbol ? (symbol->kind == Symbol::variable || symbol->kind == Symbol::result) && !symbol->is_outer
             : find_member(folded) != nullptr;
  return is_variable ? variable_text(argument->text) : std::wstring();
}

bool Emitter::hands_reference(const Expression& e, const std::function<bool(std::size_t)>& is_reference) {
  for (std::size_t i = 0; e.kind == Expression::call && i + 1 < e.parts.size(); ++i) {
    if (is_reference(i)) return true;
  }
  return false;
}

// As bits, the lowest being that of the first argument.
unsigned Emitter::asked_places(const Expression& e, const std::function<bool(std::size_t)>& is_reference) {
  constexpr std::size_t kMostPlaces = 31;
  unsigned places = 0;
  if (e.kind != Expression::call) return places;
  for (std::size_t i = 0; i + 1 < e.parts.size() && i < kMostPlaces; ++i) {
    if (!is_reference(i) && !asked_variable(e.parts[i + 1].get()).empty()) places |= 1U << i;
  }
  return places;
}

void Emitter::take_answers(const Expression& e, unsigned places) {
  put(L", " + library(L"answers") + L".length === 0 || (");
  for (std::size_t i = 0; i + 1 < e.parts.size(); ++i) {
    if ((places >> i & 1U) == 0) continue;
    const std::wstring variable = asked_variable(e.parts[i + 1].get());
    store(variable, [&] { put(fmt::format(L"{}({}, {})", library(L"answer"), i, variable)); });
    put(L", ");
  }
  put(library(L"answers") + L".length = 0)");
}

}  // namespace zelto::vbscript
