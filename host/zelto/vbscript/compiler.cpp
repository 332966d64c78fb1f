#include "vbscript/compiler.h"

#include <korlib_host/unicode.h>

#include <algorithm>
#include <array>

#include "base/letter_case.h"
#include "vbscript/emitter.h"
#include "vbscript/parser.h"

namespace zelto::vbscript {
namespace {

// Members of the language's own objects that lead to what makes code, or to what others share.
constexpr auto kUnsafe = std::to_array<std::wstring_view>({L"__definegetter__", L"__definesetter__",
                                                           L"__lookupgetter__", L"__lookupsetter__", L"__proto__",
                                                           L"apply", L"bind", L"caller", L"constructor", L"prototype"});

bool names_unsafe_member(std::wstring_view text) {
  const std::wstring lowered = base::ascii_lowered(text);
  return std::ranges::any_of(kUnsafe, [&](std::wstring_view word) { return lowered.find(word) != lowered.npos; });
}

language::PageScope scope_of(const Source& source, const ScriptNames& names, const Emitter& emitter) {
  language::PageScope scope;
  const bool is_unsafe = names.makes_code || names_unsafe_member(source.text);
  scope.can_be_function = !is_unsafe;
  scope.may_share_world = !is_unsafe && !emitter.leaks_global();
  scope.may_hide = is_unsafe;
  scope.declares_lexical_names = false;
  return scope;
}

std::vector<language::FoldedName> names_of(const ScriptNames& names) {
  std::vector<language::FoldedName> all;
  for (const auto& [folded, symbol] : names.top.names) {
    if (symbol.kind == Symbol::variable || symbol.kind == Symbol::procedure) {
      all.push_back({korlib::to_utf16(folded), korlib::to_utf16(symbol.text)});
    }
  }
  std::ranges::sort(all, {}, &language::FoldedName::folded);
  return all;
}

}  // namespace

Compiled compile(const Source& source) {
  Script script = parse(source.text, source.marks);
  const auto names = find_names(script, source.others ? *source.others : std::vector<std::wstring>());
  Emitter emitter(*names, source.others == nullptr);
  if (!source.others && names->has_endings()) emitter.set_counting();
  emitter.emit(script);
  Compiled compiled;
  compiled.head = emitter.head();
  compiled.scope = scope_of(source, *names, emitter);
  compiled.names = names_of(*names);
  const auto lines = 1 + static_cast<int>(std::ranges::count(source.text, L'\n'));
  ScriptWriter::Written written = std::move(emitter.writer()).finish(lines);
  compiled.text = std::move(written.text);
  compiled.shifts = std::move(written.shifts);
  return compiled;
}

language::ScriptError describe(const CompileError& error, language::SourcePlace place) {
  constexpr auto kFacility = static_cast<HRESULT>(0x800A0000U);
  language::ScriptError described;
  static_cast<language::SourcePlace&>(described) = std::move(place);
  described.message = words_of(error.fault);
  described.source = L"Microsoft VBScript compilation error";
  described.number = kFacility | static_cast<HRESULT>(error.fault);
  return described;
}

std::shared_ptr<const language::Program> compile_program(std::wstring_view text, std::string url,
                                                         language::ScriptError* error) {
  try {
    Compiled compiled = compile({.text = text});
    auto program = std::make_shared<language::Program>();
    program->url = std::move(url);
    language::set_head(compiled.shifts, static_cast<int>(compiled.head.size()));
    program->text = korlib::to_utf16(compiled.head + compiled.text);
    program->shifts = std::move(compiled.shifts);
    program->scope = std::move(compiled.scope);
    program->folded_names = std::move(compiled.names);
    return program;
  } catch (const CompileError& failure) {
    *error = describe(failure, {std::move(url), failure.line, failure.column + 1});
    return nullptr;
  }
}

}  // namespace zelto::vbscript
