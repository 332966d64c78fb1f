#include "support/fake.h"

#include <algorithm>
#include <utility>

namespace test {

namespace {

int objects_alive = 0;

const VARIANT& followed(const VARIANT& argument) {
  return argument.vt == (VT_BYREF | VT_VARIANT) && argument.pvarVal ? *argument.pvarVal : argument;
}

Arguments arguments_of(const DISPPARAMS* params) {
  Arguments arguments;
  for (UINT i = params ? params->cArgs : 0; i-- > 0;) arguments.emplace_back(followed(params->rgvarg[i]));
  return arguments;
}

HRESULT fail_with(HRESULT hr, const std::wstring& description) {
  CComPtr<ICreateErrorInfo> create;
  CComPtr<IErrorInfo> info;
  if (description.empty() || FAILED(CreateErrorInfo(create.put()))) return hr;
  create->SetSource(const_cast<LPOLESTR>(L"script"));
  create->SetDescription(const_cast<LPOLESTR>(description.c_str()));
  if (SUCCEEDED(create.query(info.put()))) SetErrorInfo(0, info.get());
  return hr;
}

}  // namespace

FakeScript::FakeScript() {
  ++objects_alive;
  Member default_member;
  default_member.is_there = false;
  members_.push_back(default_member);
}

FakeScript::~FakeScript() { --objects_alive; }

int FakeScript::alive() { return objects_alive; }

CComPtr<FakeScript> FakeScript::make() {
  CComPtr<FakeScript> script;
  script.attach(new FakeScript());
  return script;
}

FakeScript::Member& FakeScript::member(const std::wstring& name) {
  for (Member& known : members_) {
    if (known.name == name) {
      known.is_there = true;
      return known;
    }
  }
  Member added;
  added.name = name;
  members_.push_back(std::move(added));
  return members_.back();
}

void FakeScript::function(const std::wstring& name, Function body) {
  fallible(name, [body = std::move(body)](const Arguments& arguments, VARIANT* result) {
    CComVariant value = body(arguments);
    value.detach_to(result);
    return S_OK;
  });
}

void FakeScript::fallible(const std::wstring& name, FallibleFunction body) { member(name).body = std::move(body); }

void FakeScript::failing(const std::wstring& name, HRESULT hr, std::wstring description) {
  fallible(name, [hr, description = std::move(description)](const Arguments&, VARIANT*) {
    return fail_with(hr, description);
  });
}

void FakeScript::set_value(const std::wstring& name, CComVariant value) {
  Member& changed = member(name);
  changed.body = {};
  changed.value = std::move(value);
}

void FakeScript::remove(const std::wstring& name) {
  for (Member& known : members_) {
    if (known.name == name) known.is_there = false;
  }
}

const CComVariant& FakeScript::current(const std::wstring& name) const {
  static const CComVariant empty;
  const DISPID id = find(name);
  return id == DISPID_UNKNOWN ? empty : members_[static_cast<std::size_t>(id)].value;
}

std::vector<std::wstring> FakeScript::called() const {
  std::vector<std::wstring> names;
  for (const Call& call : calls_) names.push_back(call.name);
  return names;
}

DISPID FakeScript::find(const std::wstring& name) const {
  for (std::size_t i = 0; i < members_.size(); ++i) {
    if (members_[i].is_there && members_[i].name == name) return static_cast<DISPID>(i);
  }
  return DISPID_UNKNOWN;
}

HRESULT FakeScript::QueryInterface(REFIID riid, void** ppv) {
  return korlib::query_list<IDispatch, IUnknown>(this, riid, ppv);
}

ULONG FakeScript::Release() {
  const ULONG left = --references_;
  if (left == 0) delete this;
  return left;
}

HRESULT FakeScript::GetTypeInfoCount(UINT* count) {
  *count = 0;
  return S_OK;
}

HRESULT FakeScript::GetTypeInfo(UINT, LCID, ITypeInfo** info) {
  *info = nullptr;
  return E_NOTIMPL;
}

HRESULT FakeScript::GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID lcid, DISPID* ids) {
  EXPECT_EQ(IID_NULL, riid);
  EXPECT_EQ(LOCALE_SYSTEM_DEFAULT, lcid);
  for (UINT i = 0; i < count; ++i) ids[i] = DISPID_UNKNOWN;
  asked_.emplace_back(names[0]);
  if (!*names[0]) return fail_with(unknown_name_, refusal_words_);
  ids[0] = find(names[0]);
  if (ids[0] == DISPID_UNKNOWN && accepts_new_names_) {
    member(names[0]);
    ids[0] = find(names[0]);
  }
  return ids[0] == DISPID_UNKNOWN ? fail_with(unknown_name_, refusal_words_) : S_OK;
}

HRESULT FakeScript::run(const Member& member, WORD flags, const Arguments& arguments, VARIANT* result) {
  if (flags & DISPATCH_PROPERTYGET) RETURN_IF_FAILED(member.unreadable);
  if (member.body) {
    if (!(flags & DISPATCH_METHOD)) return fail_with(DISP_E_MEMBERNOTFOUND, refusal_words_);
    CComVariant answer;
    const FallibleFunction body = member.body;  // the body may redefine its own name
    const HRESULT hr = body(arguments, &answer);
    if (SUCCEEDED(hr) && result) answer.detach_to(result);
    return hr;
  }
  if (!(flags & DISPATCH_PROPERTYGET)) return DISP_E_MEMBERNOTFOUND;
  return result ? VariantCopy(result, &member.value) : S_OK;
}

HRESULT FakeScript::Invoke(DISPID id, REFIID riid, LCID lcid, WORD flags, DISPPARAMS* params, VARIANT* result,
                           EXCEPINFO*, UINT*) {
  EXPECT_EQ(IID_NULL, riid);
  EXPECT_EQ(LOCALE_SYSTEM_DEFAULT, lcid);
  if (result) VariantInit(result);
  if (id < 0 || static_cast<std::size_t>(id) >= members_.size()) return DISP_E_MEMBERNOTFOUND;
  Member& member = members_[static_cast<std::size_t>(id)];
  if (!member.is_there) return DISP_E_MEMBERNOTFOUND;
  const CComPtr<FakeScript> self(this);
  Arguments arguments = arguments_of(params);
  const bool is_write = (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
  if (is_write || member.body) calls_.push_back({member.name, flags, arguments});
  if (!is_write) return run(member, flags, arguments, result);
  if (arguments.empty()) return DISP_E_BADPARAMCOUNT;
  RETURN_IF_FAILED(member.refusal);
  member.body = {};
  member.value = arguments.back();
  return S_OK;
}

}  // namespace test
