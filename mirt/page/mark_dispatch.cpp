// From a mark's type character to its handler, and what a failing mark is reported as.
#include <algorithm>
#include <string>

#include <korlib/winapi.h>

#include "frame/error.h"
#include "page/mirt_impl.h"
#include "page/text.h"

namespace {

using Self = GIMirtImpl<IMirt>;

constexpr VARIANT_BOOL kEncoded = VARIANT_TRUE;
constexpr VARIANT_BOOL kRaw = VARIANT_FALSE;

constexpr std::size_t kMostWords = 1279;  // characters taken of the platform's words for a code

// The platform's words for the code, none where it has none, and the mark behind them.
HRESULT report_with_mark(HRESULT hr, const CMarkData& mark) {
  // Not on the stack: a mark inside a mark is reported once for each, one frame inside the other.
  std::wstring words(kMostWords + 1, L'\0');
  const DWORD length =
      FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, static_cast<DWORD>(hr),
                     LOCALE_SYSTEM_DEFAULT, words.data(), static_cast<DWORD>(words.size()), nullptr);
  const std::wstring_view system_text(words.data(), std::min<std::size_t>(length, kMostWords));
  const CComBSTR text = page::join({system_text, L"[(#", {&mark.Type, 1}, mark.Name.view(), L"#)]"});
  return RaiseError(hr, L"Mirt", text ? text.get() : L"");
}

}  // namespace

HRESULT Self::OnMarked(CMarkData& mark) {
  const HRESULT hr = dispatch_mark(mark);
  // Who fails with E_FAIL has raised words of its own.
  if (SUCCEEDED(hr) || hr == E_FAIL) return hr;
  return report_with_mark(hr, mark);
}

HRESULT Self::dispatch_mark(const CMarkData& mark) {
  const CComBSTR name = bstr_of(mark.Name);
  if (!name.get()) return E_OUTOFMEMORY;
  switch (mark.Type) {
    case L'%':
      return OnMarked_Process(mark);
    case L';':
      return OnMarked_Property(mark, name, kEncoded);
    case L':':
      return OnMarked_Property(mark, name, kRaw);
    case L'*':
      return OnMarked_View(mark, name, kEncoded);
    case L'/':
      return OnMarked_View(mark, name, kRaw);
    case L'=':
      return OnMarked_Session(mark, name, kEncoded);
    case L'~':
      return OnMarked_Session(mark, name, kRaw);
    case L'+':
      return OnMarked_Application(mark, name, kEncoded);
    case L'-':
      return OnMarked_Application(mark, name, kRaw);
    case L'$':
      return OnMarked_Request(mark, name, kEncoded);
    case L'\\':
      return OnMarked_Request(mark, name, kRaw);
    case L'&':
      return OnMarked_Bag(mark, name, kEncoded);
    case L'|':
      return OnMarked_Bag(mark, name, kRaw);
    case L'!':
      return OnMarked_Command(name, kEncoded);
    case L'?':
      return OnMarked_Command(name, kRaw);
    case L'`':
      return OnMarked_ChildStatic(name);
    case L'@':
      return OnMarked_ChildDynamic(name);
    default:
      return S_OK;
  }
}
