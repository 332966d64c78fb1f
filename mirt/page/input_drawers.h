// The draw events that let form inputs show what is bound to them.
//
// A radio button or an option is drawn as one of two texts, depending on whether its value is the bound one.
#pragma once

#include <string_view>

#include "frame/script_event.h"
#include "page/dictionaries.h"
#include "page/memory.h"
#include "page/nested_texts.h"

namespace page {

// Where the value that is bound to an input's name is found.
enum class BoundTo { bag, view, script };

class InputDrawers {
 public:
  // All outlive this.
  InputDrawers(const CEventHandler& scripts, const Memory& memory, const Dictionaries& dictionaries, NestedTexts& texts)
      : scripts_(scripts), memory_(memory), dictionaries_(dictionaries), texts_(texts) {}

  // 4 parameters: name, value, text if it is the bound one, text if not.
  HRESULT draw_default(BoundTo source, const MarkParams& params);
  // 2 or 3 parameters: name, text [, text where nothing has that name]. While the text is drawn, two items of View
  // hold the name and the bound value for the draw events in it.
  HRESULT draw_input(BoundTo source, const MarkParams& params);
  // 2 parameters, inside that text: text if not, text if the value in View is the bound one.
  HRESULT draw_inner_default(BoundTo source, const MarkParams& params);

 private:
  HRESULT read_bound(BoundTo source, std::wstring_view name, CComVariant* value, bool* exists);
  HRESULT is_bound(BoundTo source, std::wstring_view name, std::wstring_view input, bool* matches);

  const CEventHandler& scripts_;
  const Memory& memory_;
  const Dictionaries& dictionaries_;
  NestedTexts& texts_;
};

}  // namespace page
