#include <korlib/activation.h>

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

std::wstring text_of(REFGUID guid) {
  wchar_t text[39];
  EXPECT_EQ(39, StringFromGUID2(guid, text, 39));
  return text;
}

TEST(Guids, AreRandomOfVersionFour) {
  std::set<std::wstring> seen;
  for (int i = 0; i < 1000; ++i) {
    GUID guid{};
    ASSERT_EQ(S_OK, CoCreateGuid(&guid));
    EXPECT_EQ(4, guid.Data3 >> 12);
    EXPECT_EQ(0x80, guid.Data4[0] & 0xC0);
    seen.insert(text_of(guid));
  }
  EXPECT_EQ(1000u, seen.size());
  EXPECT_EQ(E_POINTER, CoCreateGuid(nullptr));
}

TEST(Guids, AreWrittenInUpperCaseWithBraces) {
  EXPECT_EQ(L"{00000000-0000-0000-C000-000000000046}", text_of(IID_IUnknown));
  EXPECT_EQ(L"{717FA104-3BC5-4B9E-8112-106B75FD22C4}", text_of(korlib::guid("717fa104-3bc5-4b9e-8112-106b75fd22c4")));
}

TEST(Guids, AreWrittenOnlyWhereThereIsRoom) {
  wchar_t text[39] = L"untouched";
  EXPECT_EQ(0, StringFromGUID2(IID_IUnknown, text, 38));
  EXPECT_EQ(0, StringFromGUID2(IID_IUnknown, text, 0));
  EXPECT_EQ(0, StringFromGUID2(IID_IUnknown, text, -1));
  EXPECT_EQ(0, StringFromGUID2(IID_IUnknown, nullptr, 39));
  EXPECT_STREQ(L"untouched", text);
}

TEST(Guids, AreReadInAnyLetterCase) {
  constexpr GUID kExpected = korlib::guid("717FA104-3BC5-4B9E-8112-106B75FD22C4");
  for (const wchar_t* text : {L"{717FA104-3BC5-4b9e-8112-106B75FD22C4}", L"{717fa104-3bc5-4b9e-8112-106b75fd22c4}",
                              L"{717FA104-3BC5-4B9E-8112-106B75FD22C4}"}) {
    CLSID clsid{};
    EXPECT_EQ(S_OK, CLSIDFromString(text, &clsid));
    EXPECT_EQ(kExpected, clsid);
  }
}

TEST(Guids, AreRefusedInAnyOtherForm) {
  for (const wchar_t* text : {L"", L"{", L"Mirt", L"717FA104-3BC5-4B9E-8112-106B75FD22C4",
                              L"{717FA104-3BC5-4B9E-8112-106B75FD22C4", L"{717FA104-3BC5-4B9E-8112-106B75FD22C4}x",
                              L"{717FA104-3BC5-4B9E-8112-106B75FD22C}", L"{717FA104-3BC5-4B9E-8112-106B75FD22CG}",
                              L"{717FA1043BC5-4B9E-8112-106B75FD22C4-}", L"{717FA104-3BC5-4B9E-8112106B75FD22C4}"}) {
    CLSID clsid = IID_IUnknown;
    EXPECT_EQ(CO_E_CLASSSTRING, CLSIDFromString(text, &clsid));
    EXPECT_EQ(CLSID_NULL, clsid);
  }
  CLSID clsid = IID_IUnknown;
  EXPECT_EQ(CO_E_CLASSSTRING, CLSIDFromString(nullptr, &clsid));
  EXPECT_EQ(E_POINTER, CLSIDFromString(L"{}", nullptr));
}

}  // namespace
