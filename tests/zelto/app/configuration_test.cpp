#include "app/configuration.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <sstream>
#include <string>

#include "app/command_line.h"
#include "app/configuration_file.h"
#include "support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

class Configuration : public testing::Test {
 protected:
  Configuration() { command.site = folder.path().string(); }

  zelto::Configuration read(const std::string& text) {
    folder.write("zelto.toml", text);
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

  const test::TemporaryFolder folder;
  zelto::ServeCommand command;
};

TEST_F(Configuration, HasDefaults) {
  const auto made = zelto::read_configuration(command);
  EXPECT_EQ("127.0.0.1", made.server.address);
  EXPECT_EQ(8080, made.server.port);
  EXPECT_EQ(16u * 1024 * 1024, made.server.limits.body_bytes);
  EXPECT_EQ(std::chrono::seconds(90), made.site.script_timeout);
  EXPECT_EQ(1024u * 1024 * 1024, made.site.script_memory);
  EXPECT_EQ(20, made.site.session_timeout);
  EXPECT_EQ(50'000u, made.site.session_limit);
  EXPECT_EQ(std::chrono::seconds(30), made.stop_timeout);
  EXPECT_FALSE(made.site.debug);
  EXPECT_TRUE(made.supervise);
  EXPECT_EQ(std::chrono::seconds(60), made.hang_timeout);
}

TEST_F(Configuration, LetsTheServerBeSupervisedOrNot) {
  EXPECT_FALSE(read("supervise = false").supervise);
  EXPECT_EQ(std::chrono::seconds(5), read("hang_timeout = 5").hang_timeout);
  const auto running = read("supervise = true");
  command.no_supervisor = true;
  auto fresh = read("supervise = true");
  EXPECT_FALSE(fresh.supervise);
  EXPECT_EQ((std::vector<std::string_view>{"supervise"}), keep_until_restart(fresh, running));
}

TEST_F(Configuration, ComesFromTheFile) {
  const auto made = read(
      "listen = \"[::1]:81\"\nworkers = 3\nbody_limit = 5\nscript_timeout = 7\nstop_timeout = 6\n"
      "session_timeout = 9\nsession_limit = 8\ndebug = true\nscript_memory = 16777216\nkept_memory = 33554432\n");
  EXPECT_EQ("::1", made.server.address);
  EXPECT_EQ(81, made.server.port);
  EXPECT_EQ(3u, made.server.workers);
  EXPECT_EQ(5u, made.server.limits.body_bytes);
  EXPECT_EQ(std::chrono::seconds(7), made.site.script_timeout);
  EXPECT_EQ(16u * 1024 * 1024, made.site.script_memory);
  EXPECT_EQ(32u * 1024 * 1024, made.site.kept_memory);
  EXPECT_EQ(9, made.site.session_timeout);
  EXPECT_EQ(8u, made.site.session_limit);
  EXPECT_EQ(std::chrono::seconds(6), made.stop_timeout);
  EXPECT_TRUE(made.site.debug);
}

TEST_F(Configuration, SaysWhichLanguagePagesHave) {
  EXPECT_EQ(zelto::pages::Language::javascript, read("").site.language);
  EXPECT_EQ(zelto::pages::Language::vbscript, read("language = \"vbscript\"").site.language);
  auto fresh = read("language = \"VBScript\"");
  EXPECT_EQ((std::vector<std::string_view>{"language"}), keep_until_restart(fresh, read("")));
  EXPECT_EQ(zelto::pages::Language::javascript, fresh.site.language);
}

TEST_F(Configuration, AddsToWhatIsProtected) {
  const auto files =
      read("protect = [\"drafts/\", \"*.cfg\", \"notes.txt\"]\ndefault_documents = [\"a.asp\"]").site.files;
  for (const char* path : {"/drafts/a", "/a.cfg", "/notes.txt", "/web.config", "/bin/a", "/global.asa"})
    EXPECT_NE("", files.protected_names.find_in(path)) << path;
  EXPECT_EQ(std::vector<std::string>{"a.asp"}, files.default_documents);
  EXPECT_TRUE(read("default_documents = []").site.files.default_documents.empty());
}

TEST_F(Configuration, KnowsTheProxiesToTrust) {
  EXPECT_EQ((std::vector<std::string>{"127.0.0.1", "::1"}),
            read("trusted_proxies = [\"127.0.0.1\", \"0:0::1\"]").server.trusted_proxies);
}

TEST_F(Configuration, NamesTheNodeOfASession) {
  EXPECT_EQ(".eu1", read("session_node = \"eu1\"").site.session_suffix);
  EXPECT_EQ("", read("").site.session_suffix);
}

TEST_F(Configuration, NamesTheLogAndProtectsIt) {
  EXPECT_EQ("", read("").log);
  EXPECT_EQ("/var/log/site.txt", read("log = \"/var/log/site.txt\"").log);
  fs::create_directory(command.site + "/logs");
  const auto made = read("log = \"logs/lines.txt\"");
  EXPECT_EQ(command.site + "/logs/lines.txt", made.log);
  EXPECT_EQ("lines.txt", made.site.files.protected_names.find_in("/logs/lines.txt"));
  EXPECT_EQ("", read("").site.files.protected_names.find_in("/logs/lines.txt"));
}

TEST_F(Configuration, KeepsUntilARestartWhatTakesOne) {
  const auto running = read("listen = \":81\"\nworkers = 3\nsession_node = \"a\"\ndebug = false\n");
  auto fresh = read("listen = \"127.0.0.1:82\"\nworkers = 4\nsession_node = \"b\"\ndebug = true\n");
  EXPECT_EQ((std::vector<std::string_view>{"listen", "workers", "session_node"}), keep_until_restart(fresh, running));
  EXPECT_EQ("0.0.0.0", fresh.server.address);
  EXPECT_EQ(81, fresh.server.port);
  EXPECT_EQ(3u, fresh.server.workers);
  EXPECT_EQ(".a", fresh.site.session_suffix);
  EXPECT_TRUE(fresh.site.debug);
  auto other_port = read("listen = \":82\"\nworkers = 3\nsession_node = \"a\"\n");
  EXPECT_EQ((std::vector<std::string_view>{"listen"}), keep_until_restart(other_port, running));
  auto same = running;
  EXPECT_TRUE(keep_until_restart(same, running).empty());
}

TEST_F(Configuration, LetsTheCommandLineWin) {
  command.listen = ":82";
  command.workers = 1;
  command.body_limit = 6;
  const auto made = read("listen = \"127.0.0.1:81\"\nworkers = 3\nbody_limit = 5\n");
  EXPECT_EQ("0.0.0.0", made.server.address);
  EXPECT_EQ(82, made.server.port);
  EXPECT_EQ(1u, made.server.workers);
  EXPECT_EQ(6u, made.server.limits.body_bytes);
}

TEST_F(Configuration, KnowsTheNameOfThisMachine) {
  EXPECT_EQ("127.0.0.1", read("listen = \"localhost:81\"").server.address);
  EXPECT_EQ("127.0.0.1", read("listen = \"81\"").server.address);
}

TEST_F(Configuration, TellsWhatIsTakenFromClientsAndGivenToThem) {
  const auto usual = read("");
  EXPECT_EQ(20'000u, usual.server.limits.upload_parts);
  EXPECT_FALSE(usual.server.limits.takes_underscores);
  EXPECT_FALSE(usual.site.files.refuses_unknown_types);
  const auto made = read("upload_parts = 9\nunderscore_headers = true\nunknown_types = \"refuse\"\n");
  EXPECT_EQ(9u, made.server.limits.upload_parts);
  EXPECT_TRUE(made.server.limits.takes_underscores);
  EXPECT_TRUE(made.site.files.refuses_unknown_types);
  EXPECT_FALSE(read("unknown_types = \"download\"").site.files.refuses_unknown_types);
}

TEST_F(Configuration, SaysWhatItDoesNotUnderstand) {
  struct Row {
    std::string text;
    std::string problem;  // after the file's name
  };
  const std::string protect =
      ":1: protect takes \"folder/\", \"*.extension\" or \"file\"; a right one is [\"drafts/\", \"*.cfg\"]";
  const std::vector<Row> rows = {
      {"wrokers = 3", ":1: wrokers is not known; did you mean 'workers'? zelto serve --help lists what is"},
      {"\n[server]\nlisten = 1", ":2: server is a table, and this file has none; a right line is workers = 4"},
      {"[[server]]", ":1: server is a table, and this file has none; a right line is workers = 4"},
      {"server.workers = 3", ":1: server is a table, and this file has none; a right line is workers = 4"},
      {"debug = true\n  script_timeout=99999999999999999999",
       ":2: Error while parsing decimal integer: '99999999999999999999' is not representable in 64 bits; a right line "
       "is "
       "script_timeout = 90"},
      {"debug = True", ":1: Error while parsing boolean: expected 'true', saw 'T'; a right line is debug = false"},
      {"workers 4", ":1: Error while parsing key-value pair: expected '=', saw '4'; a right line is workers = 4"},
      {"default_documents = [\"a.asp\", \"\"]",
       ":1: default_documents takes names of files; a right one is [\"default.asp\"]"},
      {"default_documents = [\"a/b.asp\"]",
       ":1: default_documents takes names of files; a right one is [\"default.asp\"]"},
      {"default_documents = [\"..\"]", ":1: default_documents takes names of files; a right one is [\"default.asp\"]"},
      {"spool_folder = \"\"", ":1: spool_folder is not a folder; a right one is \"/var/tmp\""},
      {"spool_folder = \"none\"", ":1: spool_folder is not a folder; a right one is \"/var/tmp\""},
      {"debug = true\nworkers = \"3\"", ":2: workers has a value of the wrong type; a right one is 4"},
      {"workers = 3.0", ":1: workers has a value of the wrong type; a right one is 4"},
      {"debug = 1", ":1: debug has a value of the wrong type; a right one is false"},
      {"listen = \"here\"",
       ":1: listen names no place to serve: 'here' is not an ADDRESS:PORT; a right one is \"127.0.0.1:8080\""},
      {"\nlisten = \"1.2.3.4:70000\"",
       ":2: listen names no place to serve: '1.2.3.4:70000' is not an ADDRESS:PORT; a right one is \"127.0.0.1:8080\""},
      {"listen = \"example.org:80\"",
       ":1: listen names no place to serve: 'example.org' is not an address to listen on; a right one is "
       "\"127.0.0.1:8080\""},
      {"listen = \"[]:80\"",
       ":1: listen names no place to serve: '' is not an address to listen on; a right one is \"127.0.0.1:8080\""},
      {"\"a\\u001B[2J\\nb\" = 1", ":1: a [2J b is not known; zelto serve --help lists what is"},
      {"debug = true\nprot\u00E9g = []",
       ":2: a character beyond ASCII stands outside of quotes or after a continued line"},
      {"\xEF\xBB\xBF\u00A0"
       "debug = true",
       ":1: a character beyond ASCII stands outside of quotes or after a continued line"},
      {"log = \"\"\"a\\ \n\t\u00E9\"\"\"",
       ":2: a character beyond ASCII stands outside of quotes or after a continued line"},
      {"listen = 80", ":1: listen has a value of the wrong type; a right one is \"127.0.0.1:8080\""},
      {"protect = \"a\"", ":1: protect has a value of the wrong type; a right one is [\"drafts/\", \"*.cfg\"]"},
      {"protect = [1]", ":1: protect has a value of the wrong type; a right one is [\"drafts/\", \"*.cfg\"]"},
      {"workers = 0", ":1: workers is a number from 1 to 1024; a right one is 4"},
      {"body_limit = -1", ":1: body_limit is a number from 0 to 1099511627776; a right one is 16777216"},
      {"script_timeout = 0", ":1: script_timeout is a number from 1 to 86400; a right one is 90"},
      {"language = \"Perl\"", ":1: language is \"JavaScript\" or \"VBScript\"; a right one is \"JavaScript\""},
      {"script_memory = 1", ":1: script_memory is a number from 16777216 to 1099511627776; a right one is 1073741824"},
      {"kept_memory = 1", ":1: kept_memory is a number from 16777216 to 1125899906842624; a right one is 4294967296"},
      {"session_timeout = 1441", ":1: session_timeout is a number from 1 to 1440; a right one is 20"},
      {"stop_timeout = -1", ":1: stop_timeout is a number from 0 to 3600; a right one is 30"},
      {"session_limit = 0", ":1: session_limit is a number from 1 to 10000000; a right one is 50000"},
      {"upload_parts = 0", ":1: upload_parts is a number from 1 to 10000000; a right one is 20000"},
      {"unknown_types = \"show\"", ":1: unknown_types is \"download\" or \"refuse\"; a right one is \"download\""},
      {"protect = [\"\"]", protect},
      {"protect = [\"/\"]", protect},
      {"protect = [\"*\"]", protect},
      {"protect = [\"*.\"]", protect},
      {"protect = [\"a/b\"]", protect},
      {"protect = [\"a*\"]", protect},
      {"protect = [\"*.a/\"]", protect},
      {"trusted_proxies = [\"proxy\"]", ":1: trusted_proxies takes addresses; a right one is [\"127.0.0.1\"]"},
      {"log = \"logs/\"", ":1: log takes the name of a file; a right one is \"/var/log/zelto.log\""},
      {"log = \"none/a.log\"", ":1: log is in a folder that there is not; a right one is \"/var/log/zelto.log\""},
      {"log = \"\"", ":1: log takes the name of a file; a right one is \"/var/log/zelto.log\""},
      {"session_node = \"a;b\"", ":1: session_node takes letters and digits; a right one is \"a\""},
      {"workers = 1\nworkers = 2",
       ":2: Error while parsing key-value pair: cannot redefine existing integer 'workers'; each key stands there "
       "once"},
      {"listen = \"\xFF\"", ":1: Encountered invalid utf-8 sequence; a right line is listen = \"127.0.0.1:8080\""},
  };
  for (const Row& row : rows) EXPECT_EQ(command.site + "/zelto.toml" + row.problem, problem(row.text)) << row.text;
  EXPECT_EQ(0u, problem("a = \n").find(command.site + "/zelto.toml:1: "));
}

// The first was told alone.
TEST_F(Configuration, TellsAllThatIsWrongWithItsPlace) {
  const auto faults = [this](const std::string& text) {
    folder.write("zelto.toml", text);
    std::vector<std::string> told;
    try {
      zelto::read_configuration(command);
    } catch (const zelto::WrongConfiguration& error) {
      for (const zelto::ConfigurationFault& fault : error.faults)
        told.push_back(std::to_string(fault.line) + ":" + std::to_string(fault.column) + " " +
                       fault.text.substr(0, fault.text.find(' ')));
    }
    return told;
  };
  EXPECT_EQ((std::vector<std::string>{"1:1 foo", "2:3 wrokers", "3:9 Error", "4:18 script_timeout", "5:8 Error",
                                      "7:11 Error", "8:19 trusted_proxies", "9:2 x"}),
            faults("foo = 1\n  wrokers = 3\ndebug = True\nscript_timeout = \"a\"\nlisten 80\nworkers = 2\n"
                   "workers = 3\ntrusted_proxies = [\"a\", \"b\"]\n[x]\ny = 1\n"));
  // What follows may be a part of the same value.
  EXPECT_EQ((std::vector<std::string>{"2:1 Error"}), faults("protect = [\nworkers = 3\ndebug = 5\n"));
  EXPECT_EQ((std::vector<std::string>{"1:13 Error"}), faults("protect = [foo,\n\"a\"]\ndebug = 5\n"));
  EXPECT_EQ(std::vector<std::string>(), faults("workers = 3\n"));
  EXPECT_EQ(command.site +
                "/zelto.toml:1: foo is not known; zelto serve --help lists what is (and 1 more: zelto check "
                "tells them)",
            problem("foo = 1\nbar = 2"));
}

// A value of each other type than the key's own: with the line, what is wrong and a right value.
TEST_F(Configuration, RefusesAWrongTypeOfEveryKey) {
  std::istringstream lines(zelto::ConfigurationFile::help());
  std::size_t keys = 0;
  for (std::string line; std::getline(lines, line); ++keys) {
    const std::size_t equals = line.find(" = ");
    const std::string key = line.substr(2, equals - 2);
    const std::string shown = line.substr(equals + 3, line.find('#') - equals - 3);
    const std::string right = shown.substr(0, shown.find_last_not_of(' ') + 1);
    ASSERT_FALSE(right.empty()) << line;
    const char type = "0123456789"s.find(right[0]) != std::string::npos ? '0' : right[0];
    for (const std::string wrong : {"0", "1.5", "\"a\"", "[1]", "true", "{}", "1979-05-27"}) {
      const bool is_of_the_type = wrong == "true" ? type == 't' || type == 'f' : wrong[0] == type && wrong.size() == 1;
      if (is_of_the_type || (wrong == "\"a\"" && type == '"')) continue;
      EXPECT_EQ(command.site + "/zelto.toml:2: " + key + " has a value of the wrong type; a right one is " + right,
                problem("# \n" + key + " = " + wrong));
    }
  }
  EXPECT_EQ(28u, keys);
}

TEST_F(Configuration, TakesEveryNumberWithinItsBoundsAndNoOther) {
  struct Row {
    const char* key;
    std::int64_t least, most;
  };
  constexpr std::int64_t kMiB = 1048576;
  constexpr std::int64_t kTiB = kMiB * kMiB;
  const Row rows[] = {
      {"workers", 1, 1024},
      {"body_limit", 0, kTiB},
      {"upload_parts", 1, 10'000'000},
      {"script_timeout", 1, 86'400},
      {"script_memory", 16 * kMiB, kTiB},
      {"kept_memory", 16 * kMiB, 1024 * kTiB},
      {"stop_timeout", 0, 3600},
      {"hang_timeout", 0, 3600},
      {"session_timeout", 1, 1440},
      {"session_limit", 1, 10'000'000},
      {"session_queue", 0, 1000},
      {"connections", 1, 1'000'000},
      {"connections_per_address", 0, 1'000'000},
      {"buffer_memory", 0, 1024 * kTiB},
      {"spool_limit", 0, 1024 * kTiB},
  };
  std::size_t numbers = 0;
  std::istringstream help(zelto::ConfigurationFile::help());
  for (std::string line; std::getline(help, line);) numbers += std::isdigit(line[line.find(" = ") + 3]) != 0;
  EXPECT_EQ(std::size(rows), numbers);
  for (const Row& row : rows) {
    const auto given = [&](std::int64_t value) { return problem(row.key + (" = " + std::to_string(value))); };
    for (const std::int64_t right : {row.least, row.most}) EXPECT_EQ("none", given(right)) << row.key;
    const std::string refused = command.site + "/zelto.toml:1: " + row.key + " is a number from " +
                                std::to_string(row.least) + " to " + std::to_string(row.most) + "; a right one is ";
    for (const std::int64_t wrong : {row.least - 1, row.most + 1, std::numeric_limits<std::int64_t>::min()})
      EXPECT_EQ(refused, given(wrong).substr(0, refused.size())) << row.key;
  }
}

TEST_F(Configuration, SaysThatItsFileCannotBeRead) {
  const std::string file = command.site + "/zelto.toml";
  fs::create_directory(file);
  EXPECT_EQ(file + " is not a file", problem(""));
  fs::remove(file);
  fs::create_symlink(file, file);
  EXPECT_EQ(file + " cannot be read: Too many levels of symbolic links", problem(""));
}

TEST_F(Configuration, TakesAnyCharacterInQuotesAndRemarks) {
  const auto log = [this](const std::string& text) { return fs::path(read(text).log).filename().string(); };
  EXPECT_EQ("\u00E9", log("\xEF\xBB\xBF# \u00E9 \"\r\nlog = \"\u00E9\" # \u3042"));
  EXPECT_EQ("\\\u00E9", log("log = '\\\u00E9'"));
  EXPECT_EQ("\"\u00E9\"", log("log = \"\\\"\u00E9\\\"\""));
  EXPECT_EQ("\"\u00E9\"'", log("log = \"\"\"\n\"\u00E9\"'\"\"\""));
  EXPECT_EQ("ab\\\u00E9", log("log = \"\"\"a\\\n  b\\\\\u00E9\"\"\""));
  EXPECT_EQ("\u00E9''", log("log = '''\u00E9'''''"));
}

// Every key that the help lists is one, and its example is right.
TEST_F(Configuration, TakesWhatItsHelpShows) { EXPECT_EQ("none", problem(zelto::ConfigurationFile::help())); }

}  // namespace
