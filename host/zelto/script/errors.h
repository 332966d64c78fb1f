// Failures across the border: results become exceptions of the script, exceptions become results.
#pragma once

#include <string>
#include <string_view>

#include <korlib/errorinfo.h>

#include "script/engine.h"
#include "script/error_reports.h"
#include "script/world/prelude.h"

namespace zelto::script {

// What a function that has raised answers: `return errors.raise(…)` is null where a value was wanted, else false.
struct Raised {
  operator JSValueRef() const noexcept { return nullptr; }
  operator bool() const noexcept { return false; }
};

// "Type mismatch: 'name' (0x80020005)", of those words.
std::wstring describe(HRESULT hr, std::wstring words, std::wstring_view member);

// Makes the errors of one realm. Where a function raises, *exception is not null afterwards.
class Errors {
 public:
  Errors(Engine& engine, JSGlobalContextRef context, const Prelude& prelude, const ErrorReports& reports,
         MissingMember& missing)
      : engine_(engine), context_(context), prelude_(prelude), reports_(reports), missing_(missing) {}

  // Before each call of an object: words of a failure that the script went on from are over.
  void begin_call();
  // After it: false with an exception when it failed, or the page was ended in it. `member` is for the words.
  bool check(HRESULT hr, std::wstring_view member, JSValueRef* exception);

  // The exception for a failing result, with the words of the thread's error object.
  Raised raise(HRESULT hr, std::wstring_view member, JSValueRef* exception);
  Raised raise_text(const wchar_t* text, HRESULT hr, JSValueRef* exception);
  Raised raise_type_error(const wchar_t* text, JSValueRef* exception);
  Raised raise_reference_error(const wchar_t* text, JSValueRef* exception);
  Raised raise_out_of_stack(JSValueRef* exception);
  // For the member that was found missing, if it was read just now; else nothing is raised.
  void raise_missing(JSValueRef* exception);

  // Below which templates are named from there on; outlives this.
  void set_root(std::string_view root) noexcept { root_ = root; }

  // The other way: a failing result with the thread's error object, the exception kept as cause.
  HRESULT failure_of(JSValueRef exception);

  // A component asked for a name that the script does not have: should the call fail with that code, it is named.
  void note_unknown(JsString name, HRESULT code) {
    unknown_name_ = std::move(name);
    unknown_code_ = code;
  }

 private:
  void note_left_templates();
  JSObjectRef make(ErrorKind kind, std::wstring_view message, HRESULT number) const;
  std::wstring words_for(HRESULT hr, std::wstring_view member) const;

  Engine& engine_;
  JSGlobalContextRef context_;
  const Prelude& prelude_;
  const ErrorReports& reports_;
  MissingMember& missing_;
  std::string_view root_;
  JsString unknown_name_;  // the last that a component asked for in vain, in the call that runs
  HRESULT unknown_code_ = S_OK;
};

}  // namespace zelto::script
