// A page's global object: the host's objects, output and log that the page finds in it, and what the page declares.
#pragma once

#include <string_view>
#include <utility>

#include <korlib/ptr.h>
#include <zelto/asp.h>

#include "script/error_reports.h"
#include "script/outcome.h"
#include "script/page_output.h"
#include "script/world/page_function.h"
#include "script/world/prelude.h"
#include "script/wrappers.h"

namespace zelto::script {

class Globals {
 public:
  Globals(JSContextRef context, const Prelude& prelude, Wrappers& wrappers, const ErrorReports& reports)
      : context_(context),
        object_(JSContextGetGlobalObject(context)),
        prelude_(prelude),
        wrappers_(wrappers),
        reports_(reports) {}

  JSObjectRef object() const noexcept { return object_; }

  // `is_new` where the script does not have its wrapper by that name already.
  void set_object(std::wstring_view name, IDispatch* object, bool is_new);
  // The object of the name "Server", which makes objects; null without one.
  IDispatch* server() const noexcept { return server_.get(); }

  void set_output(IDispatch* response) {
    output_ = response;
    page_output_ = response;
    may_wait_ = page_output_ ? &page_output_->may_wait() : nullptr;
  }
  IPageOutput* page_output() const noexcept { return page_output_.get(); }
  // Whether what the script writes may be collected.
  bool may_collect() const noexcept { return may_wait_ && *may_wait_; }
  // The objects that are called Response and Server, as the script has them; null without them.
  JSValueRef response() { return output_ ? wrappers_.wrap(output_.get()) : nullptr; }
  JSValueRef server_object() { return server_ ? wrappers_.wrap(server_.get()) : nullptr; }
  ZeltoTypeLibrary::IResponse* output() const noexcept { return output_.get(); }

  void set_log(LogSink sink) { log_ = std::move(sink); }
  // A line with the place that the script has reached.
  void log(std::wstring_view level, std::wstring_view text) const;

  // What components look up is what the page declares at top level: var and function names are properties of the
  // global object, names of let, const and class are not. The engine's own globals and the host's objects are not
  // among them.
  //
  // A program that runs from here on.
  void remember(const language::Program& program) {
    has_lexical_ |= program.scope.declares_lexical_names;
    if (!program.folded_names.empty()) folded_names_ = &program.folded_names;
  }
  // Makes the name what the program has, where any letter case will do; any other stays as it is.
  void spell(JsString& name) const;
  // Where the page runs as a function, its names are asked for there; null otherwise.
  void set_page(const PageFunction* page) { page_ = page; }
  // Whether the page has declared the name; `is_lexical` when it is not a property of the global object, or not found
  // there first.
  bool declares(const JsString& name, bool* is_lexical) const;
  // Of a name that is lexical, as declares() said. Null, with an exception or not, where it cannot be read.
  JSValueRef lexical_value(const JsString& name, JSValueRef* exception) const;
  void set_lexical_value(const JsString& name, JSValueRef value, JSValueRef* exception) const;

 private:
  bool is_enumerable(const JsString& name) const;

  JSContextRef context_;
  JSObjectRef object_;
  const Prelude& prelude_;
  Wrappers& wrappers_;
  const ErrorReports& reports_;
  CComPtr<IDispatch> server_;
  CComQIPtr<ZeltoTypeLibrary::IResponse> output_;
  CComQIPtr<IPageOutput> page_output_;
  const bool* may_wait_ = nullptr;  // the output's
  LogSink log_;
  bool has_lexical_ = false;
  const std::vector<language::FoldedName>* folded_names_ = nullptr;  // of the program, which outlives its run
  const PageFunction* page_ = nullptr;
};

}  // namespace zelto::script
