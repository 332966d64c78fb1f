// Of which class the objects are that a script certainly has.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include <korlib/dispatch.h>
#include <korlib/ptr.h>

#include "app/check/page_script.h"
#include "app/check/variables.h"

namespace zelto::check {

class ObjectClasses {
 public:
  struct Class {
    std::wstring name;          // as its objects call themselves, else its ProgID
    CComPtr<IDispatch> object;  // null when none can be made
  };

  // Both outlive it.
  ObjectClasses(const PageScript& script, const std::vector<language::Token>& tokens);

  // Of the value that ends with that token: `page`, where nothing else than objects of one class is ever assigned to
  // it, or `Server.CreateObject("Mirt")` itself. Null where that is not certain, and for classes that are neither the
  // host's nor the component's, or cannot be made.
  const Class* at(std::size_t last);

 private:
  std::wstring class_at(std::size_t last);
  std::wstring class_of_name(std::size_t name);
  std::wstring class_of_call(std::size_t open);
  std::wstring class_of_values(const Variables::Variable& variable);
  bool is_nothing(std::size_t value) const;
  bool ends_value(std::size_t i) const { return variables_.expression_ends(i) || variables_.is(i, L","); }

  const std::vector<language::Token>& tokens_;
  Variables variables_;
  std::map<const Variables::Variable*, std::wstring> classes_;  // ProgIDs in small letters
  std::map<std::wstring, Class> made_;                          // by those
  unsigned depth_ = 0;
};

}  // namespace zelto::check
