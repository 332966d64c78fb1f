#include "script/member_names.h"

#include <korlib/ptr.h>
#include <korlib/typeinfo.h>

#include "script/text.h"

namespace zelto::script {
namespace {

// A client can make a script ask for any number of names; a class has few.
constexpr std::size_t kMostNames = 1000;

}  // namespace

const MemberName* MemberNames::find(IDispatch* object, std::u16string_view name, HRESULT* hr) {
  *hr = S_OK;
  if (const auto known = names_.find(name); known != names_.end()) {
    return known->second.id == DISPID_UNKNOWN ? nullptr : &known->second;
  }
  std::wstring wide = to_wide(name);
  LPOLESTR text = wide.data();
  MemberName member;
  const HRESULT asked = object->GetIDsOfNames(IID_NULL, &text, 1, LOCALE_SYSTEM_DEFAULT, &member.id);
  if (FAILED(asked)) {
    member.id = DISPID_UNKNOWN;
    if (asked != DISP_E_UNKNOWNNAME) *hr = asked;
    if (!is_class_ || FAILED(*hr)) return nullptr;
  }
  if (names_.size() >= kMostNames) names_.clear();
  MemberName& kept = names_.emplace(name, member).first->second;
  return kept.id == DISPID_UNKNOWN ? nullptr : &kept;
}

void MemberNames::mark_function(std::u16string_view name) {
  if (const auto known = names_.find(name); known != names_.end()) known->second.is_function = true;
}

MemberNames* MemberCache::of(IDispatch* object) {
  UINT count = 0;
  if (FAILED(object->GetTypeInfoCount(&count)) || count == 0) return nullptr;
  CComPtr<ITypeInfo> info;
  if (FAILED(object->GetTypeInfo(0, LOCALE_SYSTEM_DEFAULT, info.put())) || !info) return nullptr;
  const void* const table = *reinterpret_cast<const void* const*>(object);
  return &classes_.try_emplace({table, info.get()}, true).first->second;
}

}  // namespace zelto::script
