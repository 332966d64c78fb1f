// The class object of the child templator, which only a page controller uses.
#pragma once

#include "frame/class_factory.h"
#include "templator/mirted_templator_impl.h"

using CMirtedTemplator =
    GDualImplForPool<IMirtedTemplator, GIMirtedTemplatorImpl<IMirtedTemplator>, &g_pTI_IMirtedTemplator, &g_nRefCount>;
template <>
IObjectPool* CMirtedTemplator::s_pPool;

extern KORLIB_API GClassFactoryPooledInContext<CMirtedTemplator, &g_nRefCount> g_oCF_MirtedTemplator;
