#include "pages/page_text.h"

#include <korlib_host/unicode.h>

#include <algorithm>
#include <utility>

#include "language/generated_lines.h"
#include "language/lexemes.h"
#include "language/rewriter.h"
#include "language/tokens.h"
#include "pages/page_compiler.h"
#include "text/charset.h"
#include "vbscript/compiler.h"

namespace zelto::pages {
namespace {

// In script an include is a comment of the language, and would be passed over without a word.
void refuse_include(const PageText::Part& part, const language::Program& program, std::size_t comment) {
  if (!has_word(part.text, skip_blanks(part.text, comment + 4), L"#include")) return;
  std::size_t line = 0;
  for (std::size_t at = 0; at < comment; ++at) line += language::ends_line(std::wstring_view(part.text), at);
  const language::SourceLine& from = part.lines[line];
  throw PageSourceError("An include cannot stand inside script: put \"%>\" before it and \"<%\" after it.",
                        program.files[from.file], from.line);
}

language::Rewritten rewrite(const PageText::Part& part, const language::Program& program) {
  language::Rewritten rewritten = language::rewrite(part.text);
  for (const std::size_t comment : rewritten.markup_comments) refuse_include(part, program, comment);
  return rewritten;
}

// What the script declares at top level, as far as its words tell.
std::vector<std::wstring> declared_names(std::wstring_view text) {
  std::vector<std::wstring> names;
  const auto tokens = language::tokenize(text);
  if (!tokens) return names;
  for (std::size_t i = 0; i + 1 < tokens->all.size(); ++i) {
    const language::Token& token = tokens->all[i];
    if (token.depth != 0 || !token.statement_start) continue;
    const std::wstring_view word = text.substr(token.begin, token.end - token.begin);
    const bool declares =
        word == L"function" || word == L"var" || word == L"let" || word == L"const" || word == L"class";
    const language::Token& next = tokens->all[i + 1];
    if (declares && next.kind == language::Token::name)
      names.emplace_back(text.substr(next.begin, next.end - next.begin));
  }
  return names;
}

vbscript::Compiled compile(const PageText::Part& part, const std::vector<std::wstring>* others,
                           const language::Program& program) {
  try {
    return vbscript::compile({.text = part.text, .marks = part.marks, .others = others});
  } catch (const vbscript::CompileError& error) {
    const std::size_t line = std::min(static_cast<std::size_t>(error.line), part.lines.size());
    const language::SourceLine from = line > 0 ? part.lines[line - 1] : language::SourceLine{0, 1, 0};
    const language::ScriptError words = vbscript::describe(error, {});
    PageSourceError failure(to_utf8(words.message), program.files[from.file], from.line,
                            from.column + (from.is_generated ? 0 : error.column) + 1);
    failure.source = words.source;
    failure.number = words.number;
    throw PageSourceError(std::move(failure));
  }
}

language::PageScope scope_of_both(language::PageScope script, const language::PageScope& other) {
  script.can_be_function &= other.can_be_function;
  // Names that the one language puts together lead to objects of the other.
  script.may_hide = true;
  script.may_share_world = false;
  script.is_strict = false;
  return script;
}

// `lines`: how many stand in front of those that the shifts are in.
void add_shifts(std::vector<language::ColumnShift> shifts, std::size_t lines, language::Program& program) {
  for (language::ColumnShift& shift : shifts) {
    shift.line += static_cast<int>(lines);
    program.shifts.push_back(shift);
  }
}

}  // namespace

// Within it the engine sees further line ends, which no editor shows as such; in VBScript they are compiled away.
void PageText::add_line(Language language, std::wstring_view line, language::SourceLine from) {
  Part& part = of(language);
  const language::LineEnd end = std::exchange(from.end, language::LineEnd::none);
  part.lines.push_back(from);
  part.text.append(line).push_back(L'\n');
  if (language == Language::javascript) add_further_lines(part, line, from);
  part.lines.back().end = end;
}

void PageText::add_further_lines(Part& part, std::wstring_view line, language::SourceLine from) {
  for (std::size_t at = 0; (at = line.find_first_of(L"\x2028\x2029", at)) != std::wstring_view::npos;) {
    part.lines.push_back({from.file, from.line, from.column + static_cast<int>(++at)});
  }
}

void PageText::add_generated(Language language, std::wstring_view script, vbscript::PageMark mark,
                             language::SourceLine from) {
  Part& part = of(language);
  from.is_generated = true;
  part.lines.push_back(from);
  if (language == Language::vbscript) {
    mark.line = static_cast<int>(part.lines.size());
    part.marks.push_back(mark);
  } else {
    part.text.append(script);
  }
  part.text.push_back(L'\n');
}

void PageText::add_html(Language language, std::size_t number, std::wstring_view text, language::SourceLine from) {
  const bool is_blank = text.find_first_not_of(L" \t\r\n\f") == std::wstring_view::npos;
  add_generated(language, std::wstring(language::kPageText) + std::to_wstring(number) + L");",
                {.kind = vbscript::PageMark::html, .number = number, .is_blank = is_blank}, from);
}
void PageText::begin_out(Language language, language::SourceLine from) {
  add_generated(language, language::kExpressionBegins, {.kind = vbscript::PageMark::out}, from);
}
void PageText::end_out(Language language, std::wstring_view behind, language::SourceLine from) {
  std::wstring comment(behind);
  std::ranges::replace(comment, L'\r', static_cast<wchar_t>(language::kReturnBehindExpression));
  std::ranges::replace(comment, L'\n', static_cast<wchar_t>(language::kLineBehindExpression));
  add_generated(language, std::wstring(language::kExpressionEnds).append(language::kBehindExpression) + comment,
                {.kind = vbscript::PageMark::out_end}, from);
}

void PageText::finish(Language language, language::Program& program) {
  Part& script = of(Language::javascript);
  Part& basic = of(Language::vbscript);
  if (basic.text.empty()) {
    language::set_text(program, rewrite(script, program));
    program.lines = std::move(script.lines);
    return;
  }
  const bool has_both = !script.text.empty();
  const std::vector<std::wstring> names = has_both ? declared_names(script.text) : std::vector<std::wstring>();
  language::Rewritten rewritten = has_both ? rewrite(script, program) : language::Rewritten();
  vbscript::Compiled compiled = compile(basic, has_both ? &names : nullptr, program);
  const bool is_first = has_both && language == Language::vbscript;  // the JavaScript
  const std::wstring_view texts[] = {is_first ? rewritten.text : compiled.text,
                                     is_first ? compiled.text : rewritten.text};
  for (language::SourceLine& line : basic.lines) line.is_compiled = true;
  add_shifts(is_first ? rewritten.shifts : compiled.shifts, 0, program);
  add_shifts(is_first ? compiled.shifts : rewritten.shifts, is_first ? script.lines.size() : basic.lines.size(),
             program);
  program.removed = std::move(rewritten.removed);
  language::set_head(program.shifts, static_cast<int>(compiled.head.size()));
  std::wstring text = std::move(compiled.head);
  text.append(texts[0]).append(texts[1]);
  program.text = korlib::to_utf16(text);
  program.lines = is_first ? script.lines : basic.lines;
  const auto& rest = is_first ? basic.lines : script.lines;
  program.lines.insert(program.lines.end(), rest.begin(), rest.end());
  program.scope = has_both ? scope_of_both(std::move(rewritten.scope), compiled.scope) : std::move(compiled.scope);
  program.folded_names = std::move(compiled.names);
}

}  // namespace zelto::pages
