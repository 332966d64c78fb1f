// Smart pointers over interfaces, and QueryInterface as a list.
#pragma once

#include <initializer_list>
#include <utility>

#include <korlib/unknown.h>

// An interface pointer that counts its reference, or null. As cheap as a raw one.
//
// put() releases what is held and lends the slot to an out-parameter; attach() and detach() move a reference
// without counting; get() and -> peek. Calling through a null pointer is the caller's mistake, as with a raw
// one.
//
//   CComPtr<IThing> thing;
//   RETURN_IF_FAILED(factory->CreateInstance(nullptr, korlib::iid_of<IThing>, thing.put_void()));
//   return thing.query(out);  // another interface of it, counted for the caller
template <class Interface>
class CComPtr {
 public:
  CComPtr() noexcept = default;
  CComPtr(std::nullptr_t) noexcept {}
  // A reference of its own to the object; the caller's stays the caller's. Use attach() for a result that was
  // counted already.
  CComPtr(Interface* object) noexcept : object_(object) { add_ref(); }
  CComPtr(const CComPtr& other) noexcept : object_(other.object_) { add_ref(); }
  CComPtr(CComPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  ~CComPtr() { reset(); }

  // The new object is held before the old one is let go, which may end the owner of this pointer.
  CComPtr& operator=(CComPtr other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }

  // The object, still held here; good as long as this pointer is not changed.
  Interface* get() const noexcept { return object_; }
  Interface* operator->() const noexcept { return object_; }
  Interface& operator*() const noexcept { return *object_; }
  // Whether there is an object.
  explicit operator bool() const noexcept { return object_ != nullptr; }

  // Releases; the pointer is null before the object is told.
  void reset() noexcept {
    if (Interface* held = std::exchange(object_, nullptr)) held->Release();
  }
  // For `member(object.put())` and, where the member takes void**, put_void().
  Interface** put() noexcept {
    reset();
    return &object_;
  }
  void** put_void() noexcept { return reinterpret_cast<void**>(put()); }
  // Takes over a counted reference.
  void attach(Interface* object) noexcept {
    reset();
    object_ = object;
  }
  // Gives the reference away; null is left.
  [[nodiscard]] Interface* detach() noexcept { return std::exchange(object_, nullptr); }

  // A counted copy into an out-parameter, null included.
  HRESULT copy_to(Interface** out) const noexcept {
    if (!out) return E_POINTER;
    add_ref();
    *out = object_;
    return S_OK;
  }

  // The same object as another interface: a counted reference in *out. Null has no interface: E_NOINTERFACE.
  template <class Other>
  HRESULT query(Other** out) const {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (!object_) return E_NOINTERFACE;
    return object_->QueryInterface(korlib::iid_of<Other>, reinterpret_cast<void**>(out));
  }

  // The same pointer. Whether two interfaces are one object only their IUnknown tells.
  friend bool operator==(const CComPtr& a, const CComPtr& b) noexcept { return a.object_ == b.object_; }

 private:
  void add_ref() const noexcept {
    if (object_) object_->AddRef();
  }

  Interface* object_ = nullptr;
};

// A pointer that asks whatever is assigned to it for its interface, and is null when refused.
template <class Interface>
class CComQIPtr : public CComPtr<Interface> {
 public:
  CComQIPtr() noexcept = default;
  // Asks the object for the interface: `if (const CComQIPtr<IThing> thing(object)) …`.
  CComQIPtr(IUnknown* object) { assign(object); }
  template <class Other>
  CComQIPtr(const CComPtr<Other>& other) {
    assign(other.get());
  }
  CComQIPtr& operator=(IUnknown* object) {
    assign(object);
    return *this;
  }

  // What the object answered, S_OK for null. What was held is released in any case.
  HRESULT assign(IUnknown* object) {
    CComPtr<Interface> asked;
    HRESULT hr = S_OK;
    if (object) hr = object->QueryInterface(korlib::iid_of<Interface>, asked.put_void());
    if (FAILED(hr)) asked.reset();
    CComPtr<Interface>::operator=(std::move(asked));
    return hr;
  }
};

namespace korlib {

// QueryInterface over a list of interfaces, for the objects that implement it:
//   return korlib::query_list<IThing, IDispatch, IUnknown>(this, riid, ppv);
// The first interface stands for every one it derives from; list the most derived one first. A null ppv is
// E_POINTER; on failure *ppv is null.
template <class First, class... Rest, class Object>
HRESULT query_list(Object* object, REFIID riid, void** ppv) {
  if (!ppv) return E_POINTER;
  *ppv = nullptr;
  const auto offer = [&]<class Interface>(std::type_identity<Interface>) {
    if (*ppv || riid != iid_of<Interface>) return;
    if constexpr (std::is_same_v<Interface, IUnknown> || std::is_base_of_v<Interface, First>) {
      *ppv = static_cast<Interface*>(static_cast<First*>(object));
    } else {
      *ppv = static_cast<Interface*>(object);
    }
  };
  offer(std::type_identity<First>{});
  (offer(std::type_identity<Rest>{}), ...);
  if (!*ppv) return E_NOINTERFACE;
  static_cast<First*>(object)->AddRef();
  return S_OK;
}

}  // namespace korlib
