#include "script/world/kept_wrappers.h"

#include <algorithm>

#include "script/automation_object.h"

namespace zelto::script {
namespace {

// More than most pages have at a time, and few enough to go through.
constexpr std::size_t kMostKept = 32;
constexpr std::ptrdiff_t kMostOfAClass = 4;

}  // namespace

KeptWrappers::~KeptWrappers() {
  for (const Kept& one : kept_) JSValueUnprotect(context_, one.wrapper);
}

AutomationObject* KeptWrappers::find(const MemberNames* of_class) const {
  const auto found =
      std::ranges::find_if(kept_, [&](const Kept& one) { return one.of_class == of_class && !one.object->realm(); });
  return found == kept_.end() ? nullptr : found->object;
}

bool KeptWrappers::has_room(const MemberNames* of_class) const {
  return kept_.size() < kMostKept && std::ranges::count(kept_, of_class, &Kept::of_class) < kMostOfAClass;
}

void KeptWrappers::keep(JSObjectRef wrapper, AutomationObject* object, const MemberNames* of_class) {
  kept_.push_back({wrapper, object, of_class, Structure(wrapper)});
  JSValueProtect(context_, wrapper);
  object->set_kept(wrapper);
}

bool KeptWrappers::Kept::is_as_before() const { return structure.is_kept() && object->are_members_kept(); }

void KeptWrappers::restore() {
  std::erase_if(kept_, [&](const Kept& one) {
    if (one.is_as_before()) return false;
    one.object->set_kept(nullptr);
    JSValueUnprotect(context_, one.wrapper);
    return true;
  });
}

}  // namespace zelto::script
