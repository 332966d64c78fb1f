// The exception that left a script function for a component, until it comes back or is done with.
#pragma once

#include <utility>

#include <korlib/errorinfo.h>
#include <korlib/ptr.h>

#include "script/jsc.h"
#include "script/outcome.h"

namespace zelto::script {

class DepartedException {
 public:
  struct Departure {
    JSGlobalContextRef context = nullptr;
    JSValueRef exception = nullptr;  // null: there is none
    HRESULT code = S_OK;             // what the function answered
    CComPtr<IErrorInfo> info;        // the error object that it left with that
    ScriptError words;
  };

  DepartedException() = default;
  DepartedException(const DepartedException&) = delete;
  DepartedException& operator=(const DepartedException&) = delete;

  // Keeps the exception alive, in place of an earlier one.
  void remember(Departure departure) {
    JSValueProtect(departure.context, departure.exception);  // it may be the one that is forgotten
    forget();
    last_ = std::move(departure);
  }
  void forget() {
    if (!last_.exception) return;
    JSValueUnprotect(last_.context, last_.exception);
    last_ = {};
  }
  const Departure& last() const noexcept { return last_; }

 private:
  Departure last_;
};

}  // namespace zelto::script
