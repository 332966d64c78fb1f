#include "app/configuration.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;

class Configuration : public testing::Test {
 protected:
  Configuration() {
    std::string name = (fs::temp_directory_path() / "zelto-conf-XXXXXX").string();
    command.site = mkdtemp(name.data());
  }
  ~Configuration() override { fs::remove_all(command.site); }

  zelto::Configuration read(const std::string& text) {
    std::ofstream(command.site + "/zelto.toml") << text;
    return zelto::read_configuration(command);
  }
  std::string problem(const std::string& text) {
    try {
      read(text);
    } catch (const zelto::WrongUse& error) {
      return error.what();
    }
    return "none";
  }

  zelto::ServeCommand command;
};

TEST_F(Configuration, HasDefaults) {
  const auto made = zelto::read_configuration(command);
  EXPECT_EQ(made.server.address, "127.0.0.1");
  EXPECT_EQ(made.server.port, 8080);
  EXPECT_EQ(made.server.limits.body_bytes, 16u * 1024 * 1024);
  EXPECT_EQ(made.site.script_timeout, std::chrono::seconds(90));
  EXPECT_EQ(made.site.session_timeout, 20);
  EXPECT_EQ(made.site.session_limit, 50'000u);
  EXPECT_FALSE(made.site.debug);
}

TEST_F(Configuration, ComesFromTheFile) {
  const auto made = read(
      "listen = \"[::1]:81\"\nworkers = 3\nbody_limit = 5\nscript_timeout = 7\nsession_timeout = 9\nsession_limit = "
      "8\ndebug = true\n");
  EXPECT_EQ(made.server.address, "::1");
  EXPECT_EQ(made.server.port, 81);
  EXPECT_EQ(made.server.workers, 3u);
  EXPECT_EQ(made.server.limits.body_bytes, 5u);
  EXPECT_EQ(made.site.script_timeout, std::chrono::seconds(7));
  EXPECT_EQ(made.site.session_timeout, 9);
  EXPECT_EQ(made.site.session_limit, 8u);
  EXPECT_TRUE(made.site.debug);
}

TEST_F(Configuration, AddsToWhatIsProtected) {
  const zelto::StaticOptions usual;
  const auto files =
      read("protect = [\"drafts/\", \"*.cfg\", \"notes.txt\"]\ndefault_documents = [\"a.asp\"]").site.files;
  auto folders = usual.protected_folders;
  folders.emplace_back("drafts");
  EXPECT_EQ(files.protected_folders, folders);
  EXPECT_EQ(files.protected_extensions.back(), ".cfg");
  EXPECT_EQ(files.protected_extensions.size(), usual.protected_extensions.size() + 1);
  EXPECT_EQ(files.protected_files.back(), "notes.txt");
  EXPECT_EQ(files.default_documents, std::vector<std::string>{"a.asp"});
}

TEST_F(Configuration, KnowsTheProxiesToTrust) {
  EXPECT_EQ(read("trusted_proxies = [\"127.0.0.1\", \"0:0::1\"]").server.trusted_proxies,
            (std::vector<std::string>{"127.0.0.1", "::1"}));
}

TEST_F(Configuration, NamesTheNodeOfASession) {
  EXPECT_EQ(read("session_node = \"eu1\"").site.session_suffix, ".eu1");
  EXPECT_EQ(read("").site.session_suffix, "");
}

TEST_F(Configuration, LetsTheCommandLineWin) {
  command.listen = ":82";
  command.workers = 1;
  command.body_limit = 6;
  const auto made = read("listen = \"127.0.0.1:81\"\nworkers = 3\nbody_limit = 5\n");
  EXPECT_EQ(made.server.address, "0.0.0.0");
  EXPECT_EQ(made.server.port, 82);
  EXPECT_EQ(made.server.workers, 1u);
  EXPECT_EQ(made.server.limits.body_bytes, 6u);
}

TEST_F(Configuration, KnowsTheNameOfThisMachine) {
  EXPECT_EQ(read("listen = \"localhost:81\"").server.address, "127.0.0.1");
}

TEST_F(Configuration, SaysWhatItDoesNotUnderstand) {
  const std::string file = command.site + "/zelto.toml";
  EXPECT_EQ(problem("wrokers = 3"), file + ": wrokers is not known");
  EXPECT_EQ(problem("workers = \"3\""), file + ": workers has a value of the wrong type");
  EXPECT_EQ(problem("workers = 0"), file + ": workers is a number from 1 to 1024");
  EXPECT_EQ(problem("session_limit = 0"), file + ": session_limit is a number from 1 to 10000000");
  EXPECT_EQ(problem("listen = \"here\""), "'here' is no ADDRESS:PORT");
  EXPECT_EQ(problem("listen = \"1.2.3.4:70000\""), "'1.2.3.4:70000' is no ADDRESS:PORT");
  EXPECT_EQ(problem("listen = \"example.org:80\""), "'example.org' is no address to listen on");
  EXPECT_EQ(problem("protect = \"a\""), file + ": protect is no list");
  EXPECT_EQ(problem("protect = [1]"), file + ": protect has a value of the wrong type");
  for (const char* name : {"", "/", "*", "*.", "a/b", "a*", "*.a/"})
    EXPECT_EQ(problem("protect = [\"" + std::string(name) + "\"]"),
              file + ": protect takes \"folder/\", \"*.extension\" or \"file\"")
        << name;
  EXPECT_EQ(problem("trusted_proxies = [\"proxy\"]"), file + ": trusted_proxies takes addresses, as in \"127.0.0.1\"");
  EXPECT_EQ(problem("session_node = \"a;b\""), file + ": session_node takes letters and digits");
  EXPECT_EQ(problem("a = \n").substr(0, file.size() + 3), file + ":1:");
}

}  // namespace
