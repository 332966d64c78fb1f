#include "app/check/syntax.h"

#include <algorithm>
#include <vector>

#include "language/lexemes.h"
#include "language/written_source.h"
#include "script/text.h"

namespace zelto::check {

namespace {

// The token that a message names: "Unexpected token ';'", "Unexpected identifier 'b'", "Invalid character: '#'".
std::wstring_view token_in(std::wstring_view message) {
  const std::size_t open = message.find(L'\'');
  if (open == std::wstring_view::npos) return {};
  if (!message.starts_with(L"Unexpected ") && !message.starts_with(L"Invalid character")) return {};
  const std::size_t close = std::min(message.find(L"'. ", open + 1), message.rfind(L'\''));
  if (close <= open + 1) return {};
  return message.substr(open + 1, close - open - 1);
}

struct Line {
  std::size_t begin = 0;
  std::size_t end = 0;
};

Line line_at(std::u16string_view text, int number) {
  Line line;
  for (std::size_t at = 0; at < text.size() && number > 0; ++at) {
    if (!language::ends_line(text, at)) continue;
    if (--number == 0) {
      line.end = at;
      return line;
    }
    line.begin = at + 1;
  }
  line.end = text.size();
  return line;
}

}  // namespace

Syntax::Syntax() : context_(JSGlobalContextCreate(nullptr)) {}
Syntax::~Syntax() { JSGlobalContextRelease(context_); }

std::optional<Syntax::Fault> Syntax::fault_of(std::u16string_view text) const {
  const script::JsString source(text);
  JSValueRef exception = nullptr;
  if (JSCheckScriptSyntax(context_, source.get(), nullptr, 1, &exception)) return std::nullopt;
  Fault fault;
  if (!exception || !JSValueIsObject(context_, exception)) return fault;
  const JSObjectRef error = script::object_of(exception);
  fault.message = script::text_of(context_, script::property(context_, error, "message"));
  fault.line = static_cast<int>(JSValueToNumber(context_, script::property(context_, error, "line"), nullptr));
  return fault;
}

// From 1; 0 when it is not known. The text up to the token that cannot stand there, that one included, fails in the
// same way as all of it, and so does every longer part; no shorter one does.
int Syntax::find_column(std::u16string_view text, const Fault& fault) const {
  const std::u16string token = korlib::to_utf16(token_in(fault.message));
  if (token.empty()) return 0;
  const Line line = line_at(text, fault.line);
  std::vector<std::size_t> ends;
  for (std::size_t at = text.find(token, line.begin); at < line.end; at = text.find(token, at + 1))
    ends.push_back(at + token.size());
  const auto comes_before = [&](std::size_t end) {
    const auto part = fault_of(text.substr(0, end));
    return !part || part->message != fault.message || part->line != fault.line;
  };
  const auto found = std::ranges::partition_point(ends, comes_before);
  return found == ends.end() ? 0 : static_cast<int>(*found - token.size() - line.begin) + 1;
}

std::optional<language::ScriptError> Syntax::check(const language::Program& program) const {
  const auto fault = fault_of(program.text);
  if (!fault) return std::nullopt;
  language::ScriptError error;
  static_cast<language::SourcePlace&>(error) =
      language::source_place(program, fault->line, find_column(program.text, *fault));
  error.message = language::as_written(fault->message);
  return error;
}

}  // namespace zelto::check
