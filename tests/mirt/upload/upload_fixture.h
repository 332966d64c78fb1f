// An upload request of a test, and the form that the intake makes of it.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include <korlib/adostream.h>
#include <mirt/mirt.h>

#include "frame/globals.h"
#include "support/fake_asp.h"
#include "support/late_bound.h"
#include "upload/intake.h"

namespace test {

class UploadTest : public testing::Test {
 protected:
  void TearDown() override {
    form_.reset();
    asp_ = fake::Asp();
    EXPECT_EQ(0, g_nRefCount) << "an object is still held";
  }

  // Posts `body` with the boundary.
  HRESULT upload(const std::string& body, const std::wstring& boundary = L"B") {
    set_type(L"multipart/form-data; boundary=" + boundary);
    asp_.request->body = body;
    return take();
  }
  void set_type(const std::wstring& type) { asp_.request->server_variables->set(L"HTTP_CONTENT_TYPE", {type}); }
  HRESULT take() {
    form_.reset();
    take_error();
    return read_multipart_form(asp_.request.get(), asp_.response.get(), &form_);
  }

  int count() const {
    int count = -1;
    EXPECT_EQ(S_OK, form_->get_Count(&count));
    return count;
  }
  CComPtr<fake::asp::IStringList> list(const std::wstring& name) const;
  // A value of a field, 1-based; 0 asks without an index.
  CComVariant value(const std::wstring& name, int index = 0) const;
  // The same as text; "<…>" when it is none.
  std::wstring text(const std::wstring& name, int index = 0) const;
  CComPtr<IFormFile> file(const std::wstring& name, int index = 0) const;

  fake::Asp asp_;
  CComPtr<fake::asp::IRequestDictionary> form_;
};

std::string bytes_of(IFormFile* file);
std::wstring member(IFormFile* file, HRESULT (IFormFile::*get)(BSTR*));

// A part as browsers send it.
std::string text_part(const std::string& name, const std::string& value);
std::string file_part(const std::string& name, const std::string& file_name, const std::string& bytes);
inline constexpr const char* kEnd = "--B--\r\n";

}  // namespace test
