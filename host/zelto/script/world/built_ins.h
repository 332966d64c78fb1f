// What the language itself has in one global object, as it was before a page ran, and whether it still is so.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "script/jsc.h"

namespace zelto::script {

// What an object's structure was. The engine names it in the object's first word: see BuiltIns.
class Structure {
 public:
  Structure() = default;
  explicit Structure(JSValueRef object) : word_(reinterpret_cast<const std::uint32_t*>(object)), known_(*word_) {}
  bool is_kept() const noexcept { return !word_ || *word_ == known_; }

 private:
  const std::uint32_t* word_ = nullptr;
  std::uint32_t known_ = 0;
};

// Objects are compared in two ways. Names that come or go, getters, attributes and prototypes show in an object's
// structure, which the engine names in the first word of the object: a word that is read here, because asking for all
// of that takes longer than a page. That it does so is tried out once (can_tell()). A value that takes the place of
// another one does not show there: those are compared in the language.
class BuiltIns {
 public:
  // Whether an object's first word tells of a change to it, in this version of the engine. Where it does not, no page
  // may follow another one in the same global object.
  static bool can_tell(JSContextRef context);

  // The source of a script that finds every object of the language, and every value in them that may change, in the
  // global object that it runs in. Of one that nothing has changed but the prelude, as those are that it runs in.
  static std::u16string source(JSContextRef context);

  // `found` is that script. Throws std::bad_alloc.
  BuiltIns(JSScriptRef found, JSContextRef context);
  ~BuiltIns();
  BuiltIns(const BuiltIns&) = delete;
  BuiltIns& operator=(const BuiltIns&) = delete;

  // Of every object but the global one, whose structure does not tell.
  bool are_structures_kept() const;
  // Functions without arguments that tell whether every value is what it was: of those that may be assigned to, and of
  // those that may only be defined anew.
  JSObjectRef values_check() const noexcept { return values_check_; }
  JSObjectRef fixed_check() const noexcept { return fixed_check_; }

 private:
  JSContextRef context_;
  JSObjectRef objects_;  // an array; it and the function are protected
  JSObjectRef values_check_;
  JSObjectRef fixed_check_;
  std::vector<Structure> structures_;
};

}  // namespace zelto::script
