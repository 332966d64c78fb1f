// What collections of named entries have in common: their names, counted from 1.
#pragma once

#include <korlib_host/dispatch_object.h>

#include <string>
#include <vector>

#include "intrinsics/arguments.h"

namespace zelto {

// `Self` has the kSource that its errors come from.
template <class Self, class... Interface>
class NamedCollection : public korlib::DispatchObject<Self, Interface...> {
 public:
  HRESULT get__NewEnum(IUnknown** result) override {
    return with_names(result, [&](const Names& all) { return give_texts(all, result); });
  }
  HRESULT get_Count(int* count) override {
    return with_names(count, [&](const Names& all) { return give(static_cast<int>(all.size()), count); });
  }
  HRESULT get_Key(VARIANT index, VARIANT* key) override {
    return with_names(key, [&](const Names& all) -> HRESULT {
      std::size_t place = 0;
      RETURN_IF_FAILED(read_place(index, all.size(), place));
      return give_text(all[place], key);
    });
  }

 protected:
  using Names = std::vector<std::wstring>;
  // The names of all entries, in their order.
  virtual HRESULT names(Names& all) = 0;

 private:
  template <class Result, class Body>
  HRESULT with_names(Result* result, Body body) {
    return guarded(Self::kSource, result, [&]() -> HRESULT {
      Names all;
      RETURN_IF_FAILED(names(all));
      return body(all);
    });
  }
};

}  // namespace zelto
