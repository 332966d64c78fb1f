#include "script/syntax.h"

#include <fmt/xchar.h>
#include <korlib/hresult.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "language/generated_lines.h"
#include "language/lexemes.h"
#include "language/tokens.h"
#include "language/written_source.h"
#include "script/text.h"

namespace zelto::script {
namespace {

using language::TextFault;
using language::Token;

constexpr std::size_t kNone = Token::kNone;

struct Line {
  int number = 1;
  std::size_t begin = 0;
  std::size_t end = 0;
};

// Of the character at that place, or by its number.
Line line_of(std::wstring_view text, std::size_t offset, int number = INT32_MAX) {
  Line line;
  for (std::size_t at = 0; at < std::min(offset, text.size()) && line.number < number; ++at) {
    if (!language::ends_line(text, at)) continue;
    ++line.number;
    line.begin = at + 1;
  }
  line.end = line.begin;
  while (line.end < text.size() && !language::ends_line(text, line.end)) ++line.end;
  return line;
}

// Words of the engine that say nothing to whoever does not know it.
bool is_about_the_end(std::wstring_view message) {
  return message == L"Unexpected end of script" || message.starts_with(L"Unexpected EOF");
}
constexpr std::wstring_view kNoWords = L"Parser error";
constexpr std::wstring_view kTooDeep = L"Maximum call stack size exceeded";
// Of a name that is missing after `var`: no parameters are near.
constexpr std::wstring_view kMistaken = L". Expected a parameter pattern or a ')' in parameter list";

class Search {
 public:
  Search(JSContextRef context, const language::Program& program)
      : context_(context), program_(program), text_(to_wide(program.text)), parts_(language::tokenize_partly(text_)) {}

  std::optional<language::ScriptError> run() {
    const auto fault = fault_of(program_.text);
    if (!fault) return std::nullopt;
    if (fault->message.starts_with(kTooDeep)) return of_depth();
    const std::size_t token = find_token(*fault);
    if (parts_.fault && is_first(*parts_.fault, *fault, token)) return of_text(*parts_.fault);
    if (token == kNone) return of_end(*fault);
    if (!is_generated(parts_.all[token].begin)) return of_token(fault->message, token);
    // What is wrong in its meaning is told once the next token is seen.
    const bool is_unexpected = fault->message.starts_with(L"Unexpected") || fault->message == kNoWords;
    return is_unexpected || token == 0 ? of_page_text(token) : of_token(fault->message, token - 1);
  }

 private:
  struct Fault {
    std::wstring message;
    int line = 0;  // of the program's text, from 1
  };

  std::optional<Fault> fault_of(std::u16string_view text) const {
    const JsString source(text);
    JSValueRef exception = nullptr;
    if (JSCheckScriptSyntax(context_, source.get(), nullptr, 1, &exception)) return std::nullopt;
    Fault fault;
    if (!exception || !JSValueIsObject(context_, exception)) return fault;
    const JSObjectRef error = object_of(exception);
    fault.message = message_of(context_, property(context_, error, "message"));
    fault.line = static_cast<int>(JSValueToNumber(context_, property(context_, error, "line"), nullptr));
    return fault;
  }

  // The number of the one that cannot stand there: the text up to it, it included, fails in the same way as all of it,
  // and so does every longer part; no shorter one does.
  std::size_t find_token(const Fault& fault) const {
    const Line line = line_of(text_, text_.size(), fault.line);
    const auto in_line = [](const Token& token, std::size_t at) { return token.begin < at; };
    const auto first = std::lower_bound(parts_.all.begin(), parts_.all.end(), line.begin, in_line);
    const auto last = std::lower_bound(first, parts_.all.end(), line.end, in_line);
    const auto comes_before = [&](const Token& token) {
      const auto part = fault_of(to_utf16(std::wstring_view(text_).substr(0, token.end)));
      return !part || part->message != fault.message || part->line != fault.line;
    };
    const auto found = std::partition_point(first, last, comes_before);
    return found == last ? kNone : static_cast<std::size_t>(found - parts_.all.begin());
  }

  // Whether what cannot be cut comes before what cannot be parsed.
  bool is_first(const TextFault& of_text, const Fault& fault, std::size_t token) const {
    if (of_text.kind == TextFault::bracket) return token == kNone && is_about_the_end(fault.message);
    if (token == kNone) return line_of(text_, of_text.at).number <= fault.line;
    return of_text.at < parts_.all[token].begin;
  }

  language::SourcePlace place_of(std::size_t at) const {
    const Line line = line_of(text_, at);
    const std::wstring_view before = std::wstring_view(text_).substr(line.begin, at - line.begin);
    return language::source_place(program_, line.number, static_cast<int>(korlib::utf16_length(before)) + 1);
  }

  // Whether what stands there is not the author's: page text, or what is around an expression.
  bool is_generated(std::size_t at) const {
    const auto index = static_cast<std::size_t>(line_of(text_, at).number) - 1;
    return index < program_.lines.size() && program_.lines[index].is_generated;
  }
  bool begins_expression(std::size_t at) const {
    return is_generated(at) &&
           std::wstring_view(text_).substr(line_of(text_, at).begin).starts_with(language::kExpressionBegins);
  }

  // The innermost bracket that is open in front of that token.
  std::size_t open_at(std::size_t token) const {
    std::vector<std::size_t> open;
    for (std::size_t i = 0; i < token; ++i) {
      if (parts_.all[i].kind == Token::open) open.push_back(parts_.all[i].begin);
      if (parts_.all[i].kind == Token::close && !open.empty()) open.pop_back();
    }
    return open.empty() ? kNone : open.back();
  }

  int line_number(std::size_t at) const {
    int line = 1;
    for (std::size_t i = 0; i < at; ++i) line += language::ends_line(std::wstring_view(text_), i);
    return line;
  }

  language::ScriptError error_at(std::size_t at, std::wstring message) const {
    return {place_of(at), language::as_written(std::move(message)), L"SyntaxError", E_FAIL};
  }

  std::wstring quoted(std::size_t at) const { return std::wstring{L'"', text_[at], L'"'}; }

  // The message, and which bracket is open.
  language::ScriptError with_opener(language::ScriptError error, std::size_t opener) const {
    const language::SourcePlace place = place_of(opener);
    const std::string file = place.file.substr(place.file.rfind('/') + 1);
    const std::wstring of_file = place.file == error.file ? L"" : L" of " + korlib::to_wide(file);
    if (error.message.ends_with(L'.')) error.message.pop_back();
    error.message +=
        fmt::format(L": the {} in line {}, column {}{} is open.", quoted(opener), place.line, place.column, of_file);
    error.causes.push_back({place, language::Cause::opener, quoted(opener), {}, {}, 0});
    return error;
  }

  // The engine tells no line. It gives up at the first token up to which the text is too deep.
  language::ScriptError of_depth() const {
    constexpr unsigned kMany = 100;
    const auto fits = [&](const Token& token) {
      const auto part = fault_of(to_utf16(std::wstring_view(text_).substr(0, token.end)));
      return !part || !part->message.starts_with(kTooDeep);
    };
    const auto found = std::partition_point(parts_.all.begin(), parts_.all.end(), fits);
    if (found == parts_.all.end()) return error_at(0, L"The script is nested too deeply.");
    const std::wstring open = found->depth < kMany ? L"" : fmt::format(L": {} brackets are open here", found->depth);
    return error_at(found->begin, L"The script is nested too deeply" + open + L".");
  }

  language::ScriptError of_text(const TextFault& fault) const {
    switch (fault.kind) {
      case TextFault::string:
        return error_at(fault.at, L"This string is not closed in its line.");
      case TextFault::regular_expression:
        return error_at(fault.at, L"This regular expression is not closed in its line.");
      case TextFault::template_literal:
        return error_at(fault.at, L"This template literal is never closed.");
      case TextFault::comment:
        return error_at(fault.at, L"This comment is never closed.");
      case TextFault::bracket:
        return is_generated(fault.at) ? error_at(fault.at, L"This expression ends too early.")
                                      : error_at(fault.at, L"This " + quoted(fault.at) + L" is never closed.");
      case TextFault::wrong_closer:
        return of_closer(fault);
      case TextFault::stray_closer:
        break;
      case TextFault::escape:
        return error_at(fault.at, L"This name has an escape that does not end.");
    }
    return error_at(fault.at, is_generated(fault.at) ? L"This expression ends too early."
                                                     : L"This " + quoted(fault.at) + L" closes nothing.");
  }

  language::ScriptError of_closer(const TextFault& fault) const {
    if (is_generated(fault.at)) {
      return error_at(fault.opener, L"This " + quoted(fault.opener) + L" is never closed: its <%= %> ends before.");
    }
    language::ScriptError error = error_at(fault.at, L"This " + quoted(fault.at) + L" closes nothing");
    if (!is_generated(fault.opener)) return with_opener(std::move(error), fault.opener);
    error.message += L'.';
    return error;
  }

  // No token is to blame: the script ends too early.
  language::ScriptError of_end(const Fault& fault) const {
    const std::size_t last = parts_.all.empty() ? 0 : parts_.all.back().begin;
    if (!is_about_the_end(fault.message)) {
      const std::wstring words = fault.message == kNoWords ? L"The engine does not take this line." : fault.message;
      if (fault.line > line_number(last)) return error_at(last, words);  // the engine counts a line too many
      return {language::source_place(program_, fault.line, 0), language::as_written(words), L"SyntaxError", E_FAIL};
    }
    return error_at(last, L"The script ends too early: something is missing behind this.");
  }

  // Page text, or the frame of an expression, stands where the script may not have it.
  language::ScriptError of_page_text(std::size_t token) const {
    const std::size_t at = parts_.all[token].begin;
    const std::size_t line = line_of(text_, at).begin;
    const bool ends = text_.compare(line, 2, L"))") == 0;
    // In front of the line, which may close brackets.
    std::size_t first = token;
    while (first > 0 && parts_.all[first - 1].begin >= line) --first;
    const std::size_t opener = open_at(first);
    const bool is_open = opener != kNone && !is_generated(opener);
    if (ends && is_open)
      return error_at(opener, L"This " + quoted(opener) + L" is never closed: its <%= %> ends before.");
    if (ends) return error_at(at, L"This expression ends too early.");
    language::ScriptError error = error_at(at, L"Page text cannot stand here");
    if (is_open) return with_opener(std::move(error), opener);
    error.message += L'.';
    return error;
  }

  // What the engine does not say of words that a page may not use where it does.
  std::wstring_view rule_of(std::size_t token) const {
    const auto is = [this](std::size_t i, std::wstring_view word) {
      return i < parts_.all.size() &&
             text_.compare(parts_.all[i].begin, parts_.all[i].end - parts_.all[i].begin, word) == 0;
    };
    if (token > 0 && is(token - 1, L"await")) return L": await stands in async functions only";
    if (is(token, L"export") || is(token, L"import") || (token > 0 && is(token - 1, L"import")))
      return L": a page is no module, and has no import and export";
    return {};
  }

  language::ScriptError of_token(std::wstring message, std::size_t token) const {
    const std::size_t at = parts_.all[token].begin;
    const std::size_t opener = open_at(token);
    if (const std::wstring_view rule = rule_of(token); !rule.empty()) {
      message.resize(std::min({message.find(L". "), message.size() - message.ends_with(L'.'), message.size()}));
      return error_at(at, message + std::wstring(rule) + L".");
    }
    if (message == kNoWords) message = L"Unexpected '" + text_.substr(at, parts_.all[token].end - at) + L"'";
    if (opener == kNone || text_[opener] != L'(') message.resize(std::min(message.find(kMistaken), message.size()));
    const std::size_t expected = message.find(L". Expected ");
    if (opener == kNone) return error_at(at, std::move(message));
    if (expected == message.npos && !is_generated(opener)) return with_opener(error_at(at, std::move(message)), opener);
    if (expected == message.npos) return error_at(at, std::move(message));
    if (is_generated(opener)) {
      message.resize(expected);
      return error_at(at, message + (begins_expression(opener) ? L": <%= %> takes one expression." : L"."));
    }
    const std::wstring closer{L'\'', closer_of(text_[opener]), L'\''};
    if (message.find(closer, expected) == message.npos) return error_at(at, std::move(message));
    return with_opener(error_at(at, std::move(message)), opener);
  }

  static wchar_t closer_of(wchar_t open) { return open == L'(' ? L')' : open == L'[' ? L']' : L'}'; }

  JSContextRef context_;
  const language::Program& program_;
  const std::wstring text_;
  const language::PartialTokens parts_;
};

}  // namespace

std::optional<language::ScriptError> syntax_error(JSContextRef context, const language::Program& program) {
  return Search(context, program).run();
}

}  // namespace zelto::script
