// What a failure in a template has left in the thread's error object beside its words.
#pragma once

#include <string>

#include <korlib/combstr.h>
#include <korlib/errorinfo.h>
#include <korlib/ptr.h>
#include <mirt/template_places.h>

namespace test {

struct PlacedError {
  std::wstring description;
  std::wstring places;  // a line each; "none" where the error object has no list
};

// Takes the error object; a description of "no error" when there is none.
inline PlacedError take_placed_error() {
  CComPtr<IErrorInfo> info;
  PlacedError error{L"no error", L"none"};
  if (GetErrorInfo(0, info.put()) != S_OK) return error;
  CComBSTR text;
  if (info->GetDescription(text.put()) == S_OK) error.description = text.view();
  DWORD context = 0;
  if (info->GetHelpContext(&context) == S_OK && context == mirt::kTemplatePlaces &&
      info->GetHelpFile(text.put()) == S_OK) {
    error.places = text.view();
  }
  return error;
}

// What fails when `body` runs.
template <class Body>
PlacedError placed_error_of(Body body) {
  SetErrorInfo(0, nullptr);
  body();
  return take_placed_error();
}

}  // namespace test
