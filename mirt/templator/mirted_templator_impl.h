// GIMirtedTemplatorImpl: the child templator, which draws templates with the data of a page controller.
#pragma once

#include <memory>

#include <korlib/dictionary.h>
#include <mirt/mirt.h>

#include "frame/class_factory.h"
#include "frame/intrinsics.h"
#include "templator/templator_base.h"

// The page controller as its children know it. They do not keep it alive: it clears the link as it goes, and
// they go on without it.
struct MainLink {
  IMirt* page = nullptr;
  const bool* self_encode = nullptr;  // the controller's property, looked at for every encoded write
};

template <class Interface>
class GIMirtedTemplatorImpl;

// The only one there is; written as a specialisation so that its members are ordinary functions.
template <>
class GIMirtedTemplatorImpl<IMirtedTemplator> : public GTemplatorImpl<IMirtedTemplator> {
 public:
  GIMirtedTemplatorImpl();

  // Takes the objects of the request. The class object calls it on activation.
  HRESULT InContext(IGetContextProperties* context);

  // Makes this the child of a page controller. View and bag may be null; their marks then fail.
  HRESULT bind(BSTR event_prefix, std::shared_ptr<const MainLink> main, IKorLibDictionary* view,
               IKorLibDictionary* bag);

  STDMETHODIMP get_Main(IMirt** main) override;
  STDMETHODIMP Write(BSTR text, VARIANT_BOOL encode) override;

 protected:
  ~GIMirtedTemplatorImpl() = default;

  STDMETHODIMP OnMarked(CMarkData& mark) override;

 private:
  class Values;  // what its marks show

  HRESULT OnMarked_Process(const CMarkData& mark, const MarkName& name);
  HRESULT html_encode(BSTR text, BSTR* encoded);
  // Null when no page controller has made this, or the one that did has gone.
  IMirt* main() const { return main_ ? main_->page : nullptr; }

  std::shared_ptr<const MainLink> main_;
  CComBSTR event_prefix_;
  CComPtr<IKorLibDictionary> view_;
  CComPtr<IKorLibDictionary> bag_;
  mirt::Intrinsics asp_;
};

// The class object of the child templator, which only a page controller uses.
using CMirtedTemplator =
    GDualImplForPool<IMirtedTemplator, GIMirtedTemplatorImpl<IMirtedTemplator>, &g_pTI_IMirtedTemplator, &g_nRefCount>;
template <>
IObjectPool* CMirtedTemplator::s_pPool;

extern KORLIB_API GClassFactoryPooledInContext<CMirtedTemplator, &g_nRefCount> g_oCF_MirtedTemplator;
