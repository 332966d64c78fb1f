// What every realm has besides the language: the helpers that older pages expect, written in the
// language itself.
#pragma once

#include <string_view>

#include "script/jsc.h"
#include "script/text.h"

namespace zelto::script {

class Engine;

enum class ErrorKind { plain, range, type, reference };

// Runs in a new realm, before anything of the page, and keeps the functions of its that the host calls.
class Prelude {
 public:
  // A function of (native, prototype): $zelto, and the prototype of automation objects. It answers, as an array, three
  // functions and an object: one that makes errors, of (kind, message) with the numbers of ErrorKind, one that makes
  // an array of anything that can be stepped through, one that tells whether an object has a name that is not every
  // object's, of (object, name), and the prototype that every object has.
  static std::u16string_view source();

  Prelude(Engine& engine, JSContextRef context);
  ~Prelude();
  Prelude(const Prelude&) = delete;
  Prelude& operator=(const Prelude&) = delete;

  JSObjectRef make_error(ErrorKind kind, std::wstring_view message) const;
  // What the script's object steps through, as an array; null with an exception.
  JSValueRef items_of(JSObjectRef object, JSValueRef* exception) const;
  // Whether an object of the script has the name, itself or by its class: what every object has is not the
  // script's.
  bool has_own_name(JSObjectRef object, const JsString& name) const;
  // The one that every object inherits from.
  JSObjectRef object_prototype() const noexcept { return object_prototype_; }

 private:
  JSContextRef context_;
  JSObjectRef make_error_;  // these are protected
  JSObjectRef make_array_;
  JSObjectRef has_name_;
  JSObjectRef object_prototype_;
};

}  // namespace zelto::script
