// What the mark handlers of the page controller and of the templators have in common.
#pragma once

#include <korlib/dictionary.h>

#include "frame/script_event.h"
#include "templator/mark_data.h"

// The text of a mark that names a script member: a variable's value, walked by the mark's parameters, or
// what a function answers when it is called with (owner, parameters). *text becomes a VT_BSTR.
// `empty_on_fail` is a reference because it is looked at when the function has run, which may change it.
HRESULT script_member_text(CEvent& member, IDispatch* owner, const CMarkData& mark, const bool& empty_on_fail,
                           CComVariant* text);

// What a dictionary holds under a mark's name; E_FAIL where there is no dictionary.
HRESULT read_item(IKorLibDictionary* items, BSTR name, CComVariant* value);

// The same of the host's Session or Application.
template <class Values>
HRESULT read_value(Values* values, BSTR name, CComVariant* value) {
  return values ? values->get_Value(name, value->put()) : E_FAIL;
}
