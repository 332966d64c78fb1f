// The command line itself: what it prints, and its exit codes.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "site/program.h"

namespace {

namespace fs = std::filesystem;
using test::Ran;

class Command : public testing::Test {
 protected:
  Command() {
    std::string name = (fs::temp_directory_path() / "zelto-command-XXXXXX").string();
    folder_ = mkdtemp(name.data());
  }
  ~Command() override { fs::remove_all(folder_); }

  Ran run(const std::vector<std::string>& words) const { return test::run_program(words, folder_, folder_); }
  void file(const char* name, const char* text) const { std::ofstream(folder_ / name, std::ios::binary) << text; }

  fs::path folder_;
};

TEST_F(Command, TellsItsVersionAndItsUse) {
  const Ran version = run({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_TRUE(version.output.starts_with("zelto ")) << version.output;
  const Ran help = run({"--help"});
  EXPECT_EQ(help.status, 0);
  for (const char* name : {"serve", "run", "register", "unregister"}) {
    EXPECT_NE(help.output.find(name), std::string::npos) << name;
  }
}

TEST_F(Command, RefusesWrongUse) {
  file("page.asp", "x");
  const std::vector<std::vector<std::string>> wrong = {
      {},
      {"dance"},
      {"run"},
      {"run", "none.asp"},
      {"run", "page.asp", "--no-such-option"},
      {"run", "page.asp", "--header", "no header"},
      {"run", "page.asp", "--header", "X Y: z"},
      {"run", "page.asp", "--body", "none"},
      {"run", "page.asp", "--site", "/usr/include"},
      {"register"},
      {"serve", "none"},
      {"serve", ".", "--workers", "0"},
      {"serve", ".", "--workers", "many"},
  };
  for (const auto& words : wrong) {
    const Ran ran = run(words);
    EXPECT_EQ(ran.status, 2) << testing::PrintToString(words);
    EXPECT_NE(ran.error, "") << testing::PrintToString(words);
    EXPECT_EQ(ran.output, "") << testing::PrintToString(words);
  }
}

TEST_F(Command, SaysWhyItCannotServe) {
  const Ran listen = run({"serve", ".", "--listen", "nowhere"});
  EXPECT_EQ(listen.status, 1);
  EXPECT_EQ(listen.error, "zelto: 'nowhere' is no ADDRESS:PORT\n");
  file("zelto.toml", "colour = 1\n");
  const Ran configured = run({"serve", "."});
  EXPECT_EQ(configured.status, 1);
  EXPECT_EQ(configured.error, "zelto: ./zelto.toml: colour is not known\n");
}

TEST_F(Command, RegistersALibraryAndTakesItBack) {
  EXPECT_EQ(run({"register", MIRT_LIBRARY}).status, 0);
  std::ifstream in(folder_ / "registry.json");
  const std::string store(std::istreambuf_iterator<char>(in), {});
  EXPECT_NE(store.find("717FA104-3BC5-4b9e-8112-106B75FD22C4"), std::string::npos);
  EXPECT_NE(store.find("Apartment"), std::string::npos);
  EXPECT_NE(store.find(MIRT_LIBRARY), std::string::npos);
  file("page.asp", "<%= Server.CreateObject('Mirt.Utility').Trim(' a ') %>");
  EXPECT_EQ(run({"run", "page.asp"}).output, "a");
  EXPECT_EQ(run({"unregister", MIRT_LIBRARY}).status, 0);
  EXPECT_NE(run({"unregister", MIRT_LIBRARY}).status, 0);
}

TEST_F(Command, SaysWhichLibraryItCannotRegister) {
  const Ran ran = run({"register", "none.so"});
  EXPECT_EQ(ran.status, 1);
  EXPECT_NE(ran.error.find("none.so"), std::string::npos);
}

TEST_F(Command, ReadsTheBodyFromStandardInput) {
  file("page.asp", "<%= Request.TotalBytes %>");
  EXPECT_EQ(run({"run", "page.asp", "--body", "-"}).output, "0");
}

}  // namespace
