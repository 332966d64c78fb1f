// Template texts that marks draw: the parameters of a draw event, and messages.
#pragma once

#include "templator/templator_concept.h"

namespace page {

// Draws texts with the engine; the marks of a text may draw further texts. Each level keeps a copy of what lies inside
// it and takes stack, so their number is limited; no sensible page comes near, and a text beyond the limit is an error.
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
};

}  // namespace page
