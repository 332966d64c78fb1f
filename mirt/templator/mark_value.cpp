#include "templator/mark_value.h"

#include "frame/error.h"
#include "templator/templator_concept.h"

HRESULT script_member_text(CEvent& member, IDispatch* owner, const CMarkData& mark, const bool& empty_on_fail,
                           CComVariant* text) {
  const MarkParams* path = &mark.Params;
  HRESULT hr = member.Get();
  if (hr == DISP_E_MEMBERNOTFOUND) {  // a function cannot be read
    mirt::forget_error();
    hr = fire_with_texts(member, owner, mark.Params);
    path = nullptr;
  }
  RETURN_IF_FAILED(hr);
  *text = std::move(member.result);
  return CTemplatorConcept::ChangeToBSTR(text, path, empty_on_fail);
}

HRESULT read_item(IKorLibDictionary* items, BSTR name, CComVariant* value) {
  return items ? items->get_Item(korlib::borrowed(name), value->put()) : E_FAIL;
}
