// Wrappers of objects that pages make anew each time, in a world that is kept.
#pragma once

#include <cstddef>
#include <vector>

#include "script/jsc.h"
#include "script/world/built_ins.h"

namespace zelto::script {

class AutomationObject;
class MemberNames;

// A page makes a controller, a dictionary, a record set, and the next page does again. Making a wrapper, and the
// functions that stand for the members that the page calls, takes longer than what many of these do: a few wrappers of
// each class stay, for the objects of the pages to come. Each keeps its object until its page has ended.
class KeptWrappers {
 public:
  explicit KeptWrappers(JSContextRef context) : context_(context) {}
  ~KeptWrappers();
  KeptWrappers(const KeptWrappers&) = delete;
  KeptWrappers& operator=(const KeptWrappers&) = delete;

  // One that stood for an object of that class and is free; null when there is none.
  AutomationObject* find(const MemberNames* of_class) const;
  // Whether one more of that class may stay.
  bool has_room(const MemberNames* of_class) const;
  // The wrapper, which no script has seen yet, stays.
  void keep(JSObjectRef wrapper, AutomationObject* object, const MemberNames* of_class);
  // Once a page has ended: lets go of those to which it has done anything that another one could see.
  void restore();

 private:
  struct Kept {
    JSObjectRef wrapper;  // protected
    AutomationObject* object;
    const MemberNames* of_class;
    Structure structure;
    bool is_as_before() const;
  };

  JSContextRef context_;
  std::vector<Kept> kept_;
};

}  // namespace zelto::script
