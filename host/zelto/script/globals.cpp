#include "script/globals.h"

#include "script/text.h"

namespace zelto::script {

void Globals::set_object(std::wstring_view name, IDispatch* object) {
  JSValueRef value = object ? static_cast<JSValueRef>(wrappers_.wrap(object)) : JSValueMakeNull(context_);
  set_hidden(context_, object_, JsString(name), value);
  if (name == L"Server") server_ = object;
}

void Globals::set_output(IDispatch* response) {
  output_.reset();
  if (response) response->QueryInterface(korlib::iid_of<ZeltoTypeLibrary::IResponse>, output_.put_void());
}

void Globals::log(std::wstring_view level, std::wstring_view text) const {
  if (!log_) return;
  const language::SourcePlace here = reports_.here();
  log_({to_utf8(level), to_utf8(text), here.file, here.line});
}

}  // namespace zelto::script
