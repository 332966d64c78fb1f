#include "script/missing_member.h"

#include <vector>

#include <korlib/combstr.h>
#include <korlib/ptr.h>
#include <korlib/typeinfo.h>

#include "base/near_names.h"
#include "script/errors.h"
#include "script/text.h"

namespace zelto::script {
namespace {

constexpr MEMBERID kType = -1;          // MEMBERID_NIL
constexpr MEMBERID kMostMembers = 200;  // identifiers of members are small numbers

CComPtr<ITypeInfo> type_of(IDispatch* object) {
  CComPtr<ITypeInfo> info;
  if (FAILED(object->GetTypeInfo(0, LOCALE_SYSTEM_DEFAULT, info.put()))) info.reset();
  return info;
}

std::wstring kind_of(ITypeInfo* info) {
  CComBSTR name;
  if (!info || FAILED(info->GetDocumentation(kType, name.put(), nullptr, nullptr, nullptr))) return {};
  return std::wstring(name.view());
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

bool has_name(IDispatch* object, std::wstring name) {
  LPOLESTR text = name.data();
  DISPID id = DISPID_UNKNOWN;
  return SUCCEEDED(object->GetIDsOfNames(IID_NULL, &text, 1, LOCALE_SYSTEM_DEFAULT, &id));
}

// A name of the object that differs in one letter.
std::wstring guessed(IDispatch* object, std::wstring_view wanted) {
  constexpr std::wstring_view kLetters = L"etaoinshrdlucmfwypvbgkqjxz0123456789_";
  if (wanted.size() < base::kShortestMistypedName || wanted.size() > base::kLongestMistypedName) return {};
  std::wstring found;
  for (std::size_t at = 0; at <= wanted.size(); ++at) {
    const auto fits_with = [&](std::size_t removed, std::wstring_view inserted) {
      found = std::wstring(wanted).replace(at, removed, inserted);
      return has_name(object, found);
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

std::wstring kind_of(IDispatch* object) { return kind_of(type_of(object).get()); }

void MissingMember::note(CComPtr<IDispatch> object, std::wstring_view kind, std::u16string_view name) {
  object_ = std::move(object);
  kind_ = kind;
  name_ = name;
  is_fresh_ = true;
}

std::wstring MissingMember::words() const {
  const std::wstring name = to_wide(name_);
  const CComPtr<ITypeInfo> info = type_of(object_.get());
  std::wstring owner = kind_of(info.get());
  if (owner.empty()) owner = kind_;
  const std::vector<std::wstring> names = names_of(info.get());
  const std::wstring near = names.empty() ? guessed(object_.get(), name) : base::nearest_name(names, name);
  std::wstring member = L"'" + (owner.empty() ? L"" : owner + L".") + name + L"'";
  if (!near.empty()) member += L", " + base::did_you_mean(near);
  return describe(DISP_E_UNKNOWNNAME, L"Object doesn't support this property or method: " + member, {});
}

// The engine says of a call "…o.Name is not a function. (In '…', '…o.Name' is undefined)", and of what lies behind
// it "undefined is not an object (evaluating '…o.Name.x')".
bool MissingMember::is_about(std::wstring_view message) const {
  if (name_.empty()) return false;
  const std::wstring name = L"." + to_wide(name_);
  if (message.ends_with(name + L"' is undefined)")) return true;
  return message.starts_with(L"undefined is not an object (evaluating '") &&
         message.substr(0, message.find_last_of(L".[(")).ends_with(name);
}

}  // namespace zelto::script
