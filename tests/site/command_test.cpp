// The command line itself: what it prints, and its exit codes.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "site/program.h"
#include "support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;
using test::Ran;

std::vector<std::string> options_in(const std::string& help) {
  std::vector<std::string> options;
  for (std::size_t at = help.find("--"); at < help.size(); at = help.find("--", at)) {
    const std::size_t end = std::min(help.find_first_not_of("abcdefghijklmnopqrstuvwxyz-", at), help.size());
    options.push_back(help.substr(at, end - at));
    at = end;
  }
  return options;
}

class Command : public testing::Test {
 protected:
  Ran run(const std::vector<std::string>& words) const { return test::run_program(words, folder_, folder_); }
  void file(const char* name, const char* text) const { temporary_.write(name, text); }

  const test::TemporaryFolder temporary_;
  const fs::path folder_ = temporary_.path();
};

TEST_F(Command, TellsItsVersionAndItsUse) {
  const Ran version = run({"--version"});
  EXPECT_EQ(0, version.status);
  EXPECT_TRUE(version.output.starts_with("zelto ")) << version.output;
  const Ran help = run({"--help"});
  EXPECT_EQ(0, help.status);
  EXPECT_LE(std::ranges::count(help.output, '\n'), 24) << "one screen";
  for (const char* name : {"serve", "run", "register", "unregister"}) {
    for (const std::string& option : options_in(run({name, "--help"}).output))
      EXPECT_NE(std::string::npos, help.output.find(option)) << name << " " << option;
    EXPECT_NE(std::string::npos, help.output.find(name)) << name;
  }
  EXPECT_NE(std::string::npos, help.output.find("Exit code: 0 done, 1 failed"));
  const std::string serving = run({"serve", "--help"}).output;
  for (const char* told : {"session_limit", "SIGHUP", "Never served", "web.config, ", " bin/, ", " *.pem, "})
    EXPECT_NE(std::string::npos, serving.find(told)) << told;
  EXPECT_NE(std::string::npos, run({"register", "--help"}).output.find("ZELTO_REGISTRY"));
}

TEST_F(Command, TellsOfAGlobalAsaThatIsNotRun) {
  file("page.asp", "shown");
  EXPECT_EQ("", run({"run", "page.asp"}).error);
  file("Global.ASA", "<script language=\"javascript\" runat=\"server\">function Application_OnStart() {}</script>");
  const Ran ran = run({"run", "page.asp"});
  EXPECT_EQ("zelto: Global.ASA is not run: what it declares for the application and its sessions does not happen\n",
            ran.error);
  EXPECT_EQ("shown", ran.output);
  EXPECT_EQ(0, ran.status);
}

TEST_F(Command, RefusesWrongUse) {
  file("page.asp", "x");
  const std::vector<std::vector<std::string>> wrong = {
      {"dance"},
      {"run"},
      {"run", "none.asp"},
      {"run", "page.asp", "--no-such-option"},
      {"run", "page.asp", "--header", "no header"},
      {"run", "page.asp", "--header", "X Y: z"},
      {"run", "page.asp", "--body", "none"},
      {"run", "page.asp", "--site", "/usr/include"},
      {"run", "page.asp", "--method", "G T"},
      {"run", "."},
      {"run", "page.asp", "page.asp"},
      {"register"},
      {"unregister"},
      {"serve", "none"},
      {"serve", "page.asp"},
      {"serve", ".", "."},
      {"serve", ".", "--workers", "0"},
      {"serve", ".", "--workers", "1025"},
      {"serve", ".", "--workers", "many"},
      {"serve", ".", "--body-limit", "-1"},
      {"serve", ".", "--body-limit", "1 furlong"},
      {"serve", ".", "--listen", "8080x"},
      {"serve", ".", "--listen", "127.0.0.1:70000"},
      {"serve", ".", "--listen", "no-address:8080"},
  };
  for (const auto& words : wrong) {
    const Ran ran = run(words);
    EXPECT_EQ(2, ran.status) << testing::PrintToString(words);
    EXPECT_TRUE(ran.error.starts_with("zelto: ")) << testing::PrintToString(words) << ran.error;
    EXPECT_EQ(1, std::ranges::count(ran.error, '\n')) << testing::PrintToString(words) << ran.error;
    EXPECT_EQ("", ran.output) << testing::PrintToString(words);
  }
}

TEST_F(Command, TellsWhatThereIsWithoutWords) {
  const Ran ran = run({});
  EXPECT_EQ(2, ran.status);
  EXPECT_EQ(run({"--help"}).output, ran.output);
  EXPECT_EQ("", ran.error);
}

TEST_F(Command, SaysWhatWasMeant) {
  file("a.asp", "x");
  const std::vector<std::pair<std::vector<std::string>, std::string>> rows = {
      {{"srve"}, "there is no command 'srve'; did you mean 'serve'? (zelto --help tells what there is)"},
      {{"dance"}, "there is no command 'dance' (zelto --help tells what there is)"},
      {{"serve", ".", "--wrkers", "3"},
       "there is no option '--wrkers'; did you mean '--workers'? (zelto serve --help tells what there is)"},
      {{"run", "a.asp", "--qery", "a=b"},
       "there is no option '--qery'; did you mean '--query'? (zelto run --help tells what there is)"},
      {{"serve", ".", "--workers", "abc"},
       "--workers: 'abc' is not a number from 1 to 1024; a right one is 4 (zelto serve --help tells what there is)"},
      {{"serve", ".", "--workers", "-1"},
       "--workers: '-1' is not a number from 1 to 1024; a right one is 4 (zelto serve --help tells what there is)"},
      {{"run", "a.asp", "--times", "0"},
       "--times: '0' is not a number from 1 to 1000000000; a right one is 1000 (zelto run --help tells what there is)"},
      {{"run", "a.asp", "--header", "x"}, "--header: 'x' is not a header; a right one is 'Accept: text/html'"},
      {{"run", "a.asp", "--header", "X Y: z"},
       "--header: 'X Y: z' is not a header; a right one is 'Accept: text/html'"},
      {{"run", "a.asp", "--method", "G T"}, "--method: 'G T' is not a method; a right one is POST"},
      {{"run", "a.asp", "--body", "none"}, "--body: 'none' cannot be read"},
      {{"run", "a.asp", "--site", "none"}, "--site: 'none' is not a folder"},
      {{"run", "a.asp", "--site", "/usr/include"}, "--site: 'a.asp' does not lie in '/usr/include'"},
      {{"serve", ".", "--body-limit", "16XB"},
       "--body-limit: '16XB' is not a size; a right one is 16MiB (zelto serve --help tells what there is)"},
      {{"serve", ".", "--workers"}, "--workers takes NUMBER (zelto serve --help tells what there is)"},
      {{"run", "a.asp", "b.asp", "c.asp"}, "there is no use for 'b.asp' (zelto run --help tells what there is)"},
      {{"serve", ".", "--debug=5"}, "--debug takes no value (zelto serve --help tells what there is)"},
      {{"run", "a.asp", "--site", "a", "--site", "b"},
       "--site is given more than once (zelto run --help tells what there is)"},
      {{"init", "/proc/x"}, "the folder '/proc/x' cannot be made: No such file or directory"},
      {{"check", "--json=yes"}, "--json takes no value (zelto check --help tells what there is)"},
      {{"help", "script_timeot"}, "the documents say nothing about 'script_timeot'; did you mean 'script_timeout'?"},
      {{"help", "Response.Wrte"}, "the documents say nothing about 'Response.Wrte'; did you mean 'Response.Write'?"},
      {{"help", "Resonse.Write"}, "the documents say nothing about 'Resonse.Write'; did you mean 'Response.Write'?"},
      {{"help", "Foo.Write"}, "the documents say nothing about 'Foo.Write'; did you mean 'Write'?"},
      {{"help", "foo"}, "the documents say nothing about 'foo'; zelto help lists them"},
      {{"help", "(#Ax#)"},
       "the documents say nothing about '(#Ax#)'; no mark has that type: zelto help templates tells which there are"},
  };
  for (const auto& [words, expected] : rows) {
    const Ran ran = run(words);
    EXPECT_EQ("zelto: " + expected + "\n", ran.error);
    EXPECT_EQ("", ran.output);
  }
}

TEST_F(Command, HelpsWithTheClassThatIsNamed) {
  EXPECT_EQ(0U, run({"help", "ADODB.Connection.Execute"}).output.find("docs/databases.md, Members:\n  connection: "));
  EXPECT_EQ(0U, run({"help", "Server.Execute"}).output.find("docs/objects.md, Server:\n  Execute(path)"));
  EXPECT_NE(std::string::npos, run({"help", "page.SetView"}).output.find("SetView(name, value)"));
}

// It was left unread, and a page ran otherwise than it would be served.
TEST_F(Command, RunsAPageAsItsSiteSays) {
  fs::create_directory(folder_ / "sub");
  file("sub/a.asp", "<%= Server.ScriptTimeout %>");
  file("zelto.toml", "script_timeout = 77\n");
  EXPECT_EQ("77", run({"run", "sub/a.asp", "--site", "."}).output);
  EXPECT_EQ("90", run({"run", "sub/a.asp"}).output);
  file("zelto.toml", "colour = 1\n");
  const Ran wrong = run({"run", "sub/a.asp", "--site", "."});
  EXPECT_EQ(2, wrong.status);
  EXPECT_EQ("zelto: ./zelto.toml:1: colour is not known; zelto serve --help lists what is\n", wrong.error);
}

TEST_F(Command, SaysWhyItCannotServe) {
  const Ran listen = run({"serve", ".", "--listen", "nowhere"});
  EXPECT_EQ(2, listen.status);
  EXPECT_EQ("zelto: --listen: 'nowhere' is not an ADDRESS:PORT; a right one is 127.0.0.1:8080\n", listen.error);
  file("zelto.toml", "colour = 1\n");
  const Ran configured = run({"serve", "."});
  EXPECT_EQ(2, configured.status);
  EXPECT_EQ("zelto: ./zelto.toml:1: colour is not known; zelto serve --help lists what is\n", configured.error);
  EXPECT_EQ("zelto: 'none' is not a folder\n", run({"serve", "none"}).error);
  EXPECT_EQ("zelto: '' is not a folder\n", run({"serve", ""}).error);
  fs::remove(folder_ / "zelto.toml");
  fs::create_directory(folder_ / "zelto.toml");
  const Ran unreadable = run({"serve", "."});
  EXPECT_EQ(2, unreadable.status);
  EXPECT_EQ("zelto: ./zelto.toml is not a file\n", unreadable.error);
}

TEST_F(Command, SaysThatAnAddressIsNotItsOwn) {
  const Ran ran = run({"serve", ".", "--listen", "[2001:db8::1]:8080"});
  EXPECT_EQ(1, ran.status);
  EXPECT_TRUE(ran.error.starts_with("zelto: listening on [2001:db8::1]:8080: ")) << ran.error;
}

TEST_F(Command, SaysThatAnAddressIsTaken) {
  const int taken = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* any = reinterpret_cast<sockaddr*>(&address);
  ASSERT_EQ(0, ::bind(taken, any, size));
  ASSERT_EQ(0, ::listen(taken, 1));
  ASSERT_EQ(0, ::getsockname(taken, any, &size));
  const std::string listen = "127.0.0.1:" + std::to_string(ntohs(address.sin_port));
  const Ran ran = run({"serve", ".", "--listen", listen});
  EXPECT_EQ(1, ran.status);
  EXPECT_EQ("zelto: listening on " + listen +
                ": Address already in use; --listen, or listen in "
                "zelto.toml, takes another one\n",
            ran.error);
  ::close(taken);
}

TEST_F(Command, RegistersALibraryAndTakesItBack) {
  EXPECT_EQ(0, run({"register", MIRT_LIBRARY}).status);
  const std::string store = temporary_.read("registry.json");
  EXPECT_NE(std::string::npos, store.find("717FA104-3BC5-4b9e-8112-106B75FD22C4"));
  EXPECT_NE(std::string::npos, store.find("Apartment"));
  EXPECT_NE(std::string::npos, store.find(MIRT_LIBRARY));
  file("page.asp", "<%= Server.CreateObject('Mirt.Utility').Trim(' a ') %>");
  EXPECT_EQ("a", run({"run", "page.asp"}).output);
  EXPECT_EQ(0, run({"unregister", MIRT_LIBRARY}).status);
  EXPECT_NE(0, run({"unregister", MIRT_LIBRARY}).status);
}

TEST_F(Command, SaysWhichLibraryItCannotRegister) {
  const Ran ran = run({"register", "none.so"});
  EXPECT_EQ(1, ran.status);
  EXPECT_NE(std::string::npos, ran.error.find("none.so"));
}

// A module asks for its own path with room for 260 characters, the NUL among them.
TEST_F(Command, RefusesALibraryWithAPathOf260Characters) {
  const auto library_at = [&](std::size_t length) {
    fs::path folder = folder_;
    const std::size_t missing = length - folder.string().size() - std::string("//a.so").size();
    folder /= std::string(std::min<std::size_t>(missing, 200), 'x');
    if (missing > 200) folder /= std::string(missing - 201, 'y');
    fs::create_directories(folder);
    fs::copy_file(MIRT_LIBRARY, folder / "a.so", fs::copy_options::overwrite_existing);
    return (folder / "a.so").string();
  };
  const std::string longest = library_at(259);
  ASSERT_EQ(259u, longest.size());
  const Ran taken = run({"register", longest});
  EXPECT_EQ(0, taken.status) << taken.error;
  const std::string too_long = library_at(260);
  ASSERT_EQ(260u, too_long.size());
  const std::string words =
      too_long + " cannot be used as a module: its path has 260 characters, and 259 are the most.";
  const Ran refused = run({"register", too_long});
  EXPECT_EQ(1, refused.status);
  EXPECT_EQ("zelto: " + too_long + ": " + words + " (0x800401F9)\n", refused.error);

  // A module that lies there all the same, as one that was moved, is told to the page that needs it.
  std::string store = temporary_.read("registry.json");
  for (std::size_t at = store.find(longest); at != std::string::npos; at = store.find(longest, at + 1))
    store.replace(at, longest.size(), too_long);
  temporary_.write("registry.json", store);
  file("page.asp", "<% try { Server.CreateObject('Mirt.Utility'); } catch (e) { Response.Write(e.message); } %>");
  EXPECT_EQ(words, run({"run", "page.asp"}).output);
}

TEST_F(Command, ReadsTheBodyFromStandardInput) {
  file("page.asp", "<%= Request.TotalBytes %>");
  EXPECT_EQ("0", run({"run", "page.asp", "--body", "-"}).output);
  file("form", "a=1%202&a=3");
  file("page.asp", "<%= Request.ServerVariables('REQUEST_METHOD') + Request.Form('a') %>");
  const Ran ran = test::run_program({"run", "page.asp", "--body", "-"}, folder_, folder_, folder_ / "form");
  EXPECT_EQ("POST1 2, 3", ran.output);
}

TEST_F(Command, SaysHowAPageEndedByItsExitCode) {
  struct Row {
    const char* page;
    int status;
  };
  for (const Row& row :
       {Row{"<% Response.Status = '302 Found'; %>", 0}, Row{"<% Response.Status = '399 Odd'; %>", 0},
        Row{"<% Response.Status = '400 Bad Request'; %>", 1}, Row{"<% fails(); %>", 1}, Row{"<% syntax error %>", 1}}) {
    file("page.asp", row.page);
    EXPECT_EQ(row.status, run({"run", "page.asp"}).status) << row.page;
  }
}

TEST_F(Command, TakesOptionsBeforeAndAfterThePage) {
  file("page.asp", "<%= Request.ServerVariables('HTTP_X_A') + Request.QueryString('q') %>");
  EXPECT_EQ("12", run({"run", "--header", "X-A: 1", "--query", "q=2", "page.asp"}).output);
  EXPECT_EQ("1, 32", run({"run", "page.asp", "--header", "X-A: 1", "--header", "X-A: 3", "--query", "q=2"}).output);
}

TEST_F(Command, OutlivesAFileThatMayNotBecomeThatLarge) {
  file("page.asp", R"(<%
    var stream = Server.CreateObject("ADODB.Stream");
    stream.Open();
    stream.WriteText("x".repeat(100000));
    try { stream.SaveToFile(Server.MapPath("large")); } catch (error) { Response.Write(error.message); } %>)");
  rlimit before{};
  ASSERT_EQ(0, getrlimit(RLIMIT_FSIZE, &before));
  const rlimit limit{65536, before.rlim_max};
  ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &limit));
  const Ran ran = run({"run", "page.asp"});
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(0, ran.status);
  EXPECT_EQ("Cannot write '" + (folder_ / "large").string() + "': File too large.", ran.output);
  EXPECT_FALSE(fs::exists(folder_ / "large"));
}

TEST_F(Command, PrintsTheHeadWhenAskedTo) {
  file("page.asp", "<% Response.Status = '404 Not Here'; Response.AddHeader('X-A', 'b'); %>body");
  EXPECT_EQ("body", run({"run", "page.asp"}).output);
  EXPECT_EQ(
      "HTTP/1.1 404 Not Here\r\nContent-Type: text/html; charset=utf-8\r\nCache-Control: private\r\n"
      "X-A: b\r\n\r\nbody",
      run({"run", "page.asp", "--include-headers"}).output);
}

}  // namespace
