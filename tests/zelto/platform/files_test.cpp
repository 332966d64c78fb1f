#include <fcntl.h>
#include <gtest/gtest.h>
#include <korlib/winapi.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>

#include "base/file_stamp.h"
#include "platform/canonical_path.h"
#include "support/temporary_folder.h"
#include "text/charset.h"

namespace {

namespace fs = std::filesystem;

class Paths : public testing::Test {
 protected:
  std::string at(const std::string& relative) const { return folder_.path(relative).string(); }
  void file(const std::string& relative) const { folder_.write(relative, "text"); }

  std::wstring canonicalized(const std::string& path) const {
    wchar_t target[MAX_PATH];
    return PathCanonicalizeW(target, zelto::to_wide(path).c_str()) ? std::wstring(target) : L"<failed>";
  }

 private:
  test::TemporaryFolder folder_;
};

std::uint64_t ticks(const FILETIME& time) {
  return std::uint64_t{time.dwHighDateTime} << 32U | std::uint64_t{time.dwLowDateTime};
}

std::uint64_t ticks(const timespec& time) {
  return 116'444'736'000'000'000U + static_cast<std::uint64_t>(time.tv_sec * 10'000'000 + time.tv_nsec / 100);
}

TEST_F(Paths, ResolvesWhatExists) {
  file("dir/sub/f");
  EXPECT_EQ(zelto::to_wide(at("dir/sub/f")), canonicalized(at("dir\\sub\\..\\.\\\\sub/f")));
  EXPECT_EQ(zelto::to_wide(at("dir")), canonicalized(at("dir/")));
}

TEST_F(Paths, GivesAFileThatDoesNotExistAPath) {
  file("dir/f");
  EXPECT_EQ(zelto::to_wide(at("dir/x.html")), canonicalized(at("dir\\none\\..\\x.html")));
  EXPECT_EQ(zelto::to_wide((fs::path(at("")).parent_path().parent_path() / "a").string()),
            canonicalized(at("nowhere/../../a")));
}

// As PathCanonicalizeW reads it: a file has one time, by whatever name.
TEST_F(Paths, OpensAFileBehindAFolderThatDoesNotExist) {
  file("dir/f");
  for (const char* name : {"dir\\none\\..\\f", "none/../dir/f", "dir/f/../f"}) {
    const HANDLE handle = CreateFileW(zelto::to_wide(at(name)).c_str(), 0, 0, nullptr, 0, 0, nullptr);
    EXPECT_NE(handle, invalid_handle()) << name;
    EXPECT_EQ(handle != invalid_handle() ? TRUE : FALSE, CloseHandle(handle)) << name;
  }
  for (const char* name : {"none/f", "dir/none/../g", "dir/none/../../f"})
    EXPECT_EQ(invalid_handle(), CreateFileW(zelto::to_wide(at(name)).c_str(), 0, 0, nullptr, 0, 0, nullptr)) << name;
}

// A page asks for the folder of its templates with each template.
TEST_F(Paths, AreLookedAtOnceWhileTheyAreRemembered) {
  file("tpl/f");
  file("other/f");
  fs::create_symlink("../other/f", at("tpl/link"));
  const auto as_it_is = [&](const std::string& name) { return zelto::to_wide(at(name)); };
  {
    const zelto::PathMemory memory;
    EXPECT_EQ(as_it_is("tpl/f"), canonicalized(at("tpl/f")));
    EXPECT_EQ(as_it_is("other/f"), canonicalized(at("tpl/link"))) << "in a folder that is known";
    EXPECT_EQ(as_it_is("tpl/none"), canonicalized(at("tpl/none")));
    fs::rename(at("tpl"), at("moved"));
    fs::create_symlink("other", at("tpl"));
    EXPECT_EQ(as_it_is("tpl"), canonicalized(at("tpl"))) << "known from the file in it";
    EXPECT_EQ(as_it_is("tp"), canonicalized(at("tp"))) << "another folder, with the beginning of its name";
  }
  EXPECT_EQ(as_it_is("other"), canonicalized(at("tpl"))) << "forgotten";
}

// Whatever takes a file's place between two requests is seen by the second.
TEST_F(Paths, FindsTheLinkThatHasTakenAFilesPlace) {
  file("tpl/f");
  file("other/f");
  const auto found_in_a_request = [&](const std::string& name) {
    const zelto::PathMemory memory;
    return canonicalized(at(name));
  };
  const auto settle = [&] {
    struct stat status {};
    do {
      std::this_thread::yield();
      ASSERT_EQ(0, ::stat(at("tpl/f").c_str(), &status));
    } while (!base::FileStamp::of(status).is_settled());
  };
  settle();
  EXPECT_EQ(zelto::to_wide(at("tpl/f")), found_in_a_request("tpl/f"));
  EXPECT_EQ(zelto::to_wide(at("tpl/f")), found_in_a_request("tpl/f"));
  fs::rename(at("tpl"), at("moved"));
  fs::create_symlink("other", at("tpl"));
  EXPECT_EQ(zelto::to_wide(at("other/f")), found_in_a_request("tpl/f"));
  fs::remove(at("tpl"));
  fs::rename(at("moved"), at("tpl"));
  EXPECT_EQ(zelto::to_wide(at("tpl/f")), found_in_a_request("tpl/f"));
  fs::rename(at("tpl/f"), at("outside"));
  fs::create_symlink("../outside", at("tpl/f"));
  EXPECT_EQ(zelto::to_wide(at("outside")), found_in_a_request("tpl/f")) << "the same file, moved away";
}

TEST_F(Paths, TellTheTimeThatWasSeenWithThePathOnceAndThenAnew) {
  file("f");
  const auto set_time = [&](time_t seconds) {
    const timespec times[2] = {{seconds, 0}, {seconds, 0}};
    ASSERT_EQ(0, ::utimensat(AT_FDCWD, at("f").c_str(), times, 0));
  };
  const auto told_time = [&] {
    const HANDLE handle = CreateFileW(zelto::to_wide(at("f")).c_str(), 0, 0, nullptr, 0, 0, nullptr);
    FILETIME write{};
    EXPECT_TRUE(GetFileTime(handle, nullptr, nullptr, &write));
    CloseHandle(handle);
    return ticks(write) - ticks(timespec{});
  };
  constexpr std::uint64_t kSecond = 10'000'000;
  set_time(1000);
  {
    const zelto::PathMemory memory;
    canonicalized(at("f"));
    set_time(2000);
    EXPECT_EQ(1000 * kSecond, told_time()) << "no second call of the system";
    EXPECT_EQ(2000 * kSecond, told_time());
  }
  {
    const zelto::PathMemory memory;
    canonicalized(at("f"));
  }
  set_time(3000);
  EXPECT_EQ(3000 * kSecond, told_time()) << "in the next request";
}

TEST_F(Paths, FollowsLinksOfThePartThatExists) {
  file("outside/secret");
  fs::create_directories(at("tpl"));
  fs::create_symlink("../outside", at("tpl/link"));
  fs::create_symlink(at("outside"), at("tpl/absolute"));
  EXPECT_EQ(zelto::to_wide(at("outside/secret")), canonicalized(at("tpl/link/secret")));
  EXPECT_EQ(zelto::to_wide(at("outside/none")), canonicalized(at("tpl/absolute/none")));
  // A step into nothing and back must not hide the link.
  EXPECT_EQ(zelto::to_wide(at("outside/secret")), canonicalized(at("tpl/none/../link/secret")));
  EXPECT_EQ(zelto::to_wide(at("")).substr(0, at("").size() - 1), canonicalized(at("tpl/link/..")));
}

TEST_F(Paths, RefusesLinksThatGoRound) {
  fs::create_symlink("b", at("a"));
  fs::create_symlink("a", at("b"));
  EXPECT_EQ(L"<failed>", canonicalized(at("a/x")));
}

TEST_F(Paths, RefusesAPathThatDoesNotFit) {
  const std::string folder = at("");
  const std::string longest(MAX_PATH - 1 - folder.size(), 'x');
  EXPECT_EQ(MAX_PATH - 1, canonicalized(folder + longest).size());
  EXPECT_EQ(L"<failed>", canonicalized(folder + longest + "x"));
}

TEST_F(Paths, LeavesTheTargetEmptyOnFailure) {
  wchar_t target[MAX_PATH] = L"poison";
  EXPECT_FALSE(PathCanonicalizeW(target, L""));
  EXPECT_STREQ(L"", target);
  EXPECT_FALSE(PathCanonicalizeW(target, nullptr));
  EXPECT_FALSE(PathCanonicalizeW(nullptr, L"/"));
}

TEST(CanonicalPath, StopsAtTheRoot) {
  EXPECT_EQ("/", zelto::canonical_path("/../.."));
  EXPECT_EQ(std::nullopt, zelto::canonical_path(std::string_view("/a\0b", 4)));
}

TEST_F(Paths, OpensFilesNamedWithBackslashes) {
  file("tpl/list.html");
  struct stat status {};
  ASSERT_EQ(0, ::stat(at("tpl/list.html").c_str(), &status));
  const HANDLE handle = CreateFileW(zelto::to_wide(at("tpl\\list.html")).c_str(), GENERIC_READ, FILE_SHARE_READ,
                                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  ASSERT_NE(handle, invalid_handle());
  FILETIME write{};
  EXPECT_TRUE(GetFileTime(handle, nullptr, nullptr, &write));
  EXPECT_EQ(ticks(status.st_mtim), ticks(write));
  EXPECT_TRUE(CloseHandle(handle));
}

TEST_F(Paths, TellsFileTimesToTheTick) {
  file("list.html");
  const timespec times[2] = {{1, 200}, {784111777, 123456789}};
  ASSERT_EQ(0, ::utimensat(AT_FDCWD, at("list.html").c_str(), times, 0));
  const HANDLE handle = CreateFileW(zelto::to_wide(at("list.html")).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  ASSERT_NE(handle, invalid_handle());
  FILETIME access{};
  FILETIME write{};
  EXPECT_TRUE(GetFileTime(handle, nullptr, &access, &write));
  EXPECT_EQ(116'444'736'000'000'000U + 10'000'002U, ticks(access));
  EXPECT_EQ(116'444'736'000'000'000U + 7'841'117'771'234'567U, ticks(write));
  EXPECT_TRUE(CloseHandle(handle));
  EXPECT_FALSE(CloseHandle(invalid_handle()));
  EXPECT_FALSE(CloseHandle(nullptr));
  EXPECT_FALSE(GetFileTime(invalid_handle(), nullptr, nullptr, &write));
  EXPECT_FALSE(GetFileTime(nullptr, nullptr, nullptr, &write));
}

TEST_F(Paths, NeverCreatesAFile) {
  EXPECT_EQ(invalid_handle(), CreateFileW(zelto::to_wide(at("none")).c_str(), GENERIC_READ, 0, nullptr, 1, 0, nullptr));
  EXPECT_FALSE(fs::exists(at("none")));
  EXPECT_EQ(invalid_handle(), CreateFileW(nullptr, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
}

}  // namespace
