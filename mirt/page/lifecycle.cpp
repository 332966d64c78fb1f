#include "page/lifecycle.h"

#include <korlib/ptr.h>

#include "frame/error.h"
#include "page/text.h"

namespace {

// By type and 16-bit value alone: a boolean behind a reference does not count as one, and a boolean
// holding 1 is not True.
bool is_refusal(const VARIANT& result) { return result.vt == VT_BOOL && result.boolVal != VARIANT_TRUE; }

}  // namespace

CMirtConcept::CMirtConcept(IDispatch* owner)
    : owner_(owner), command_prefix_(L"OnCommand_"), template_prefix_(L"OnTemplate_") {}

HRESULT CMirtConcept::Process() {
  const CComPtr<IDispatch> alive(owner_);
  bool flag = true;
  RETURN_IF_FAILED(On_StartProcess(flag));
  if (flag) {
    RETURN_IF_FAILED(run_command(flag));
    RETURN_IF_FAILED(run_draw(flag));
  }
  return On_EndProcess(flag);
}

HRESULT CMirtConcept::run_command(bool& flag) {
  RETURN_IF_FAILED(On_StartCommand(flag));
  if (flag) {
    RETURN_IF_FAILED(Command(flag));
    if (!flag) return page::raise({L"Unknown Command '", command_.view(), L"'."});
  }
  return On_EndCommand(flag);
}

HRESULT CMirtConcept::run_draw(bool& flag) {
  RETURN_IF_FAILED(On_StartDraw(flag));
  if (flag) {
    RETURN_IF_FAILED(Draw(flag));
    if (!flag) return page::raise({L"Unknown Template '", template_.view(), L"'."});
  }
  return On_EndDraw(flag);
}

HRESULT CMirtConcept::fire(const CComBSTR& name, bool when_missing, bool& answer) {
  if (!name.get()) return E_OUTOFMEMORY;
  CEvent event;
  const HRESULT found = handler_.GetEvent(name, event);
  if (found == DISP_E_UNKNOWNNAME) {
    mirt::forget_error();
    answer = when_missing;
    return S_OK;
  }
  RETURN_IF_FAILED(found);
  RETURN_IF_FAILED(event.Fire(owner_, nullptr));
  answer = !is_refusal(event.result);
  return S_OK;
}

HRESULT CMirtConcept::On_StartProcess(bool& go_on) { return fire(L"On_StartProcess", true, go_on); }
HRESULT CMirtConcept::On_EndProcess(bool& go_on) { return fire(L"On_EndProcess", true, go_on); }
HRESULT CMirtConcept::On_StartCommand(bool& go_on) { return fire(L"On_StartCommand", true, go_on); }
HRESULT CMirtConcept::On_EndCommand(bool& go_on) { return fire(L"On_EndCommand", true, go_on); }
HRESULT CMirtConcept::On_StartDraw(bool& go_on) { return fire(L"On_StartDraw", true, go_on); }
HRESULT CMirtConcept::On_EndDraw(bool& go_on) { return fire(L"On_EndDraw", true, go_on); }

HRESULT CMirtConcept::Command(bool& handled) {
  return fire(page::join({command_prefix_.view(), command_.view()}), false, handled);
}

HRESULT CMirtConcept::Draw(bool& handled) {
  return fire(page::join({template_prefix_.view(), template_.view()}), false, handled);
}
