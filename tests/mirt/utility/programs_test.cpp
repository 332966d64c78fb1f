// Digests and base64 of many random inputs, as other programs compute them.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "support/late_bound.h"
#include "support/module.h"
#include "support/temporary_folder.h"

namespace test {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kLongest = 300;
constexpr std::size_t kInputs = 10'000;

class OtherPrograms : public ModuleTest {
 protected:
  // The inputs lie in a folder of files, written once for all tests.
  static void SetUpTestSuite() {
    folder_.emplace();
    std::mt19937 random(20240229);  // the same inputs each time
    for (std::size_t i = 0; i < kInputs; ++i) {
      Bytes bytes(i % (kLongest + 1));
      for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
      char name[16];
      std::snprintf(name, sizeof name, "%05zu", i);
      folder_->write(name, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
      inputs_.push_back(std::move(bytes));
    }
  }
  static void TearDownTestSuite() {
    folder_.reset();
    inputs_.clear();
  }

  void SetUp() override { utility_ = module_.create(L"Utility"); }
  void TearDown() override {
    utility_.reset();
    ModuleTest::TearDown();
  }

  // The first word of each line that the command writes, run in the folder of the inputs.
  std::vector<std::wstring> first_words(const std::string& command) {
    const std::string line = "cd '" + folder_->path().string() + "' && " + command;
    const std::unique_ptr<FILE, int (*)(FILE*)> output(popen(line.c_str(), "r"), pclose);
    std::vector<std::wstring> words;
    std::array<char, 1024> text;
    while (output && std::fgets(text.data(), text.size(), output.get())) {
      std::string word;
      std::istringstream(text.data()) >> word;
      words.emplace_back(word.begin(), word.end());
    }
    return words;
  }

  void expect_same(const wchar_t* member, const std::string& command, std::size_t count) {
    const std::vector<std::wstring> expected = first_words(command);
    ASSERT_EQ(count, expected.size()) << command;
    for (std::size_t i = 0; i < count; ++i) {
      ASSERT_EQ(expected[i], text_of(call(utility_.get(), member, inputs_[i], 0))) << "input " << i;
    }
  }

  inline static std::optional<TemporaryFolder> folder_;
  inline static std::vector<Bytes> inputs_;
  CComPtr<IDispatch> utility_;
};

TEST_F(OtherPrograms, Md5sumAgrees) { expect_same(L"MD5", "ls [0-9]* | xargs md5sum", kInputs); }
TEST_F(OtherPrograms, Sha1sumAgrees) { expect_same(L"SHA1", "ls [0-9]* | xargs sha1sum", kInputs); }
TEST_F(OtherPrograms, OpensslAgrees) {
  expect_same(L"MD5", "ls [0-9]* | xargs openssl dgst -md5 -r", kInputs);
  expect_same(L"SHA1", "ls [0-9]* | xargs openssl dgst -sha1 -r", kInputs);
}

// One process an input, so each length once.
TEST_F(OtherPrograms, Base64Agrees) {
  expect_same(L"Base64Encode", "for f in $(ls [0-9]* | head -n 301); do base64 -w0 $f; echo; done", kLongest + 1);
  expect_same(L"Base64Encode", "for f in $(ls [0-9]* | head -n 301); do openssl base64 -A -in $f; echo; done",
              kLongest + 1);
}

// One process decodes what was encoded of all inputs: a padded line may stand before others.
TEST_F(OtherPrograms, Base64DecodesWhatWasEncoded) {
  Bytes all;
  const fs::path encoded = folder_->path("encoded");
  std::ofstream lines(encoded);
  for (const Bytes& input : inputs_) {
    const std::wstring line = text_of(call(utility_.get(), L"Base64Encode", input, 0));
    lines << std::string(line.begin(), line.end()) << '\n';
    all.insert(all.end(), input.begin(), input.end());
  }
  lines.close();
  const std::string command = "base64 -d '" + encoded.string() + "'";
  const std::unique_ptr<FILE, int (*)(FILE*)> output(popen(command.c_str(), "r"), pclose);
  Bytes decoded;
  std::array<std::uint8_t, 4096> buffer;
  while (const std::size_t got = std::fread(buffer.data(), 1, buffer.size(), output.get())) {
    decoded.insert(decoded.end(), buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(got));
  }
  EXPECT_TRUE(all == decoded);
}

// Each input there and back, by both codings.
TEST_F(OtherPrograms, EveryInputComesBack) {
  for (const Bytes& input : inputs_) {
    const std::wstring url = text_of(call(utility_.get(), L"URLEncode", input, 0));
    ASSERT_EQ(input, bytes_of(call(utility_.get(), L"URLDecode", url, -2)));
    if (input.empty()) continue;
    const std::wstring base64 = text_of(call(utility_.get(), L"Base64Encode", input, 0));
    ASSERT_EQ(input, bytes_of(call(utility_.get(), L"Base64Decode", base64, -2)));
  }
}

}  // namespace
}  // namespace test
