#include <korlib_host/members.h>

#include <string>

#include <korlib/ptr.h>
#include <korlib_host/errors.h>

#include "base/letter_case.h"

namespace korlib {
namespace {

DISPID id_of(std::span<const Member> members, const Member& member) {
  return member.id != kNumberByPosition ? member.id : static_cast<DISPID>(&member - members.data()) + 1;
}

// What a call brings, kept together on its way through the choice of an operation.
struct Call {
  void* self;
  LCID lcid;
  WORD flags;
  DISPPARAMS* params;
  VARIANT* result;
  EXCEPINFO* excepinfo;
  UINT* argerr;
};

bool fits(const Operation& operation, UINT count) {
  return operation.run && count >= operation.required && count <= operation.accepted;
}

// For a call, in words. Who reads goes on from that.
HRESULT refuse_count(const Member& member, const Operation& operation, const Call& call) {
  if ((call.flags & DISPATCH_METHOD) == 0) return DISP_E_BADPARAMCOUNT;
  return guarded({}, [&] {
    std::wstring takes = operation.accepted == 0 ? L"none" : std::to_wstring(operation.required);
    if (operation.accepted == kAnyNumber) {
      takes += L" or more";
    } else if (operation.accepted > operation.required) {
      takes += L" to " + std::to_wstring(operation.accepted);
    }
    std::wstring words = L"Wrong number of arguments: '";
    words.append(member.name).append(L"' takes ").append(takes);
    return raise(DISP_E_BADPARAMCOUNT, {}, words.append(L", not ").append(std::to_wstring(call.params->cArgs)));
  });
}

HRESULT run(const Operation& operation, const Call& call) {
  const Arguments arguments(*call.params);
  const HRESULT hr = guarded({}, [&] { return operation.run(call.self, operation, arguments, call.result); });
  if (FAILED(hr)) {
    if (call.argerr && arguments.rejected()) *call.argerr = *arguments.rejected();
    if (call.result) VariantClear(call.result);
  }
  return hr;
}

// Leaves the call to the object that a property without parameters holds.
HRESULT pass_on(const Operation& get, const Call& call) {
  DISPPARAMS none{};
  CComVariant value;
  Call reading = call;
  reading.params = &none;
  reading.result = &value;
  RETURN_IF_FAILED(run(get, reading));
  const bool holds_object = value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN;
  const CComQIPtr<IDispatch> held(holds_object ? value.punkVal : nullptr);
  if (!held) return DISP_E_BADPARAMCOUNT;
  return held->Invoke(DISPID_VALUE, IID_NULL, call.lcid, call.flags, call.params, call.result, call.excepinfo,
                      call.argerr);
}

bool is_object(const VARIANT& value) {
  const VARIANT& followed = value.vt == (VT_BYREF | VT_VARIANT) && value.pvarVal ? *value.pvarVal : value;
  const VARTYPE vt = static_cast<VARTYPE>(followed.vt & ~VT_BYREF);
  return vt == VT_DISPATCH || vt == VT_UNKNOWN;
}

HRESULT put(const Member& member, const Call& call) {
  const DISPPARAMS& params = *call.params;
  if (params.cArgs == 0) return DISP_E_BADPARAMCOUNT;
  if (params.cNamedArgs == 0 || !params.rgdispidNamedArgs) return DISP_E_PARAMNOTFOUND;
  if (params.cNamedArgs != 1 || params.rgdispidNamedArgs[0] != DISPID_PROPERTYPUT) return DISP_E_NONAMEDARGS;
  const bool by_value = (call.flags & DISPATCH_PROPERTYPUT) != 0;
  const bool by_reference = (call.flags & DISPATCH_PROPERTYPUTREF) != 0 && (!by_value || is_object(params.rgvarg[0]));
  const Operation& chosen = by_reference && member.putref.run ? member.putref : member.put;
  const bool allowed = &chosen == &member.putref || by_value;
  if (allowed && fits(chosen, params.cArgs)) return run(chosen, call);
  // A put that takes the value alone leaves an index to the object that the property holds.
  if (params.cArgs > 1 && fits(member.get, 0) && member.get.accepted == 0) return pass_on(member.get, call);
  return allowed && chosen.run ? DISP_E_BADPARAMCOUNT : DISP_E_MEMBERNOTFOUND;
}

HRESULT call_or_get(const Member& member, const Call& call) {
  if (call.params->cNamedArgs != 0) return DISP_E_NONAMEDARGS;
  const UINT count = call.params->cArgs;
  if ((call.flags & DISPATCH_METHOD) && member.method.run) {
    return fits(member.method, count) ? run(member.method, call) : refuse_count(member, member.method, call);
  }
  if ((call.flags & DISPATCH_PROPERTYGET) && member.get.run) {
    const bool is_read = (call.flags & DISPATCH_METHOD) == 0;
    if (is_read && count < member.get.required_to_read) return DISP_E_BADPARAMCOUNT;
    if (fits(member.get, count)) return run(member.get, call);
    return member.get.accepted == 0 ? pass_on(member.get, call) : refuse_count(member, member.get, call);
  }
  return DISP_E_MEMBERNOTFOUND;
}

}  // namespace

const Member* find_member(std::span<const Member> members, DISPID id) {
  if (id > 0 && static_cast<std::size_t>(id) <= members.size()) {
    const Member& at = members[static_cast<std::size_t>(id) - 1];
    if (at.id == kNumberByPosition) return &at;
  }
  for (const Member& member : members) {
    if (id_of(members, member) == id) return &member;
  }
  return nullptr;
}

HRESULT ids_of_names(std::span<const Member> members, LPOLESTR* names, UINT count, DISPID* ids) {
  if (!ids || !names) return E_POINTER;
  for (UINT i = 0; i < count; ++i) ids[i] = DISPID_UNKNOWN;
  if (count == 0) return E_INVALIDARG;
  if (!names[0]) return DISP_E_UNKNOWNNAME;
  const std::wstring_view wanted = names[0];
  for (const Member& member : members) {
    if (!base::equal_ascii(member.name, wanted)) continue;
    ids[0] = id_of(members, member);
    return count == 1 ? S_OK : DISP_E_UNKNOWNNAME;  // arguments have no names
  }
  return DISP_E_UNKNOWNNAME;
}

HRESULT invoke_member(std::span<const Member> members, void* self, DISPID id, REFIID riid, LCID lcid, WORD flags,
                      DISPPARAMS* params, VARIANT* result, EXCEPINFO* excepinfo, UINT* argerr) {
  if (result) VariantInit(result);
  if (excepinfo) *excepinfo = {};
  if (riid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
  if (!params || (params->cArgs > 0 && !params->rgvarg)) return E_INVALIDARG;
  const Member* member = find_member(members, id);
  if (!member) return DISP_E_MEMBERNOTFOUND;
  const Call call{self, lcid, flags, params, result, excepinfo, argerr};
  if (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) return put(*member, call);
  return call_or_get(*member, call);
}

}  // namespace korlib
