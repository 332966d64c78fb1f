// Request.
#pragma once

#include "intrinsics/collections.h"

namespace zelto {

class RequestObject final : public korlib::DispatchObject<RequestObject, ZeltoTypeLibrary::IRequest> {
 public:
  static constexpr const wchar_t* kClassName = L"Request";
  explicit RequestObject(PageStatePtr page) : page_(std::move(page)) {}
  static std::span<const korlib::Member> members();

  HRESULT get_Item(BSTR name, IDispatch** value) override;
  HRESULT get_QueryString(ZeltoTypeLibrary::IRequestDictionary** values) override;
  HRESULT get_Form(ZeltoTypeLibrary::IRequestDictionary** values) override;
  HRESULT get_ServerVariables(ZeltoTypeLibrary::IRequestDictionary** values) override;
  HRESULT get_ClientCertificate(ZeltoTypeLibrary::IRequestDictionary** values) override;
  HRESULT get_Cookies(ZeltoTypeLibrary::IRequestDictionary** values) override;
  HRESULT get_TotalBytes(LONG* bytes) override;
  HRESULT BinaryRead(VARIANT* count, VARIANT* data) override;

  // As get_Item for scripts, which find nothing at all instead of an empty list.
  HRESULT find(VARIANT name, VARIANT* value);
  // As BinaryRead for scripts, which find no bytes at the end of a body, and then again.
  HRESULT read_bytes(VARIANT* count, VARIANT* data);

 private:
  HRESULT give_fields(FieldCollection::Source source, ZeltoTypeLibrary::IRequestDictionary** values);
  HRESULT search(std::wstring_view name, CComPtr<IDispatch>& value);

  PageStatePtr page_;
};

}  // namespace zelto
