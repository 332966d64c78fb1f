#include "script/call_arguments.h"

#include <optional>

#include "script/small_integer.h"

namespace zelto::script {

bool CallArguments::convert(Values& values, std::size_t count, const JSValueRef* given, JSValueRef* exception,
                            RepeatedTexts::Loan* loan) {
  JSContextRef ctx = values.context();
  JSValueRef const undefined = JSValueMakeUndefined(ctx);  // always the same
  std::optional<EngineLock> lock;  // for the first that the engine is asked about, and all after it
  reversed_.resize(count);
  for (std::size_t i = 0; i < count; ++i) {
    CComVariant& slot = reversed_[count - 1 - i];
    if (const std::optional<LONG> number = small_integer(ctx, given[i])) {
      slot.vt = VT_I4;
      slot.lVal = *number;
      continue;
    }
    if (given[i] == undefined) {
      slot = korlib::omitted();
      continue;
    }
    if (loan && loan->lend(given[i], &slot)) continue;
    if (!lock) lock.emplace(ctx);
    if (!values.to_variant(given[i], &slot, exception)) return false;
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
