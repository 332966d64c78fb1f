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

// Where an object has the value of one of its properties, as long as its structure stays, and the value that was there:
// see BuiltIns.
struct Slot {
  const std::uintptr_t* place;
  std::uintptr_t known;
  bool is_kept() const noexcept { return *place == known; }
};

// Names that come or go, getters, attributes and prototypes show in an object's structure, which the engine names in
// the first word of the object; a value that takes the place of another one shows where the engine has it. Both are
// words that are read here, because asking the engine for some two thousand values takes longer than a page, and code
// in the language that compares them takes megabytes once the engine has compiled it for each world. That they tell is
// tried out once (can_tell()). The values that are not found that way, and those of the global object, whose structure
// does not tell, are compared in the language.
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

  // Of every object but the global one.
  bool are_structures_kept() const;
  // Whether the values are what they were, as long as the structures are kept.
  bool are_slots_kept() const;
  // A function without arguments that tells the same of the rest.
  JSObjectRef rest_check() const noexcept { return rest_check_; }

 private:
  std::vector<JSValueRef> find_slots(JSObjectRef owners, JSObjectRef counts);

  JSContextRef context_;
  JSObjectRef objects_;  // an array, as is values_: while a value lives, no other one can take its place unseen
  JSObjectRef values_;   // these are protected
  JSObjectRef rest_check_;
  std::vector<Structure> structures_;
  std::vector<Slot> slots_;
};

}  // namespace zelto::script
