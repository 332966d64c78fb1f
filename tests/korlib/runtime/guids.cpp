#include <korlib/activation.h>

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

std::wstring text_of(REFGUID guid) {
  wchar_t text[39];
  EXPECT_EQ(StringFromGUID2(guid, text, 39), 39);
  return text;
}

TEST(Guids, AreRandomOfVersionFour) {
  std::set<std::wstring> seen;
  for (int i = 0; i < 1000; ++i) {
    GUID guid{};
    ASSERT_EQ(CoCreateGuid(&guid), S_OK);
    EXPECT_EQ(guid.Data3 >> 12, 4);
    EXPECT_EQ(guid.Data4[0] & 0xC0, 0x80);
    seen.insert(text_of(guid));
  }
  EXPECT_EQ(seen.size(), 1000u);
  EXPECT_EQ(CoCreateGuid(nullptr), E_POINTER);
}

TEST(Guids, AreWrittenInUpperCaseWithBraces) {
  EXPECT_EQ(text_of(IID_IUnknown), L"{00000000-0000-0000-C000-000000000046}");
  EXPECT_EQ(text_of(korlib::guid("717fa104-3bc5-4b9e-8112-106b75fd22c4")), L"{717FA104-3BC5-4B9E-8112-106B75FD22C4}");
}

TEST(Guids, AreWrittenOnlyWhereThereIsRoom) {
  wchar_t text[39] = L"untouched";
  EXPECT_EQ(StringFromGUID2(IID_IUnknown, text, 38), 0);
  EXPECT_EQ(StringFromGUID2(IID_IUnknown, text, 0), 0);
  EXPECT_EQ(StringFromGUID2(IID_IUnknown, text, -1), 0);
  EXPECT_EQ(StringFromGUID2(IID_IUnknown, nullptr, 39), 0);
  EXPECT_STREQ(text, L"untouched");
}

TEST(Guids, AreReadInAnyLetterCase) {
  constexpr GUID kExpected = korlib::guid("717FA104-3BC5-4B9E-8112-106B75FD22C4");
  for (const wchar_t* text : {L"{717FA104-3BC5-4b9e-8112-106B75FD22C4}", L"{717fa104-3bc5-4b9e-8112-106b75fd22c4}",
                              L"{717FA104-3BC5-4B9E-8112-106B75FD22C4}"}) {
    CLSID clsid{};
    EXPECT_EQ(CLSIDFromString(text, &clsid), S_OK);
    EXPECT_EQ(clsid, kExpected);
  }
}

TEST(Guids, AreRefusedInAnyOtherForm) {
  for (const wchar_t* text : {L"", L"{", L"Mirt", L"717FA104-3BC5-4B9E-8112-106B75FD22C4",
                              L"{717FA104-3BC5-4B9E-8112-106B75FD22C4", L"{717FA104-3BC5-4B9E-8112-106B75FD22C4}x",
                              L"{717FA104-3BC5-4B9E-8112-106B75FD22C}", L"{717FA104-3BC5-4B9E-8112-106B75FD22CG}",
                              L"{717FA1043BC5-4B9E-8112-106B75FD22C4-}", L"{717FA104-3BC5-4B9E-8112106B75FD22C4}"}) {
    CLSID clsid = IID_IUnknown;
    EXPECT_EQ(CLSIDFromString(text, &clsid), CO_E_CLASSSTRING);
    EXPECT_EQ(clsid, CLSID_NULL);
  }
  CLSID clsid = IID_IUnknown;
  EXPECT_EQ(CLSIDFromString(nullptr, &clsid), CO_E_CLASSSTRING);
  EXPECT_EQ(CLSIDFromString(L"{}", nullptr), E_POINTER);
}

}  // namespace
