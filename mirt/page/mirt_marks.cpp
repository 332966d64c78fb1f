// The controller's marks: from the type to what draws it, and how a failing mark is reported.
#include <algorithm>
#include <string>

#include <korlib/winapi.h>

#include "frame/error.h"
#include "frame/error_places.h"
#include "page/mirt_impl.h"
#include "page/text.h"
#include "templator/marks.h"

namespace {

using Self = GIMirtImpl<IMirt>;

constexpr const wchar_t* kPageHasNoScript = L"the page has no Script";

constexpr std::size_t kLongestText = 1279;  // characters taken of the platform's text for a code

// The platform's text for the code, if it has one, and the mark after it.
HRESULT report_with_mark(HRESULT hr, const CMarkData& mark) {
  // Not on the stack: a mark inside a mark is reported once for each, one frame inside the other.
  std::wstring buffer(kLongestText + 1, L'\0');
  const DWORD length =
      FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, static_cast<DWORD>(hr),
                     LOCALE_SYSTEM_DEFAULT, buffer.data(), static_cast<DWORD>(buffer.size()), nullptr);
  const std::wstring_view system_text(buffer.data(), std::min<std::size_t>(length, kLongestText));
  const CComBSTR text = page::join({system_text, L"[(#", {&mark.Type, 1}, mark.Name.view(), L"#)]"});
  return mirt::raise_around(hr, L"Mirt", text ? text.get() : L"");
}

}  // namespace

class Self::Values final : public MarkValues {
 public:
  explicit Values(Self& page)
      : MarkValues({page.owner_, page.handler_, page.dictionaries_.view, page.asp_, page.null_is_empty_, page,
                    kPageHasNoScript}),
        page_(page) {}

 private:
  HRESULT get_bag(CComPtr<IKorLibDictionary>* bag) const override { return page_.memory_.get_bag(bag); }
  HRESULT get_field(BSTR name, CComVariant* value, bool* found) const override {
    *found = page_.fields_.find(name, value);
    return S_OK;
  }

  Self& page_;
};

HRESULT Self::OnMarked(CMarkData& mark) {
  const HRESULT hr = dispatch_mark(mark);
  // A handler that fails with E_FAIL has already set the error text.
  return SUCCEEDED(hr) || hr == E_FAIL ? hr : report_with_mark(hr, mark);
}

HRESULT Self::dispatch_mark(const CMarkData& mark) {
  const MarkKind* kind = find_mark_kind(mark.Type, MarkOwner::page);
  if (!kind) {
    note_mark_without_type(*this, mark);
    return S_OK;
  }
  const MarkName name(mark);
  if (!name.get()) return E_OUTOFMEMORY;
  switch (kind->source) {
    case MarkSource::draw_event:
      return OnMarked_Event(mark, name);
    case MarkSource::command:
      return OnMarked_Command(name, kind->encode);
    case MarkSource::template_file:
      return DrawTemplate(name);
    case MarkSource::include:
      return OnMarked_ChildDynamic(name);
    default:
      break;
  }
  CComVariant text;
  RETURN_IF_FAILED(Values(*this).read(kind->source, mark, name, &text));
  return text.vt == VT_BSTR ? Write(text.bstrVal, kind->encode) : S_OK;
}

HRESULT Self::OnMarked_Event(const CMarkData& mark, const MarkName& name) {
  const HRESULT hr = draw_events_.draw(mark);
  const bool may_be_built_in = name.view().starts_with(L'_');
  if (FAILED(hr) && !handler_.last() && !may_be_built_in) set_reason(kPageHasNoScript);
  return hr;
}

HRESULT Self::OnMarked_Command(const MarkName& name, VARIANT_BOOL encode) {
  CComBSTR text;
  RETURN_IF_FAILED(name.empty() ? memory_.get_command_field(&text) : ToCommand(name, text.put()));
  return Write(text, encode);
}

HRESULT Self::OnMarked_ChildDynamic(const MarkName& name) {
  const CComPtr<IKorLibDictionary> include = dictionaries_.include;
  CComVariant value;
  RETURN_IF_FAILED(read_item(include.get(), name, &value));
  if (value.vt == VT_BSTR) return DrawTemplate(value.bstrVal);
  note_slip(TemplateSlip::no_include, name, include.get());
  return S_OK;
}
