// An object that consists of a default member.
#pragma once

#include <functional>

#include <korlib/comvariant.h>
#include <korlib/ptr.h>

// Answers `member` to a read of its default member and knows nothing else.
class DefaultObject final : public IDispatch {
 public:
  using Member = std::function<HRESULT(VARIANT* result)>;

  static CComPtr<DefaultObject> make(Member member) {
    CComPtr<DefaultObject> object;
    object.attach(new DefaultObject(std::move(member)));
    return object;
  }
  static CComPtr<DefaultObject> holding(const CComVariant& value) {
    return make([value](VARIANT* result) {
      VariantInit(result);
      return VariantCopy(result, &value);
    });
  }
  static int alive() { return alive_; }

  ULONG references() const { return references_; }
  WORD last_flags() const { return last_flags_; }

  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    return korlib::query_list<IDispatch, IUnknown>(this, riid, ppv);
  }
  ULONG AddRef() override { return ++references_; }
  ULONG Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }
  HRESULT GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return DISP_E_UNKNOWNNAME; }
  HRESULT Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* params, VARIANT* result, EXCEPINFO*, UINT*) override {
    last_flags_ = flags;
    if (id != DISPID_VALUE || params->cArgs != 0) return DISP_E_MEMBERNOTFOUND;
    return member_(result);
  }

 private:
  explicit DefaultObject(Member member) : member_(std::move(member)) { ++alive_; }
  ~DefaultObject() { --alive_; }

  static inline int alive_ = 0;
  Member member_;
  ULONG references_ = 1;
  WORD last_flags_ = 0;
};

// An object without late binding.
class PlainObject final : public IUnknown {
 public:
  HRESULT QueryInterface(REFIID riid, void** ppv) override { return korlib::query_list<IUnknown>(this, riid, ppv); }
  ULONG AddRef() override { return ++references_; }
  ULONG Release() override { return --references_; }
  ULONG references() const { return references_; }

 private:
  ULONG references_ = 1;
};
