// Functions and variables of the page's script, found by name at the moment they are needed.
//
// Used by the page controller and by the templators; the object that fires an event passes itself as owner.
#pragma once

#include <sstream>
#include <vector>

#include <korlib/comvariant.h>
#include <korlib/ptr.h>

// One member of a script object, and the value that its last call gave.
//
// GetEvent (below) fills in object and identifier; calling an event that was never filled is E_UNEXPECTED.
// A success of the call is S_OK, a failure is passed on as it is.
class CEvent {
 public:
  // Calls the member as a method with (owner, argument by reference); without an argument the second
  // one is VT_EMPTY. The owner is not counted for the call.
  HRESULT Fire(IDispatch* owner, VARIANT* argument);
  HRESULT Get();
  HRESULT Put(VARIANT* value);

  CComPtr<IDispatch> dispatch;
  DISPID dispid = DISPID_UNKNOWN;
  CComVariant result;  // of the last Fire or Get; empty when that failed

 private:
  HRESULT invoke(WORD flags, DISPPARAMS* params, VARIANT* value);
};

// A script, counted; but where it is the object that holds it, not: that one would never go.
class HeldScript {
 public:
  HeldScript(IDispatch* script, const IDispatch* holder)
      : counted_(script == holder ? nullptr : script), script_(script) {}

  IDispatch* get() const noexcept { return script_; }

 private:
  CComPtr<IDispatch> counted_;
  IDispatch* script_;
};

// The script objects of a page. The one added last is asked first, so later scripts shadow earlier ones.
// A null among them is legal and knows no name.
class CEventHandler {
 public:
  // On failure: what the script asked last answered, DISP_E_UNKNOWNNAME when there is none. `event` is
  // then left as it was.
  HRESULT GetEvent(const wchar_t* name, CEvent& event) const;
  // The value that a script's default member gives for the name. *value must be empty on entry and stays
  // so on failure.
  HRESULT GetValue(const wchar_t* name, VARIANT* value) const;

  // `holder` is the object that this handler is a part of: it may be its own script.
  void add(IDispatch* script, const IDispatch* holder = nullptr) { scripts.emplace_back(script, holder); }
  // The script added last, null when there is none.
  IDispatch* last() const { return scripts.empty() ? nullptr : scripts.back().get(); }

  std::vector<HeldScript> scripts;  // in the order in which they were added
};

// Calls the event with (owner, array of the texts by reference): how a mark calls a script function.
HRESULT fire_with_texts(CEvent& event, IDispatch* owner, const std::vector<std::wstringstream*>& texts);
