#include "script/call_arguments.h"

namespace zelto::script {

bool CallArguments::convert(Values& values, std::size_t count, const JSValueRef* given, JSValueRef* exception) {
  const EngineLock lock(values.context());
  reversed_.resize(count);
  for (std::size_t i = 0; i < count; ++i) {
    CComVariant& slot = reversed_[count - 1 - i];
    if (JSValueIsUndefined(values.context(), given[i])) {
      slot = korlib::omitted();
    } else if (!values.to_variant(given[i], &slot, exception)) {
      return false;
    }
  }
  return true;
}

bool CallArguments::fill_omitted(DISPPARAMS* params, UINT refused) {
  if (refused >= params->cArgs || !korlib::is_omitted(params->rgvarg[refused])) return false;
  VariantInit(&params->rgvarg[refused]);
  return true;
}

PutArguments::PutArguments(const CallArguments& arguments, const VARIANT& value) {
  all_.reserve(arguments.reversed_.size() + 1);
  all_.push_back(value);
  all_.insert(all_.end(), arguments.reversed_.begin(), arguments.reversed_.end());
}

}  // namespace zelto::script
