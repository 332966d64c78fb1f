// The member tables of the utility object, both templators and the uploaded file. The page controller's
// is in mirt_table.cpp.
#include <mirt/mirt.h>

#include "frame/static_type_info.h"
#include "frame/utility_table.h"

namespace {

using namespace mirt::dispatch;

constexpr DISPID kFirst = 1;

constexpr Member<ITextTemplator> kTextTemplator[] = {
    object_property<ITextTemplator, &ITextTemplator::get_Script, &ITextTemplator::putref_Script>(L"Script"),
    object_property<ITextTemplator, &ITextTemplator::get_Stream, &ITextTemplator::putref_Stream>(L"Stream"),
    method<ITextTemplator, &ITextTemplator::ProcessTemplateFile>(L"ProcessTemplateFile"),
    method<ITextTemplator, &ITextTemplator::ProcessTemplate>(L"ProcessTemplate"),
    method<ITextTemplator, &ITextTemplator::Write>(L"Write"),
    method<ITextTemplator, &ITextTemplator::Flush>(L"Flush"),
};

constexpr Member<IMirtedTemplator> kMirtedTemplator[] = {
    object_property<IMirtedTemplator, &IMirtedTemplator::get_Script, &IMirtedTemplator::putref_Script>(L"Script"),
    property<IMirtedTemplator, &IMirtedTemplator::get_Main>(L"Main"),
    object_property<IMirtedTemplator, &IMirtedTemplator::get_Stream, &IMirtedTemplator::putref_Stream>(L"Stream"),
    method<IMirtedTemplator, &IMirtedTemplator::ProcessTemplateFile>(L"ProcessTemplateFile"),
    method<IMirtedTemplator, &IMirtedTemplator::ProcessTemplate>(L"ProcessTemplate"),
    method<IMirtedTemplator, &IMirtedTemplator::Write>(L"Write"),
    method<IMirtedTemplator, &IMirtedTemplator::Flush>(L"Flush"),
};

constexpr Member<IFormFile> kFormFile[] = {
    property<IFormFile, &IFormFile::get_FileName>(L"FileName"),
    property<IFormFile, &IFormFile::get_FileName2>(L"FileName2"),
    property<IFormFile, &IFormFile::get_ContentType>(L"ContentType"),
    property<IFormFile, &IFormFile::get_Stream>(L"Stream"),
};

}  // namespace

MEMBERID TextTemplatorTypeInfo::find_member(const wchar_t* name) const {
  return find_name(kTextTemplator, kFirst, name);
}
HRESULT TextTemplatorTypeInfo::Invoke(void* instance, MEMBERID id, WORD flags, DISPPARAMS* params, VARIANT* result,
                                      EXCEPINFO*, UINT* argerr) {
  return invoke_in(kTextTemplator, kFirst, static_cast<ITextTemplator*>(instance), id, flags, params, result, argerr);
}

MEMBERID MirtedTemplatorTypeInfo::find_member(const wchar_t* name) const {
  return find_name(kMirtedTemplator, kFirst, name);
}
HRESULT MirtedTemplatorTypeInfo::Invoke(void* instance, MEMBERID id, WORD flags, DISPPARAMS* params, VARIANT* result,
                                        EXCEPINFO*, UINT* argerr) {
  return invoke_in(kMirtedTemplator, kFirst, static_cast<IMirtedTemplator*>(instance), id, flags, params, result,
                   argerr);
}

MEMBERID FormFileTypeInfo::find_member(const wchar_t* name) const { return find_name(kFormFile, kFirst, name); }
HRESULT FormFileTypeInfo::Invoke(void* instance, MEMBERID id, WORD flags, DISPPARAMS* params, VARIANT* result,
                                 EXCEPINFO*, UINT* argerr) {
  return invoke_in(kFormFile, kFirst, static_cast<IFormFile*>(instance), id, flags, params, result, argerr);
}

MEMBERID UtilityTypeInfo::find_member(const wchar_t* name) const {
  return find_name(kUtilityMembers<IUtility>, kFirstUtilityMember, name);
}
HRESULT UtilityTypeInfo::Invoke(void* instance, MEMBERID id, WORD flags, DISPPARAMS* params, VARIANT* result,
                                EXCEPINFO*, UINT* argerr) {
  return invoke_utility_like(static_cast<IUtility*>(instance), id, flags, params, result, argerr);
}
