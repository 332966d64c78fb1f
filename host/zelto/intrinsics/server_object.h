// Server, and the error object that it hands out.
#pragma once

#include <korlib_host/dispatch_object.h>
#include <zelto/asp.h>

#include "intrinsics/page_state.h"

namespace zelto {

class ServerObject final : public korlib::DispatchObject<ServerObject, ZeltoTypeLibrary::IServer> {
 public:
  static constexpr const wchar_t* kClassName = L"Server";
  explicit ServerObject(PageStatePtr page) : page_(std::move(page)) {}
  static std::span<const korlib::Member> members();

  HRESULT HTMLEncode(BSTR text, BSTR* encoded) override;
  HRESULT URLEncode(BSTR text, BSTR* encoded) override;
  HRESULT MapPath(BSTR path, BSTR* physical) override;
  HRESULT CreateObject(BSTR prog_id, IDispatch** object) override;

  // As scripts call the three above: with any value, for its text (value_text.h). Nothing and null are "".
  HRESULT HTMLEncodeValue(VARIANT value, BSTR* encoded) { return with_text(value, &ServerObject::HTMLEncode, encoded); }
  HRESULT URLEncodeValue(VARIANT value, BSTR* encoded) { return with_text(value, &ServerObject::URLEncode, encoded); }
  HRESULT MapPathValue(VARIANT value, BSTR* physical) { return with_text(value, &ServerObject::MapPath, physical); }

  HRESULT Execute(BSTR path);
  HRESULT Transfer(BSTR path);
  HRESULT GetLastError(IDispatch** error);
  HRESULT get_ScriptTimeout(LONG* seconds);
  HRESULT put_ScriptTimeout(LONG seconds);

 private:
  HRESULT with_text(const VARIANT& value, HRESULT (ServerObject::*typed)(BSTR, BSTR*), BSTR* out);
  HRESULT resolve(std::wstring_view member, BSTR path, std::string& virtual_path) const;

  PageStatePtr page_;
};

// ASPError: what went wrong, for a page that shows errors.
class AspErrorObject final : public korlib::DispatchObject<AspErrorObject> {
 public:
  static constexpr const wchar_t* kClassName = L"ASPError";
  explicit AspErrorObject(PageError error) : error_(std::move(error)) {}
  static std::span<const korlib::Member> members();

  HRESULT get_ASPCode(BSTR* code);
  HRESULT get_Number(LONG* number);
  HRESULT get_Source(BSTR* code_line);
  HRESULT get_Category(BSTR* category);
  HRESULT get_File(BSTR* file);
  HRESULT get_Line(LONG* line);
  HRESULT get_Column(LONG* column);
  HRESULT get_Description(BSTR* description);
  HRESULT get_ASPDescription(BSTR* description);

 private:
  PageError error_;
};

}  // namespace zelto
