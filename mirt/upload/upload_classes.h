// The class objects of the three kinds of object that an upload consists of. Only the intake uses them.
#pragma once

#include "frame/class_factory.h"
#include "upload/form_file.h"
#include "upload/multipart_form.h"

using CFormFile = GDualImplForPool<IFormFile, GIFormFileImpl<IFormFile>, &g_pTI_IFormFile, &g_nRefCount>;
template <>
IObjectPool* CFormFile::s_pPool;

using CMultipartFormStringList =
    GDualImplForPool<ZeltoTypeLibrary::IStringList, GMultipartFormStringList, &g_pTI_IStringList, &g_nRefCount>;
template <>
IObjectPool* CMultipartFormStringList::s_pPool;

using CMultipartForm =
    GDualImplForPool<ZeltoTypeLibrary::IRequestDictionary, GMultipartForm, &g_pTI_IRequestDictionary, &g_nRefCount>;
template <>
IObjectPool* CMultipartForm::s_pPool;

extern KORLIB_API GClassFactoryPooled<CFormFile, &g_nRefCount> g_oCF_FormFile;
extern KORLIB_API GClassFactoryPooled<CMultipartFormStringList, &g_nRefCount> g_oCF_MultipartFormStringList;
extern KORLIB_API GClassFactoryPooled<CMultipartForm, &g_nRefCount> g_oCF_MultipartForm;
