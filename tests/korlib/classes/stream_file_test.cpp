// A stream loaded from files and saved to them.
#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <thread>

#include <korlib_host/file_look.h>

#include "base/file_stamp.h"
#include "korlib/classes/stream_fixture.h"
#include "support/temporary_folder.h"

namespace {

using test::Bytes;
using test::call;
using test::put;
using test::text_of;

class StreamFile : public test::StreamFixture {
 protected:
  test::Answer load(const std::wstring& path) { return call(object_, L"LoadFromFile", path); }
  test::TemporaryFolder folder_;
};

TEST_F(StreamFile, LoadsAndRewinds) {
  folder_.write("a.txt", "\xEF\xBB\xBF\xC3\xA4");
  call(object_, L"WriteText", L"old contents");
  rewind();
  ASSERT_EQ(S_OK, put(object_, L"Charset", L"utf-8").hr);
  EXPECT_EQ(S_OK, load(folder_.wide("a.txt")).hr);
  EXPECT_EQ(0, number(L"Position"));
  EXPECT_EQ(L"\u00E4", text_of(call(object_, L"ReadText", -1)));
}

TEST_F(StreamFile, LoadsAFileOfNoBytes) {
  folder_.write("empty", "");
  EXPECT_EQ(S_OK, load(folder_.wide("empty")).hr);
  EXPECT_TRUE(at_end());
  EXPECT_EQ(L"", text_of(call(object_, L"ReadText")));
  call(object_, L"WriteText", L"x");
  EXPECT_EQ(4, number(L"Size"));
}

// What a page has seen of a file just before it writes the file is no longer so.
TEST_F(StreamFile, LoadsWhatThePageItselfHasWritten) {
  const std::string path = folder_.write("a.txt", "old");
  const auto load_text = [&] {
    EXPECT_EQ(S_OK, load(folder_.wide("a.txt")).hr);
    const Bytes bytes = contents();
    return std::string(bytes.begin(), bytes.end());
  };
  struct stat seen {};
  do {
    std::this_thread::yield();
    ASSERT_EQ(0, ::stat(path.c_str(), &seen));
  } while (!base::FileStamp::of(seen).is_settled());
  EXPECT_EQ("old", load_text());
  korlib_host::leave_look(path, seen);
  EXPECT_EQ("old", load_text());
  korlib_host::leave_look(path, seen);
  fill({'n', 'e', 'w'});
  ASSERT_EQ(S_OK, call(object_, L"SaveToFile", folder_.wide("a.txt"), 2).hr);
  EXPECT_EQ("new", load_text());
}

// What has been there for a while is not read again; any change of it is seen at once.
TEST_F(StreamFile, LoadsAnEditedFileAnew) {
  const auto path = folder_.path("a.txt");
  const auto text = [&] {
    EXPECT_EQ(S_OK, load(path.wstring()).hr);
    const Bytes bytes = contents();
    return std::string(bytes.begin(), bytes.end());
  };
  const auto settle = [&] {
    struct stat status {};
    do {
      std::this_thread::yield();
      ASSERT_EQ(0, ::stat(path.c_str(), &status));
    } while (!base::FileStamp::of(status).is_settled());
  };
  folder_.write("a.txt", "one");
  settle();
  EXPECT_EQ("one", text());
  EXPECT_EQ("one", text());
  const auto time = std::filesystem::last_write_time(path);
  folder_.write("a.txt", "two");
  std::filesystem::last_write_time(path, time);
  EXPECT_EQ("two", text()) << "of the same size, and its time restored";
  folder_.write("a.txt", "six");
  EXPECT_EQ("six", text()) << "soon after another change";
  settle();
  EXPECT_EQ("six", text());
  folder_.write("b.txt", "new");
  std::filesystem::rename(folder_.path("b.txt"), path);
  EXPECT_EQ("new", text()) << "another file in its place";
  settle();
  EXPECT_EQ("new", text());
  std::filesystem::remove(path);
  EXPECT_TRUE(FAILED(load(path.wstring()).hr));
}

TEST_F(StreamFile, OpensPathsWithBackslashes) {
  std::filesystem::create_directory(folder_.path("sub"));
  folder_.write("sub/a.txt", "x");
  EXPECT_EQ(S_OK, load(folder_.wide("sub\\a.txt")).hr);
  folder_.write("sub\\a.txt", "literally so");  // a file of that very name comes first
  EXPECT_EQ(S_OK, load(folder_.wide("sub\\a.txt")).hr);
  EXPECT_EQ(12, number(L"Size"));
  EXPECT_EQ(S_OK, call(object_, L"SaveToFile", folder_.wide("sub\\b.txt")).hr);
  EXPECT_EQ("literally so", folder_.read("sub/b.txt"));
}

TEST_F(StreamFile, NamesTheFileThatItCannotLoad) {
  call(object_, L"WriteText", L"kept");
  const std::wstring missing = folder_.wide("missing.txt");
  test::Answer answer = load(missing);
  EXPECT_EQ(0x800A0BBAu, static_cast<std::uint32_t>(answer.hr));
  EXPECT_EQ(L"ADODB.Stream", answer.source);
  EXPECT_EQ(L"Cannot open '" + missing + L"': No such file or directory.", answer.description);
  EXPECT_EQ(L"Cannot open '" + folder_.wide("") + L"': Is a directory.", load(folder_.wide("")).description);
  ASSERT_EQ(0, mkfifo(folder_.path("pipe").c_str(), 0600));
  EXPECT_EQ(L"Cannot open '" + folder_.wide("pipe") + L"': Not a regular file.",
            load(folder_.wide("pipe")).description);
  EXPECT_TRUE(FAILED(load(L"").hr));
  EXPECT_TRUE(FAILED(load(folder_.wide("a") + std::wstring(L"\0b", 2)).hr));
  EXPECT_EQ(10, number(L"Size"));
}

// Root may read and write everything, so the test runs as another user while this object lives.
class WithoutPrivileges {
 public:
  WithoutPrivileges() : before_(geteuid()) {
    constexpr uid_t kNobody = 65534;
    if (before_ == 0) {
      EXPECT_EQ(0, seteuid(kNobody));
    }
  }
  ~WithoutPrivileges() { EXPECT_EQ(0, seteuid(before_)); }
  WithoutPrivileges(const WithoutPrivileges&) = delete;
  WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;

 private:
  uid_t before_;
};

TEST_F(StreamFile, NamesTheFileThatItMayNotTouch) {
  folder_.write("secret", "kept");
  std::filesystem::permissions(folder_.path(""), std::filesystem::perms(0755));
  std::filesystem::permissions(folder_.path("secret"), std::filesystem::perms::none);
  const std::wstring path = folder_.wide("secret");
  {
    const WithoutPrivileges anybody;
    EXPECT_EQ(L"Cannot open '" + path + L"': Permission denied.", load(path).description);
    EXPECT_EQ(L"Cannot write '" + path + L"': Permission denied.", call(object_, L"SaveToFile", path, 2).description);
  }
  std::filesystem::permissions(folder_.path("secret"), std::filesystem::perms::owner_read);
  EXPECT_EQ("kept", folder_.read("secret"));
}

TEST_F(StreamFile, SavesNewFilesAndReplacesWhenTold) {
  ASSERT_EQ(S_OK, put(object_, L"Charset", L"utf-8").hr);
  call(object_, L"WriteText", L"\u00E4");
  const std::wstring path = folder_.wide("out.txt");
  EXPECT_EQ(S_OK, call(object_, L"SaveToFile", path).hr);
  EXPECT_EQ("\xEF\xBB\xBF\xC3\xA4", folder_.read("out.txt"));
  EXPECT_EQ(0, number(L"Position"));
  const test::Answer answer = call(object_, L"SaveToFile", path, 1);
  EXPECT_EQ(0x800A0BBCu, static_cast<std::uint32_t>(answer.hr));
  EXPECT_EQ(L"Cannot write '" + path + L"': File exists.", answer.description);
  folder_.write("out.txt", "something longer than the new contents");
  EXPECT_EQ(S_OK, call(object_, L"SaveToFile", path, 2).hr);
  EXPECT_EQ("\xEF\xBB\xBF\xC3\xA4", folder_.read("out.txt"));
  EXPECT_TRUE(FAILED(call(object_, L"SaveToFile", path, 3).hr));
  EXPECT_NE(std::wstring::npos, call(object_, L"SaveToFile", L"/dev/full", 2).description.find(L"/dev/full"));
}

// While one lives, a file cannot grow beyond a size: a disk without room, on every machine.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{bytes, before_.rlim_max};
    EXPECT_EQ(0, setrlimit(RLIMIT_FSIZE, &limit));
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit before_{};
  void (*handler_)(int);
};

TEST_F(StreamFile, LeavesWhatWasThereWhereItsContentsDoNotFit) {
  call(object_, L"WriteText", std::wstring(10'000, L'x'));
  folder_.write("old.txt", "old contents");
  {
    const FileSizeLimit limit(4096);
    for (const LONG option : {1, 2}) {
      const test::Answer answer = call(object_, L"SaveToFile", folder_.wide("new.txt"), option);
      EXPECT_EQ(0x800A0BBCu, static_cast<std::uint32_t>(answer.hr));
      EXPECT_EQ(L"Cannot write '" + folder_.wide("new.txt") + L"': File too large.", answer.description);
      EXPECT_FALSE(std::filesystem::exists(folder_.path("new.txt")));
    }
    const test::Answer answer = call(object_, L"SaveToFile", folder_.wide("old.txt"), 2);
    EXPECT_EQ(L"Cannot write '" + folder_.wide("old.txt") + L"': File too large.", answer.description);
  }
  EXPECT_EQ("old contents", folder_.read("old.txt"));
  EXPECT_EQ(S_OK, call(object_, L"SaveToFile", folder_.wide("old.txt"), 2).hr) << "nothing is lost of the stream";
  EXPECT_EQ(20'002u, folder_.read("old.txt").size());
}

TEST_F(StreamFile, ReplacesTheContentsAndNotTheFile) {
  make_binary();
  call(object_, L"Write", std::vector<unsigned char>{'n', 'e', 'w'});
  folder_.write("file", "old contents");
  std::filesystem::permissions(folder_.path("file"), std::filesystem::perms::owner_all);
  std::filesystem::create_hard_link(folder_.path("file"), folder_.path("second name"));
  std::filesystem::create_symlink("file", folder_.path("link"));
  std::filesystem::create_symlink("not yet", folder_.path("dangling link"));
  EXPECT_EQ(S_OK, call(object_, L"SaveToFile", folder_.wide("link"), 2).hr);
  EXPECT_EQ(S_OK, call(object_, L"SaveToFile", folder_.wide("dangling link"), 2).hr);
  EXPECT_EQ("new", folder_.read("second name"));
  EXPECT_EQ("new", folder_.read("not yet"));
  EXPECT_TRUE(std::filesystem::is_symlink(folder_.path("link")));
  EXPECT_EQ(std::filesystem::perms::owner_all, std::filesystem::status(folder_.path("file")).permissions());
}

TEST_F(StreamFile, SaysWhereItCannotWrite) {
  const auto refusal = [&](const std::wstring& path, LONG option) {
    const test::Answer answer = call(object_, L"SaveToFile", path, option);
    EXPECT_EQ(0x800A0BBCu, static_cast<std::uint32_t>(answer.hr)) << path;
    return answer.description.substr(answer.description.find(L"': ") + 3);
  };
  folder_.write("file", "");
  ASSERT_EQ(0, mkfifo(folder_.path("pipe").c_str(), 0600));
  EXPECT_EQ(L"No such file or directory.", refusal(folder_.wide("missing/a"), 1));
  EXPECT_EQ(L"No such file or directory.", refusal(folder_.wide("missing/a"), 2));
  EXPECT_EQ(L"Not a directory.", refusal(folder_.wide("file/a"), 2));
  EXPECT_EQ(L"Is a directory.", refusal(folder_.wide(""), 2));
  EXPECT_EQ(L"File exists.", refusal(folder_.wide(""), 1));
  EXPECT_EQ(L"File name too long.", refusal(folder_.wide(std::string(256, 'n')), 2));
  EXPECT_EQ(L"No such device or address.", refusal(folder_.wide("pipe"), 2));
  EXPECT_EQ(L"No such file or directory.", refusal(L"", 2));
  EXPECT_TRUE(FAILED(call(object_, L"SaveToFile", folder_.wide("a") + std::wstring(L"\0b", 2), 2).hr));
  EXPECT_FALSE(std::filesystem::exists(folder_.path("a")));
}

}  // namespace
