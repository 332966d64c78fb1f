// One row per dispatch identifier, in the order of the identifiers. A row's typed member says how a call's
// arguments are converted (member_call.h); View, SetView, FireEvent and MessageExists are served by hand.
#include "frame/member_tables.h"

#include <iterator>

#include <korlib/comvariant.h>
#include <korlib/dictionary.h>
#include <mirt/mirt.h>

#include "frame/member_call.h"

namespace {

using namespace mirt::dispatch;

IMirt* page_of(void* instance) { return static_cast<IMirt*>(instance); }

// The view as a dictionary. Outside Process there is none.
HRESULT view_of(IMirt* page, CComPtr<IKorLibDictionary>* view) {
  CComPtr<IDispatch> spView;
  if (FAILED(page->get_View(spView.put())) || FAILED(spView.query(view->put())) || !*view) return E_NOINTERFACE;
  return S_OK;
}

// View, or with a key the view's item of that key.
HRESULT read_view(void* instance, DISPPARAMS* params, VARIANT* result, UINT* argerr) {
  const VARIANT* key = disp_arg(params, 0);
  if (!key) return call<IMirt, &IMirt::get_View>(instance, params, result, argerr);
  CComPtr<IKorLibDictionary> spView;
  RETURN_IF_FAILED(view_of(page_of(instance), &spView));
  CComVariant item;
  RETURN_IF_FAILED(spView->get_Item(*key, &item));
  return set_variant_result(result, item);
}

// SetView(key, value), which is also what a write to View(key) does.
HRESULT write_view(void* instance, DISPPARAMS* params, VARIANT*, UINT*) {
  const VARIANT* key = disp_arg(params, 0);
  const VARIANT* value = disp_arg(params, 1);
  if (!key || !value) return DISP_E_BADPARAMCOUNT;
  CComPtr<IKorLibDictionary> spView;
  RETURN_IF_FAILED(view_of(page_of(instance), &spView));
  const bool is_object = value->vt == VT_DISPATCH || value->vt == VT_UNKNOWN;
  return is_object ? spView->putref_Item(*key, *value) : spView->put_Item(*key, *value);
}

// The third argument goes in and comes out, when it is a reference. One by value belongs to the caller,
// who sees no change: the member works on a copy.
HRESULT fire_event(void* instance, DISPPARAMS* params, VARIANT* result, UINT* argerr) {
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
  const HRESULT hr = page_of(instance)->FireEvent(name.value, argument, outcome, &exists);
  RETURN_IF_FAILED(hr);
  set_bool_result(result, exists);
  return hr;
}

// Without a key it asks for any message: the member then sees what stands for an omitted argument.
HRESULT message_exists(void* instance, DISPPARAMS* params, VARIANT* result, UINT* argerr) {
  if (disp_arg(params, 0)) return call<IMirt, &IMirt::MessageExists>(instance, params, result, argerr);
  VARIANT omitted = korlib::omitted();
  DISPPARAMS with_it{&omitted, nullptr, 1, 0};
  return call<IMirt, &IMirt::MessageExists>(instance, &with_it, result, argerr);
}

template <class Interface, auto M>
constexpr Member method(const wchar_t* name) {
  return {.name = name, .method = &call<Interface, M>, .takes = inputs_of(M)};
}
template <class Interface, auto Get>
constexpr Member property(const wchar_t* name) {
  return {.name = name, .get = &call<Interface, Get>};
}
template <class Interface, auto Get, auto Put>
constexpr Member property(const wchar_t* name) {
  return {.name = name, .get = &call<Interface, Get>, .put = &call<Interface, Put>};
}
template <class Interface, auto Get, auto PutRef>
constexpr Member object_property(const wchar_t* name) {
  return {.name = name, .get = &call<Interface, Get>, .putref = &call<Interface, PutRef>};
}

constexpr Member kPage[] = {
    property<IMirt, &IMirt::get_Bag>(L"Bag"),
    object_property<IMirt, &IMirt::get_Script, &IMirt::putref_Script>(L"Script"),
    property<IMirt, &IMirt::get_Command, &IMirt::put_Command>(L"Command"),
    property<IMirt, &IMirt::get_Template, &IMirt::put_Template>(L"Template"),
    property<IMirt, &IMirt::get_TemplateFolder, &IMirt::put_TemplateFolder>(L"TemplateFolder"),
    property<IMirt, &IMirt::get_TemplateExt, &IMirt::put_TemplateExt>(L"TemplateExt"),
    property<IMirt, &IMirt::get_TemplateCharset, &IMirt::put_TemplateCharset>(L"TemplateCharset"),
    property<IMirt, &IMirt::get_DefaultTemplate, &IMirt::put_DefaultTemplate>(L"DefaultTemplate"),
    property<IMirt, &IMirt::get_TemplatePermissionPath, &IMirt::put_TemplatePermissionPath>(L"TemplatePermissionPath"),
    property<IMirt, &IMirt::get_CommandName, &IMirt::put_CommandName>(L"CommandName"),
    object_property<IMirt, &IMirt::get_Output, &IMirt::putref_Output>(L"Output"),
    {.name = L"View", .get = read_view, .put = write_view, .putref = write_view},
    {.name = L"SetView", .method = write_view, .takes = 2},
    property<IMirt, &IMirt::get_Include>(L"Include"),
    property<IMirt, &IMirt::get_Request>(L"Request"),
    property<IMirt, &IMirt::get_Name, &IMirt::put_Name>(L"Name"),
    property<IMirt, &IMirt::get_Backable, &IMirt::put_Backable>(L"Backable"),
    property<IMirt, &IMirt::get_NullIsEmpty, &IMirt::put_NullIsEmpty>(L"NullIsEmpty"),
    property<IMirt, &IMirt::get_SubmitDecodeOnPutInto, &IMirt::put_SubmitDecodeOnPutInto>(L"SubmitDecodeOnPutInto"),
    property<IMirt, &IMirt::get_CacheTemplate, &IMirt::put_CacheTemplate>(L"CacheTemplate"),
    property<IMirt, &IMirt::get_SelfEncode, &IMirt::put_SelfEncode>(L"SelfEncode"),
    method<IMirt, &IMirt::AddScript>(L"AddScript"),
    method<IMirt, &IMirt::PutIntoBag>(L"PutIntoBag"),
    method<IMirt, &IMirt::PutIntoView>(L"PutIntoView"),
    method<IMirt, &IMirt::PutIntoProp>(L"PutIntoProp"),
    method<IMirt, &IMirt::Write>(L"Write"),
    method<IMirt, &IMirt::Abandon>(L"Abandon"),
    method<IMirt, &IMirt::AddLog>(L"AddLog"),
    {.name = L"FireEvent", .method = fire_event, .takes = 3},
    method<IMirt, &IMirt::AddMessage>(L"AddMessage"),
    {.name = L"MessageExists", .method = message_exists},
    method<IMirt, &IMirt::ProcessTemplate>(L"ProcessTemplate"),
    method<IMirt, &IMirt::Process>(L"Process"),
    method<IMirt, &IMirt::ToArray>(L"ToArray"),
    method<IMirt, &IMirt::ToCommand>(L"ToCommand"),
    method<IMirt, &IMirt::ToParameter>(L"ToParameter"),
    method<IMirt, &IMirt::Redirect>(L"Redirect"),
    method<IMirt, &IMirt::DrawTemplate>(L"DrawTemplate"),
    method<IMirt, &IMirt::NewADOCommand>(L"NewADOCommand"),
    method<IMirt, &IMirt::NewTemplator>(L"NewTemplator"),
    method<IMirt, &IMirt::NewMail>(L"NewMail"),
};

// The same for the utility object and for the page controller, after whose own members they stand.
template <class I>
constexpr Member kUtility[] = {
    method<I, &I::MakeKey>(L"MakeKey"),
    method<I, &I::MakeGUID>(L"MakeGUID"),
    method<I, &I::Sleep>(L"Sleep"),
    method<I, &I::MD5>(L"MD5"),
    method<I, &I::SHA1>(L"SHA1"),
    method<I, &I::FindString>(L"FindString"),
    method<I, &I::HanToZen>(L"HanToZen"),
    method<I, &I::ZenToHan>(L"ZenToHan"),
    method<I, &I::SubmitDecode>(L"SubmitDecode"),
    method<I, &I::Trim>(L"Trim"),
    method<I, &I::HTMLEncode>(L"HTMLEncode"),
    method<I, &I::Base64Encode>(L"Base64Encode"),
    method<I, &I::URLEncode>(L"URLEncode"),
    method<I, &I::Base64Decode>(L"Base64Decode"),
    method<I, &I::URLDecode>(L"URLDecode"),
};

constexpr Member kTextTemplator[] = {
    object_property<ITextTemplator, &ITextTemplator::get_Script, &ITextTemplator::putref_Script>(L"Script"),
    object_property<ITextTemplator, &ITextTemplator::get_Stream, &ITextTemplator::putref_Stream>(L"Stream"),
    method<ITextTemplator, &ITextTemplator::ProcessTemplateFile>(L"ProcessTemplateFile"),
    method<ITextTemplator, &ITextTemplator::ProcessTemplate>(L"ProcessTemplate"),
    method<ITextTemplator, &ITextTemplator::Write>(L"Write"),
    method<ITextTemplator, &ITextTemplator::Flush>(L"Flush"),
};

constexpr Member kMirtedTemplator[] = {
    object_property<IMirtedTemplator, &IMirtedTemplator::get_Script, &IMirtedTemplator::putref_Script>(L"Script"),
    property<IMirtedTemplator, &IMirtedTemplator::get_Main>(L"Main"),
    object_property<IMirtedTemplator, &IMirtedTemplator::get_Stream, &IMirtedTemplator::putref_Stream>(L"Stream"),
    method<IMirtedTemplator, &IMirtedTemplator::ProcessTemplateFile>(L"ProcessTemplateFile"),
    method<IMirtedTemplator, &IMirtedTemplator::ProcessTemplate>(L"ProcessTemplate"),
    method<IMirtedTemplator, &IMirtedTemplator::Write>(L"Write"),
    method<IMirtedTemplator, &IMirtedTemplator::Flush>(L"Flush"),
};

constexpr Member kFormFile[] = {
    property<IFormFile, &IFormFile::get_FileName>(L"FileName"),
    property<IFormFile, &IFormFile::get_FileName2>(L"FileName2"),
    property<IFormFile, &IFormFile::get_ContentType>(L"ContentType"),
    property<IFormFile, &IFormFile::get_Stream>(L"Stream"),
};

constexpr DISPID kFirstUtility = 41;
static_assert(std::size(kPage) == kFirstUtility, "the utility members' identifiers follow");

constexpr MemberTable kPageTables[] = {{0, kPage}, {kFirstUtility, kUtility<IMirt>}};
constexpr MemberTable kUtilityTables[] = {{kFirstUtility, kUtility<IUtility>}};
constexpr MemberTable kTextTemplatorTables[] = {{1, kTextTemplator}};
constexpr MemberTable kMirtedTemplatorTables[] = {{1, kMirtedTemplator}};
constexpr MemberTable kFormFileTables[] = {{1, kFormFile}};

}  // namespace

constinit MemberTypeInfo mirt::mirt_type_info(kPageTables);
constinit MemberTypeInfo mirt::mirted_templator_type_info(kMirtedTemplatorTables);
constinit MemberTypeInfo mirt::form_file_type_info(kFormFileTables);
constinit MemberTypeInfo mirt::text_templator_type_info(kTextTemplatorTables);
constinit MemberTypeInfo mirt::utility_type_info(kUtilityTables);
