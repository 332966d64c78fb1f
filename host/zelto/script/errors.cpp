#include "script/errors.h"

#include <korlib_host/errors.h>

#include <utility>

#include "script/error_text.h"
#include "script/stack.h"
#include "script/text.h"

namespace zelto::script {
namespace {

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

void Errors::begin_call() {
  clear_error();
  engine_.departed().forget();
  unknown_name_.clear();
}

bool Errors::check(HRESULT hr, std::wstring_view member, JSValueRef* exception) {
  const Watchdog& watchdog = engine_.watchdog();
  if (SUCCEEDED(hr) && !(watchdog.is_running() && watchdog.is_unwinding())) return true;
  return raise(hr, member, exception);
}

JSObjectRef Errors::make(ErrorKind kind, std::wstring_view message, HRESULT number) const {
  JSObjectRef error = prelude_.make_error(kind, message);
  set_hidden(context_, error, "number", JSValueMakeNumber(context_, number));
  return error;
}

Raised Errors::raise(HRESULT hr, std::wstring_view member, JSValueRef* exception) {
  Watchdog& watchdog = engine_.watchdog();
  if (watchdog.is_unwinding() || hr == kPageStopped) {
    if (watchdog.is_unwinding()) watchdog.terminate_soon();
    *exception = prelude_.make_error(ErrorKind::plain, L"The page has ended");
    return {};
  }
  const ErrorText text = take_error();
  if (hr == kOutOfStack) return raise_out_of_stack(exception);
  const DepartedException::Departure& departed = engine_.departed().last();
  ScriptError failure{{}, text.description, text.source, hr};
  if (passes_on(departed, hr, text)) failure = departed.words;
  if (failure.message.empty()) failure.message = words_for(hr, member);
  JSObjectRef error = make(ErrorKind::plain, failure.message, failure.number);
  set_hidden(context_, error, "source", string_value(context_, failure.source));
  if (departed.exception) set_hidden(context_, error, "cause", departed.exception);
  engine_.departed().forget();
  *exception = error;
  return {};
}

std::wstring Errors::words_for(HRESULT hr, std::wstring_view member) const {
  if (hr != DISP_E_UNKNOWNNAME || unknown_name_.empty()) return describe(hr, member);
  return describe(hr, L"The script does not declare '" + to_wide(unknown_name_) + L"'", member);
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
  // Looking at the error object takes it from the thread.
  if (GetErrorInfo(0, departure.info.put()) == S_OK) SetErrorInfo(0, departure.info.get());
  engine_.departed().remember(std::move(departure));
  return code;
}

}  // namespace zelto::script
