// The class object of "Mirt.Utility".
#pragma once

#include "frame/class_factory.h"
#include "utility/utility_impl.h"

using CUtility = GDualImplForPool<IUtility, GIUtilityImpl<IUtility>, &g_pTI_IUtility, &g_nRefCount>;
template <>
IObjectPool* CUtility::s_pPool;

extern KORLIB_API GClassFactoryPooled<CUtility, &g_nRefCount> g_oCF_Utility;
