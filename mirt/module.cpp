// The root of the module: its process-wide objects, in the order in which they are built, and the
// classes that a host can ask for. The only file that knows every room.
//
// To add a class object, say of CThing:
//   1. its room's header names the object type, declares the pool and the class object
//      (utility/utility_impl.h shows how, at its end);
//   2. here, define the class object at its place in the order below, and its s_pPool;
//   3. if scripts can create it, add a row to class_table() and to the registration table
//      (frame/registration.cpp).
//
// The order of construction, which is the reverse of that of destruction:
//   g_oTemplateCache, g_oMirtSessionNull, g_oCF_Mirt, g_oCF_MirtedTemplator, g_oCF_FormFile,
//   g_oCF_MultipartFormStringList, g_oCF_MultipartForm, g_oCF_TextTemplator, g_oCF_Utility.
// The type information pointers are set before all of them (frame/globals.cpp).
#include <mirt/mirt.h>

#include "frame/entry_points.h"
#include "page/mirt_impl.h"
#include "page/mirt_session.h"
#include "templator/mirted_templator_impl.h"
#include "templator/template_cache.h"
#include "templator/text_templator_impl.h"
#include "upload/upload_classes.h"
#include "utility/utility_impl.h"

CTemplateCache g_oTemplateCache;

CMirtSessionNull g_oMirtSessionNull;

GClassFactoryPooledInContext<CMirt, &g_nRefCount> g_oCF_Mirt;
GClassFactoryPooledInContext<CMirtedTemplator, &g_nRefCount> g_oCF_MirtedTemplator;
GClassFactoryPooled<CFormFile, &g_nRefCount> g_oCF_FormFile;
GClassFactoryPooled<CMultipartFormStringList, &g_nRefCount> g_oCF_MultipartFormStringList;
GClassFactoryPooled<CMultipartForm, &g_nRefCount> g_oCF_MultipartForm;
GClassFactoryPooled<CTextTemplator, &g_nRefCount> g_oCF_TextTemplator;
GClassFactoryPooled<CUtility, &g_nRefCount> g_oCF_Utility;

// Where each kind of object leaves its memory.
template <>
constinit IObjectPool* CMirt::s_pPool = &g_oCF_Mirt;
template <>
constinit IObjectPool* CMirtedTemplator::s_pPool = &g_oCF_MirtedTemplator;
template <>
constinit IObjectPool* CFormFile::s_pPool = &g_oCF_FormFile;
template <>
constinit IObjectPool* CMultipartFormStringList::s_pPool = &g_oCF_MultipartFormStringList;
template <>
constinit IObjectPool* CMultipartForm::s_pPool = &g_oCF_MultipartForm;
template <>
constinit IObjectPool* CTextTemplator::s_pPool = &g_oCF_TextTemplator;
template <>
constinit IObjectPool* CUtility::s_pPool = &g_oCF_Utility;

std::span<const ClassEntry> class_table() {
  static constexpr ClassEntry kClasses[] = {
      {&CLSID_Mirt, L"Mirt", &g_oCF_Mirt},
      {&CLSID_TextTemplator, L"TextTemplator", &g_oCF_TextTemplator},
      {&CLSID_Utility, L"Utility", &g_oCF_Utility},
  };
  return kClasses;
}
