#include "frame/static_type_info.h"

#include <korlib/ptr.h>

#include <string>

#include "frame/argument_notes.h"
#include "frame/error.h"
#include "frame/values.h"

namespace {

void give_no_identifiers(UINT count, MEMBERID* ids) {
  for (UINT i = 0; ids && i < count; ++i) ids[i] = DISPID_UNKNOWN;
}

MEMBERID find_name(const MemberTable& table, std::wstring_view name) {
  MEMBERID id = table.first;
  for (const Member& member : table.rows) {
    if (mirt::equal_ignoring_case(member.name, name)) return id;
    ++id;
  }
  return DISPID_UNKNOWN;
}

const Member* find_member(const MemberTable& table, MEMBERID id) {
  const LONGLONG row = LONGLONG{id} - table.first;
  return row >= 0 && row < std::ssize(table.rows) ? &table.rows[static_cast<std::size_t>(row)] : nullptr;
}

HRESULT refuse_count(const Member& member, UINT given) {
  return mirt::guarded([&] {
    const std::wstring words = std::wstring(L"Wrong number of arguments: '") + member.name + L"' takes " +
                               std::to_wstring(member.takes) + L", not " + std::to_wstring(given);
    return RaiseError(DISP_E_BADPARAMCOUNT, L"Mirt", words.c_str());
  });
}

MemberServer server_of(const Member& member, WORD flags) {
  if ((flags & DISPATCH_PROPERTYPUTREF) && member.putref) return member.putref;
  if ((flags & DISPATCH_PROPERTYPUT) && member.put) return member.put;
  if ((flags & DISPATCH_METHOD) && member.method) return member.method;
  return flags & DISPATCH_PROPERTYGET ? member.get : nullptr;
}

}  // namespace

HRESULT StaticTypeInfo::QueryInterface(REFIID riid, void** ppv) {
  if (!ppv) return E_INVALIDARG;
  return korlib::query_list<ITypeInfo, IUnknown>(this, riid, ppv);
}

HRESULT MemberTypeInfo::GetIDsOfNames(LPOLESTR* names, UINT count, MEMBERID* ids) {
  if (!names || !ids || count == 0 || !names[0]) return E_INVALIDARG;
  give_no_identifiers(count, ids);
  for (const MemberTable& table : tables_) {
    ids[0] = find_name(table, names[0]);
    if (ids[0] != DISPID_UNKNOWN) return S_OK;
  }
  return DISP_E_UNKNOWNNAME;
}

HRESULT MemberTypeInfo::Invoke(void* instance, MEMBERID id, WORD flags, DISPPARAMS* params, VARIANT* result, EXCEPINFO*,
                               UINT* argerr) {
  if (result) VariantInit(result);
  for (const MemberTable& table : tables_) {
    const Member* member = find_member(table, id);
    if (!member) continue;
    const MemberServer serve = server_of(*member, flags);
    if (!serve) return DISP_E_MEMBERNOTFOUND;
    const HRESULT hr = serve(instance, params, result, argerr);
    const UINT given = params ? params->cArgs : 0;
    if (SUCCEEDED(hr) && serve == member->method && given > member->takes)
      mirt::note_extra_arguments(member->name, member->takes, given);
    return hr == DISP_E_BADPARAMCOUNT && given < member->takes ? refuse_count(*member, given) : hr;
  }
  return DISP_E_MEMBERNOTFOUND;
}

HRESULT PassiveTypeInfo::GetIDsOfNames(LPOLESTR*, UINT count, MEMBERID* ids) {
  give_no_identifiers(count, ids);
  return DISP_E_UNKNOWNNAME;
}

HRESULT PassiveTypeInfo::Invoke(void*, MEMBERID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*, UINT*) {
  if (result) VariantInit(result);
  return DISP_E_MEMBERNOTFOUND;
}
