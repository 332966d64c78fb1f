// Binding: submitted fields into a dictionary or into the script's variables.
#pragma once

#include <korlib/dictionary.h>

#include "frame/script_event.h"
#include "page/memory.h"
#include "page/request_fields.h"

namespace page {

class Binding {
 public:
  // All three outlive this.
  Binding(const CEventHandler& scripts, const RequestFields& fields, const Memory& memory)
      : scripts_(scripts), fields_(fields), memory_(memory) {}

  // A property of the page: values are decoded on their way.
  bool decodes = false;

  // Copies one field into `target`, or into the script's variable of that name where `target` is null; with an empty
  // name all fields but the command's. `as_array` makes an array of the values of one named field. A failure ends
  // it, and what has been copied before stays.
  HRESULT put_into(IKorLibDictionary* target, BSTR name, bool as_array) const;

 private:
  using Collection = RequestFields::Collection;

  HRESULT put_field(Collection* fields, IKorLibDictionary* target, BSTR name, bool as_array) const;
  HRESULT put_all_fields(Collection* fields, IKorLibDictionary* target) const;
  HRESULT read_array(IDispatch* field, CComVariant* value) const;
  HRESULT store(IKorLibDictionary* target, BSTR name, VARIANT* value) const;

  const CEventHandler& scripts_;
  const RequestFields& fields_;
  const Memory& memory_;
};

}  // namespace page
