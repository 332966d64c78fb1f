// The request's collections as objects.
//
// Their default member may be used without an index, for the whole text. Item needs one: a script reads
// `list.Item` before it calls it, and must not be given the text then.
#pragma once

#include <korlib_host/dispatch_object.h>
#include <zelto/asp.h>

#include <functional>
#include <memory>

#include "intrinsics/page_state.h"

namespace zelto {

// The values of one name. Without values it reads as nothing, so that a script finds "undefined".
class StringList final : public korlib::DispatchObject<StringList, ZeltoTypeLibrary::IStringList> {
 public:
  static constexpr const wchar_t* kClassName = L"StringList";
  StringList(RequestState::Fields table, const Field* field) : table_(std::move(table)), field_(field) {}
  static std::span<const korlib::Member> members();

  HRESULT get_Item(VARIANT index, VARIANT* value) override;
  HRESULT get_Count(int* count) override;
  HRESULT get__NewEnum(IUnknown** values) override;

 private:
  RequestState::Fields table_;  // keeps the field alive
  const Field* field_;          // null for a name that is missing
};

// QueryString, Form, ServerVariables, ClientCertificate. The fields are asked for at every use, since a
// form may become unreadable.
class FieldCollection final : public korlib::DispatchObject<FieldCollection, ZeltoTypeLibrary::IRequestDictionary> {
 public:
  static constexpr const wchar_t* kClassName = L"RequestDictionary";
  using Source = std::function<HRESULT(RequestState::Fields&)>;
  explicit FieldCollection(Source source) : source_(std::move(source)) {}
  static std::span<const korlib::Member> members();

  HRESULT get_Item(VARIANT key, VARIANT* value) override;
  HRESULT get__NewEnum(IUnknown** names) override;
  HRESULT get_Count(int* count) override;
  HRESULT get_Key(VARIANT index, VARIANT* key) override;

 private:
  Source source_;
};

// One cookie that was received: its value, its sub-keys by name; also a list of one value, so that it
// can be drawn and bound like any other field.
class CookieValue final
    : public korlib::DispatchObject<CookieValue, ZeltoTypeLibrary::IRequestDictionary, ZeltoTypeLibrary::IStringList> {
 public:
  static constexpr const wchar_t* kClassName = L"Cookie";
  CookieValue(PageStatePtr page, const ReceivedCookie* cookie) : page_(std::move(page)), cookie_(cookie) {}
  static std::span<const korlib::Member> members();

  HRESULT get_Item(VARIANT key, VARIANT* value) override;
  HRESULT get__NewEnum(IUnknown** names) override;
  HRESULT get_Count(int* count) override;
  HRESULT get_Key(VARIANT index, VARIANT* key) override;
  HRESULT get_HasKeys(VARIANT_BOOL* has_keys);

 private:
  PageStatePtr page_;             // keeps the cookie alive
  const ReceivedCookie* cookie_;  // null for a name that is missing
};

class CookieCollection final : public korlib::DispatchObject<CookieCollection, ZeltoTypeLibrary::IRequestDictionary> {
 public:
  static constexpr const wchar_t* kClassName = L"Cookies";
  explicit CookieCollection(PageStatePtr page) : page_(std::move(page)) {}
  static std::span<const korlib::Member> members();

  HRESULT get_Item(VARIANT key, VARIANT* value) override;
  HRESULT get__NewEnum(IUnknown** names) override;
  HRESULT get_Count(int* count) override;
  HRESULT get_Key(VARIANT index, VARIANT* key) override;

 private:
  PageStatePtr page_;
};

}  // namespace zelto
