#include "frame/globals.h"

#include <mirt/mirt.h>
#include <zelto/asp.h>

#include "frame/member_tables.h"

const CLSID CLSID_Mirt = korlib::guid("717FA104-3BC5-4B9E-8112-106B75FD22C4");
const CLSID CLSID_TextTemplator = korlib::guid("6F026685-9E59-4111-9964-05B121FFD6EB");
const CLSID CLSID_Utility = korlib::guid("97F90828-1121-4EF7-98B3-75F95DABFDEB");

const IID IID_IMirt = korlib::iid_of<IMirt>;
const IID IID_IMirtedTemplator = korlib::iid_of<IMirtedTemplator>;
const IID IID_IFormFile = korlib::iid_of<IFormFile>;
const IID IID_ITextTemplator = korlib::iid_of<ITextTemplator>;
const IID IID_IUtility = korlib::iid_of<IUtility>;

HMODULE g_hDLL = nullptr;
wchar_t g_aDLLPath[MAX_PATH] = {};
long g_nRefCount = 0;

ITypeInfo* g_pTI_IMirt = nullptr;
ITypeInfo* g_pTI_IMirtedTemplator = nullptr;
ITypeInfo* g_pTI_IFormFile = nullptr;
ITypeInfo* g_pTI_ITextTemplator = nullptr;
ITypeInfo* g_pTI_IUtility = nullptr;
ITypeInfo* g_pTI_IStringList = nullptr;
ITypeInfo* g_pTI_IRequestDictionary = nullptr;

namespace {

using ZeltoTypeLibrary::IRequestDictionary;
using ZeltoTypeLibrary::IStringList;

constinit PassiveTypeInfo passive_type_info;

constexpr bool kOwn = false;
constexpr bool kHost = true;

constexpr mirt::TypeInfoSlot kSlots[] = {
    {&g_pTI_IMirt, &mirt::mirt_type_info, &korlib::iid_of<IMirt>, kOwn},
    {&g_pTI_IMirtedTemplator, &mirt::mirted_templator_type_info, &korlib::iid_of<IMirtedTemplator>, kOwn},
    {&g_pTI_IFormFile, &mirt::form_file_type_info, &korlib::iid_of<IFormFile>, kOwn},
    {&g_pTI_ITextTemplator, &mirt::text_templator_type_info, &korlib::iid_of<ITextTemplator>, kOwn},
    {&g_pTI_IUtility, &mirt::utility_type_info, &korlib::iid_of<IUtility>, kOwn},
    {&g_pTI_IStringList, &passive_type_info, &korlib::iid_of<IStringList>, kHost},
    {&g_pTI_IRequestDictionary, &passive_type_info, &korlib::iid_of<IRequestDictionary>, kHost},
};

void assign(ITypeInfo*& slot, ITypeInfo* info) {
  if (info) info->AddRef();
  if (slot) slot->Release();
  slot = info;
}

}  // namespace

std::span<const mirt::TypeInfoSlot> mirt::type_info_slots() { return kSlots; }

// 101 is the first priority that is open to a module: before every static object, and after them all.
__attribute__((constructor(101))) void mirt_init_dispatch_typeinfo() {
  for (const mirt::TypeInfoSlot& row : kSlots) assign(*row.slot, row.own);
}

__attribute__((destructor(101))) void mirt_free_dispatch_typeinfo() {
  for (const mirt::TypeInfoSlot& row : kSlots) assign(*row.slot, nullptr);
}
