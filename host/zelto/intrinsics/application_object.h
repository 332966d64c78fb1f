// Application, as one page sees it.
#pragma once

#include "intrinsics/application_state.h"
#include "intrinsics/contents_object.h"

namespace zelto {

class ApplicationObject final
    : public StoreObject<ApplicationObject, ZeltoTypeLibrary::IApplicationObject, ApplicationHold> {
 public:
  static constexpr const wchar_t* kClassName = L"Application";
  using StoreObject::StoreObject;
  static std::span<const korlib::Member> members();

  HRESULT Lock() override;
  HRESULT UnLock() override;
};

}  // namespace zelto
