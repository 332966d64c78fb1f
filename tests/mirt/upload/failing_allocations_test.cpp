// Memory that runs out at any point of an intake: a clear answer, what was read before it, and nothing lost.
#include <algorithm>
#include <new>
#include <string>

#include <gtest/gtest.h>

#include "frame/globals.h"
#include "support/failing_allocations.h"
#include "support/late_bound.h"
#include "upload/parts.h"
#include "upload/upload_classes.h"

namespace test {
namespace {

using ZeltoTypeLibrary::IRequestDictionary;
using ZeltoTypeLibrary::IStringList;

constexpr std::string_view kBody =
    "--B\r\nContent-Disposition: form-data; name=\"a field that no small buffer holds\"\r\n\r\nits value\r\n"
    "--B\r\nContent-Disposition: form-data; name=\"f\"; filename=\"a file that no small buffer holds\"\r\n"
    "Content-Type: application/octet-stream\r\n\r\nbytes\r\n"
    "--B\r\nContent-Disposition: form-data; name=\"f\"\r\n\r\ntext\r\n--B--";

CComPtr<IRequestDictionary> new_form() {
  CComPtr<IRequestDictionary> form;
  EXPECT_EQ(S_OK, g_oCF_MultipartForm.CreateInstance(nullptr, korlib::iid_of<IRequestDictionary>, form.put_void()));
  return form;
}

HRESULT intake(IRequestDictionary* form) {
  return add_parts(kBody.data(), kBody.size(), "--B", 65001, *static_cast<GMultipartForm*>(form));
}

// How many values a field has; fails the test when the form cannot be asked.
int count_of(IRequestDictionary* form, const wchar_t* name) {
  const CComVariant key(name);
  CComVariant field;
  EXPECT_EQ(S_OK, form->get_Item(key, &field));
  if (field.vt != VT_DISPATCH) return 0;
  int count = -1;
  EXPECT_EQ(S_OK, CComQIPtr<IStringList>(field.pdispVal)->get_Count(&count));
  return count;
}

TEST(FailingUpload, IsAnAnswerAtEveryPointAndKeepsWhatWasRead) {
  int failures = 0;
  HRESULT hr = E_FAIL;
  int before = 0;
  for (int n = 0; FAILED(hr); ++n) {
    ASSERT_LT(n, 1000);
    const CComPtr<IRequestDictionary> form = new_form();
    {
      const FailingAllocation failing(n);
      hr = intake(form.get());
    }
    const int values = count_of(form.get(), L"a field that no small buffer holds") + count_of(form.get(), L"f");
    EXPECT_GE(values, before) << n;
    EXPECT_EQ(SUCCEEDED(hr), values == 3) << n;
    int fields = -1;
    EXPECT_EQ(S_OK, form->get_Count(&fields));
    EXPECT_EQ(std::min(values, 2), fields) << n << ": a field that has no value is not there";
    before = values;
    if (FAILED(hr)) {
      EXPECT_TRUE(hr == E_OUTOFMEMORY || hr == E_FAIL) << n << ": a file without its stream is E_FAIL";
      ++failures;
    }
  }
  EXPECT_GT(failures, 15);
  EXPECT_EQ(0, g_nRefCount);
}

TEST(FailingUpload, IsAnAnswerWhereValuesAreJoined) {
  const CComPtr<IRequestDictionary> form = new_form();
  for (int i = 0; i < 2; ++i)
    static_cast<GMultipartForm*>(form.get())->add(CComBSTR(L"t"), CComVariant(L"a text that no small buffer holds"));
  const CComVariant key(L"t");
  HRESULT hr = E_FAIL;
  int failures = 0;
  for (int n = 0; FAILED(hr); ++n) {
    ASSERT_LT(n, 100);
    CComVariant field;
    CComVariant value;
    const FailingAllocation failing(n);
    hr = form->get_Item(key, &field);
    if (SUCCEEDED(hr)) hr = CComQIPtr<IStringList>(field.pdispVal)->get_Item(korlib::omitted(), &value);
    if (FAILED(hr)) {
      EXPECT_EQ(E_OUTOFMEMORY, hr) << n;
      EXPECT_EQ(VT_EMPTY, value.vt) << n;
      ++failures;
    }
  }
  EXPECT_GT(failures, 0);
}

}  // namespace
}  // namespace test
