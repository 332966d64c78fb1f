// The messages of a page, and the draw events that show them.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <korlib/comvariant.h>

#include "page/nested_texts.h"

namespace page {

class Messages {
 public:
  // `texts` draws for this, and outlives it.
  explicit Messages(NestedTexts& texts) : texts_(texts) {}
  Messages(const Messages&) = delete;
  Messages& operator=(const Messages&) = delete;

  // Keeps a copy of the value after the other messages of the key. References are followed: what they refer to is
  // gone when the caller returns.
  HRESULT add(const VARIANT& message, std::wstring_view key);
  // Whether there is a message under a VT_BSTR key, or with VT_ERROR, an omitted key, any at all. Other keys are
  // E_INVALIDARG.
  HRESULT exist(const VARIANT& key, bool* exist) const;

  // Draw event with 1 to 3 parameters, [key,] text [, text where there is no message]: draws the text once for each
  // message of the key, in the order in which they were added. Ones added meanwhile wait for the next drawing.
  HRESULT draw(const MarkParams& params);
  // Draw event inside that text: draws the message at hand if it is a text, else the parameter whose number it is.
  // E_FAIL, without a text, where no message is being drawn.
  HRESULT draw_current(const MarkParams& params);

 private:
  using List = std::vector<CComVariant>;
  const List* find(std::wstring_view key) const;

  NestedTexts& texts_;
  std::map<std::wstring, List, std::less<>> lists_;
  const VARIANT* current_ = nullptr;  // while one is being drawn
};

}  // namespace page
