#include "frame/error_places.h"

#include <algorithm>
#include <string>

#include <mirt/template_places.h>

#include "frame/error.h"
#include "frame/host.h"

namespace mirt {
namespace {

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

bool ErrorInHand::has_room() const {
  if (!is_readable_) return false;
  const CComBSTR list = places();
  return list.empty() || std::ranges::count(list.view(), L'\n') + 1 < static_cast<std::ptrdiff_t>(kMostTemplatePlaces);
}

void ErrorInHand::add(std::wstring_view place) {
  std::wstring list(places().view());
  if (!list.empty()) list += L'\n';
  set_places(list.append(place).data());
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
