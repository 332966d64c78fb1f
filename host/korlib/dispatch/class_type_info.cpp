#include <korlib_host/class_type_info.h>

#include <korlib/ptr.h>
#include <korlib_host/results.h>

namespace korlib {

HRESULT ClassTypeInfo::QueryInterface(REFIID riid, void** ppv) {
  return query_list<ITypeInfo, IUnknown>(this, riid, ppv);
}

HRESULT ClassTypeInfo::GetIDsOfNames(LPOLESTR* names, UINT count, MEMBERID* ids) {
  return ids_of_names(members_, names, count, ids);
}

HRESULT ClassTypeInfo::Invoke(void* instance, MEMBERID id, WORD flags, DISPPARAMS* params, VARIANT* result,
                              EXCEPINFO* excepinfo, UINT* argerr) {
  return invoke_member(members_, instance, id, IID_NULL, LOCALE_SYSTEM_DEFAULT, flags, params, result, excepinfo,
                       argerr);
}

HRESULT ClassTypeInfo::GetDocumentation(MEMBERID id, BSTR* name, BSTR* doc, DWORD* help, BSTR* file) {
  if (name) *name = nullptr;
  if (doc) *doc = nullptr;
  if (help) *help = 0;
  if (file) *file = nullptr;
  if (!name) return S_OK;
  UINT count = 0;
  if (id != DISPID_UNKNOWN) return GetNames(id, name, 1, &count);
  return give(name_, name);
}

HRESULT ClassTypeInfo::GetNames(MEMBERID id, BSTR* names, UINT capacity, UINT* count) {
  if (!names || !count) return E_POINTER;
  *count = 0;
  if (capacity == 0) return S_OK;
  names[0] = nullptr;
  const Member* member = find_member(members_, id);
  if (!member) return TYPE_E_ELEMENTNOTFOUND;
  RETURN_IF_FAILED(give(member->name, &names[0]));
  *count = 1;
  return S_OK;
}

}  // namespace korlib
