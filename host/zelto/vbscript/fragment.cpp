#include "vbscript/fragment.h"

#include <deque>
#include <vector>

#include "vbscript/emitter.h"
#include "vbscript/parser.h"

namespace zelto::vbscript {
namespace {

struct Outer {
  Names names;
  std::deque<ProcedureInfo> procedures;
  std::deque<ClassInfo> classes;
};

std::vector<std::wstring_view> fields_of(std::wstring_view line) {
  std::vector<std::wstring_view> fields;
  for (std::size_t end = 0; end != line.npos; line.remove_prefix(end + 1)) {
    end = line.find(L'\t');
    fields.push_back(line.substr(0, end));
    if (end == line.npos) break;
  }
  return fields;
}

void add(Outer& outer, std::wstring_view line) {
  const auto fields = fields_of(line);
  if (fields.size() != 4 || fields[0].size() != 1) return;
  Symbol symbol{.kind = Symbol::variable, .text = std::wstring(fields[2]), .is_outer = true};
  switch (fields[0][0]) {
    case NameKind::procedure: {
      ProcedureInfo& called = outer.procedures.emplace_back();
      called.text = symbol.text;
      for (const wchar_t c : fields[3]) called.references.push_back(c == L'1');
      symbol.kind = Symbol::procedure;
      symbol.called = &called;
      break;
    }
    case NameKind::class_:
      symbol.kind = Symbol::class_;
      symbol.made = &outer.classes.emplace_back();
      break;
    case NameKind::external:
      symbol.kind = Symbol::external;
      // Unless code that was made before has declared it.
      outer.names.try_emplace(std::wstring(fields[1]), std::move(symbol));
      return;
    default:
      break;
  }
  outer.names[std::wstring(fields[1])] = std::move(symbol);
}

Outer read_names(std::wstring_view text) {
  Outer outer;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(L'\n'), text.size());
    add(outer, text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return outer;
}

}  // namespace

std::wstring compile_fragment(std::wstring_view text, FragmentKind kind, std::wstring_view known, bool counts) {
  const Outer outer = read_names(known);
  Script script;
  if (kind == FragmentKind::eval) {
    auto result = std::make_unique<Statement>();
    result->kind = Statement::call;
    result->first = parse_expression(text);
    script.body.push_back(std::move(result));
  } else {
    script = parse(text);
  }
  const auto names = find_names(script, {}, outer.names, true);
  Emitter emitter(*names, false);
  emitter.set_fragment();
  if (counts) emitter.set_counting();
  if (kind == FragmentKind::eval) {
    emitter.emit_value(*script.body[0]->first);
    return emitter.head() + L"(" + emitter.writer().text() + L")";
  }
  emitter.emit(script);
  const std::wstring declared = kind == FragmentKind::execute_global ? emitter.declaration() : std::wstring();
  return emitter.head() + declared + emitter.writer().text();
}

}  // namespace zelto::vbscript
