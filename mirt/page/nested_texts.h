// Template texts that marks draw: the parameters of a draw event, and messages.
#pragma once

#include <cstddef>

#include "templator/templator_concept.h"

namespace page {

// Draws texts with the engine; the marks of a text may draw further texts. Each level keeps copies of what lies inside
// it and takes stack, so their number is limited, and the characters of all levels together: a text of 300,000 would
// else take a gigabyte. No sensible page comes near, and a text beyond a limit is an error.
class NestedTexts {
 public:
  // The engine outlives this.
  explicit NestedTexts(CTemplatorConcept& engine) : engine_(engine) {}
  NestedTexts(const NestedTexts&) = delete;
  NestedTexts& operator=(const NestedTexts&) = delete;

  HRESULT draw(BSTR text);
  HRESULT draw(const std::wstringstream& text);

 private:
  CTemplatorConcept& engine_;
  unsigned depth_ = 0;
  std::size_t characters_ = 0;  // of the texts that are being drawn
};

}  // namespace page
