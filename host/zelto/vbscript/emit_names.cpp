#include <fmt/xchar.h>

#include "base/letter_case.h"
#include "vbscript/emitter.h"
#include "vbscript/fragment.h"

namespace zelto::vbscript {

// A line of what read_names() reads.
std::wstring Emitter::entry_of(std::wstring_view folded, const Symbol& symbol) {
  std::wstring text = symbol.text;
  if (symbol.is_reference) text += L".v";
  wchar_t kind = NameKind::variable;
  std::wstring references;
  if (symbol.kind == Symbol::constant) {
    const ScriptWriter kept = std::exchange(out_, ScriptWriter());
    value(const_cast<Expression&>(*symbol.value));
    text = std::exchange(out_, kept).text();
  } else if (symbol.kind == Symbol::procedure) {
    kind = NameKind::procedure;
    for (const bool is_reference : symbol.called->references) references += is_reference ? L'1' : L'0';
  } else if (symbol.kind == Symbol::class_) {
    kind = NameKind::class_;
  } else if (symbol.kind == Symbol::script || symbol.kind == Symbol::external) {
    kind = NameKind::external;
  }
  return fmt::format(L"{}\t{}\t{}\t{}\n", kind, folded, text, references);
}

std::wstring Emitter::names_of_top() {
  std::wstring entries;
  for (const auto& [folded, symbol] : names_.top.names) entries += entry_of(folded, symbol);
  ScriptWriter literal;
  literal.put_string(entries);
  return literal.text();
}

std::wstring Emitter::declaration() {
  std::wstring entries;
  for (const auto& [folded, symbol] : names_.top.names) {
    const bool is_own = !symbol.is_outer && symbol.kind != Symbol::external && symbol.kind != Symbol::script;
    if (!is_own) continue;
    Symbol declared = symbol;
    if (symbol.kind == Symbol::constant) declared.kind = Symbol::variable;
    entries += entry_of(folded, declared);
  }
  if (entries.empty()) return {};
  ScriptWriter literal;
  literal.put_string(entries);
  return L"$zelto_vb.declare(" + literal.text() + L"); ";
}

// The names that can be seen here.
void Emitter::put_names() {
  if (is_fragment_) {
    put(names_of_top());
  } else {
    names_top_ = true;
    put(L"$names");
  }
  std::wstring entries;
  if (procedure_->in) {
    for (const auto& [folded, member] : procedure_->in->members) {
      if (member.field) {
        entries +=
            fmt::format(L"{}\t{}\tthis[\"{}\"]\t\n", static_cast<wchar_t>(NameKind::variable), folded, member.key);
      }
      if (const ProcedureInfo* const called = member.method ? member.method : member.get) {
        Symbol symbol{.kind = Symbol::procedure, .text = fmt::format(L"this[\"{}\"]", called->text), .called = called};
        entries += entry_of(folded, symbol);
      }
    }
  }
  if (procedure_->tree) {
    for (const auto& [folded, symbol] : procedure_->names) entries += entry_of(folded, symbol);
  }
  if (entries.empty()) return;
  put(L" + ");
  out_.put_string(entries);
}

}  // namespace zelto::vbscript
