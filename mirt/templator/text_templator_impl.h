// GITextTemplatorImpl: the stand-alone text templator, "Mirt.TextTemplator".
//
// A mark names a variable or a function of the scripts, or a key of their default members. A mark that
// begins with a blank or a line end is a comment.
#pragma once

#include <mirt/mirt.h>

#include "frame/class_factory.h"
#include "templator/templator_base.h"

template <class Interface>
class GITextTemplatorImpl;

// The only one there is; written as a specialisation so that its members are ordinary functions.
template <>
class GITextTemplatorImpl<ITextTemplator> : public GTemplatorImpl<ITextTemplator> {
 public:
  GITextTemplatorImpl();

  STDMETHODIMP Write(BSTR text) override;

 protected:
  ~GITextTemplatorImpl() = default;

  STDMETHODIMP OnMarked(CMarkData& mark) override;

 private:
  HRESULT OnMarked_(const CMarkData& mark);
};

// The class object of "Mirt.TextTemplator".
using CTextTemplator =
    GDualImplForPool<ITextTemplator, GITextTemplatorImpl<ITextTemplator>, &g_pTI_ITextTemplator, &g_nRefCount>;
template <>
IObjectPool* CTextTemplator::s_pPool;

extern KORLIB_API GClassFactoryPooled<CTextTemplator, &g_nRefCount> g_oCF_TextTemplator;
