// A member that an automation object was asked for and does not have.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include <korlib/dispatch.h>
#include <korlib/ptr.h>

namespace zelto::script {

// The last one of a realm. Reading it gives undefined; whoever calls it, or names it as a statement, learns from the
// words what is missing.
class MissingMember {
 public:
  void note(CComPtr<IDispatch> object, std::wstring_view kind, std::u16string_view name);
  // Something else has crossed the border since.
  void pass() noexcept { is_fresh_ = false; }
  // Whether it was the last thing that was asked for. Once only.
  bool take_fresh() noexcept { return std::exchange(is_fresh_, false); }
  // Whether an error of the engine with that message comes of it.
  bool is_about(std::wstring_view message) const;
  // "Object doesn't support this property or method: 'Recordset.MoveNex', did you mean 'MoveNext'? (0x80020006)".
  // What kind of object it is, and which names it has, its type information says: the name of the type by
  // GetDocumentation(MEMBERID_NIL), those of members by GetNames. An object whose type information does not is of
  // the kind that was noted, which may be empty, and is asked for the names that differ from this one in one letter.
  std::wstring words() const;

 private:
  CComPtr<IDispatch> object_;
  std::wstring kind_;
  std::u16string name_;
  bool is_fresh_ = false;
};

}  // namespace zelto::script
