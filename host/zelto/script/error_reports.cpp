#include "script/error_reports.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include "language/written_source.h"
#include "script/text.h"

namespace zelto::script {
namespace {

constexpr int kMostCauses = 16;  // errors may be each other's cause

// Facility "control", in which that dialect counts its errors.
constexpr HRESULT numbered(unsigned number) { return static_cast<HRESULT>(0x800A0000u | number); }

constexpr unsigned kNoSuchMember = 438;
constexpr unsigned kFunctionExpected = 5002;

struct Row {
  std::wstring_view name;     // of the error
  std::wstring_view message;  // what stands in it
  unsigned number;
};
// The numbers that older pages know an error of the engine by: `e.number & 0xFFFF` is 5009 for a name that
// nobody declared. They are those of that dialect's documentation. The first that fits.
constexpr std::array kRows{
    Row{L"ReferenceError", L"Can't find variable: ", 5009},
    Row{L"ReferenceError", L"is not a reference", 5008},
    Row{L"TypeError", L" is not an object", 5007},
    Row{L"TypeError", L" is not an Object", 5007},
    Row{L"TypeError", L" is not a constructor", 445},
    Row{L"TypeError", L"readonly property", 5008},
    Row{L"TypeError", L"VBArray expected", 5013},
    Row{L"RangeError", L"Maximum call stack size exceeded", 28},
    Row{L"RangeError", L"Out of stack space", 28},
    Row{L"RangeError", L"Subscript out of range", 9},
    Row{L"RangeError", L"Out of memory", 7},
    Row{L"RangeError", L"Array length must", 5029},
    Row{L"RangeError", L"toFixed() ", 5026},
    Row{L"RangeError", L"toExponential() ", 5026},
    Row{L"RangeError", L"toPrecision() ", 5027},
    Row{L"RangeError", L"argument", 5},
    Row{L"SyntaxError", L"Invalid regular expression", 5017},
    Row{L"SyntaxError", L"", 1002},
    Row{L"URIError", L"illegal UTF-16", 5024},
    Row{L"URIError", L"", 5025},
};

// "o.f is not a function" is a member that is missing, "f is not a function" a value of another kind.
unsigned number_of_call(std::wstring_view callee) {
  return callee.find_first_of(L".[") == std::wstring_view::npos ? kFunctionExpected : kNoSuchMember;
}

// From the error's name and message; S_OK for one that has none, such as an error that the page made.
HRESULT number_of(std::wstring_view name, std::wstring_view message) {
  if (const auto end = message.find(L" is not a function"); name == L"TypeError" && end != std::wstring_view::npos) {
    return numbered(number_of_call(message.substr(0, end)));
  }
  for (const Row& row : kRows) {
    if (row.name == name && message.find(row.message) != std::wstring_view::npos) return numbered(row.number);
  }
  return S_OK;
}

int to_int(std::string_view digits) {
  int value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  return error == std::errc() && end == digits.data() + digits.size() ? value : 0;
}

}  // namespace

void ErrorReports::begin_run() {
  thrown_at_.reset();
  rejection_.reset();
}

void ErrorReports::put_into_words(std::wstring_view name, ScriptError* error) const {
  if (missing_.is_about(error->message)) {
    error->message = missing_.words();
    error->number = DISP_E_UNKNOWNNAME;
    return;
  }
  error->number = number_of(name, error->message);
  error->message = language::as_written(std::move(error->message));
}

// False when the error is one of the engine that has no number of its own.
bool ErrorReports::read(JSValueRef exception, ScriptError* out) const {
  out->number = E_FAIL;
  if (!JSValueIsObject(context_, exception)) {
    out->message = text_of(context_, exception);
    return true;
  }
  auto* object = object_of(exception);
  JSValueRef message = property(context_, object, "message");
  out->message = text_of(context_, JSValueIsString(context_, message) ? message : exception);
  JSValueRef name = property(context_, object, "name");
  JSValueRef source = property(context_, object, "source");
  if (!JSValueIsString(context_, source)) source = name;
  if (JSValueIsString(context_, source)) out->source = text_of(context_, source);
  if (JSValueRef number = property(context_, object, "number"); JSValueIsNumber(context_, number)) {
    out->number = JSValueToInt32(context_, number, nullptr);
    out->message = language::as_written(std::move(out->message));
    return true;
  }
  ScriptError known{{}, out->message, {}, S_OK};
  put_into_words(JSValueIsString(context_, name) ? text_of(context_, name) : std::wstring(), &known);
  out->message = std::move(known.message);
  if (FAILED(known.number)) out->number = known.number;
  return known.number == DISP_E_UNKNOWNNAME;
}

ScriptError ErrorReports::describe(JSValueRef exception) const {
  ScriptError error;
  read(exception, &error);
  language::SourcePlace& place = error;
  if (!JSValueIsObject(context_, exception)) {
    if (thrown_at_) place = *thrown_at_;
    return error;
  }
  auto* object = object_of(exception);
  if (JSValueRef name = property(context_, object, "name"); error.source.empty() && JSValueIsString(context_, name)) {
    error.source = text_of(context_, name);
  }
  if (!JSValueIsString(context_, property(context_, object, "stack")) && thrown_at_) place = *thrown_at_;
  // The place is where the first of a chain of errors arose.
  JSValueRef link = exception;
  for (int i = 0; i < kMostCauses && JSValueIsObject(context_, link); ++i) {
    locate(link, &place);
    link = property(context_, object_of(link), "cause");
  }
  if (thrown_at_ && !JSValueIsObject(context_, link) && !JSValueIsUndefined(context_, link)) place = *thrown_at_;
  return error;
}

ScriptError ErrorReports::describe_syntax(const language::Program& program, const ParsedScript& parsed) {
  return {language::source_place(program, parsed.line(), 0), parsed.message(), L"SyntaxError", E_FAIL};
}

// The first frame of the stack that is of a program of this realm: "name@url:line:column".
void ErrorReports::locate(JSValueRef error, language::SourcePlace* out) const {
  JSValueRef stack = property(context_, object_of(error), "stack");
  if (!JSValueIsString(context_, stack)) return;
  const std::string text = to_utf8(text_of(context_, stack));
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    const std::string_view frame = std::string_view(text).substr(begin, end - begin);
    begin = end + 1;
    const std::size_t column_colon = frame.rfind(':');
    if (column_colon == std::string_view::npos || column_colon == 0) continue;
    const std::size_t line_colon = frame.rfind(':', column_colon - 1);
    if (line_colon == std::string_view::npos) continue;
    for (std::size_t at = frame.find('@'); at != std::string_view::npos && at < line_colon;
         at = frame.find('@', at + 1)) {
      const auto program = programs_.find(std::string(frame.substr(at + 1, line_colon - at - 1)));
      if (program == programs_.end()) continue;
      const int line = to_int(frame.substr(line_colon + 1, column_colon - line_colon - 1));
      int column = to_int(frame.substr(column_colon + 1));
      if (line == 1 && program->second.get() == in_function_) column = std::max(column - opening_length_, 1);
      *out = language::source_place(*program->second, line, column);
      return;
    }
  }
}

language::SourcePlace ErrorReports::here() const {
  language::SourcePlace place;
  if (JSObjectRef error = JSObjectMakeError(context_, 0, nullptr, nullptr)) locate(error, &place);
  return place;
}

void ErrorReports::note_throw(JSValueRef value) {
  thrown_at_.reset();
  if (JSValueIsObject(context_, value) && JSValueIsString(context_, property(context_, object_of(value), "stack"))) {
    return;
  }
  language::SourcePlace place = here();
  if (!place.file.empty()) thrown_at_ = std::move(place);
}

void ErrorReports::note_rejection(JSValueRef reason) {
  if (!rejection_) rejection_ = describe(reason);
}

}  // namespace zelto::script
