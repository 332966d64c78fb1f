// What every realm has besides the language: the helpers that older pages expect, written in the
// language itself.
#pragma once

#include <cstdint>
#include <string_view>

#include "script/jsc.h"
#include "script/text.h"

namespace zelto::script {

class Engine;

enum class ErrorKind { plain, range, type, reference };

// Runs in a new realm, before anything of the page, and keeps the functions of its that the host calls.
class Prelude {
 public:
  // A function of (native, prototypes, state): $zelto, the prototypes of what stands for objects, that of automation
  // objects first, and what it shares with the host about collected text. It answers, as an array: a function that
  // makes errors, of (kind, message) with the numbers of ErrorKind, one that makes an array of anything that can be
  // stepped through, one that tells whether an object has a name that is not every object's, of (object, name), the
  // prototype that every object has, what begin(), take_text() and keep_method() call, the language's own
  // Function.prototype.toString, and what make_library() calls.
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
  // --- page text, which the script collects

  // Before a program runs: the objects that are called Response and Server, null for none, and where its pieces of page
  // text are kept that it has had: an object without a prototype, the script's null for a new one, null for that of the
  // program before.
  void begin(JSValueRef response, JSValueRef server, JSValueRef literals) const;
  // Once it has ended: forgets what it has left here.
  void end() const;
  // How much may be collected before the script hands it over, in units of UTF-16; -1 for nothing at all.
  void set_most_text(std::int32_t units) const noexcept { state_[1] = units; }
  bool has_text() const noexcept { return state_[0] != 0; }
  // Whether the program that runs is in VBScript: it has asked for the library itself.
  bool speaks_vbscript() const noexcept { return state_[3] != 0; }
  // What has been collected since; null with no memory or stack for it.
  JSValueRef take_text() const;

  // Until begin(), calls such as page.SetView(…) find the method without the host. For what a page calls again and
  // again.
  void keep_method(JSObjectRef object, JSStringRef name, JSObjectRef method) const;

  // As the engine has it: see FunctionText. Null with an exception, as for what is no function.
  JSValueRef engine_text_of(JSObjectRef function, JSValueRef* exception) const;

  // Has World::make_library() called, unless that has been done. The page does not speak VBScript because of it.
  void make_library() const;

  // The one that every object inherits from.
  JSObjectRef object_prototype() const noexcept { return object_prototype_; }

 private:
  JSContextRef context_;
  JSObjectRef make_error_;  // these are protected
  JSObjectRef make_array_;
  JSObjectRef has_name_;
  JSObjectRef object_prototype_;
  JSObjectRef begin_;
  JSObjectRef take_;
  JSObjectRef keep_method_;
  JSObjectRef engine_text_of_;
  JSObjectRef make_library_;
  std::int32_t* state_;  // lives as long as the context
};

}  // namespace zelto::script
