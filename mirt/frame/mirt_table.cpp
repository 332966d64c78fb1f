// The page controller's member table, and the members of it that only late-bound callers have.
#include <korlib/comvariant.h>
#include <korlib/dictionary.h>
#include <mirt/mirt.h>

#include "frame/static_type_info.h"
#include "frame/utility_table.h"

namespace {

using namespace mirt::dispatch;

// The view as a dictionary. Outside Process there is none.
HRESULT view_of(IMirt* page, CComPtr<IKorLibDictionary>* view) {
  CComPtr<IDispatch> spView;
  if (FAILED(page->get_View(spView.put())) || FAILED(spView.query(view->put())) || !*view) return E_NOINTERFACE;
  return S_OK;
}

// View, or with a key the view's item of that key.
HRESULT read_view(IMirt* page, DISPPARAMS* params, VARIANT* result, UINT* argerr) {
  const VARIANT* key = disp_arg(params, 0);
  if (!key) return call<IMirt, &IMirt::get_View>(page, params, result, argerr);
  CComPtr<IKorLibDictionary> spView;
  RETURN_IF_FAILED(view_of(page, &spView));
  CComVariant item;
  RETURN_IF_FAILED(spView->get_Item(*key, &item));
  return set_variant_result(result, item);
}

// SetView(key, value), which is also what a write to View(key) does.
HRESULT write_view(IMirt* page, DISPPARAMS* params, VARIANT*, UINT*) {
  const VARIANT* key = disp_arg(params, 0);
  const VARIANT* value = disp_arg(params, 1);
  if (!key || !value) return DISP_E_BADPARAMCOUNT;
  CComPtr<IKorLibDictionary> spView;
  RETURN_IF_FAILED(view_of(page, &spView));
  const bool is_object = value->vt == VT_DISPATCH || value->vt == VT_UNKNOWN;
  return is_object ? spView->putref_Item(*key, *value) : spView->put_Item(*key, *value);
}

// The third argument goes in and comes out, when it is a reference. One by value belongs to the caller,
// who is not told what became of it: the member works on a copy.
HRESULT fire_event(IMirt* page, DISPPARAMS* params, VARIANT* result, UINT* argerr) {
  Argument<BSTR> name;
  RETURN_IF_FAILED(take_one(name, params, 0, argerr));
  VARIANT* argument = disp_arg(params, 1);
  VARIANT* outcome = disp_arg(params, 2);
  if (!argument || !outcome) return DISP_E_BADPARAMCOUNT;
  CComVariant copy;
  if (outcome == &params->rgvarg[params->cArgs - 3]) {
    RETURN_IF_FAILED(VariantCopy(&copy, outcome));
    outcome = &copy;
  }
  VARIANT_BOOL exists = VARIANT_FALSE;
  const HRESULT hr = page->FireEvent(name.value, argument, outcome, &exists);
  RETURN_IF_FAILED(hr);
  set_bool_result(result, exists);
  return hr;
}

// Without a key it asks for any message: the member then sees what stands for an omitted argument.
HRESULT message_exists(IMirt* page, DISPPARAMS* params, VARIANT* result, UINT* argerr) {
  if (disp_arg(params, 0)) return call<IMirt, &IMirt::MessageExists>(page, params, result, argerr);
  VARIANT omitted = korlib::omitted();
  DISPPARAMS with_it{&omitted, nullptr, 1, 0};
  return call<IMirt, &IMirt::MessageExists>(page, &with_it, result, argerr);
}

template <auto M>
constexpr Member<IMirt> method(const wchar_t* name) {
  return mirt::dispatch::method<IMirt, M>(name);
}
template <auto... Accessors>
constexpr Member<IMirt> property(const wchar_t* name) {
  return mirt::dispatch::property<IMirt, Accessors...>(name);
}
template <auto Get, auto PutRef>
constexpr Member<IMirt> object_property(const wchar_t* name) {
  return mirt::dispatch::object_property<IMirt, Get, PutRef>(name);
}

constexpr DISPID kFirst = 0;

constexpr Member<IMirt> kMembers[] = {
    property<&IMirt::get_Bag>(L"Bag"),
    object_property<&IMirt::get_Script, &IMirt::putref_Script>(L"Script"),
    property<&IMirt::get_Command, &IMirt::put_Command>(L"Command"),
    property<&IMirt::get_Template, &IMirt::put_Template>(L"Template"),
    property<&IMirt::get_TemplateFolder, &IMirt::put_TemplateFolder>(L"TemplateFolder"),
    property<&IMirt::get_TemplateExt, &IMirt::put_TemplateExt>(L"TemplateExt"),
    property<&IMirt::get_TemplateCharset, &IMirt::put_TemplateCharset>(L"TemplateCharset"),
    property<&IMirt::get_DefaultTemplate, &IMirt::put_DefaultTemplate>(L"DefaultTemplate"),
    property<&IMirt::get_TemplatePermissionPath, &IMirt::put_TemplatePermissionPath>(L"TemplatePermissionPath"),
    property<&IMirt::get_CommandName, &IMirt::put_CommandName>(L"CommandName"),
    object_property<&IMirt::get_Output, &IMirt::putref_Output>(L"Output"),
    {.name = L"View", .get = read_view, .put = write_view, .putref = write_view},
    {.name = L"SetView", .method = write_view},
    property<&IMirt::get_Include>(L"Include"),
    property<&IMirt::get_Request>(L"Request"),
    property<&IMirt::get_Name, &IMirt::put_Name>(L"Name"),
    property<&IMirt::get_Backable, &IMirt::put_Backable>(L"Backable"),
    property<&IMirt::get_NullIsEmpty, &IMirt::put_NullIsEmpty>(L"NullIsEmpty"),
    property<&IMirt::get_SubmitDecodeOnPutInto, &IMirt::put_SubmitDecodeOnPutInto>(L"SubmitDecodeOnPutInto"),
    property<&IMirt::get_CacheTemplate, &IMirt::put_CacheTemplate>(L"CacheTemplate"),
    property<&IMirt::get_SelfEncode, &IMirt::put_SelfEncode>(L"SelfEncode"),
    method<&IMirt::AddScript>(L"AddScript"),
    method<&IMirt::PutIntoBag>(L"PutIntoBag"),
    method<&IMirt::PutIntoView>(L"PutIntoView"),
    method<&IMirt::PutIntoProp>(L"PutIntoProp"),
    method<&IMirt::Write>(L"Write"),
    method<&IMirt::Abandon>(L"Abandon"),
    method<&IMirt::AddLog>(L"AddLog"),
    {.name = L"FireEvent", .method = fire_event},
    method<&IMirt::AddMessage>(L"AddMessage"),
    {.name = L"MessageExists", .method = message_exists},
    method<&IMirt::ProcessTemplate>(L"ProcessTemplate"),
    method<&IMirt::Process>(L"Process"),
    method<&IMirt::ToArray>(L"ToArray"),
    method<&IMirt::ToCommand>(L"ToCommand"),
    method<&IMirt::ToParameter>(L"ToParameter"),
    method<&IMirt::Redirect>(L"Redirect"),
    method<&IMirt::DrawTemplate>(L"DrawTemplate"),
    method<&IMirt::NewADOCommand>(L"NewADOCommand"),
    method<&IMirt::NewTemplator>(L"NewTemplator"),
    method<&IMirt::NewMail>(L"NewMail"),
};
static_assert(std::size(kMembers) == kFirstUtilityMember, "the utility members' identifiers follow");

}  // namespace

MEMBERID MirtTypeInfo::find_member(const wchar_t* name) const {
  const DISPID own = find_name(kMembers, kFirst, name);
  return own == DISPID_UNKNOWN ? find_name(kUtilityMembers<IMirt>, kFirstUtilityMember, name) : own;
}

HRESULT MirtTypeInfo::Invoke(void* instance, MEMBERID id, WORD flags, DISPPARAMS* params, VARIANT* result, EXCEPINFO*,
                             UINT* argerr) {
  auto* page = static_cast<IMirt*>(instance);
  if (id >= kFirstUtilityMember) return invoke_utility_like(page, id, flags, params, result, argerr);
  return invoke_in(kMembers, kFirst, page, id, flags, params, result, argerr);
}
