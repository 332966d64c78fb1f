// The request's collections as objects.
#pragma once

#include <zelto/asp.h>

#include "intrinsics/named_collection.h"
#include "intrinsics/page_state.h"

namespace zelto {

// The values of one name. Without values it reads as nothing, so that a script finds "undefined".
class StringList final : public korlib::DispatchObject<StringList, ZeltoTypeLibrary::IStringList> {
 public:
  static constexpr const wchar_t* kClassName = L"StringList";
  // Null for a name that is missing.
  explicit StringList(std::shared_ptr<const Field> field);
  static std::span<const korlib::Member> members();

  HRESULT get_Item(VARIANT index, VARIANT* value) override;
  HRESULT get_Count(int* count) override;
  HRESULT get__NewEnum(IUnknown** values) override;

 private:
  std::shared_ptr<const Field> field_;  // keeps the values alive
  const std::vector<std::wstring>& values_;
};

// QueryString, Form, ServerVariables, ClientCertificate. The fields are asked for at every use, since a
// form may become unreadable.
class FieldCollection final : public NamedCollection<FieldCollection, ZeltoTypeLibrary::IRequestDictionary> {
 public:
  static constexpr const wchar_t* kClassName = L"RequestDictionary";
  static constexpr const wchar_t* kSource = L"Request";
  using Source = HRESULT (RequestState::*)(RequestState::Fields& fields);
  FieldCollection(PageStatePtr page, Source source) : page_(std::move(page)), source_(source) {}
  static std::span<const korlib::Member> members();

  HRESULT get_Item(VARIANT key, VARIANT* value) override;

 private:
  HRESULT names(Names& all) override;

  PageStatePtr page_;
  Source source_;
};

// One cookie that was received: its value, its sub-keys by name; also a list of one value, so that it
// can be drawn and bound like any other field.
class CookieValue final
    : public NamedCollection<CookieValue, ZeltoTypeLibrary::IRequestDictionary, ZeltoTypeLibrary::IStringList> {
 public:
  static constexpr const wchar_t* kClassName = L"Cookie";
  static constexpr const wchar_t* kSource = L"Request";
  CookieValue(PageStatePtr page, const ReceivedCookie* cookie) : page_(std::move(page)), cookie_(cookie) {}
  static std::span<const korlib::Member> members();

  HRESULT get_Item(VARIANT key, VARIANT* value) override;
  HRESULT get_Count(int* count) override;
  HRESULT get_Key(VARIANT index, VARIANT* key) override;
  HRESULT get_HasKeys(VARIANT_BOOL* has_keys);

 private:
  HRESULT names(Names& all) override;

  PageStatePtr page_;             // keeps the cookie alive
  const ReceivedCookie* cookie_;  // null for a name that is missing
};

class CookieCollection final : public NamedCollection<CookieCollection, ZeltoTypeLibrary::IRequestDictionary> {
 public:
  static constexpr const wchar_t* kClassName = L"Cookies";
  static constexpr const wchar_t* kSource = L"Request";
  explicit CookieCollection(PageStatePtr page) : page_(std::move(page)) {}
  static std::span<const korlib::Member> members();

  HRESULT get_Item(VARIANT key, VARIANT* value) override;

 private:
  HRESULT names(Names& all) override;

  PageStatePtr page_;
};

}  // namespace zelto
