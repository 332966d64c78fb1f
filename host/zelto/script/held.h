// What a script holds of the host's world. Each lives as the private data of one engine object.
#pragma once

#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include <korlib/comvariant.h>
#include <korlib/ptr.h>

#include "script/jsc.h"
#include "script/member_names.h"

namespace zelto::script {

class EngineState;
class RealmState;

// A node of the realm's list of everything held. The realm lets go of the references when it ends; the
// node itself goes when the engine has collected its object, on the engine's thread.
class Held {
 public:
  explicit Held(RealmState& realm);
  virtual ~Held();
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;

  EngineState& engine() const noexcept { return engine_; }
  RealmState* realm() const noexcept { return realm_; }  // null once it has ended
  void end_of_realm();

 protected:
  virtual void release() = 0;

 private:
  friend class RealmState;
  EngineState& engine_;
  RealmState* realm_;
  Held* previous_ = nullptr;
  Held* next_ = nullptr;
};

class AutomationObject final : public Held {
 public:
  AutomationObject(RealmState& realm, CComPtr<IUnknown> identity, CComPtr<IDispatch> dispatch);
  ~AutomationObject() override;

  void set_weak(JSWeakRef weak) noexcept { weak_ = weak; }
  JSObjectRef script_object() const { return weak_ ? JSWeakGetObject(weak_) : nullptr; }
  const CComPtr<IDispatch>& dispatch() const noexcept { return dispatch_; }
  IUnknown* identity() const noexcept { return identity_.get(); }
  MemberNames& names();
  // What messages call the object when it has no type information that says so; empty when unknown.
  const std::wstring& kind() const noexcept { return kind_; }
  void set_kind(std::wstring kind) { kind_ = std::move(kind); }
  // What for-in went through: these names index the object.
  void add_key(std::u16string key) { keys_.insert(std::move(key)); }
  bool has_key(std::u16string_view key) const { return !keys_.empty() && keys_.contains(std::u16string(key)); }

 protected:
  void release() override;

 private:
  CComPtr<IUnknown> identity_;
  CComPtr<IDispatch> dispatch_;
  JSWeakRef weak_ = nullptr;
  MemberNames* class_names_ = nullptr;
  std::unique_ptr<MemberNames> own_names_;
  std::wstring kind_;
  std::unordered_set<std::u16string> keys_;
};

// A member that was read and can't be read without arguments: a function bound to its object.
class AutomationMember final : public Held {
 public:
  AutomationMember(RealmState& realm, CComPtr<IDispatch> dispatch, DISPID id, std::wstring name)
      : Held(realm), dispatch_(std::move(dispatch)), id_(id), name_(std::move(name)) {}
  const CComPtr<IDispatch>& dispatch() const noexcept { return dispatch_; }
  DISPID id() const noexcept { return id_; }
  const std::wstring& name() const noexcept { return name_; }

 protected:
  void release() override { dispatch_.reset(); }

 private:
  CComPtr<IDispatch> dispatch_;
  DISPID id_;
  std::wstring name_;
};

// `o(args)` as the target of an assignment.
class Reference final : public Held {
 public:
  Reference(RealmState& realm, CComPtr<IDispatch> dispatch, DISPID id, std::wstring name,
            std::vector<CComVariant> reversed)
      : Held(realm), dispatch_(std::move(dispatch)), id_(id), name_(std::move(name)), reversed_(std::move(reversed)) {}
  const CComPtr<IDispatch>& dispatch() const noexcept { return dispatch_; }
  DISPID id() const noexcept { return id_; }
  const std::wstring& name() const noexcept { return name_; }
  std::vector<CComVariant>& reversed() noexcept { return reversed_; }

 protected:
  void release() override {
    dispatch_.reset();
    reversed_.clear();
  }

 private:
  CComPtr<IDispatch> dispatch_;
  DISPID id_;
  std::wstring name_;
  std::vector<CComVariant> reversed_;
};

// An object without members: what it is worth is that it can be handed back.
class Opaque final : public Held {
 public:
  Opaque(RealmState& realm, CComPtr<IUnknown> object) : Held(realm), object_(std::move(object)) {}
  const CComPtr<IUnknown>& object() const noexcept { return object_; }

 protected:
  void release() override { object_.reset(); }

 private:
  CComPtr<IUnknown> object_;
};

}  // namespace zelto::script
