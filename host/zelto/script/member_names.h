// Member names and their identifiers, remembered for each class of automation objects.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include <korlib/dispatch.h>

namespace zelto::script {

struct MemberName {
  DISPID id = DISPID_UNKNOWN;  // DISPID_UNKNOWN: the class has no such member
  bool is_function = false;    // known not to be readable without arguments
};

// The names of one class, or of one object that does not say which class it is of.
class MemberNames {
 public:
  explicit MemberNames(bool is_class) : is_class_(is_class) {}
  // Asks the object the first time. Null for a name that it does not know; another failure is in *hr.
  const MemberName* find(IDispatch* object, std::u16string_view name, HRESULT* hr);
  void mark_function(std::u16string_view name);

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::u16string_view name) const { return std::hash<std::u16string_view>()(name); }
  };
  std::unordered_map<std::u16string, MemberName, Hash, std::equal_to<>> names_;
  bool is_class_;
};

// By type information. An entry names its class by address without counting it: another class can only
// appear at the same pair of addresses when the module that served both was replaced by itself.
class MemberCache {
 public:
  // The names that the object shares with its class; null when it has no type information.
  MemberNames* of(IDispatch* object);

 private:
  std::map<std::pair<const void*, const void*>, MemberNames> classes_;
};

}  // namespace zelto::script
