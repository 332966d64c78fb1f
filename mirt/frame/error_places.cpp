#include "frame/error_places.h"

#include <algorithm>
#include <cwchar>
#include <string>

#include <mirt/template_places.h>

#include "frame/error.h"
#include "frame/host.h"

namespace mirt {
namespace {

constexpr std::wstring_view kMore = L" more";  // ends the line that counts those that are not listed

using GetErrorInfoFunction = decltype(GetErrorInfo);

// Looked for when something has failed: a host need not export it.
GetErrorInfoFunction* error_reader() { return host_function<GetErrorInfoFunction>("GetErrorInfo"); }

}  // namespace

ErrorInHand::ErrorInHand() : is_readable_(error_reader() != nullptr) {
  if (is_readable_) error_reader()(0, info_.put());
}

ErrorInHand::~ErrorInHand() {
  if (is_readable_) SetErrorInfo(0, info_.get());
}

CComBSTR ErrorInHand::places() const {
  DWORD context = 0;
  CComBSTR list;
  const bool has_list = info_ && SUCCEEDED(info_->GetHelpContext(&context)) && context == kTemplatePlaces;
  if (has_list && FAILED(info_->GetHelpFile(list.put()))) list.reset();
  return list;
}

bool ErrorInHand::is_full() const {
  return std::ranges::count(places().view(), L'\n') + 1 >= static_cast<std::ptrdiff_t>(kMostTemplatePlaces);
}

void ErrorInHand::add(std::wstring_view place) {
  std::wstring list(places().view());
  if (!list.empty()) list += L'\n';
  set_places(list.append(place).data());
}

void ErrorInHand::add_unlisted() {
  constexpr std::wstring_view kBefore = L"\nand ";
  std::wstring list(places().view());
  const std::size_t last = list.rfind(L'\n');
  unsigned long count = 0;
  if (last != list.npos && list.compare(last, kBefore.size(), kBefore) == 0 && list.ends_with(kMore)) {
    count = std::wcstoul(list.c_str() + last + kBefore.size(), nullptr, 10);
    list.erase(last);
  }
  set_places(list.append(kBefore).append(std::to_wstring(count + 1)).append(kMore).data());
}

// The object stays the same one: a host may know its own by it.
void ErrorInHand::set_places(LPOLESTR list) {
  CComPtr<ICreateErrorInfo> made;
  if (!is_readable_) return;
  if (FAILED(info_ ? info_.query(made.put()) : CreateErrorInfo(made.put())) || !made) return;
  if (FAILED(made->SetHelpFile(list)) || FAILED(made->SetHelpContext(kTemplatePlaces))) return;
  if (!info_) made.query(info_.put());
}

HRESULT raise_around(HRESULT hr, const wchar_t* source, const wchar_t* description) {
  const CComBSTR list = ErrorInHand().places();
  RaiseError(hr, source, description);
  if (!list.empty()) ErrorInHand().set_places(list);
  return hr;
}

}  // namespace mirt
