#include "script/error_reports.h"

#include <fmt/xchar.h>

#include <algorithm>
#include <boost/range/adaptor/reversed.hpp>
#include <charconv>
#include <utility>

#include "language/written_source.h"
#include "script/cause_chain.h"
#include "script/error_numbers.h"
#include "script/realm.h"
#include "script/syntax.h"
#include "script/template_places.h"
#include "script/text.h"
#include "script/thrown_value.h"

namespace zelto::script {
namespace {

// Words of the engine for a text that is longer than it may be, or has no memory.
constexpr std::wstring_view kTextLimit =
    L": a text has 2147483647 characters at most, and what a page takes is limited by script_memory";

std::wstring wide(const std::string& utf8) { return to_wide(JsString(utf8.c_str()).view()); }

int to_int(std::string_view digits) {
  int value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  return error == std::errc() && end == digits.data() + digits.size() ? value : 0;
}

// What stands in front of a compiled script has functions that the author does not know.
bool is_in_head(const language::Program& program, int line, int column) {
  if (line != 1 || program.shifts.empty()) return false;
  const language::ColumnShift& first = program.shifts.front();
  return first.line == 1 && first.column == 0 && column <= first.inserted;
}

}  // namespace

void ErrorReports::begin_run() {
  thrown_ = nullptr;
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
  const bool has_words = JSValueIsString(context_, message);
  out->message = has_words ? message_of(context_, message) : words_of_thrown(context_, exception);
  JSValueRef name = property(context_, object, "name");
  JSValueRef source = property(context_, object, "source");
  if (!JSValueIsString(context_, source)) source = name;
  // A function has a name as well, and a regular expression a source.
  const bool is_said = has_words || is_error(context_, exception);
  if (is_said && JSValueIsString(context_, source)) out->source = message_of(context_, source);
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

// With words for what has none.
void ErrorReports::read_in_words(JSValueRef exception, ScriptError* error, std::wstring_view beginning) const {
  read(exception, error);
  const bool is_object = JSValueIsObject(context_, exception);
  const bool has_words =
      JSValueIsString(context_, is_object ? property(context_, object_of(exception), "message") : exception);
  if (error->message.empty() || !has_words) error->message = words_of_thrown(context_, exception, beginning);
  if (error->source == L"RangeError" && error->message == L"Out of memory") error->message += kTextLimit;
  if (!is_object || !error->source.empty() || (!has_words && !is_error(context_, exception))) return;
  JSValueRef name = property(context_, object_of(exception), "name");
  if (JSValueIsString(context_, name)) error->source = message_of(context_, name);
}

ScriptError ErrorReports::describe(JSValueRef exception, std::wstring_view beginning) const {
  ScriptError error;
  read_in_words(exception, &error, beginning);
  Telling telling{&error};
  add_causes(exception, telling);
  add_places(exception, telling.placed_by, &error);
  if (telling.inner) put_inside(*telling.inner, &error);
  return error;
}

// What hands on the words of its cause is the same failure, and the place is where that arose.
void ErrorReports::add_causes(JSValueRef exception, Telling& telling) const {
  const std::size_t beginning = telling.path.size();
  const std::size_t teller = telling.told;
  std::size_t told = teller;
  std::wstring known = teller == kItself ? telling.error->message : telling.error->causes[teller].message;
  std::size_t number = 0;
  CauseChain chain(context_, exception);
  for (; chain.link(); chain.advance(), ++number) {
    if (!chain.is_first()) {
      ScriptError cause;
      read_in_words(chain.link(), &cause, kThrown);
      if (!hands_on(telling.path.back(), known, cause.message)) {
        known = cause.message;
        if (!tell(std::move(cause), language::Cause::cause, &telling)) break;
        told = telling.error->causes.size() - 1;
      }
    }
    telling.path.push_back(chain.link());
    set_place_of(chain.link(), told, number, &telling);
    const unsigned depth = telling.depth;
    if (told != kItself) telling.depth = telling.error->causes[told].depth + 1;
    add_parts(chain.link(), telling);
    telling.depth = depth;
  }
  telling.error->more_causes += chain.count_rest();
  telling.path.resize(beginning);
}

// False where there is no room for it.
bool ErrorReports::tell(ScriptError words, language::Cause::Kind kind, Telling* telling) {
  if (telling->error->causes.size() == CauseChain::kMost) {
    ++telling->error->more_causes;
    return false;
  }
  telling->error->causes.push_back({{}, kind, std::move(words.message), std::move(words.source), {}, telling->depth});
  return true;
}

// The words of a component stand around those that it has met in a script, with which it fails. A script that makes an
// error of another one has said more, unless it says just the same.
bool ErrorReports::hands_on(JSValueRef error, std::wstring_view words, std::wstring_view of_cause) const {
  if (words == of_cause) return true;
  const bool is_of_component =
      JSValueIsObject(context_, error) && JSValueIsString(context_, property(context_, object_of(error), "source"));
  return is_of_component && tells(words, of_cause);
}

void ErrorReports::set_place_of(JSValueRef link, std::size_t told, std::size_t number, Telling* telling) const {
  ScriptError& error = *telling->error;
  const ScriptError* const executed = Engine::current()->executed().behind(link);
  if (executed && told == kItself) telling->inner = executed;
  ScriptError at = executed && told != kItself ? *executed : place_of(link);
  const bool was_thrown = number == 0 || link == thrown_;
  if (at.file.empty() && was_thrown && thrown_at_ && !is_error(context_, link))
    static_cast<language::SourcePlace&>(at) = *thrown_at_;
  if (at.file.empty()) return;
  if (told != kItself) {
    set_place(at, &error.causes[told]);
    return;
  }
  static_cast<language::SourcePlace&>(error) = at;
  if (at.calls.empty()) return;
  telling->placed_by = number;
  set_calls({std::move(at.calls), at.more_calls, at.has_lost_calls}, &error);
}

void ErrorReports::set_place(const ScriptError& at, language::Cause* cause) {
  constexpr std::size_t kMost = 8;
  static_cast<language::SourcePlace&>(*cause) = at;
  cause->calls.assign(at.calls.begin(),
                      at.calls.begin() + static_cast<std::ptrdiff_t>(std::min(at.calls.size(), kMost)));
}

// The errors that one stands for, as that of Promise.any does, each with its own causes.
void ErrorReports::add_parts(JSValueRef link, Telling& telling) const {
  if (!JSValueIsObject(context_, link)) return;
  JSValueRef name = property(context_, object_of(link), "name");
  if (!JSValueIsString(context_, name) || message_of(context_, name) != L"AggregateError") return;
  JSValueRef errors = property(context_, object_of(link), "errors");
  if (!JSValueIsArray(context_, errors)) return;
  JSValueRef length = property(context_, object_of(errors), "length");
  const auto count = static_cast<std::size_t>(JSValueToNumber(context_, length, nullptr));
  for (std::size_t i = 0; i < count; ++i) {
    if (telling.error->causes.size() == CauseChain::kMost) {
      telling.error->more_causes += count - i;
      return;
    }
    JSValueRef part = JSObjectGetPropertyAtIndex(context_, object_of(errors), static_cast<unsigned>(i), nullptr);
    if (!part || std::ranges::find(telling.path, part) != telling.path.end()) continue;
    ScriptError words;
    read_in_words(part, &words, kThrown);
    tell(std::move(words), language::Cause::part, &telling);
    telling.told = telling.error->causes.size() - 1;
    ++telling.depth;
    add_causes(part, telling);
    --telling.depth;
  }
}

ScriptError ErrorReports::place_of(JSValueRef exception) const {
  ScriptError place;
  if (JSValueIsObject(context_, exception)) set_calls(frames_of(exception), &place);
  if (!place.calls.empty()) static_cast<language::SourcePlace&>(place) = place.calls.front();
  return place;
}

// Between the functions that were running: an error that comes out of a mark has all places so far, and is raised in
// the function that drew the template, which has fewer functions around it than the cause that it had inside. Marks
// that only a cause has come out of were inside of all functions.
void ErrorReports::add_places(JSValueRef exception, std::size_t placed_by, ScriptError* error) const {
  std::vector<std::pair<std::size_t, std::size_t>> links;  // places and functions
  for (CauseChain chain(context_, exception); chain.link(); chain.advance()) {
    if (!JSValueIsObject(context_, chain.link())) break;
    TemplatePlaces places = read_places(own_places_of(context_, chain.link()));
    const std::size_t count = places.listed.size();
    if (error->templates.empty()) {
      error->templates = std::move(places.listed);
      error->more_templates = places.more;
    }
    links.emplace_back(count, frames_of(chain.link(), 0).more);
  }
  const std::size_t all = error->calls.size() + error->more_calls;
  for (std::size_t i = 0; i < error->templates.size(); ++i) {
    const auto has_it = std::find_if(links.rbegin(), links.rend(), [i](const auto& each) { return each.first > i; });
    const bool is_outside = has_it != links.rend() && static_cast<std::size_t>(links.rend() - has_it) <= placed_by;
    error->templates[i].calls = is_outside ? all - std::min(all, has_it->second) : 0;
  }
}

ScriptError ErrorReports::describe_syntax(const language::Program& program, const ParsedScript& parsed) const {
  if (auto error = syntax_error(context_, program)) return std::move(*error);
  return {language::source_place(program, parsed.line(), 0), parsed.message(), L"SyntaxError", E_FAIL};
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
    if (name.starts_with('$') && is_in_head(*program->second, line, column)) return {};
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
  thrown_ = value;
  thrown_at_.reset();
  if (is_error(context_, value)) return;
  language::SourcePlace place = here();
  if (!place.file.empty()) thrown_at_ = std::move(place);
}

void ErrorReports::note_rejection(JSValueRef reason) {
  if (rejection_) return;
  if (reason != thrown_) thrown_at_.reset();
  rejection_ = describe(reason, kRejected);
}

}  // namespace zelto::script
