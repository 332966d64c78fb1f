// Arguments that are variables of a script, which an object may assign to.
#pragma once

#include <boost/container/small_vector.hpp>

#include <korlib/comvariant.h>

#include "script/call_arguments.h"
#include "script/jsc.h"

namespace zelto::script {

class Realm;

namespace vbscript {

// They go as VT_BYREF | VT_VARIANT. Must be where it is made until the call is over.
class VariableArguments {
 public:
  // Makes references of the arguments whose bits are set in `places`, from the lowest one on.
  VariableArguments(CallArguments& arguments, std::size_t count, unsigned places);
  VariableArguments(const VariableArguments&) = delete;
  VariableArguments& operator=(const VariableArguments&) = delete;

  // Puts what has been assigned into an array of the script's, by the numbers of the arguments. False with an
  // exception.
  bool give_back(Realm& realm, JSObjectRef answers, JSValueRef* exception) const;

 private:
  struct Variable {
    CComVariant value;
    VARTYPE vt = VT_EMPTY;  // before the call, as the next
    LONGLONG bits = 0;
    unsigned place = 0;
  };
  static bool was_assigned(const Variable& one);

  boost::container::small_vector<Variable, 4> variables_;
};

}  // namespace vbscript
}  // namespace zelto::script
