// Response.
#pragma once

#include <korlib_host/dispatch_object.h>
#include <zelto/asp.h>

#include "intrinsics/page_state.h"
#include "script/page_output.h"

namespace zelto {

class ResponseObject final
    : public korlib::DispatchObject<ResponseObject, ZeltoTypeLibrary::IResponse, script::IPageOutput, ITemplateNotes> {
 public:
  static constexpr const wchar_t* kClassName = L"Response";
  explicit ResponseObject(PageStatePtr page) : page_(std::move(page)) {}
  static std::span<const korlib::Member> members();

  // What is to be said of templates is for a page whose host wants to know.
  HRESULT QueryInterface(REFIID riid, void** ppv) override;
  HRESULT NoteTemplate(BSTR file, BSTR charset) override;
  HRESULT NoteSlip(TemplateSlip slip, BSTR name, BSTR place, IUnknown* values) override;
  HRESULT NoteArguments(BSTR member, ULONG takes, ULONG given) override;
  HRESULT NoteBag(BSTR page, IUnknown* bag) override;

  // Writes what value_text.h says, dates and numbers as LCID has them.
  HRESULT Write(VARIANT value) override;
  // Bytes as they are, text in the code page; of an object, a database field say, its default value.
  HRESULT BinaryWrite(VARIANT bytes) override;
  HRESULT AddHeader(BSTR name, BSTR value) override;
  HRESULT AppendToLog(BSTR text) override;
  HRESULT get_Status(BSTR* status) override;
  HRESULT put_Status(BSTR status) override;
  HRESULT get_CodePage(LONG* code_page) override;

  const bool& may_wait() const noexcept override { return page_->response.buffered; }
  LONG locale() const noexcept override { return page_->response.lcid; }
  HRESULT write_text(std::u16string_view text) override;

  // What only scripts use.
  HRESULT put_CodePage(LONG code_page);
  HRESULT get_LCID(LONG* lcid);
  HRESULT put_LCID(LONG lcid);
  HRESULT Redirect(BSTR url);
  HRESULT End();
  HRESULT Clear();
  HRESULT Flush();
  HRESULT get_Buffer(VARIANT_BOOL* buffered);
  HRESULT put_Buffer(VARIANT_BOOL buffered);
  HRESULT get_ContentType(BSTR* type);
  HRESULT put_ContentType(BSTR type);
  HRESULT get_Charset(BSTR* charset);
  HRESULT put_Charset(BSTR charset);
  HRESULT get_Cookies(IDispatch** cookies);
  HRESULT get_Expires(VARIANT* minutes);
  HRESULT put_Expires(double minutes);
  HRESULT get_ExpiresAbsolute(VARIANT* date);
  HRESULT put_ExpiresAbsolute(VARIANT date);
  HRESULT get_CacheControl(BSTR* value);
  HRESULT put_CacheControl(BSTR value);
  HRESULT get_IsClientConnected(VARIANT_BOOL* connected);

 private:
  // Runs change(response) for the member; refuses it when the head has gone out.
  template <class Change>
  HRESULT change_head(std::wstring_view member, Change change);
  HRESULT go_on();
  HRESULT write_any(const VARIANT& value);

  PageStatePtr page_;
};

}  // namespace zelto
