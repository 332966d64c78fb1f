#include "app/init_command.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string_view>
#include <system_error>

#include "app/command_line.h"
#include "app/configuration_file.h"
#include "app/new_site.h"

namespace zelto {
namespace {

namespace fs = std::filesystem;

void write_file(const fs::path& path, std::string_view text) {
  fs::create_directories(path.parent_path());
  errno = 0;
  std::ofstream file(path, std::ios::binary);
  file << text << std::flush;
  if (!file) throw std::system_error(errno, std::generic_category(), "writing " + path.string());
}

// Every key with its default, as a comment.
std::string settings() {
  std::string text = "# What this site changes of the defaults below: take the # away, and see zelto serve --help.\n\n";
  const std::string help = ConfigurationFile::help();
  for (std::size_t at = 0; at < help.size();) {
    const std::size_t end = help.find('\n', at);
    const std::size_t begin = help.find_first_not_of(' ', at);
    text += "# " + help.substr(begin, end + 1 - begin);
    at = end + 1;
  }
  return text;
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
  fs::create_directories(folder / "app_data");
  std::cout << "A new site is in " << command.folder << ". Next:\n\n"
            << "  zelto serve '" << command.folder << "' --debug    # and open http://127.0.0.1:8080/\n"
            << "  sh '" << command.folder << "/test.sh'             # in another terminal: tries it with curl\n\n"
            << "Its page is default.asp, its template templates/page.html; README.md tells the rest.\n";
  return kSuccess;
}

}  // namespace zelto
