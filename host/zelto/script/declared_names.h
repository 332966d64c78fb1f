// The names that a page declares at top level, as components look them up.
#pragma once

#include "language/program.h"
#include "script/prelude.h"
#include "script/text.h"

namespace zelto::script {

// var and function names are properties of the global object, names of let, const and class are not. The engine's own
// globals and the host's objects are not among them.
class DeclaredNames {
 public:
  DeclaredNames(JSContextRef context, const Prelude& prelude)
      : context_(context), global_(JSContextGetGlobalObject(context)), prelude_(prelude) {}

  // A program that runs from here on.
  void remember(const language::Program& program) { has_lexical_ |= program.declares_lexical_names; }

  // Whether the page has declared the name; `is_lexical` when it is not a property of the global object.
  bool contains(const JsString& name, bool* is_lexical) const;
  // Of a name that is lexical, as contains() said. Null, with an exception or not, where it cannot be read.
  JSValueRef lexical_value(const JsString& name, JSValueRef* exception) const;
  void set_lexical_value(const JsString& name, JSValueRef value, JSValueRef* exception) const;

 private:
  bool is_enumerable(const JsString& name) const;

  JSContextRef context_;
  JSObjectRef global_;
  const Prelude& prelude_;
  bool has_lexical_ = false;
};

}  // namespace zelto::script
