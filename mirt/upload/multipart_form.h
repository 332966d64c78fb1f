// The fields of an upload, in the shape of the host's request collections.
#pragma once

#include <map>
#include <string_view>
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
  // A name up to its first NUL, with a number made of its characters. The order is by the numbers first: nobody sees
  // it, and names of a form begin alike. In a tree, names that were chosen to share a number cost what others do.
  class Name {
   public:
    explicit Name(CComBSTR text);
    bool operator<(const Name& other) const {
      return number_ != other.number_ ? number_ < other.number_ : view() < other.view();
    }

   private:
    std::wstring_view view() const { return {text_.view().data(), length_}; }

    CComBSTR text_;
    std::size_t length_;
    std::size_t number_;
  };

  std::map<Name, FieldValues> fields_;
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
