#include "script/executed_errors.h"

#include <korlib_host/errors.h>

#include <algorithm>
#include <utility>

#include "script/cause_chain.h"
#include "script/error_reports.h"
#include "script/template_places.h"

namespace zelto::script {

HRESULT ExecutedErrors::raise(ScriptError error) {
  const HRESULT hr = korlib::raise(FAILED(error.number) ? error.number : E_FAIL, error.source, error.message);
  hand_on(list_of({error.templates, error.more_templates}));
  // Looking at the error object takes it from the thread.
  info_.reset();
  if (GetErrorInfo(0, info_.put()) == S_OK) SetErrorInfo(0, info_.get());
  error_ = std::move(error);
  return hr;
}

const ScriptError* ExecutedErrors::take_up(IErrorInfo* info, JSGlobalContextRef context, JSValueRef exception) {
  constexpr std::size_t kMost = 8;  // that a page may have caught, and throws on in the end
  if (!info || info != info_.get() || !exception) return nullptr;
  info_.reset();
  if (taken_.size() == kMost) {
    JSValueUnprotect(taken_.front().context, taken_.front().exception);
    taken_.erase(taken_.begin());
  }
  taken_.push_back({context, exception, std::move(error_)});
  JSValueProtect(context, exception);
  return &taken_.back().error;
}

const ScriptError* ExecutedErrors::behind(JSValueRef exception) const noexcept {
  const auto found = std::ranges::find(taken_, exception, &Taken::exception);
  return found == taken_.end() ? nullptr : &found->error;
}

void ExecutedErrors::forget(JSGlobalContextRef context) noexcept {
  std::erase_if(taken_, [context](const Taken& each) {
    if (each.context != context) return false;
    JSValueUnprotect(context, each.exception);
    return true;
  });
}

// The engine has the functions of both pages in one stack: the inner error has those of the outer page already, unless
// it has no stack. Such a one is taken for a call from its place.
void put_inside(const ScriptError& inner, ScriptError* outer) {
  const std::size_t outside = outer->calls.size() + outer->more_calls;
  static_cast<language::SourcePlace&>(*outer) = inner;
  if (inner.calls.empty()) {
    outer->calls.insert(outer->calls.begin(), {inner, {}});
    if (outer->calls.size() > kMostCalls) {
      outer->calls.pop_back();
      ++outer->more_calls;
    }
  } else {
    outer->calls = inner.calls;
    outer->more_calls = inner.more_calls;
    outer->has_lost_calls = inner.has_lost_calls;
  }
  const std::size_t all = outer->calls.size() + outer->more_calls;
  for (std::size_t i = 0; i < outer->templates.size(); ++i) {
    std::size_t& inside = outer->templates[i].calls;
    inside = i < inner.templates.size() ? inner.templates[i].calls : inside + all - std::min(all, outside);
  }
  for (const language::Cause& cause : inner.causes) {
    const std::wstring& known = outer->causes.empty() ? outer->message : outer->causes.back().message;
    if (cause.depth > 0 || cause.kind == language::Cause::part || !tells(known, cause.message))
      outer->causes.push_back(cause);
  }
  outer->more_causes += inner.more_causes;
}

}  // namespace zelto::script
