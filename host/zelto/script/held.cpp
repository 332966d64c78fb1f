#include "script/held.h"

#include "script/realm_state.h"

namespace zelto::script {

Held::Held(RealmState& realm) : engine_(realm.engine()), realm_(&realm) { realm.adopt(this); }

Held::~Held() {
  if (realm_) realm_->abandon(this);
}

void Held::end_of_realm() {
  realm_ = nullptr;
  release();
}

AutomationObject::AutomationObject(RealmState& realm, CComPtr<IUnknown> identity, CComPtr<IDispatch> dispatch)
    : Held(realm), identity_(std::move(identity)), dispatch_(std::move(dispatch)) {}

AutomationObject::~AutomationObject() {
  if (realm()) realm()->forget(this);
  AutomationObject::release();
}

void AutomationObject::release() {
  if (weak_) JSWeakRelease(engine().group(), weak_);
  weak_ = nullptr;
  identity_.reset();
  dispatch_.reset();
}

MemberNames& AutomationObject::names() {
  if (!class_names_ && !own_names_) {
    class_names_ = engine().members().of(dispatch_.get());
    if (!class_names_) own_names_ = std::make_unique<MemberNames>(false);
  }
  return class_names_ ? *class_names_ : *own_names_;
}

}  // namespace zelto::script
