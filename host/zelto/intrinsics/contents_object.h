// Session.Contents and Application.Contents, and what the two objects themselves have in common.
#pragma once

#include <korlib_host/dispatch_object.h>
#include <zelto/asp.h>

#include <memory>

#include "intrinsics/named_collection.h"
#include "intrinsics/variant_store.h"

namespace zelto {

// What is stored by an assignment without putref: an object's default value instead of the object.
HRESULT plain_value(const VARIANT& value, CComVariant& plain);

class ContentsObject final : public NamedCollection<ContentsObject, ZeltoTypeLibrary::IVariantDictionary> {
 public:
  static constexpr const wchar_t* kClassName = L"Contents";
  static constexpr const wchar_t* kSource = kClassName;
  explicit ContentsObject(std::shared_ptr<VariantStore> store) : store_(std::move(store)) {}
  static std::span<const korlib::Member> members();

  HRESULT get_Item(VARIANT index, VARIANT* value) override;
  HRESULT put_Item(VARIANT index, VARIANT value) override;
  HRESULT putref_Item(VARIANT index, VARIANT value) override;
  HRESULT Remove(VARIANT index) override;
  HRESULT RemoveAll() override;

 private:
  HRESULT names(Names& all) override { return store_->names(all); }
  // Answers what `body` does with the name that an index stands for.
  template <class Body>
  HRESULT with_name(const VARIANT& index, Body body);

  std::shared_ptr<VariantStore> store_;
};

// An object of values by name, kept in a `Store`, which is a VariantStore.
template <class Self, class Interface, class Store>
class StoreObject : public korlib::DispatchObject<Self, Interface> {
 public:
  explicit StoreObject(std::shared_ptr<Store> store) : store_(std::move(store)) {}

  HRESULT get_Value(BSTR name, VARIANT* value) override {
    return guarded(Self::kClassName, value, [&] { return store_->get(korlib::view_of(name), value); });
  }
  HRESULT put_Value(BSTR name, VARIANT value) override {
    return guarded(Self::kClassName, [&]() -> HRESULT {
      CComVariant plain;
      RETURN_IF_FAILED(plain_value(value, plain));
      return store_->put(korlib::view_of(name), plain);
    });
  }
  HRESULT putref_Value(BSTR name, VARIANT value) override {
    return guarded(Self::kClassName, [&] { return store_->put(korlib::view_of(name), value); });
  }
  HRESULT get_Contents(ZeltoTypeLibrary::IVariantDictionary** contents) override {
    return guarded(Self::kClassName, contents,
                   [&] { return give(korlib::make<ContentsObject>(store_).detach(), contents); });
  }

 protected:
  std::shared_ptr<Store> store_;
};

}  // namespace zelto
