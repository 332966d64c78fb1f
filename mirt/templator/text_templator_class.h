// The class object of "Mirt.TextTemplator".
#pragma once

#include "frame/class_factory.h"
#include "templator/text_templator_impl.h"

using CTextTemplator =
    GDualImplForPool<ITextTemplator, GITextTemplatorImpl<ITextTemplator>, &g_pTI_ITextTemplator, &g_nRefCount>;
template <>
IObjectPool* CTextTemplator::s_pPool;

extern KORLIB_API GClassFactoryPooled<CTextTemplator, &g_nRefCount> g_oCF_TextTemplator;
