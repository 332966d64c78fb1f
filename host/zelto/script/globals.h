// What a page finds in its global object of the host's: the objects with a name, its output, its log.
#pragma once

#include <string_view>
#include <utility>

#include <korlib/ptr.h>
#include <zelto/asp.h>

#include "script/error_reports.h"
#include "script/outcome.h"
#include "script/wrappers.h"

namespace zelto::script {

class Globals {
 public:
  Globals(JSContextRef context, Wrappers& wrappers, const ErrorReports& reports)
      : context_(context), object_(JSContextGetGlobalObject(context)), wrappers_(wrappers), reports_(reports) {}

  JSObjectRef object() const noexcept { return object_; }

  void set_object(std::wstring_view name, IDispatch* object);
  // The object of the name "Server", which makes objects; null without one.
  IDispatch* server() const noexcept { return server_.get(); }

  void set_output(IDispatch* response);
  ZeltoTypeLibrary::IResponse* output() const noexcept { return output_.get(); }

  void set_log(LogSink sink) { log_ = std::move(sink); }
  // A line with the place that the script has reached.
  void log(std::wstring_view level, std::wstring_view text) const;

 private:
  JSContextRef context_;
  JSObjectRef object_;
  Wrappers& wrappers_;
  const ErrorReports& reports_;
  CComPtr<IDispatch> server_;
  CComPtr<ZeltoTypeLibrary::IResponse> output_;
  LogSink log_;
};

}  // namespace zelto::script
