// docs/objects.md tells of every member of the objects that pages have, docs/databases.md of those of databases.
#include <gtest/gtest.h>

#include <korlib/activation.h>
#include <korlib/combstr.h>
#include <korlib/ptr.h>
#include <korlib/typeinfo.h>
#include <korlib_host/unicode.h>

#include <fstream>
#include <iterator>
#include <string>

#include "intrinsics/application.h"
#include "intrinsics/contents_object.h"
#include "intrinsics/request_object.h"
#include "intrinsics/response_cookies.h"
#include "intrinsics/response_object.h"
#include "intrinsics/server_object.h"
#include "intrinsics/session_object.h"

namespace {

std::string text_of(const std::string& document) {
  std::ifstream in(std::string(DOCUMENTS) + "/" + document);
  return {std::istreambuf_iterator<char>(in), {}};
}

void expect_told(const std::string& text, std::wstring_view member) {
  if (member.starts_with(L'_')) return;  // which the language calls for a page
  const std::string name = korlib::to_utf8(member);
  EXPECT_TRUE(text.find("`" + name + "`") != text.npos || text.find("`" + name + "(") != text.npos) << name;
}

template <class Object>
void expect_members_told(const std::string& text) {
  for (const auto& member : Object::members()) expect_told(text, member.name);
}

TEST(ObjectsDocument, HasTheMembersOfTheIntrinsicObjects) {
  using namespace zelto;
  const std::string text = text_of("objects.md");
  expect_members_told<RequestObject>(text);
  expect_members_told<StringList>(text);
  expect_members_told<ResponseObject>(text);
  expect_members_told<ResponseCookie>(text);
  expect_members_told<ServerObject>(text);
  expect_members_told<AspErrorObject>(text);
  expect_members_told<SessionObject>(text);
  expect_members_told<ApplicationObject>(text);
  expect_members_told<ContentsObject>(text);
}

TEST(ObjectsDocument, HasTheMembersOfTheClasses) {
  const std::pair<const wchar_t*, const char*> classes[] = {
      {L"Scripting.Dictionary", "objects.md"},
      {L"ADODB.Stream", "objects.md"},
      {L"Scripting.FileSystemObject", "objects.md"},
      {L"ADODB.Connection", "databases.md"},
      {L"ADODB.Command", "databases.md"},
      {L"ADODB.Recordset", "databases.md"},
  };
  for (const auto& [name, document] : classes) {
    CLSID id{};
    CComPtr<IDispatch> object;
    CComPtr<ITypeInfo> info;
    ASSERT_EQ(S_OK, CLSIDFromProgID(name, &id));
    ASSERT_EQ(S_OK, CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, korlib::iid_of<IDispatch>, object.put_void()));
    ASSERT_EQ(S_OK, object->GetTypeInfo(0, LOCALE_SYSTEM_DEFAULT, info.put()));
    const std::string text = text_of(document);
    int found = 0;
    for (MEMBERID member = 0; member < 200; ++member) {
      CComBSTR own;
      UINT count = 0;
      if (FAILED(info->GetNames(member, own.put(), 1, &count)) || count != 1) continue;
      expect_told(text, own.view());
      ++found;
    }
    EXPECT_GE(found, 4) << document;
  }
}

}  // namespace
