// The class object of "Mirt".
#pragma once

#include "frame/class_factory.h"
#include "page/mirt_impl.h"

using CMirt = GDualImplForPool<IMirt, GIMirtImpl<IMirt>, &g_pTI_IMirt, &g_nRefCount>;
template <>
IObjectPool* CMirt::s_pPool;

extern KORLIB_API GClassFactoryPooledInContext<CMirt, &g_nRefCount> g_oCF_Mirt;
