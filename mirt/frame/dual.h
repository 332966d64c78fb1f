// The base of every object: its reference count, and an IDispatch that forwards to type information.
//
//   using CUtility = GDualImplForPool<IUtility, GIUtilityImpl<IUtility>, &g_pTI_IUtility, &g_nRefCount>;
//
// `Impl` derives from `Interface` and implements the members of it that are its own. `Interface` has one
// IUnknown, so that the object has one address under each of its three identifiers.
//
// Reference counts are plain: an object serves one thread at a time. The module count is interlocked.
#pragma once

#include <korlib/ptr.h>
#include <korlib/typeinfo.h>

#include "frame/globals.h"

template <class Interface, class Impl, ITypeInfo** TypeInfo, long* ModuleCount>
class GDualImpl : public Impl {
 public:
  using interface_type = Interface;

  GDualImpl() { InterlockedIncrement(ModuleCount); }
  GDualImpl(const GDualImpl&) = delete;
  GDualImpl& operator=(const GDualImpl&) = delete;

  STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override {
    return korlib::query_list<Interface, IDispatch, IUnknown>(this, riid, ppv);
  }
  ULONG AddRef() override { return ++m_nRefCount; }
  ULONG Release() override {
    if (--m_nRefCount != 0) return m_nRefCount;
    delete this;
    return 0;
  }

  STDMETHODIMP GetTypeInfoCount(UINT* pctinfo) override {
    if (pctinfo) *pctinfo = 1;
    return S_OK;
  }
  // Whatever the index: there is one.
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo** ppTI) override {
    if (!ppTI) return E_POINTER;
    *ppTI = *TypeInfo;
    if (*ppTI) (*ppTI)->AddRef();
    return S_OK;
  }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
    return (*TypeInfo)->GetIDsOfNames(names, count, ids);
  }
  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* params, VARIANT* result, EXCEPINFO* excepinfo,
                      UINT* argerr) override {
    return (*TypeInfo)->Invoke(static_cast<Interface*>(this), id, flags, params, result, excepinfo, argerr);
  }

 protected:
  virtual ~GDualImpl() { InterlockedDecrement(ModuleCount); }

  ULONG m_nRefCount = 1;  // the creator's
};

// Keeps the memory of one kind of object for reuse.
struct IObjectPool {
  // A newly constructed object with one reference, or null when there is no memory for it.
  virtual void* Take() = 0;
  // Destroys an object that Take made and keeps its memory.
  virtual void Free(void* object) = 0;

 protected:
  ~IObjectPool() = default;
};

template <class Object, long* ModuleCount>
class GClassFactoryPooled;

// An object whose memory goes back to its class object. No constructor is declared here: the pool
// value-initialises, which zeroes the block only while the default constructor is the implicit one.
template <class Interface, class Impl, ITypeInfo** TypeInfo, long* ModuleCount>
class GDualImplForPool final : public GDualImpl<Interface, Impl, TypeInfo, ModuleCount> {
 public:
  ULONG Release() override {
    if (--this->m_nRefCount != 0) return this->m_nRefCount;
    s_pPool->Free(this);
    return 0;
  }

  // The class object of this kind. Defined beside the class object (module.cpp), by constant
  // initialisation, so that it holds before any code runs.
  static IObjectPool* s_pPool;

 private:
  friend class GClassFactoryPooled<GDualImplForPool, ModuleCount>;
  ~GDualImplForPool() override = default;
};
