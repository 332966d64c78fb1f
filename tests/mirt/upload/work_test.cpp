// What the reading of a body costs: pages of memory that are come to, of the body and of what is made of
// it. It grows with the body and not with its square, whoever made the body.
#include <string>

#include <gtest/gtest.h>

#include "frame/globals.h"
#include "mirt/upload/counted_memory.h"
#include "support/late_bound.h"
#include "upload/multipart_parser.h"
#include "upload/parts.h"
#include "upload/upload_classes.h"

namespace test {
namespace {

using ZeltoTypeLibrary::IRequestDictionary;
using ZeltoTypeLibrary::IStringList;

// A body is read once, what is taken from it copied, and a list of what came grows by doubling. A
// pass over all of it for every line of it is more than a hundred times as much.
std::size_t allowed(const std::string& body) { return 4 * (body.size() / kPage) + 1500; }

std::string repeated(const std::string& unit, std::size_t count) {
  std::string all;
  for (std::size_t i = 0; i < count; ++i) all += unit;
  return all;
}

// Walks over all parts of the body with the parser alone.
void walk(const std::string& body, const char* delimiter) {
  CountedMemory memory(allowed(body));
  CMultipartParser parser(memory.copy_of(body), body.size(), delimiter);
  CMultipartHeader header;
  std::size_t start = 0;
  bool is_last = false;
  while (!is_last && SUCCEEDED(parser.MoveNextBoundary(start, is_last))) {
    while (parser.GetHeader(header) == S_OK) continue;
  }
  EXPECT_LE(parser.work(), 10 * body.size());
}

// Lines, contents and parts of each kind of which a scan could go over what is behind them.
TEST(MultipartWork, GrowsWithTheBody) {
  for (const char* unit : {"x", "-", "\r", "\r\n", "\n", "X: y\r\n", "X: y; a=b\r\n", "X: y; a=b;c", "no colon\r\n",
                           "\r\n\r\n--------B\r\n", "X\r\n\r\n\r\n--------B\r\n", "a\r\r\r\r", "--------"}) {
    for (const char* before : {"--------B\r\n", "--------B\r\n\r\n", ""}) {
      std::string body = before;
      while (body.size() < 400'000) body += unit;
      walk(body, "--------B");
      walk(body + "\r\n--------B--", "--------B");
    }
  }
}

class UploadWork : public testing::Test {
 protected:
  void TearDown() override { EXPECT_EQ(0, g_nRefCount) << "an object is still held"; }

  // Takes the whole body and holds what came of it against what is expected: how many fields there are, and
  // the only value of one of them, a file's name for a file.
  void expect_linear(const std::string& body, int fields, const std::wstring& name, const std::wstring& value) {
    CountedMemory memory(allowed(body));
    CComPtr<IRequestDictionary> form;
    ASSERT_EQ(S_OK, g_oCF_MultipartForm.CreateInstance(nullptr, korlib::iid_of<IRequestDictionary>, form.put_void()));
    const char* const counted = memory.copy_of(body);
    EXPECT_EQ(S_OK, add_parts(counted, body.size(), "--B", 65001, *static_cast<GMultipartForm*>(form.get())));
    int count = 0;
    EXPECT_EQ(S_OK, form->get_Count(&count));
    EXPECT_EQ(fields, count);
    EXPECT_EQ(value, text(form.get(), name));
  }

 private:
  static std::wstring text(IRequestDictionary* form, const std::wstring& name) {
    const CComBSTR key{std::wstring_view(name)};
    CComVariant field;
    CComVariant value;
    EXPECT_EQ(S_OK, form->get_Item(korlib::borrowed(key.get()), &field));
    if (field.vt != VT_DISPATCH) return L"<no field>";
    EXPECT_EQ(S_OK, CComQIPtr<IStringList>(field.pdispVal)->get_Item(korlib::omitted(), &value));
    if (value.vt == VT_BSTR) return std::wstring(korlib::view_of(value.bstrVal));
    CComBSTR file_name;
    EXPECT_EQ(S_OK, CComQIPtr<IFormFile>(value.pdispVal)->get_FileName(file_name.put()));
    return std::wstring(file_name.view());
  }
};

constexpr char kDisposition[] = "--B\r\nContent-Disposition: form-data; name=\"";
constexpr std::size_t kLines = 100'000;

TEST_F(UploadWork, GrowsWithTheHeaders) {
  for (const char* line : {"X: y\r\n", "no colon\r\n", "X: y; name=b\r\n", "X: y; p=q; r=s\r\n", "Content-Type: t\r\n",
                           "Content-Disposition: form-data; name=\"a\"\r\n"}) {
    SCOPED_TRACE(line);
    expect_linear(kDisposition + ("a\"\r\n" + repeated(line, kLines)) + "\r\n1\r\n--B--", 1, L"a", L"1");
  }
}

// A long name, of a field or of its file, and line after line that could copy it.
TEST_F(UploadWork, HoldsNoCopyOfALongNameForEveryLine) {
  const std::string name(kLines, 'n');
  for (const char* line :
       {"Content-Disposition: form-data\r\n", "Content-Disposition: form-data; x=y\r\n",
        "Content-Disposition: form-data; x=y; z=0\r\n", "Content-Disposition: other\r\n", "X: y\r\n", "no colon\r\n"}) {
    SCOPED_TRACE(line);
    const std::string lines = "\"\r\nContent-Type: " + name + "\r\n" + repeated(line, kLines) + "\r\n1\r\n--B--";
    expect_linear(kDisposition + name + lines, 1, std::wstring(kLines, L'n'), L"1");
    expect_linear(kDisposition + ("a\"; filename=\"" + name) + lines, 1, L"a", std::wstring(kLines, L'n'));
  }
}

TEST_F(UploadWork, GrowsWithTheParameters) {
  std::string named = "a\"";
  for (std::size_t i = 0; i < kLines; ++i) named += ";p" + std::to_string(i) + "=";
  for (const std::string& parameters :
       {named, "a\"" + repeated(";p=", kLines), "a\"" + repeated(";p=q", kLines), "a\"" + repeated(";p", kLines),
        "a\"" + repeated("; ", kLines), "a\";p=" + repeated("=", kLines), "a\";p=" + repeated("\"", kLines)}) {
    SCOPED_TRACE(parameters.substr(0, 20));
    expect_linear(kDisposition + parameters + "\r\n\r\n1\r\n--B--", 1, L"a", L"1");
  }
}

TEST_F(UploadWork, GrowsWithTheParts) {
  std::string body;
  for (int i = 0; i < 20'000; ++i) body += kDisposition + ("n" + std::to_string(i)) + "\"\r\n\r\nv\r\n";
  expect_linear(body + "--B--", 20'000, L"n19999", L"v");
}

}  // namespace
}  // namespace test
