// Draw events: script functions that a mark calls, and the built-in ones behind them.
#pragma once

#include <korlib/combstr.h>

#include "frame/script_event.h"
#include "page/input_drawers.h"
#include "page/messages.h"

namespace page {

class DrawEvents {
 public:
  // `owner` is the first argument of script functions, not counted. All outlive this.
  DrawEvents(IDispatch* owner, const CEventHandler& scripts, InputDrawers& inputs, Messages& messages)
      : owner_(owner), scripts_(scripts), inputs_(inputs), messages_(messages) {}

  // Runs the event of the mark's name with the mark's parameters: the script's function, else the built-in one.
  HRESULT draw(const CMarkData& mark);

 private:
  struct BuiltIn;

  IDispatch* owner_;
  const CEventHandler& scripts_;
  InputDrawers& inputs_;
  Messages& messages_;
};

}  // namespace page
