#include "script/errors.h"

#include <fmt/xchar.h>
#include <korlib/combstr.h>
#include <korlib_host/errors.h>

#include <algorithm>
#include <array>
#include <utility>

#include "script/template_places.h"
#include "script/text.h"

namespace zelto::script {
namespace {

struct Row {
  HRESULT code;
  const wchar_t* text;
};
constexpr std::array kTexts{
    Row{DISP_E_UNKNOWNNAME, L"Object doesn't support this property or method"},
    Row{DISP_E_MEMBERNOTFOUND, L"Object doesn't support this property or method"},
    Row{DISP_E_PARAMNOTFOUND, L"Argument missing"},
    Row{DISP_E_BADPARAMCOUNT, L"Wrong number of arguments"},
    Row{DISP_E_TYPEMISMATCH, L"Type mismatch"},
    Row{DISP_E_OVERFLOW, L"Overflow"},
    Row{DISP_E_BADINDEX, L"Subscript out of range"},
    Row{DISP_E_BADVARTYPE, L"Invalid value type"},
    Row{DISP_E_DIVBYZERO, L"Division by zero"},
    Row{DISP_E_EXCEPTION, L"Exception occurred"},
    Row{DISP_E_ARRAYISLOCKED, L"The array is locked"},
    Row{E_NOTIMPL, L"Not implemented"},
    Row{E_NOINTERFACE, L"No such interface supported"},
    Row{E_POINTER, L"Invalid pointer"},
    Row{E_ABORT, L"Operation aborted"},
    Row{E_FAIL, L"Unspecified error"},
    Row{E_UNEXPECTED, L"Unexpected failure"},
    Row{E_ACCESSDENIED, L"Access is denied"},
    Row{E_OUTOFMEMORY, L"Out of memory"},
    Row{E_INVALIDARG, L"Invalid argument"},
    Row{REGDB_E_CLASSNOTREG, L"Class not registered"},
    Row{CO_E_CLASSSTRING, L"Invalid class string"},
    Row{CO_E_DLLNOTFOUND, L"The component's library was not found"},
    Row{CO_E_ERRORINDLL, L"The component's library is damaged"},
    Row{CLASS_E_CLASSNOTAVAILABLE, L"The component does not have this class"},
    Row{kOutOfStack, L"Out of stack space"},
    Row{kPageStopped, L"The page has ended"},
};

std::wstring words_of(HRESULT hr) {
  const auto row = std::ranges::find(kTexts, hr, &Row::code);
  return row == kTexts.end() ? L"Automation error" : row->text;
}

struct ErrorText {
  std::wstring source;
  std::wstring description;  // empty: the failing member said nothing
  CComPtr<IErrorInfo> info;  // the object that said it
};

// Moves the thread's error object out.
ErrorText take_error() {
  ErrorText text;
  if (GetErrorInfo(0, text.info.put()) != S_OK || !text.info) return text;
  CComBSTR part;
  if (SUCCEEDED(text.info->GetSource(part.put()))) text.source = part.view();
  if (SUCCEEDED(text.info->GetDescription(part.put()))) text.description = part.view();
  return text;
}

// The result that stands for an error of that number. Two codes are answers to whoever asks for a member,
// not failures of it: "read it as a function" and "the page is being left".
HRESULT code_for(HRESULT number) {
  return FAILED(number) && number != DISP_E_MEMBERNOTFOUND && number != kPageStopped ? number : E_FAIL;
}

// Whether a failing call only hands on the exception that it met in the script. E_FAIL is everybody's code, so
// the error object has to be the exception's own; with another code a component may have put its words around it.
bool passes_on(const DepartedException::Departure& departed, HRESULT hr, const ErrorText& text) {
  if (!departed.exception || hr != departed.code) return false;
  return hr != E_FAIL || (text.info && text.info.get() == departed.info.get());
}

}  // namespace

std::wstring describe(HRESULT hr, std::wstring words, std::wstring_view member) {
  if (!member.empty()) words.append(L": '").append(member).append(L"'");
  return words + fmt::format(L" (0x{:08X})", static_cast<unsigned>(hr));
}

void Errors::begin_call() {
  SetErrorInfo(0, nullptr);
  engine_.departed().forget();
  unknown_name_ = {};
}

bool Errors::check(HRESULT hr, std::wstring_view member, JSValueRef* exception) {
  const Watchdog& watchdog = engine_.watchdog();
  if (SUCCEEDED(hr) && !(watchdog.is_running() && watchdog.is_unwinding())) return true;
  return raise(hr, member, exception);
}

JSObjectRef Errors::make(ErrorKind kind, std::wstring_view message, HRESULT number) const {
  JSObjectRef error = prelude_.make_error(kind, message);
  // The engine makes none when it ends the script in that moment.
  if (error) set_hidden(context_, error, "number", JSValueMakeNumber(context_, number));
  return error;
}

Raised Errors::raise(HRESULT hr, std::wstring_view member, JSValueRef* exception) {
  Watchdog& watchdog = engine_.watchdog();
  if ((watchdog.is_running() && watchdog.must_unwind()) || hr == kPageStopped) {
    if (watchdog.is_unwinding()) watchdog.terminate_soon();
    note_left_templates();
    *exception = prelude_.make_error(ErrorKind::plain, L"The page has ended");
    return {};
  }
  const ErrorText text = take_error();
  const std::wstring places = template_places_of(text.info.get(), root_);
  if (hr == kOutOfStack) {
    raise_out_of_stack(exception);
    if (*exception) set_list(context_, object_of(*exception), places);
    return {};
  }
  const DepartedException::Departure& departed = engine_.departed().last();
  ScriptError failure{{}, text.description, text.source, hr};
  if (passes_on(departed, hr, text)) failure = departed.words;
  if (failure.message.empty()) failure.message = words_for(hr, member);
  JSObjectRef error = make(ErrorKind::plain, failure.message, failure.number);
  if (error) set_hidden(context_, error, "source", string_value(context_, failure.source));
  if (error) set_places(context_, error, places);
  if (const ScriptError* inner = engine_.executed().take_up(text.info.get(), context_, error)) {
    set_hidden(context_, error, "file", string_value(context_, korlib::to_wide(site_path(inner->file, root_))));
    if (places.empty()) set_hidden(context_, error, "line", JSValueMakeNumber(context_, inner->line));
  }
  if (error && departed.exception) set_hidden(context_, error, "cause", departed.exception);
  engine_.departed().forget();
  *exception = error;
  return {};
}

// A page that is ended at its limit leaves one member after the other, each with the templates that it was drawing.
void Errors::note_left_templates() {
  const Outcome::Kind ending = engine_.watchdog().ending();
  const CComPtr<IErrorInfo> info = take_error().info;
  if (!info || (ending != Outcome::timed_out && ending != Outcome::out_of_memory)) return;
  if (const std::wstring list = template_places_of(info.get(), root_); !list.empty())
    engine_.watchdog().add_left(read_places(list), [this] { return reports_.count_calls(); });
}

std::wstring Errors::words_for(HRESULT hr, std::wstring_view member) const {
  if (hr != unknown_code_ || !unknown_name_.get()) return describe(hr, words_of(hr), member);
  return describe(hr, L"The script does not declare '" + to_wide(unknown_name_.view()) + L"'", member);
}

Raised Errors::raise_text(const wchar_t* text, HRESULT hr, JSValueRef* exception) {
  *exception = make(ErrorKind::plain, text, hr);
  return {};
}

Raised Errors::raise_type_error(const wchar_t* text, JSValueRef* exception) {
  *exception = make(ErrorKind::type, text, DISP_E_TYPEMISMATCH);
  return {};
}

Raised Errors::raise_reference_error(const wchar_t* text, JSValueRef* exception) {
  *exception = prelude_.make_error(ErrorKind::reference, text);
  return {};
}

Raised Errors::raise_out_of_stack(JSValueRef* exception) {
  *exception = make(ErrorKind::range, L"Out of stack space", kOutOfStack);
  return {};
}

void Errors::raise_missing(JSValueRef* exception) {
  if (!missing_.take_fresh()) return;
  JSObjectRef error = make(ErrorKind::plain, missing_.words(), DISP_E_UNKNOWNNAME);
  set_hidden(context_, error, "source", string_value(context_, L""));
  *exception = error;
}

HRESULT Errors::failure_of(JSValueRef exception) {
  if (engine_.watchdog().is_unwinding()) return kPageStopped;
  if (!exception) return E_FAIL;
  DepartedException::Departure departure{context_, exception, E_FAIL, {}, {}};
  const bool has_number = reports_.read(exception, &departure.words);
  // The number of an error of the engine is for pages to look at, no result that components know.
  if (has_number) departure.code = code_for(departure.words.number);
  const HRESULT code = korlib::raise(departure.code, departure.words.source, departure.words.message);
  hand_on(places_of(context_, exception));
  // Looking at the error object takes it from the thread.
  if (GetErrorInfo(0, departure.info.put()) == S_OK) SetErrorInfo(0, departure.info.get());
  engine_.departed().remember(std::move(departure));
  return code;
}

}  // namespace zelto::script
