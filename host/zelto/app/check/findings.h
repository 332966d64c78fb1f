// What `zelto check` has found in the files of a site.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <tuple>
#include <utility>

namespace zelto::check {

enum class Severity { error, warning };

struct Place {
  std::string file;  // its physical path
  int line = 1;      // from 1
  int column = 1;    // from 1

  friend bool operator<(const Place& a, const Place& b) {
    return std::tie(a.file, a.line, a.column) < std::tie(b.file, b.line, b.column);
  }
};

struct Finding {
  Place place;
  Severity severity = Severity::error;
  std::string text;  // one line, a sentence

  friend bool operator<(const Finding& a, const Finding& b) {
    return std::tie(a.place, a.severity, a.text) < std::tie(b.place, b.severity, b.text);
  }
};

// In the order of files, lines and columns. What is found twice, because several pages include a file, is kept once.
class Findings {
 public:
  void error(Place place, const std::string& text) { add(std::move(place), Severity::error, text); }
  void warning(Place place, const std::string& text) { add(std::move(place), Severity::warning, text); }

  const std::set<Finding>& all() const { return all_; }
  std::size_t count(Severity severity) const;
  bool has_error_in(const std::string& file) const;

 private:
  void add(Place place, Severity severity, const std::string& text);

  std::set<Finding> all_;
};

}  // namespace zelto::check
