// Failures across the border: results become exceptions, exceptions become results, and what reaches
// nobody becomes a ScriptError with a place in the page's source.
#include <algorithm>
#include <charconv>
#include <utility>

#include "language/written_source.h"
#include "script/error_numbers.h"
#include "script/errors.h"
#include "script/missing_member.h"
#include "script/realm_state.h"
#include "script/unwind.h"

namespace zelto::script {
namespace {

constexpr int kMostCauses = 16;  // errors may be each other's cause

int to_int(std::string_view digits) {
  int value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  return error == std::errc() && end == digits.data() + digits.size() ? value : 0;
}

void set_hidden(JSContextRef ctx, JSObjectRef object, const char* name, JSValueRef value) {
  JSObjectSetProperty(ctx, object, JsString(name).get(), value, kJSPropertyAttributeDontEnum, nullptr);
}

JSValueRef string_value(JSContextRef ctx, std::wstring_view text) {
  return JSValueMakeString(ctx, JsString(text).get());
}

// The result that stands for an error of that number. Two codes are answers to whoever asks for a member,
// not failures of it: "read it as a function" and "the page is being left".
HRESULT code_for(HRESULT number) {
  return FAILED(number) && number != DISP_E_MEMBERNOTFOUND && number != kPageStopped ? number : E_FAIL;
}

// Whether a failing call only hands on the exception that it met in the script. E_FAIL is everybody's code, so
// the error object has to be the exception's own; with another code a component may have put its words around it.
bool passes_on(const EngineState::Departed& departed, HRESULT hr, const ErrorText& text) {
  if (!departed.exception || hr != departed.code) return false;
  return hr != E_FAIL || (text.info && text.info.get() == departed.info.get());
}

}  // namespace

JSObjectRef RealmState::make_error(ErrorKind kind, std::wstring_view message) {
  JSValueRef arguments[] = {JSValueMakeNumber(context_, kind), string_value(context_, message)};
  JSValueRef error = kind == kPlainError
                         ? JSObjectMakeError(context_, 1, &arguments[1], nullptr)
                         : JSObjectCallAsFunction(context_, make_error_, nullptr, 2, arguments, nullptr);
  // Making the nicer kind can fail for want of stack.
  if (!error || !JSValueIsObject(context_, error)) error = JSObjectMakeError(context_, 1, &arguments[1], nullptr);
  return const_cast<JSObjectRef>(error);
}

void RealmState::raise(HRESULT hr, std::wstring_view member, JSValueRef* exception) {
  if (engine_.is_unwinding() || hr == kPageStopped) {
    if (engine_.is_unwinding()) engine_.terminate_soon();
    *exception = make_error(kPlainError, L"The page has ended");
    return;
  }
  const ErrorText text = take_error();
  if (hr == kOutOfStack) return raise_out_of_stack(exception);
  const EngineState::Departed& departed = engine_.departed();
  ScriptError failure{text.description, text.source, hr, {}, 0, 0};
  if (passes_on(departed, hr, text)) failure = departed.words;
  if (failure.message.empty()) failure.message = words_for(hr, member);
  JSObjectRef error = make_error(kPlainError, failure.message);
  set_hidden(context_, error, "number", JSValueMakeNumber(context_, failure.number));
  set_hidden(context_, error, "source", string_value(context_, failure.source));
  if (departed.exception) set_hidden(context_, error, "cause", departed.exception);
  engine_.forget_exception();
  *exception = error;
}

std::wstring RealmState::words_for(HRESULT hr, std::wstring_view member) const {
  if (hr != DISP_E_UNKNOWNNAME || unknown_name_.empty()) return describe(hr, member);
  return describe(hr, L"The script does not declare '" + to_wide(unknown_name_) + L"'", member);
}

void RealmState::raise_text(const wchar_t* text, HRESULT hr, JSValueRef* exception) {
  JSObjectRef error = make_error(kPlainError, text);
  set_hidden(context_, error, "number", JSValueMakeNumber(context_, hr));
  *exception = error;
}

void RealmState::raise_type_error(const wchar_t* text, JSValueRef* exception) {
  JSObjectRef error = make_error(kTypeError, text);
  set_hidden(context_, error, "number", JSValueMakeNumber(context_, DISP_E_TYPEMISMATCH));
  *exception = error;
}

void RealmState::raise_reference_error(const wchar_t* text, JSValueRef* exception) {
  *exception = make_error(kReferenceError, text);
}

void RealmState::raise_out_of_stack(JSValueRef* exception) {
  JSObjectRef error = make_error(kRangeError, L"Out of stack space");
  set_hidden(context_, error, "number", JSValueMakeNumber(context_, kOutOfStack));
  *exception = error;
}

void RealmState::note_missing(const AutomationObject& held, std::u16string_view name) {
  missing_ = {std::u16string(name), held.dispatch(), held.kind(), true};
}

std::wstring RealmState::words_for_missing() const {
  return describe_missing(missing_.object.get(), missing_.kind, to_wide(missing_.name));
}

void RealmState::raise_missing(JSValueRef* exception) {
  if (!std::exchange(missing_.is_fresh, false)) return;
  JSObjectRef error = make_error(kPlainError, words_for_missing());
  set_hidden(context_, error, "number", JSValueMakeNumber(context_, DISP_E_UNKNOWNNAME));
  set_hidden(context_, error, "source", string_value(context_, L""));
  *exception = error;
}

// The engine says of a call "…o.Name is not a function. (In '…', '…o.Name' is undefined)", and of what lies behind
// it "undefined is not an object (evaluating '…o.Name.x')". Where that is the member that was found missing, the
// error says so in its stead.
bool RealmState::is_about_missing(std::wstring_view message) const {
  if (missing_.name.empty()) return false;
  const std::wstring name = L"." + to_wide(missing_.name);
  if (message.ends_with(name + L"' is undefined)")) return true;
  return message.starts_with(L"undefined is not an object (evaluating '") &&
         message.substr(0, message.find_last_of(L".[(")).ends_with(name);
}

void RealmState::put_into_words(std::wstring_view name, ScriptError* error) const {
  if (is_about_missing(error->message)) {
    error->message = words_for_missing();
    error->number = DISP_E_UNKNOWNNAME;
    return;
  }
  error->number = number_of_engine_error(name, error->message);
  error->message = language::as_written(std::move(error->message));
}

HRESULT RealmState::failure_of(JSValueRef exception) {
  if (engine_.is_unwinding()) return kPageStopped;
  if (!exception) return E_FAIL;
  EngineState::Departed departed{context_, exception, E_FAIL, {}, {}};
  const bool has_number = read_words(exception, &departed.words);
  // The number of an error of the engine is for pages to look at, no result that components know.
  if (has_number) departed.code = code_for(departed.words.number);
  const HRESULT code = set_error(departed.code, departed.words.source, departed.words.message, &departed.info);
  engine_.remember_exception(std::move(departed));
  return code;
}

// False when the error is one of the engine that has no number of its own.
bool RealmState::read_words(JSValueRef exception, ScriptError* out) {
  out->number = E_FAIL;
  if (!JSValueIsObject(context_, exception)) {
    out->message = text_of(exception);
    return true;
  }
  auto* object = const_cast<JSObjectRef>(exception);
  JSValueRef message = property(object, JsString("message"));
  out->message = text_of(JSValueIsString(context_, message) ? message : exception);
  JSValueRef name = property(object, JsString("name"));
  JSValueRef source = property(object, JsString("source"));
  if (!JSValueIsString(context_, source)) source = name;
  if (JSValueIsString(context_, source)) out->source = text_of(source);
  if (JSValueRef number = property(object, JsString("number")); JSValueIsNumber(context_, number)) {
    out->number = JSValueToInt32(context_, number, nullptr);
    out->message = language::as_written(std::move(out->message));
    return true;
  }
  ScriptError known{out->message, {}, S_OK, {}, 0, 0};
  put_into_words(JSValueIsString(context_, name) ? text_of(name) : std::wstring(), &known);
  out->message = std::move(known.message);
  if (FAILED(known.number)) out->number = known.number;
  return known.number == DISP_E_UNKNOWNNAME;
}

ScriptError RealmState::describe_exception(JSValueRef exception) {
  ScriptError error;
  read_words(exception, &error);
  if (!JSValueIsObject(context_, exception)) {
    if (thrown_at_) place_like(*thrown_at_, &error);
    return error;
  }
  auto* object = const_cast<JSObjectRef>(exception);
  if (JSValueRef name = property(object, JsString("name")); error.source.empty() && JSValueIsString(context_, name)) {
    error.source = text_of(name);
  }
  if (!JSValueIsString(context_, property(object, JsString("stack"))) && thrown_at_) place_like(*thrown_at_, &error);
  // The place is where the first of a chain of errors arose.
  JSValueRef link = exception;
  for (int i = 0; i < kMostCauses && JSValueIsObject(context_, link); ++i) {
    locate(link, &error);
    link = property(const_cast<JSObjectRef>(link), JsString("cause"));
  }
  if (thrown_at_ && !JSValueIsObject(context_, link) && !JSValueIsUndefined(context_, link)) {
    place_like(*thrown_at_, &error);
  }
  return error;
}

ScriptError RealmState::describe_syntax(const language::Program& program, const ParsedScript& parsed) {
  ScriptError error;
  error.message = parsed.message();
  error.source = L"SyntaxError";
  error.number = E_FAIL;
  place(program, parsed.line(), 0, &error);
  return error;
}

void RealmState::place_like(const ScriptError& other, ScriptError* out) {
  out->file = other.file;
  out->line = other.line;
  out->column = other.column;
}

void RealmState::place(const language::Program& program, int line, int column, ScriptError* out) {
  language::SourcePlace found = language::source_place(program, line, column);
  out->file = std::move(found.file);
  out->line = found.line;
  out->column = found.column;
}

// The first frame of the stack that is of a program of this realm: "name@url:line:column".
bool RealmState::locate(JSValueRef error, ScriptError* out) const {
  JSValueRef stack = property(const_cast<JSObjectRef>(error), JsString("stack"));
  if (!JSValueIsString(context_, stack)) return false;
  const std::string text = to_utf8(text_of(stack));
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
      place(*program->second, to_int(frame.substr(line_colon + 1, column_colon - line_colon - 1)),
            to_int(frame.substr(column_colon + 1)), out);
      return true;
    }
  }
  return false;
}

void RealmState::note_throw(JSValueRef value) {
  thrown_at_.reset();
  if (JSValueIsObject(context_, value) &&
      JSValueIsString(context_, property(const_cast<JSObjectRef>(value), JsString("stack")))) {
    return;
  }
  JSValueRef here = JSObjectMakeError(context_, 0, nullptr, nullptr);
  auto found = std::make_unique<ScriptError>();
  if (here && locate(here, found.get())) thrown_at_ = std::move(found);
}

void RealmState::log(std::wstring_view level, std::wstring_view text) {
  if (!log_) return;
  ScriptError place;
  if (JSObjectRef here = JSObjectMakeError(context_, 0, nullptr, nullptr)) locate(here, &place);
  log_({to_utf8(level), to_utf8(text), place.file, place.line});
}

void RealmState::note_rejection(JSValueRef reason) {
  if (!rejection_ && !engine_.is_unwinding()) rejection_ = std::make_unique<ScriptError>(describe_exception(reason));
}

}  // namespace zelto::script
