// GIMirtImpl: the page controller.
//
// The members of its interface are documented in mirt/mirt.h. This class is their shell: the state and the work lie in
// the parts that it is made of, each with a header of its own. The bodies of the steps of a page are in mirt_steps.cpp,
// those of marks in mirt_marks.cpp.
//
// A script function that is called from here may call back into any member, change any property, run Process again, or
// release the last reference to the controller. Members therefore hold a reference to the controller, and to whatever
// they use, during the call, and read properties again after it.
#pragma once

#include <memory>

#include "frame/class_factory.h"
#include "frame/intrinsics.h"
#include "page/binding.h"
#include "page/dictionaries.h"
#include "page/draw_events.h"
#include "page/lifecycle.h"
#include "page/memory.h"
#include "page/request_fields.h"
#include "page/templates.h"
#include "templator/templator_concept.h"
#include "utility/utility_impl.h"

struct MainLink;

template <class Interface>
class GIMirtImpl;

// The only one there is; written as a specialisation so that its members are ordinary functions.
template <>
class GIMirtImpl<IMirt> : public GIUtilityImpl<IMirt>, private CMirtConcept, private CTemplatorConcept {
 public:
  GIMirtImpl();

  // Binds the controller to a request: its objects, and the Response as output. The class object calls
  // it on activation.
  HRESULT InContext(IGetContextProperties* context);

  STDMETHODIMP get_Bag(IDispatch** bag) override;
  STDMETHODIMP putref_Script(IDispatch* script) override;
  STDMETHODIMP get_Script(IDispatch** script) override;
  STDMETHODIMP put_Command(BSTR value) override;
  STDMETHODIMP get_Command(BSTR* value) override;
  STDMETHODIMP put_Template(BSTR value) override;
  STDMETHODIMP get_Template(BSTR* value) override;
  STDMETHODIMP put_TemplateFolder(BSTR value) override;
  STDMETHODIMP get_TemplateFolder(BSTR* value) override;
  STDMETHODIMP put_TemplateExt(BSTR value) override;
  STDMETHODIMP get_TemplateExt(BSTR* value) override;
  STDMETHODIMP put_TemplateCharset(BSTR value) override;
  STDMETHODIMP get_TemplateCharset(BSTR* value) override;
  STDMETHODIMP put_DefaultTemplate(BSTR value) override;
  STDMETHODIMP get_DefaultTemplate(BSTR* value) override;
  STDMETHODIMP put_TemplatePermissionPath(BSTR value) override;
  STDMETHODIMP get_TemplatePermissionPath(BSTR* value) override;
  STDMETHODIMP put_CommandName(BSTR value) override;
  STDMETHODIMP get_CommandName(BSTR* value) override;
  STDMETHODIMP putref_Output(IUnknown* sink) override;
  STDMETHODIMP get_Output(IUnknown** sink) override;
  STDMETHODIMP get_View(IDispatch** view) override;
  STDMETHODIMP get_Include(IDispatch** include) override;
  STDMETHODIMP get_Request(IDispatch** request) override;
  STDMETHODIMP put_Name(BSTR value) override;
  STDMETHODIMP get_Name(BSTR* value) override;
  STDMETHODIMP put_Backable(VARIANT_BOOL value) override;
  STDMETHODIMP get_Backable(VARIANT_BOOL* value) override;
  STDMETHODIMP put_NullIsEmpty(VARIANT_BOOL value) override;
  STDMETHODIMP get_NullIsEmpty(VARIANT_BOOL* value) override;
  STDMETHODIMP put_SubmitDecodeOnPutInto(VARIANT_BOOL value) override;
  STDMETHODIMP get_SubmitDecodeOnPutInto(VARIANT_BOOL* value) override;
  STDMETHODIMP put_CacheTemplate(VARIANT_BOOL value) override;
  STDMETHODIMP get_CacheTemplate(VARIANT_BOOL* value) override;
  STDMETHODIMP put_SelfEncode(VARIANT_BOOL value) override;
  STDMETHODIMP get_SelfEncode(VARIANT_BOOL* value) override;
  STDMETHODIMP AddScript(IDispatch* script) override;
  STDMETHODIMP PutIntoBag(BSTR name, VARIANT_BOOL as_array) override;
  STDMETHODIMP PutIntoView(BSTR name, VARIANT_BOOL as_array) override;
  STDMETHODIMP PutIntoProp(BSTR name, VARIANT_BOOL as_array) override;
  STDMETHODIMP Write(BSTR text, VARIANT_BOOL encode) override;
  STDMETHODIMP Abandon() override;
  STDMETHODIMP AddLog(BSTR first, BSTR second) override;
  STDMETHODIMP FireEvent(BSTR name, VARIANT* argument, VARIANT* result, VARIANT_BOOL* exists) override;
  STDMETHODIMP AddMessage(VARIANT* message, BSTR key) override;
  STDMETHODIMP MessageExists(VARIANT* key, VARIANT_BOOL* exists) override;
  STDMETHODIMP ProcessTemplate(BSTR text) override;
  STDMETHODIMP Process() override;
  STDMETHODIMP ToArray(IDispatch* collection, SAFEARRAY** array) override;
  STDMETHODIMP ToCommand(BSTR command, BSTR* link) override;
  STDMETHODIMP ToParameter(BSTR name, BSTR value, BSTR* parameter) override;
  STDMETHODIMP Redirect(BSTR url) override;
  STDMETHODIMP DrawTemplate(BSTR name) override;
  STDMETHODIMP NewADOCommand(VARIANT* connection, BSTR text, LONG type, IDispatch** command) override;
  STDMETHODIMP NewTemplator(BSTR prefix, IMirtedTemplator** templator) override;
  STDMETHODIMP NewMail(BSTR server, LONG port, IDispatch** mail) override;

 protected:
  ~GIMirtImpl();

  virtual HRESULT On_StartMirtSession(bool& go_on);
  virtual HRESULT On_EndMirtSession(bool& go_on);
  HRESULT On_StartProcess(bool& go_on) override;
  HRESULT On_EndProcess(bool& go_on) override;
  HRESULT On_StartDraw(bool& go_on) override;
  HRESULT On_StartCommand(bool& go_on) override;
  HRESULT On_EndCommand(bool& go_on) override;
  HRESULT Command(bool& handled) override;
  HRESULT Draw(bool& handled) override;
  HRESULT OnMarked(CMarkData& mark) override;
  // Copies one request field, or all when `name` is empty, into `target`; into the script's variables
  // when that is null.
  virtual HRESULT PutInto(IKorLibDictionary* target, BSTR name, VARIANT_BOOL as_array);

 private:
  class Values;  // what its marks show

  HRESULT InitMultipartForm() { return fields_.read_upload(); }
  HRESULT read_command();
  // Asks the script, where a template file cannot be read, for another template.
  HRESULT draw_instead(bool& is_drawn);
  HRESULT dispatch_mark(const CMarkData& mark);
  HRESULT OnMarked_Event(const CMarkData& mark, const MarkName& name);
  HRESULT OnMarked_Command(const MarkName& name, VARIANT_BOOL encode);
  HRESULT OnMarked_ChildDynamic(const MarkName& name);

  mirt::Intrinsics asp_;  // ahead of the parts that use it
  page::Dictionaries dictionaries_;
  page::RequestFields fields_;
  page::Memory memory_;
  bool null_is_empty_ = false;
  page::Binding binding_;
  bool self_encode_ = false;
  page::Templates templates_;
  page::NestedTexts texts_;
  page::Messages messages_;
  page::InputDrawers inputs_;
  page::DrawEvents draw_events_;
  std::shared_ptr<MainLink> child_link_;  // of the templators made; null before the first
};

// The class object of "Mirt".
using CMirt = GDualImplForPool<IMirt, GIMirtImpl<IMirt>, &g_pTI_IMirt, &g_nRefCount>;
template <>
IObjectPool* CMirt::s_pPool;

extern KORLIB_API GClassFactoryPooledInContext<CMirt, &g_nRefCount> g_oCF_Mirt;
