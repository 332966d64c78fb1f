// The fields of an upload, in the shape of the host's request collections.
#pragma once

#include <cwchar>
#include <map>
#include <vector>

#include <korlib/comvariant.h>
#include <korlib/ptr.h>
#include <zelto/asp.h>

// The values of one field in the order of the body: VT_BSTR for text, VT_DISPATCH for a file.
using FieldValues = std::vector<CComVariant>;

// Names are found exactly, letter case included. Keys and enumeration are not offered.
class GMultipartForm : public ZeltoTypeLibrary::IRequestDictionary {
 public:
  HRESULT add(CComBSTR name, CComVariant value);

  STDMETHODIMP get_Item(VARIANT key, VARIANT* value) override;
  STDMETHODIMP get__NewEnum(IUnknown** names) override;
  STDMETHODIMP get_Count(int* count) override;
  STDMETHODIMP get_Key(VARIANT index, VARIANT* key) override;

 protected:
  ~GMultipartForm() = default;

 private:
  struct NameLess {
    bool operator()(const CComBSTR& a, const CComBSTR& b) const { return std::wcscmp(text(a), text(b)) < 0; }
    static const wchar_t* text(const CComBSTR& name) { return name.get() ? name.get() : L""; }
  };

  std::map<CComBSTR, FieldValues, NameLess> fields_;
};

// The values of one field of a form. It reads them where they lie and keeps the form for that time.
class GMultipartFormStringList : public ZeltoTypeLibrary::IStringList {
 public:
  void show(ZeltoTypeLibrary::IRequestDictionary* form, const FieldValues* values) {
    m_spForm = form;
    values_ = values;
  }

  STDMETHODIMP get_Item(VARIANT index, VARIANT* value) override;
  STDMETHODIMP get_Count(int* count) override;
  STDMETHODIMP get__NewEnum(IUnknown** values) override;

 protected:
  ~GMultipartFormStringList() = default;

 private:
  HRESULT joined(VARIANT* value) const;

  CComPtr<ZeltoTypeLibrary::IRequestDictionary> m_spForm;
  const FieldValues* values_ = nullptr;
};
