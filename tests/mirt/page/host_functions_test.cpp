// The controller under a host that supplies the platform's functions itself: this program exports them,
// and so they are used in place of the component's own.
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include <korlib/winapi.h>

#include "mirt/page/page_fixture.h"

namespace {

unsigned long tick_count = 5489;
std::wstring asked_path;    // what was to be canonicalized last
std::size_t fill_path = 0;  // when not 0: so many characters are written, and no NUL

std::string narrow(const wchar_t* path) {
  std::string text = std::filesystem::path(path).string();
  std::replace(text.begin(), text.end(), '\\', '/');
  return text;
}

}  // namespace

extern "C" {

unsigned long GetTickCount() { return tick_count; }

DWORD FormatMessageW(DWORD flags, const void*, DWORD message, DWORD language, wchar_t* buffer, DWORD size, void*) {
  EXPECT_TRUE(flags & FORMAT_MESSAGE_FROM_SYSTEM);
  EXPECT_EQ(2048u, language);
  const std::wstring text =
      message == static_cast<DWORD>(DISP_E_MEMBERNOTFOUND) ? L"Member not found." : std::wstring(5000, L'x');
  const std::size_t length = std::min<std::size_t>(text.size(), size - 1);
  std::copy_n(text.data(), length, buffer);
  buffer[length] = 0;
  return static_cast<DWORD>(length);
}

BOOL PathCanonicalizeW(wchar_t* target, const wchar_t* source) {
  asked_path = source;
  if (fill_path) {
    std::fill_n(target, fill_path, L'p');
    return TRUE;
  }
  const std::wstring clean = std::filesystem::path(narrow(source)).lexically_normal().wstring();
  if (clean.size() >= MAX_PATH) return FALSE;
  std::copy_n(clean.c_str(), clean.size() + 1, target);
  return TRUE;
}

HANDLE CreateFileW(const wchar_t* path, DWORD, DWORD, void*, DWORD, DWORD, HANDLE) {
  std::FILE* file = std::fopen(narrow(path).c_str(), "rb");
  return file ? file : invalid_handle();
}

}  // extern "C"

namespace test {
namespace {

class HostFunctions : public PageTest {
 protected:
  void TearDown() override {
    fill_path = 0;
    PageTest::TearDown();
  }
};

TEST_F(HostFunctions, AFailingMarkIsReportedInThePlatformsWords) {
  script().failing(L"x", DISP_E_MEMBERNOTFOUND);
  const Answer answer = call(page(), L"ProcessTemplate", L"(#;x|p#)");
  EXPECT_EQ(DISP_E_MEMBERNOTFOUND, answer.hr);
  EXPECT_EQ(L"Member not found.[(#;x#)]", answer.description);
  EXPECT_EQ(L"Mirt", answer.source);
}

TEST_F(HostFunctions, WordsWithoutEndAreCut) {
  script().failing(L"x", E_ABORT);
  EXPECT_EQ(std::wstring(1279, L'x') + L"[(#:x#)]", call(page(), L"ProcessTemplate", L"(#:x#)").description);
}

TEST_F(HostFunctions, AMissingTemplateReachesTheScript) {
  use_folder();
  file("other.html", "the other");
  EXPECT_EQ(L"<code 80004005>Template file can't read.[" + (folder() / "none.html").wstring() + L"]",
            draw_file(L"none"));
  script().function(L"On_TemplateNotFound", [](const Arguments& a) {
    put(a[0].pdispVal, L"Template", L"other");
    return CComVariant(false);
  });
  EXPECT_EQ(L"the other", draw_file(L"none"));
}

TEST_F(HostFunctions, AnEditedTemplateShowsAtOnce) {
  use_folder();
  const std::filesystem::path path = file("t.html", "old");
  EXPECT_EQ(L"old", draw_file(L"t"));
  file("t.html", "new");
  const auto written = std::filesystem::last_write_time(path);
  std::filesystem::last_write_time(path, written + std::chrono::seconds(10));
  EXPECT_EQ(L"new", draw_file(L"t"));
  file("t.html", "older");
  std::filesystem::last_write_time(path, written - std::chrono::seconds(10));
  EXPECT_EQ(L"older", draw_file(L"t"));
}

// It is read all the same: what is saved is the parsing, so that what was parsed is what shows.
TEST_F(HostFunctions, ATemplateWhoseTimeIsTheSameComesFromTheCache) {
  use_folder();
  const std::filesystem::path path = file("t.html", "parsed");
  const auto written = std::filesystem::last_write_time(path);
  EXPECT_EQ(L"parsed", draw_file(L"t"));
  for (const std::chrono::seconds later : {std::chrono::seconds(0), std::chrono::seconds(10)}) {
    file("t.html", "edited");
    std::filesystem::last_write_time(path, written + later);
    EXPECT_EQ(later.count() == 0 ? L"parsed" : L"edited", draw_file(L"t"));
  }
}

// As the platform's function, which knows no other separator.
TEST_F(HostFunctions, PathsAreCanonicalizedWithBackslashes) {
  put(page(), L"TemplateFolder", L"/no/such");
  draw_file(L"sub/../t");
  EXPECT_EQ(L"\\no\\such", asked_path) << "the base comes after the path";
  put(page(), L"TemplateFolder", L"");
  draw_file(L"sub/../t");
  EXPECT_EQ(L"sub\\..\\t", asked_path);
}

TEST_F(HostFunctions, APathThatFillsTheHostsBufferIsNoOverrun) {
  use_folder();
  for (const std::size_t length : {MAX_PATH - 1, MAX_PATH, MAX_PATH + 1, 2 * MAX_PATH}) {
    fill_path = length;
    EXPECT_EQ(L"<code 80004005>Template file can't obtain.[" + std::wstring(length, L'p') + L"]", draw_file(L"t"));
  }
}

// The letters were computed with a Mersenne Twister written in another language.
TEST_F(HostFunctions, TheCommandKeyComesFromTheClock) {
  with_name();
  put(page(), L"Backable", false);
  tick_count = 5489;
  in_process([&] { EXPECT_EQ(L"VDXVDZ1", draw(L"(#?#)")); });
  in_process([&] { EXPECT_EQ(L"VDXVDZ2", draw(L"(#?#)")) << "the same letters in the same millisecond"; });
  tick_count = 12345;
  in_process([&] { EXPECT_EQ(L"YXIDEB3", draw(L"(#?#)")); });
}

}  // namespace
}  // namespace test
