// The fixed course of one page: start, command, draw, end.
//
// Each step fires one function of the page's script, found by name at the moment it is needed. The page
// controller overrides most steps and calls the ones here at their end.
#pragma once

#include <korlib/combstr.h>
#include <korlib/dispatch.h>

#include "frame/script_event.h"

class CMirtConcept {
 public:
  CMirtConcept(const CMirtConcept&) = delete;
  CMirtConcept& operator=(const CMirtConcept&) = delete;

  // Runs every step. The first failure ends it, and no later step runs. The owner stays alive until the
  // end, even when a script function gives up the last reference to it.
  HRESULT Process();

 protected:
  // `owner` is the first argument of every script function. It is not counted: it is this object.
  explicit CMirtConcept(IDispatch* owner);
  ~CMirtConcept() = default;

  // A step answers whether to go on; Command and Draw answer whether the command or template was handled.
  virtual HRESULT On_StartProcess(bool& go_on);
  virtual HRESULT On_EndProcess(bool& go_on);
  virtual HRESULT On_StartCommand(bool& go_on);
  virtual HRESULT Command(bool& handled);
  virtual HRESULT On_EndCommand(bool& go_on);
  virtual HRESULT On_StartDraw(bool& go_on);
  virtual HRESULT Draw(bool& handled);
  virtual HRESULT On_EndDraw(bool& go_on);

  // Fires one script function. `answer` becomes false exactly when the function returned a boolean
  // other than True, `when_missing` when no script has it, and keeps its value on failure.
  HRESULT fire(const CComBSTR& name, bool when_missing, bool& answer);

  CEventHandler handler_;
  IDispatch* owner_;
  CComBSTR command_;
  CComBSTR template_;
  CComBSTR command_prefix_;
  CComBSTR template_prefix_;

 private:
  HRESULT run_command(bool& flag);
  HRESULT run_draw(bool& flag);
};
