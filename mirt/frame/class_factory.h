// Class objects: plain, pooled, and bound to the request of the calling thread.
//
// A class object is a static object of the module. Its references count as uses of the module, and it
// is never freed.
#pragma once

#include <cstddef>
#include <new>

#include <korlib/activation.h>
#include <korlib/ptr.h>
#include <zelto/context.h>

#include "frame/block_pool.h"
#include "frame/dual.h"
#include "frame/error.h"

template <class Object, long* ModuleCount>
class GClassFactory : public IClassFactory {
 public:
  GClassFactory() = default;
  ~GClassFactory() = default;
  GClassFactory(const GClassFactory&) = delete;
  GClassFactory& operator=(const GClassFactory&) = delete;

  STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override {
    return korlib::query_list<IClassFactory, IUnknown>(this, riid, ppv);
  }
  ULONG AddRef() override { return static_cast<ULONG>(InterlockedIncrement(ModuleCount)); }
  ULONG Release() override { return static_cast<ULONG>(InterlockedDecrement(ModuleCount)); }

  STDMETHODIMP CreateInstance(IUnknown* outer, REFIID riid, void** ppv) override {
    if (!ppv) return E_POINTER;
    *ppv = nullptr;
    if (outer) return CLASS_E_NOAGGREGATION;
    return hand_out(make(), riid, ppv);
  }
  STDMETHODIMP LockServer(BOOL) override { return S_OK; }

 protected:
  // A new object with one reference, or null when there is no memory for it.
  virtual Object* make() {
    try {
      return new Object();
    } catch (...) {
      return nullptr;
    }
  }

 private:
  // A query that fails destroys the object, one that succeeds leaves the caller the only reference.
  static HRESULT hand_out(Object* object, REFIID riid, void** ppv) {
    if (!object) return E_OUTOFMEMORY;
    const HRESULT hr = object->QueryInterface(riid, ppv);
    object->Release();
    return hr;
  }
};

// Keeps the memory of released objects until the module goes. Objects are built and destroyed outside the
// pool's lock.
template <class Object, long* ModuleCount>
class GClassFactoryPooled : public GClassFactory<Object, ModuleCount>, public IObjectPool {
 public:
  void* Take() override {
    void* block = blocks_.take();
    if (!block) return nullptr;
    try {
      return ::new (block) Object();
    } catch (...) {
      blocks_.keep(block);
      return nullptr;
    }
  }
  void Free(void* object) override {
    static_cast<Object*>(object)->~Object();
    blocks_.keep(object);
  }

 protected:
  Object* make() override { return static_cast<Object*>(Take()); }

 private:
  static_assert(alignof(Object) <= alignof(std::max_align_t), "blocks come from malloc");

  mirt::BlockPool blocks_{sizeof(Object)};
};

// Makes an object as `Factory` does, then binds it to the request that the calling thread runs.
//
// When there is no request, or binding fails, the code is answered and the new object stays in *ppv:
// the caller releases it.
template <class Factory, class Object>
class GClassFactoryInContextImpl : public Factory {
 public:
  STDMETHODIMP CreateInstance(IUnknown* outer, REFIID riid, void** ppv) override {
    return mirt::guarded([&] {
      RETURN_IF_FAILED(Factory::CreateInstance(outer, riid, ppv));
      CComPtr<IGetContextProperties> spContext;
      const HRESULT hr = CoGetObjectContext(IID_IGetContextProperties, spContext.put_void());
      if (!spContext) return hr;
      // Each identifier that the object answers to gives the same address.
      auto* object = static_cast<typename Object::interface_type*>(static_cast<IUnknown*>(*ppv));
      return static_cast<Object*>(object)->InContext(spContext.get());
    });
  }
};

template <class Object, long* ModuleCount>
class GClassFactoryPooledInContext final
    : public GClassFactoryInContextImpl<GClassFactoryPooled<Object, ModuleCount>, Object> {};
