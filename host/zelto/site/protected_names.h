// The names of a site's files and folders that no client is ever given.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zelto {

// Letter case does not count. A request that names one of these gets 404, whether there is such a file or not, and
// no page can be executed by such a name; what scripts, templates and includes read is not affected. Protected
// besides are names that
//   - begin with a dot, like ".git" and ".env", but for "/.well-known/", whose content is there for strangers,
//   - begin with an underscore (below "/.well-known/" they may: tokens of certificate authorities do),
//   - end with a tilde, or stand between two "#", as editors name what they saved before,
//   - have a protected extension with a hyphen and more after it: the journals of a database, "notes.db-wal", and what
//     a package manager left, "site.cfg.dpkg-old",
//   - have a number after a protected extension, "error.log.2", "notes.bak1": older ones,
//   - go on, but with a letter, after a source's extension or a protected file: "list.asp.txt", "list.asp - Copy",
//     "zelto.toml.html".
class ProtectedNames {
 public:
  // Adds a folder ("drafts/"), an extension ("*.cfg") or a file ("notes.txt"). False for what is none of these.
  bool add(std::string_view name);

  // The segment of `path`, as HttpRequest::path, that is protected; empty when none is.
  std::string_view find_in(std::string_view path) const;

  // "global.asa, bin/, *.inc", with a line break before a name that would go beyond the width.
  std::string list(std::size_t width) const;

 private:
  bool covers(std::string_view name, bool last, bool well_known) const;
  bool is_copy(std::string_view name) const;
  bool covers_extension(std::string_view extension) const;

  // Source, settings, passwords, keys, databases, and what editors and programs leave behind: of sites of this kind,
  // and of others that may lie in the same folder.
  std::vector<std::string> files_ = {"global.asa", "web.config", "zelto.toml"};
  std::vector<std::string> folders_ = {"App_Code", "App_Data", "bin", "includes", "node_modules", "templates"};
  std::vector<std::string> extensions_ = {
      ".1",       ".accdb",    ".asa",      ".asax",    ".ascx",   ".aspx", ".backup", ".bak", ".config", ".copy",
      ".cs",      ".db",       ".disabled", ".dpkg",    ".duckdb", ".env",  ".inc",    ".ini", ".key",    ".laccdb",
      ".ldb",     ".log",      ".mdb",      ".new",     ".old",    ".orig", ".p12",    ".pem", ".pfx",    ".php",
      ".rej",     ".rpmnew",   ".rpmorig",  ".rpmsave", ".s3db",   ".save", ".sdb",    ".sl3", ".sql",    ".sqlite",
      ".sqlite3", ".sqlitedb", ".swo",      ".swp",     ".tmp",    ".tpl",  ".udl",    ".vb"};
};

}  // namespace zelto
