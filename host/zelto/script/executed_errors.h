// What went wrong in a page that another one has executed, on its way out of that.
#pragma once

#include <vector>

#include <korlib/errorinfo.h>
#include <korlib/ptr.h>

#include "language/program.h"
#include "script/jsc.h"

namespace zelto::script {

using language::ScriptError;

// An exception of the outer page has words and templates of the error, as that of any failing member has. The place in
// the executed page, and the functions that were running there, are kept beside it.
class ExecutedErrors {
 public:
  ExecutedErrors() = default;
  ExecutedErrors(const ExecutedErrors&) = delete;
  ExecutedErrors& operator=(const ExecutedErrors&) = delete;

  // Fails the member that has executed the page.
  HRESULT raise(ScriptError error);
  // An exception has been made of that error object. Gives the error if that is of an executed page.
  const ScriptError* take_up(IErrorInfo* info, JSGlobalContextRef context, JSValueRef exception);
  // The error that an exception has come from; null for others.
  const ScriptError* behind(JSValueRef exception) const noexcept;
  // The realm of that context ends.
  void forget(JSGlobalContextRef context) noexcept;

 private:
  struct Taken {
    JSGlobalContextRef context;
    JSValueRef exception;  // protected
    ScriptError error;
  };

  CComPtr<IErrorInfo> info_;  // of the last one that was raised, and not taken up
  ScriptError error_;
  std::vector<Taken> taken_;
};

// Makes one error of what the outer page says of its call, and of what went wrong inside of that.
void put_inside(const ScriptError& inner, ScriptError* outer);

}  // namespace zelto::script
