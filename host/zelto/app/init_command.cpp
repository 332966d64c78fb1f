#include "app/init_command.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string_view>
#include <system_error>

#include "app/command_line.h"
#include "app/configuration_file.h"
#include "app/new_site.h"
#include "base/ascii.h"
#include "text/characters.h"

namespace zelto {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kProtected = R"(["test.sh", "README.md"])";

void write_file(const fs::path& path, std::string_view text) {
  std::error_code error;
  fs::create_directories(path.parent_path(), error);
  if (error) throw std::system_error(error, "the folder '" + path.parent_path().string() + "' cannot be made");
  errno = 0;
  std::ofstream file(path, std::ios::binary);
  file << text << std::flush;
  if (!file) throw std::system_error(errno, std::generic_category(), "'" + path.string() + "' cannot be written");
}

// Every key with its default, as a comment; but what is the site's own and no visitor's is not served.
std::string settings() {
  std::string text = "# What this site changes of the defaults below: take the # away, and see zelto serve --help.\n\n";
  const std::string help = ConfigurationFile::help();
  for (std::size_t at = 0; at < help.size();) {
    const std::size_t end = help.find('\n', at);
    const std::size_t begin = help.find_first_not_of(' ', at);
    const std::string line = help.substr(begin, end + 1 - begin);
    at = end + 1;
    if (line.starts_with("protect = ")) {
      text += fmt::format("protect = {:<30}{}", kProtected, line.substr(line.find('#')));
    } else {
      text += "# " + line;
    }
  }
  return text;
}

// The path as a shell reads one word: in quotes where it has more than such characters as mean nothing there.
std::string shell_word(const std::string& path) {
  constexpr std::string_view kPlain = "%+,-./:=@_";
  const auto is_plain = [&](char c) { return base::is_alphanumeric(c) || kPlain.find(c) != std::string_view::npos; };
  if (!path.empty() && std::ranges::all_of(path, is_plain)) return path;
  std::string word = "'";
  for (const char c : path) word += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return word + "'";
}

}  // namespace

int init_site(const InitCommand& command) {
  const fs::path folder = command.folder;
  std::error_code error;
  if (fs::exists(folder, error) && !fs::is_directory(folder, error))
    throw WrongUse("'" + command.folder + "' is not a folder");
  if (fs::is_directory(folder, error) && !fs::is_empty(folder))
    throw WrongUse("'" + command.folder + "' is not empty; a new site takes a folder of its own");
  for (const NewFile& file : new_site_files()) write_file(folder / file.path, file.text);
  write_file(folder / "zelto.toml", settings());
  const std::string given = command.folder.starts_with('-') ? "./" + command.folder : command.folder;  // no option
  const std::string serve = "zelto serve " + shell_word(given) + " --debug";
  const std::string test = "sh " + shell_word(fs::path(given) / "test.sh");
  std::cout << fmt::format(
      "A new site is in {0}. Next:\n\n  {1:<{3}}  # and open http://127.0.0.1:8080/\n"
      "  {2:<{3}}  # in another terminal: tries it with curl\n\n"
      "Its page is default.asp, its template templates/page.html; README.md tells the rest.\n",
      plain_line(command.folder), serve, test, std::max(serve.size(), test.size()));
  return kSuccess;
}

}  // namespace zelto
