#include "script/object_type.h"

#include <vector>

#include <korlib/combstr.h>
#include <korlib/ptr.h>
#include <korlib/typeinfo.h>

#include "base/near_names.h"

namespace zelto::script {
namespace {

constexpr MEMBERID kType = -1;          // MEMBERID_NIL
constexpr MEMBERID kMostMembers = 200;  // identifiers of members are small numbers

CComPtr<ITypeInfo> type_of(IDispatch* object) {
  CComPtr<ITypeInfo> info;
  if (FAILED(object->GetTypeInfo(0, LOCALE_SYSTEM_DEFAULT, info.put()))) info.reset();
  return info;
}

std::vector<std::wstring> names_of(ITypeInfo* info) {
  std::vector<std::wstring> names;
  for (MEMBERID id = 0; info && id < kMostMembers; ++id) {
    CComBSTR name;
    UINT count = 0;
    if (SUCCEEDED(info->GetNames(id, name.put(), 1, &count)) && count == 1) names.emplace_back(name.view());
  }
  return names;
}

// A name of the object that differs in one letter.
std::wstring guessed(IDispatch* object, std::wstring_view wanted) {
  constexpr std::wstring_view kLetters = L"etaoinshrdlucmfwypvbgkqjxz0123456789_";
  if (wanted.size() < base::kShortestMistypedName || wanted.size() > base::kLongestMistypedName) return {};
  std::wstring found;
  for (std::size_t at = 0; at <= wanted.size(); ++at) {
    const auto fits_with = [&](std::size_t removed, std::wstring_view inserted) {
      found = std::wstring(wanted).replace(at, removed, inserted);
      return has_member(object, found);
    };
    const std::size_t left = wanted.size() - at;
    if (left > 1 && fits_with(2, std::wstring{wanted[at + 1], wanted[at]})) return found;
    if (left > 0 && fits_with(1, {})) return found;
    for (const wchar_t& letter : kLetters) {
      if (fits_with(0, {&letter, 1}) || (left > 0 && fits_with(1, {&letter, 1}))) return found;
    }
  }
  return {};
}

}  // namespace

std::wstring kind_of(IDispatch* object) {
  CComBSTR name;
  const CComPtr<ITypeInfo> info = type_of(object);
  if (!info || FAILED(info->GetDocumentation(kType, name.put(), nullptr, nullptr, nullptr))) return {};
  return std::wstring(name.view());
}

bool has_member(IDispatch* object, std::wstring name) {
  LPOLESTR text = name.data();
  DISPID id = DISPID_UNKNOWN;
  return SUCCEEDED(object->GetIDsOfNames(IID_NULL, &text, 1, LOCALE_SYSTEM_DEFAULT, &id));
}

std::wstring nearest_member(IDispatch* object, std::wstring_view wanted) {
  const std::vector<std::wstring> names = names_of(type_of(object).get());
  return names.empty() ? guessed(object, wanted) : base::nearest_name(names, wanted);
}

}  // namespace zelto::script
