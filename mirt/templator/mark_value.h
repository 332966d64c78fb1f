// What the mark handlers of the page controller and of the templators have in common.
#pragma once

#include "frame/script_event.h"
#include "templator/mark_data.h"

// The text of a mark that names a script member: a variable's value, walked by the mark's parameters, or
// what a function answers when it is called with (owner, parameters). *text becomes a VT_BSTR.
HRESULT script_member_text(CEvent& member, IDispatch* owner, const CMarkData& mark, bool empty_on_fail,
                           CComVariant* text);
