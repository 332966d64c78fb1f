#include "script/error_reports.h"

#include <fmt/xchar.h>

#include <algorithm>
#include <array>
#include <boost/range/adaptor/reversed.hpp>
#include <charconv>
#include <utility>

#include "language/lexemes.h"
#include "language/tokens.h"
#include "language/written_source.h"
#include "script/realm.h"
#include "script/template_places.h"
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

std::wstring wide(const std::string& utf8) { return to_wide(JsString(utf8.c_str()).view()); }

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
    out->message = message_of(context_, exception);
    return true;
  }
  auto* object = object_of(exception);
  JSValueRef message = property(context_, object, "message");
  out->message = message_of(context_, JSValueIsString(context_, message) ? message : exception);
  JSValueRef name = property(context_, object, "name");
  JSValueRef source = property(context_, object, "source");
  if (!JSValueIsString(context_, source)) source = name;
  if (JSValueIsString(context_, source)) out->source = message_of(context_, source);
  if (JSValueRef number = property(context_, object, "number"); JSValueIsNumber(context_, number)) {
    out->number = JSValueToInt32(context_, number, nullptr);
    out->message = language::as_written(std::move(out->message));
    return true;
  }
  ScriptError known{{}, out->message, {}, S_OK};
  put_into_words(JSValueIsString(context_, name) ? message_of(context_, name) : std::wstring(), &known);
  out->message = std::move(known.message);
  if (FAILED(known.number)) out->number = known.number;
  return known.number == DISP_E_UNKNOWNNAME;
}

// Of what says nothing itself.
std::wstring ErrorReports::words_of_thrown(JSValueRef exception) const {
  constexpr std::size_t kMost = 200;
  if (!JSValueIsObject(context_, exception)) return L"The script threw " + message_of(context_, exception) + L".";
  auto* object = object_of(exception);
  if (JSValueIsString(context_, property(context_, object, "stack"))) {
    JSValueRef name = property(context_, object, "name");
    return L"The script threw an error without a message" +
           (JSValueIsString(context_, name) ? L": " + message_of(context_, name) : std::wstring()) + L".";
  }
  const JsString json(JSValueCreateJSONString(context_, exception, 0, nullptr));
  std::wstring text = json.get() ? beginning_of(json.get()) : L"an object";
  if (text.size() > kMost) text.replace(kMost, text.npos, L"…");
  return L"The script threw " + text + L".";
}

ScriptError ErrorReports::describe(JSValueRef exception) const {
  ScriptError error;
  read(exception, &error);
  language::SourcePlace& place = error;
  if (!JSValueIsObject(context_, exception)) {
    if (!JSValueIsString(context_, exception) || error.message.empty()) error.message = words_of_thrown(exception);
    if (thrown_at_) place = *thrown_at_;
    return error;
  }
  auto* object = object_of(exception);
  JSValueRef message = property(context_, object, "message");
  if (error.message.empty() || !JSValueIsString(context_, message)) error.message = words_of_thrown(exception);
  if (JSValueRef name = property(context_, object, "name"); error.source.empty() && JSValueIsString(context_, name)) {
    error.source = message_of(context_, name);
  }
  if (!JSValueIsString(context_, property(context_, object, "stack")) && thrown_at_) place = *thrown_at_;
  // The place is where the first of a chain of errors arose.
  const ScriptError* inner = nullptr;
  JSValueRef link = exception;
  for (int i = 0; i < kMostCauses && JSValueIsObject(context_, link); ++i) {
    if (auto frames = frames_of(link); !frames.listed.empty()) {
      place = frames.listed.front();
      set_calls(std::move(frames), &error);
    }
    if (const ScriptError* found = Engine::current()->executed().behind(link)) inner = found;
    link = property(context_, object_of(link), "cause");
    add_cause(link, &error);
  }
  if (thrown_at_ && !JSValueIsObject(context_, link) && !JSValueIsUndefined(context_, link)) place = *thrown_at_;
  add_places(exception, &error);
  if (inner) put_inside(*inner, &error);
  return error;
}

// Between the functions that were running: an error that comes out of a mark has all places so far, and is raised in
// the function that drew the template, which has fewer functions around it than the cause that it had inside.
void ErrorReports::add_places(JSValueRef exception, ScriptError* error) const {
  std::vector<std::pair<std::size_t, std::size_t>> links;  // places and functions
  JSValueRef link = exception;
  for (int i = 0; i < kMostCauses && JSValueIsObject(context_, link); ++i) {
    TemplatePlaces places = read_places(own_places_of(context_, link));
    const std::size_t count = places.listed.size();
    if (error->templates.empty()) {
      error->templates = std::move(places.listed);
      error->more_templates = places.more;
    }
    links.emplace_back(count, frames_of(link, 0).more);
    link = property(context_, object_of(link), "cause");
  }
  const std::size_t innermost = links.empty() ? 0 : links.back().second;
  for (std::size_t i = 0; i < error->templates.size(); ++i) {
    const auto has_it = std::find_if(links.rbegin(), links.rend(), [i](const auto& each) { return each.first > i; });
    error->templates[i].calls = has_it == links.rend() ? 0 : innermost - std::min(innermost, has_it->second);
  }
}

// What an error hands on from another one needs not be said twice.
void ErrorReports::add_cause(JSValueRef cause, ScriptError* error) const {
  if (!cause || JSValueIsUndefined(context_, cause) || JSValueIsNull(context_, cause)) return;
  ScriptError read_cause;
  read(cause, &read_cause);
  const std::wstring& known = error->causes.empty() ? error->message : error->causes.back();
  if (!read_cause.message.empty() && known.find(read_cause.message) == known.npos)
    error->causes.push_back(std::move(read_cause.message));
}

ScriptError ErrorReports::describe_syntax(const language::Program& program, const ParsedScript& parsed) {
  ScriptError error{language::source_place(program, parsed.line(), 0), parsed.message(), L"SyntaxError", E_FAIL};
  const std::wstring text = to_wide(program.text);
  const auto open = language::unclosed_bracket(text);
  if (!open) return error;
  int line = 1;
  for (std::size_t at = 0; at < *open; ++at) line += language::ends_line(std::wstring_view(text), at);
  const language::SourcePlace place = language::source_place(program, line, 0);
  const std::wstring of_file =
      place.file == error.file ? L"" : L" of " + wide(place.file.substr(place.file.rfind('/') + 1));
  error.message += fmt::format(L". The '{}' in line {}{} is not closed", text[*open], place.line, of_file);
  return error;
}

// Of a program of this realm: "name@url:line:column".
std::optional<language::Frame> ErrorReports::own_frame(std::string_view text) const {
  const std::size_t column_colon = text.rfind(':');
  if (column_colon == std::string_view::npos || column_colon == 0) return {};
  const std::size_t line_colon = text.rfind(':', column_colon - 1);
  if (line_colon == std::string_view::npos) return {};
  for (std::size_t at = text.find('@'); at != std::string_view::npos && at < line_colon; at = text.find('@', at + 1)) {
    const auto program = programs_.find(std::string(text.substr(at + 1, line_colon - at - 1)));
    if (program == programs_.end()) continue;
    const int line = to_int(text.substr(line_colon + 1, column_colon - line_colon - 1));
    int column = to_int(text.substr(column_colon + 1));
    if (line == 1 && program->second.get() == in_function_) column = std::max(column - opening_length_, 1);
    const std::string_view name = text.substr(0, at);
    const bool is_outside = name.ends_with(" code");
    return language::Frame{language::source_place(*program->second, line, column),
                           is_outside ? std::wstring() : wide(std::string(name))};
  }
  return {};
}

// A page that is executed has the functions of the outer pages around its own.
std::optional<language::Frame> ErrorReports::read_frame(std::string_view text) const {
  auto frame = own_frame(text);
  for (Realm* realm : Engine::current()->realms() | boost::adaptors::reversed) {
    if (frame) break;
    frame = realm->reports().own_frame(text);
  }
  return frame;
}

// The first that the stack has, with the lines in front of it; nothing at its end.
std::optional<language::Frame> ErrorReports::take_frame(std::string_view& stack) const {
  while (!stack.empty()) {
    const std::size_t end = std::min(stack.find('\n'), stack.size());
    auto frame = read_frame(stack.substr(0, end));
    stack.remove_prefix(std::min(end + 1, stack.size()));
    if (frame) return frame;
  }
  return {};
}

// From the innermost on.
ErrorReports::Frames ErrorReports::read_frames(std::string_view stack, std::size_t most) const {
  constexpr std::ptrdiff_t kKept = 100;  // lines, by the engine
  Frames frames;
  frames.has_lost = std::ranges::count(stack, '\n') + 1 >= kKept;
  while (auto frame = take_frame(stack)) {
    if (frames.listed.size() < most)
      frames.listed.push_back(std::move(*frame));
    else
      ++frames.more;
  }
  return frames;
}

std::string ErrorReports::stack_of(JSValueRef error) const {
  JSValueRef stack = property(context_, object_of(error), "stack");
  return JSValueIsString(context_, stack) ? to_utf8(message_of(context_, stack)) : std::string();
}

std::string ErrorReports::stack_here() const {
  JSObjectRef error = JSObjectMakeError(context_, 0, nullptr, nullptr);
  return error ? stack_of(error) : std::string();
}

ErrorReports::Frames ErrorReports::frames_of(JSValueRef error, std::size_t most) const {
  return read_frames(stack_of(error), most);
}

void ErrorReports::set_calls(Frames frames, ScriptError* error) {
  error->calls = std::move(frames.listed);
  error->more_calls = frames.more;
  error->has_lost_calls = frames.has_lost;
}

void ErrorReports::add_calls(ScriptError* reached) const { set_calls(read_frames(stack_here(), kMostCalls), reached); }

std::size_t ErrorReports::count_calls() const { return read_frames(stack_here(), 0).more; }

language::SourcePlace ErrorReports::here() const {
  const std::string text = stack_here();
  std::string_view stack = text;
  const auto frame = take_frame(stack);
  if (!frame) return {};
  return *frame;
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
