// What happens before the module's first static object is built and after its last one has gone.
#include "frame/globals.h"
#include "frame/static_type_info.h"

namespace {

constinit MirtTypeInfo mirt_type_info;
constinit MirtedTemplatorTypeInfo mirted_templator_type_info;
constinit FormFileTypeInfo form_file_type_info;
constinit TextTemplatorTypeInfo text_templator_type_info;
constinit UtilityTypeInfo utility_type_info;
constinit PassiveTypeInfo passive_type_info;

void assign(ITypeInfo*& slot, ITypeInfo* info) {
  if (info) info->AddRef();
  if (slot) slot->Release();
  slot = info;
}

}  // namespace

// 101 is the first priority that is open to a module: before every static object, and after them all.
__attribute__((constructor(101))) void mirt_init_dispatch_typeinfo() {
  assign(g_pTI_IMirt, &mirt_type_info);
  assign(g_pTI_IMirtedTemplator, &mirted_templator_type_info);
  assign(g_pTI_IFormFile, &form_file_type_info);
  assign(g_pTI_ITextTemplator, &text_templator_type_info);
  assign(g_pTI_IUtility, &utility_type_info);
  assign(g_pTI_IStringList, &passive_type_info);
  assign(g_pTI_IRequestDictionary, &passive_type_info);
}

__attribute__((destructor(101))) void mirt_free_dispatch_typeinfo() {
  assign(g_pTI_IMirt, nullptr);
  assign(g_pTI_IMirtedTemplator, nullptr);
  assign(g_pTI_IFormFile, nullptr);
  assign(g_pTI_ITextTemplator, nullptr);
  assign(g_pTI_IUtility, nullptr);
  assign(g_pTI_IStringList, nullptr);
  assign(g_pTI_IRequestDictionary, nullptr);
}
