// Session.Contents and Application.Contents.
#pragma once

#include <korlib_host/dispatch_object.h>
#include <zelto/asp.h>

#include <memory>

#include "intrinsics/variant_store.h"

namespace zelto {

class ContentsObject final : public korlib::DispatchObject<ContentsObject, ZeltoTypeLibrary::IVariantDictionary> {
 public:
  static constexpr const wchar_t* kClassName = L"Contents";
  explicit ContentsObject(std::shared_ptr<VariantStore> store) : store_(std::move(store)) {}
  static std::span<const korlib::Member> members();

  HRESULT get_Item(VARIANT index, VARIANT* value) override;
  HRESULT put_Item(VARIANT index, VARIANT value) override;
  HRESULT putref_Item(VARIANT index, VARIANT value) override;
  HRESULT get_Key(VARIANT index, VARIANT* key) override;
  HRESULT get_Count(int* count) override;
  HRESULT get__NewEnum(IUnknown** names) override;
  HRESULT Remove(VARIANT index) override;
  HRESULT RemoveAll() override;

 private:
  // The name that an index stands for.
  HRESULT name_of(const VARIANT& index, std::wstring& name);

  std::shared_ptr<VariantStore> store_;
};

// What is stored by an assignment without putref: an object's default value instead of the object.
HRESULT plain_value(const VARIANT& value, CComVariant& plain);

}  // namespace zelto
