// Server, and the error object that it hands out.
#pragma once

#include <korlib_host/dispatch_object.h>
#include <zelto/asp.h>

#include "intrinsics/arguments.h"
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
  template <HRESULT (ServerObject::*typed)(BSTR, BSTR*)>
  HRESULT with_text(VARIANT value, BSTR* out);

  HRESULT Execute(BSTR path);
  HRESULT Transfer(BSTR path);
  HRESULT GetLastError(IDispatch** error);
  HRESULT get_ScriptTimeout(LONG* seconds);
  HRESULT put_ScriptTimeout(LONG seconds);

 private:
  HRESULT resolve(std::wstring_view member, BSTR path, std::string& virtual_path) const;

  PageStatePtr page_;
};

// ASPError: what went wrong, for a page that shows errors.
class AspErrorObject final : public korlib::DispatchObject<AspErrorObject> {
 public:
  static constexpr const wchar_t* kClassName = L"ASPError";
  explicit AspErrorObject(PageError error) : error_(std::move(error)) {}
  static std::span<const korlib::Member> members();

  HRESULT get_ASPCode(BSTR* code) { return give_text(L"", code); }

 private:
  template <std::wstring PageError::*field>
  HRESULT get_text(BSTR* text) {
    return give_text(error_.*field, text);
  }
  template <LONG PageError::*field>
  HRESULT get_number(LONG* number) {
    return give(error_.*field, number);
  }

  PageError error_;
};

}  // namespace zelto
