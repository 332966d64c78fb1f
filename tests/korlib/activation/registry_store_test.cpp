#include <korlib_host/registry_store.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <iterator>
#include <thread>

#include "support/temporary_folder.h"

namespace {

using korlib_host::RegistryStore;

class RegistryStoreTest : public testing::Test {
 protected:
  std::filesystem::path file() const { return folder_.path() / "registry.json"; }
  std::string content() const {
    std::ifstream stream(file());
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  void write(std::string_view text) const { std::ofstream(file()) << text; }
  std::ptrdiff_t files_beside() const {
    return std::distance(std::filesystem::directory_iterator(folder_.path()), std::filesystem::directory_iterator());
  }

  test::TemporaryFolder folder_;
};

TEST_F(RegistryStoreTest, IsEmptyWithoutAFile) {
  const RegistryStore store(file());
  EXPECT_TRUE(store.has_key(L""));
  EXPECT_FALSE(store.has_key(L"Mirt"));
  EXPECT_EQ(std::nullopt, store.value(L"Mirt", L""));
  EXPECT_EQ("", store.problem());
  EXPECT_FALSE(std::filesystem::exists(file()));
}

TEST_F(RegistryStoreTest, KeepsWhatIsWrittenBeyondItsLife) {
  {
    RegistryStore store(file());
    EXPECT_EQ(S_OK, store.create_key(L"CLSID\\{1}\\InProcServer32"));
    EXPECT_EQ(S_OK, store.set_value(L"CLSID\\{1}\\InProcServer32", L"", L"/opt/\x65E5\x672C/lib \"x\".so"));
    EXPECT_EQ(S_OK, store.set_value(L"CLSID\\{1}\\InProcServer32", L"ThreadingModel", L"Apartment"));
    EXPECT_EQ(S_OK, store.set_value(L"CLSID\\{1}", L"", L"Mirt"));
  }
  const RegistryStore store(file());
  EXPECT_TRUE(store.has_key(L"CLSID\\{1}"));
  EXPECT_EQ(L"/opt/\x65E5\x672C/lib \"x\".so", store.value(L"CLSID\\{1}\\InProcServer32", L""));
  EXPECT_EQ(L"Apartment", store.value(L"CLSID\\{1}\\InProcServer32", L"ThreadingModel"));
  EXPECT_EQ(L"Mirt", store.value(L"CLSID\\{1}", L""));
  EXPECT_EQ(std::nullopt, store.value(L"CLSID\\{1}", L"ThreadingModel"));
}

TEST_F(RegistryStoreTest, MatchesNamesInAnyLetterCaseAndKeepsTheFirst) {
  RegistryStore store(file());
  EXPECT_EQ(S_OK, store.create_key(L"Mirt.Utility\\CLSID"));
  EXPECT_EQ(S_OK, store.set_value(L"mirt.utility\\clsid", L"ThreadingModel", L"a"));
  EXPECT_EQ(S_OK, store.set_value(L"MIRT.UTILITY\\CLSID", L"THREADINGMODEL", L"b"));
  EXPECT_EQ(S_OK, store.create_key(L"MIRT.utility\\clsid"));
  EXPECT_EQ(L"b", store.value(L"Mirt.Utility\\Clsid", L"threadingmodel"));
  EXPECT_NE(std::string::npos, content().find("\"Mirt.Utility\""));
  EXPECT_NE(std::string::npos, content().find("\"ThreadingModel\""));
  EXPECT_EQ(std::string::npos, content().find("MIRT"));
}

TEST_F(RegistryStoreTest, SetsValuesOnlyOfKeysThatAreThere) {
  RegistryStore store(file());
  EXPECT_EQ(E_INVALIDARG, store.set_value(L"Mirt", L"", L"x"));
  EXPECT_FALSE(store.has_key(L"Mirt"));
  EXPECT_EQ(S_OK, store.set_value(L"", L"name", L"of the root"));
  EXPECT_EQ(L"of the root", store.value(L"", L"name"));
}

TEST_F(RegistryStoreTest, DeletesOnlyKeysWithoutKeysBelow) {
  RegistryStore store(file());
  EXPECT_EQ(S_OK, store.create_key(L"Mirt\\CLSID"));
  EXPECT_EQ(S_OK, store.set_value(L"Mirt\\CLSID", L"", L"x"));
  EXPECT_EQ(E_INVALIDARG, store.delete_key(L"Mirt"));
  EXPECT_EQ(E_INVALIDARG, store.delete_key(L""));
  EXPECT_EQ(E_INVALIDARG, store.delete_key(L"Mirt\\Other"));
  EXPECT_EQ(E_INVALIDARG, store.delete_key(L"Other\\CLSID"));
  EXPECT_EQ(S_OK, store.delete_key(L"mirt\\clsid"));
  EXPECT_FALSE(store.has_key(L"Mirt\\CLSID"));
  EXPECT_EQ(S_OK, store.delete_key(L"Mirt"));
  EXPECT_FALSE(store.has_key(L"Mirt"));
  EXPECT_FALSE(RegistryStore(file()).has_key(L"Mirt"));
}

TEST_F(RegistryStoreTest, RefusesNamesThatAreNone) {
  RegistryStore store(file());
  const std::wstring long_name(256, L'x');
  std::wstring deep = L"0";
  for (int i = 0; i < 40; ++i) deep += L"\\0";
  for (const std::wstring& key :
       {std::wstring(L"\\"), std::wstring(L"a\\"), std::wstring(L"\\a"), std::wstring(L"a\\\\b"), long_name, deep}) {
    EXPECT_EQ(E_INVALIDARG, store.create_key(key));
    EXPECT_FALSE(store.has_key(key));
  }
  EXPECT_EQ(S_OK, store.create_key(std::wstring(255, L'x')));
  EXPECT_EQ(E_INVALIDARG, store.set_value(L"", long_name, L""));
  EXPECT_EQ(E_INVALIDARG, store.set_value(L"", L"", std::wstring(40000, L'x')));
}

TEST_F(RegistryStoreTest, SeesWhatAnotherStoreWrote) {
  RegistryStore one(file());
  RegistryStore other(file());
  EXPECT_EQ(S_OK, one.create_key(L"A"));
  EXPECT_TRUE(other.has_key(L"A"));
  EXPECT_EQ(S_OK, other.create_key(L"B"));
  EXPECT_TRUE(one.has_key(L"A"));
  EXPECT_TRUE(one.has_key(L"B"));
  std::filesystem::remove(file());
  EXPECT_FALSE(one.has_key(L"A"));
}

TEST_F(RegistryStoreTest, SeesWhatAnotherStoreWroteOnceItIsTimeToLook) {
  RegistryStore seldom(file(), std::chrono::hours(1));
  RegistryStore often(file(), std::chrono::milliseconds(1));
  RegistryStore other(file());
  ASSERT_EQ(S_OK, other.create_key(L"A"));
  EXPECT_FALSE(seldom.has_key(L"A"));
  while (!often.has_key(L"A")) std::this_thread::yield();
  EXPECT_EQ(S_OK, seldom.create_key(L"B"));  // a change is made to what is there
  EXPECT_TRUE(seldom.has_key(L"A"));
}

TEST_F(RegistryStoreTest, LeavesNothingBesideTheFileButItsLock) {
  RegistryStore store(file());
  EXPECT_EQ(S_OK, store.create_key(L"A"));
  EXPECT_EQ(S_OK, store.create_key(L"B"));
  EXPECT_EQ(2, files_beside());
}

TEST_F(RegistryStoreTest, MakesTheFolderOfTheFile) {
  const auto deep = folder_.path() / "a" / "b" / "registry.json";
  RegistryStore store(deep);
  EXPECT_EQ(S_OK, store.create_key(L"A"));
  EXPECT_TRUE(std::filesystem::exists(deep));
}

TEST_F(RegistryStoreTest, ChangesNothingWhenTheFileCannotBeWritten) {
  // A folder stands where the file should be; that holds for every user.
  std::filesystem::create_directory(file());
  std::ofstream(file() / "occupied") << "x";
  RegistryStore store(file());
  EXPECT_EQ(E_FAIL, store.create_key(L"A"));
  EXPECT_FALSE(store.has_key(L"A"));
  EXPECT_NE("", store.problem());
  EXPECT_EQ(2, files_beside());
}

TEST_F(RegistryStoreTest, NeverWritesOverAFileThatItCannotRead) {
  std::string deep;
  for (int i = 0; i < 1000; ++i) deep += R"({"keys":{"a":)";
  const std::string cases[] = {"not json",
                               "[]",
                               "{",
                               R"({"keys":[]})",
                               R"({"values":{"a":1}})",
                               R"({"other":{}})",
                               R"({"keys":{"a":"b"}})",
                               deep + "{}" + std::string(2000, '}'),
                               std::string(100000, '[')};
  for (const std::string& text : cases) {
    write(text);
    RegistryStore store(file());
    EXPECT_EQ(file().string() + ": not a registry store", store.problem()) << text.substr(0, 40);
    EXPECT_EQ(E_FAIL, store.create_key(L"A"));
    EXPECT_FALSE(store.has_key(L"A"));
    EXPECT_EQ(text, content());
  }
  write("{}");
  EXPECT_EQ("", RegistryStore(file()).problem());
}

// While one lives, no file of this process grows: a full disk.
class FullDisk {
 public:
  FullDisk() : before_signal_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit none{0, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &none);
  }
  ~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, before_signal_);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

 private:
  using Handler = void (*)(int);
  Handler before_signal_;
  rlimit before_{};
};

TEST_F(RegistryStoreTest, KeepsTheOldFileWhenTheDiskIsFull) {
  RegistryStore store(file());
  ASSERT_EQ(S_OK, store.create_key(L"A"));
  const std::string before = content();
  HRESULT hr = S_OK;
  {
    const FullDisk full;
    hr = store.create_key(L"B");
  }
  EXPECT_EQ(E_FAIL, hr);
  EXPECT_FALSE(store.has_key(L"B"));
  EXPECT_EQ(before, content());
  EXPECT_EQ(2, files_beside()) << "half a file was left beside it";
  EXPECT_EQ(S_OK, store.create_key(L"B"));
}

TEST_F(RegistryStoreTest, IsReadableByEverybodyWhateverTheMask) {
  const mode_t before = umask(0077);
  RegistryStore store(file());
  EXPECT_EQ(S_OK, store.create_key(L"A"));
  umask(before);
  struct stat status {};
  ASSERT_EQ(0, stat(file().c_str(), &status));
  EXPECT_EQ(0644u, status.st_mode & 0777u);
}

TEST_F(RegistryStoreTest, ReadsNoFileLargerThanSixteenMegabytes) {
  write("{}");
  std::filesystem::resize_file(file(), 16u << 20);  // a NUL ends the text
  EXPECT_EQ("", RegistryStore(file()).problem());
  std::filesystem::resize_file(file(), (16u << 20) + 1);
  EXPECT_EQ(file().string() + ": too large for a registry store", RegistryStore(file()).problem());
}

TEST_F(RegistryStoreTest, KeepsNamesAndTextsUpToTheirLimits) {
  RegistryStore store(file());
  std::wstring deepest = L"0";
  for (int i = 1; i < 32; ++i) deepest += L"\\0";
  EXPECT_EQ(S_OK, store.create_key(deepest));
  EXPECT_EQ(E_INVALIDARG, store.create_key(deepest + L"\\0"));
  const std::wstring name(255, L'n');
  const std::wstring text(32767, L't');
  EXPECT_EQ(S_OK, store.set_value(deepest, name, text));
  EXPECT_EQ(E_INVALIDARG, store.set_value(deepest, name + L"n", text));
  EXPECT_EQ(E_INVALIDARG, store.set_value(deepest, name, text + L"t"));
  const RegistryStore after(file());
  EXPECT_EQ("", after.problem());
  EXPECT_EQ(text, after.value(deepest, name));
}

// Each change keeps the file's size, and one of what tells it otherwise.
TEST_F(RegistryStoreTest, SeesAChangeThatKeepsTheSize) {
  const auto set_time = [](const std::filesystem::path& path, long nanoseconds) {
    const timespec times[2] = {{1'000'000'000, 0}, {1'000'000'000, nanoseconds}};
    ASSERT_EQ(0, utimensat(AT_FDCWD, path.c_str(), times, 0));
  };
  write(R"({"keys":{"A":{}}})");
  set_time(file(), 0);
  const RegistryStore store(file());
  EXPECT_TRUE(store.has_key(L"A"));
  write(R"({"keys":{"B":{}}})");
  set_time(file(), 1);
  EXPECT_TRUE(store.has_key(L"B")) << "written again within the second";
  const auto other = folder_.path() / "other.json";
  std::ofstream(other) << R"({"keys":{"C":{}}})";
  set_time(other, 1);
  std::filesystem::rename(other, file());
  EXPECT_TRUE(store.has_key(L"C")) << "another file of the same time in its place";
}

TEST_F(RegistryStoreTest, ServesAgainOnceTheFileIsMended) {
  write("broken");
  RegistryStore store(file());
  EXPECT_FALSE(store.has_key(L"A"));
  write(R"({"keys":{"A":{"values":{"":"text"}}}})");
  EXPECT_EQ(L"text", store.value(L"a", L""));
  EXPECT_EQ("", store.problem());
}

}  // namespace
