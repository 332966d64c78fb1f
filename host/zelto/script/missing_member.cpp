#include "script/missing_member.h"

#include <vector>

#include <korlib/combstr.h>
#include <korlib/ptr.h>
#include <korlib/typeinfo.h>

#include "language/name_distance.h"
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
  if (wanted.size() > language::kLongestMistypedName) return {};
  for (std::size_t at = 0; at <= wanted.size(); ++at) {
    std::wstring other(wanted);
    if (at + 1 < wanted.size()) {
      std::swap(other[at], other[at + 1]);
      if (has_name(object, other)) return other;
      std::swap(other[at], other[at + 1]);
    }
    if (at < wanted.size() && has_name(object, std::wstring(wanted).erase(at, 1))) {
      return std::wstring(wanted).erase(at, 1);
    }
    for (const wchar_t letter : kLetters) {
      if (has_name(object, std::wstring(wanted).insert(at, 1, letter)))
        return std::wstring(wanted).insert(at, 1, letter);
      if (at == wanted.size()) continue;
      other[at] = letter;
      if (has_name(object, other)) return other;
    }
  }
  return {};
}

}  // namespace

std::wstring describe_missing(IDispatch* object, std::wstring_view kind, std::wstring_view name) {
  const CComPtr<ITypeInfo> info = type_of(object);
  std::wstring owner = kind_of(info.get());
  if (owner.empty()) owner = kind;
  const std::vector<std::wstring> names = names_of(info.get());
  const std::wstring near = names.empty() ? guessed(object, name) : language::nearest_name(names, name);
  std::wstring member = L"'" + (owner.empty() ? L"" : owner + L".") + std::wstring(name) + L"'";
  if (!near.empty()) member += L", did you mean '" + near + L"'?";
  return describe(DISP_E_UNKNOWNNAME, L"Object doesn't support this property or method: " + member, {});
}

void MissingMember::note(CComPtr<IDispatch> object, std::wstring_view kind, std::u16string_view name) {
  object_ = std::move(object);
  kind_ = kind;
  name_ = name;
  is_fresh_ = true;
}

std::wstring MissingMember::words() const { return describe_missing(object_.get(), kind_, to_wide(name_)); }

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
