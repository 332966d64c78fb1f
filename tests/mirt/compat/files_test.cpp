#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cwchar>
#include <filesystem>
#include <fstream>
#include <string>

#include "mirt/compat/fallbacks.h"
#include "support/temporary_folder.h"

namespace test {
namespace {

namespace fs = std::filesystem;

ULONGLONG ticks_of(const FILETIME& time) {
  return static_cast<ULONGLONG>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

FILETIME file_time(ULONGLONG ticks) { return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)}; }

class FileFallbacks : public Fallbacks {
 protected:
  fs::path make(const std::string& name) { return folder_.write(name, "content"); }
  HANDLE open(const std::wstring& path) {
    return FALLBACK(CreateFileW)(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                 FILE_ATTRIBUTE_NORMAL, nullptr);
  }
  // The canonical form; "<none>" for FALSE. Fails when more than a path's room is written.
  std::wstring canonical(const std::wstring& path) {
    wchar_t target[MAX_PATH + 1];
    target[MAX_PATH] = L'#';
    const BOOL done = FALLBACK(PathCanonicalizeW)(target, path.c_str());
    EXPECT_EQ(L'#', target[MAX_PATH]);
    return done ? target : L"<none>";
  }

  TemporaryFolder folder_;
};

TEST_F(FileFallbacks, FilesAreOpenedForReadingOnly) {
  make("\u00FC\u3042.txt");
  const std::wstring file = folder_.wide() + L"/\u00FC\u3042.txt";
  HANDLE handle = FALLBACK(CreateFileW)(file.c_str(), 0x40000000u, 0, nullptr, 2, 0, nullptr);
  ASSERT_NE(invalid_handle(), handle);
  char text[8] = {};
  EXPECT_EQ(7u, std::fread(text, 1, 7, static_cast<FILE*>(handle)));
  EXPECT_STREQ("content", text);
  EXPECT_EQ(0u, std::fwrite("x", 1, 1, static_cast<FILE*>(handle)));
  EXPECT_TRUE(FALLBACK(CloseHandle)(handle));
}

TEST_F(FileFallbacks, NothingIsCreated) {
  const fs::path missing = folder_.path("missing");
  for (const DWORD creation : {1u, 2u, 3u, 4u, 5u}) {
    EXPECT_EQ(invalid_handle(),
              FALLBACK(CreateFileW)(missing.wstring().c_str(), 0xC0000000u, 0, nullptr, creation, 0, nullptr));
  }
  EXPECT_FALSE(fs::exists(missing));
  EXPECT_EQ(invalid_handle(), FALLBACK(CreateFileW)(nullptr, GENERIC_READ, 0, nullptr, 3, 0, nullptr));
  EXPECT_EQ(invalid_handle(), open(L""));
}

// The bound is on the bytes of the UTF-8 form: 4,095 without the NUL.
TEST_F(FileFallbacks, OverlongPathsAreRefused) {
  const std::wstring file = make("f").wstring();
  std::wstring padded = file;
  padded.insert(padded.size() - 1, std::wstring(4095 - padded.size(), L'/'));
  HANDLE handle = open(padded);
  EXPECT_NE(invalid_handle(), handle);
  FALLBACK(CloseHandle)(handle);
  EXPECT_EQ(file, canonical(padded));
  padded.insert(padded.size() - 1, 1, L'/');
  EXPECT_EQ(invalid_handle(), open(padded));
  EXPECT_EQ(L"<none>", canonical(padded));
  EXPECT_EQ(invalid_handle(), open(std::wstring(100'000, L'x')));
}

TEST_F(FileFallbacks, OnlyOpenHandlesClose) {
  EXPECT_FALSE(FALLBACK(CloseHandle)(invalid_handle()));
  EXPECT_FALSE(FALLBACK(CloseHandle)(nullptr));
}

TEST_F(FileFallbacks, TimesAreWholeSecondsSince1601) {
  const fs::path file = make("f");
  const timespec times[2] = {{1'000'000'000, 999'999'999}, {1, 999'999'999}};  // access, modification
  ASSERT_EQ(0, utimensat(AT_FDCWD, file.c_str(), times, 0));
  struct stat status {};
  ASSERT_EQ(0, stat(file.c_str(), &status));
  HANDLE handle = open(file.wstring());
  FILETIME creation{};
  FILETIME access{};
  FILETIME write{};
  EXPECT_TRUE(FALLBACK(GetFileTime)(handle, &creation, &access, &write));
  EXPECT_EQ(116444736010000000u, ticks_of(write));
  EXPECT_EQ(126444736000000000u, ticks_of(access));
  EXPECT_EQ(static_cast<ULONGLONG>(status.st_ctim.tv_sec) * 10'000'000 + 116444736000000000u, ticks_of(creation));
  EXPECT_TRUE(FALLBACK(GetFileTime)(handle, nullptr, nullptr, nullptr));
  EXPECT_TRUE(FALLBACK(CloseHandle)(handle));
  EXPECT_FALSE(FALLBACK(GetFileTime)(nullptr, &creation, &access, &write));
  EXPECT_FALSE(FALLBACK(GetFileTime)(invalid_handle(), &creation, &access, &write));
}

// A stream whose descriptor was closed under it: its status cannot be read, and closing it fails.
TEST_F(FileFallbacks, AFileThatCannotBeReadOrClosedIsToldSo) {
  HANDLE handle = open(make("f").wstring());
  ASSERT_NE(invalid_handle(), handle);
  ASSERT_EQ(0, ::close(fileno(static_cast<FILE*>(handle))));
  FILETIME times[3] = {file_time(1), file_time(2), file_time(3)};
  EXPECT_EQ(FALSE, FALLBACK(GetFileTime)(handle, &times[0], &times[1], &times[2]));
  for (ULONGLONG i = 0; i < 3; ++i) EXPECT_EQ(i + 1, ticks_of(times[i])) << "left as it was";
  EXPECT_EQ(FALSE, FALLBACK(CloseHandle)(handle));
}

TEST_F(FileFallbacks, TimesAreComparedWhole) {
  const struct {
    ULONGLONG a;
    ULONGLONG b;
    LONG expected;
  } rows[] = {
      {0, 0, 0},
      {1, 2, -1},
      {2, 1, 1},
      {0xFFFFFFFF, 0x100000000, -1},
      {0x100000000, 0xFFFFFFFF, 1},
      {0x8000000000000000u, 1, 1},  // unsigned
      {0x100000001, 0x200000000, -1},
  };
  for (const auto& row : rows) {
    const FILETIME a = file_time(row.a);
    const FILETIME b = file_time(row.b);
    EXPECT_EQ(row.expected, FALLBACK(CompareFileTime)(&a, &b)) << row.a << " " << row.b;
  }
  const FILETIME some = file_time(5);
  EXPECT_EQ(0, FALLBACK(CompareFileTime)(nullptr, &some));
  EXPECT_EQ(0, FALLBACK(CompareFileTime)(&some, nullptr));
}

TEST_F(FileFallbacks, TheModuleKnowsNoPathOfItsOwn) {
  wchar_t buffer[4] = L"abc";
  EXPECT_EQ(0u, FALLBACK(GetModuleFileNameW)(module_.handle(), buffer, 4));
  EXPECT_EQ(0, buffer[0]);
  buffer[0] = L'x';
  EXPECT_EQ(0u, FALLBACK(GetModuleFileNameW)(module_.handle(), buffer, 0));
  EXPECT_EQ(L'x', buffer[0]);
}

TEST_F(FileFallbacks, PathsAreResolvedAgainstTheFileSystem) {
  make("dir/f");
  fs::create_directories(folder_.path("dir/sub"));
  fs::create_symlink("dir", folder_.path("link"));
  const std::wstring root = folder_.wide();
  const std::wstring file = root + L"/dir/f";
  EXPECT_EQ(file, canonical(file));
  EXPECT_EQ(file, canonical(root + L"\\dir\\sub\\..\\f"));
  EXPECT_EQ(file, canonical(root + L"/./dir//f"));
  EXPECT_EQ(file, canonical(root + L"\\link\\f"));
  EXPECT_EQ(root, canonical(root + L"\\dir\\.."));
  EXPECT_EQ(L"<none>", canonical(root + L"\\missing"));
  EXPECT_EQ(L"<none>", canonical(root + L"\\missing\\..\\dir\\f"));
  EXPECT_EQ(L"<none>", canonical(L"C:\\x\\..\\y"));
  EXPECT_EQ(L"<none>", canonical(L""));
  EXPECT_EQ(fs::current_path().wstring(), canonical(L"."));
  wchar_t target[MAX_PATH];
  EXPECT_FALSE(FALLBACK(PathCanonicalizeW)(nullptr, L"/"));
  EXPECT_FALSE(FALLBACK(PathCanonicalizeW)(target, nullptr));
}

// Callers hold MAX_PATH characters; the NUL is one of them.
TEST_F(FileFallbacks, LongCanonicalPathsAreCutToTheirRoom) {
  const fs::path deep = make(std::string(120, 'a') + "/" + std::string(120, 'b') + "/" + std::string(120, 'c'));
  const std::wstring cut = canonical(deep.wstring());
  EXPECT_EQ(259u, cut.size());
  EXPECT_EQ(deep.wstring().substr(0, 259), cut);
}

TEST_F(FileFallbacks, TheRegistryAcceptsEverything) {
  HKEY key = this;
  DWORD disposition = 9;
  EXPECT_EQ(0, FALLBACK(RegCreateKeyExW)(hkey_classes_root(), L"x", 0, nullptr, 0, 2, nullptr, &key, &disposition));
  EXPECT_EQ(nullptr, key);
  EXPECT_EQ(0u, disposition);
  key = this;
  EXPECT_EQ(0, FALLBACK(RegOpenKeyExW)(hkey_classes_root(), L"x", 0, 2, &key));
  EXPECT_EQ(nullptr, key);
  EXPECT_EQ(0, FALLBACK(RegCreateKeyExW)(nullptr, nullptr, 0, nullptr, 0, 2, nullptr, nullptr, nullptr));
  EXPECT_EQ(0, FALLBACK(RegOpenKeyExW)(nullptr, nullptr, 0, 2, nullptr));
  EXPECT_EQ(0, FALLBACK(RegSetValueExW)(nullptr, nullptr, 0, REG_SZ, nullptr, 0));
  EXPECT_EQ(0, FALLBACK(RegDeleteKeyW)(nullptr, nullptr));
  EXPECT_EQ(0, FALLBACK(RegCloseKey)(nullptr));
}

}  // namespace
}  // namespace test
