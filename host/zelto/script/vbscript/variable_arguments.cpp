#include "script/vbscript/variable_arguments.h"

#include <bit>

#include "script/realm.h"
#include "script/vbscript/border.h"

namespace zelto::script::vbscript {
namespace {

// Stands in a value that nobody has cleared. Whoever assigns clears what was there, and new text or a new array may
// have the place of the old one in memory.
constexpr WORD kUntouched = 0x4B56;

}  // namespace

VariableArguments::VariableArguments(CallArguments& arguments, std::size_t count, unsigned places)
    : variables_(static_cast<std::size_t>(std::popcount(places))) {
  auto variable = variables_.begin();
  for (unsigned i = 0; i < count && variable != variables_.end(); ++i) {
    VARIANT& argument = arguments.at(i);
    // One that was left out is refused by its index, which is not looked for in references.
    if ((places >> i & 1U) == 0 || argument.vt == VT_ERROR) continue;
    variable->value.attach(&argument);
    variable->value.wReserved1 = kUntouched;
    variable->vt = variable->value.vt;
    variable->bits = variable->value.llVal;
    variable->place = i;
    argument.vt = VT_BYREF | VT_VARIANT;
    argument.pvarVal = &variable->value;
    ++variable;
  }
  variables_.erase(variable, variables_.end());
}

bool VariableArguments::was_assigned(const Variable& one) {
  return one.value.wReserved1 != kUntouched || one.value.vt != one.vt || one.value.llVal != one.bits;
}

bool VariableArguments::give_back(Realm& realm, JSObjectRef answers, JSValueRef* exception) const {
  for (const Variable& one : variables_) {
    if (!was_assigned(one)) continue;
    JSValueRef value = to_script(realm, one.value, exception);
    if (!value) return false;
    JSObjectSetPropertyAtIndex(realm.context(), answers, one.place, value, exception);
    if (*exception) return false;
  }
  return true;
}

}  // namespace zelto::script::vbscript
