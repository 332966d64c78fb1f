#include "platform/collection_type_info.h"

#include <korlib_host/class_type_info.h>
#include <zelto/asp.h>

namespace zelto {

ITypeInfo* string_list_type_info() {
  static korlib::ClassTypeInfo info(L"StringList", kStringListMembers<ZeltoTypeLibrary::IStringList>);
  return &info;
}

ITypeInfo* request_dictionary_type_info() {
  static korlib::ClassTypeInfo info(L"RequestDictionary",
                                    kRequestDictionaryMembers<ZeltoTypeLibrary::IRequestDictionary>);
  return &info;
}

}  // namespace zelto
