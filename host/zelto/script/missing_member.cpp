#include "script/missing_member.h"

#include "base/near_names.h"
#include "script/errors.h"
#include "script/object_type.h"
#include "script/text.h"

namespace zelto::script {

void MissingMember::note(CComPtr<IDispatch> object, std::wstring_view kind, std::u16string_view name) {
  object_ = std::move(object);
  kind_ = kind;
  name_ = name;
  is_fresh_ = true;
}

std::wstring MissingMember::words() const {
  const std::wstring name = to_wide(name_);
  std::wstring owner = kind_of(object_.get());
  if (owner.empty()) owner = kind_;
  const std::wstring near = nearest_member(object_.get(), name);
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
