#include "frame/static_type_info.h"

#include <cwchar>

#include "frame/member_table.h"

namespace mirt::dispatch {

bool name_eq(const wchar_t* a, const wchar_t* b) { return wcscasecmp(a, b) == 0; }

}  // namespace mirt::dispatch

namespace {

void give_no_identifiers(UINT count, MEMBERID* ids) {
  for (UINT i = 0; ids && i < count; ++i) ids[i] = DISPID_UNKNOWN;
}

}  // namespace

HRESULT StaticTypeInfo::QueryInterface(REFIID riid, void** ppv) {
  if (!ppv) return E_INVALIDARG;
  return korlib::query_list<ITypeInfo, IUnknown>(this, riid, ppv);
}

HRESULT StaticTypeInfo::GetIDsOfNames(LPOLESTR* names, UINT count, MEMBERID* ids) {
  if (!names || !ids || count == 0 || !names[0]) return E_INVALIDARG;
  give_no_identifiers(count, ids);
  ids[0] = find_member(names[0]);
  return ids[0] == DISPID_UNKNOWN ? DISP_E_UNKNOWNNAME : S_OK;
}

HRESULT PassiveTypeInfo::GetIDsOfNames(LPOLESTR*, UINT count, MEMBERID* ids) {
  give_no_identifiers(count, ids);
  return DISP_E_UNKNOWNNAME;
}

HRESULT PassiveTypeInfo::Invoke(void*, MEMBERID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*, UINT*) {
  if (result) VariantInit(result);
  return DISP_E_MEMBERNOTFOUND;
}
