// What the host's Response tells a realm besides what automation knows of it.
#pragma once

#include <korlib/types.h>
#include <korlib/unknown.h>

#include <string_view>

namespace zelto::script {

struct IPageOutput : IUnknown {
  // Where it is kept whether what is written may wait for the end of the page, or for a call that sends it. Any call
  // may change that; the place lasts as long as the object.
  virtual const bool& may_wait() const noexcept = 0;
  // The number of the locale that the page writes dates and numbers by.
  virtual LONG locale() const noexcept = 0;
  // Response.Write of a text, in UTF-16.
  virtual HRESULT write_text(std::u16string_view text) = 0;

 protected:
  ~IPageOutput() = default;
};

}  // namespace zelto::script

KORLIB_IID(zelto::script::IPageOutput, "0B1D0F6E-5E7C-4B55-9D0C-6E8A1F1B7F53");
