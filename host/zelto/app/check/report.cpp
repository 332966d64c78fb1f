#include "app/check/report.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "text/characters.h"

namespace zelto::check {

namespace {

constexpr const char* name_of(Severity severity) { return severity == Severity::error ? "error" : "warning"; }

std::string counted(std::size_t number, std::string_view noun) {
  return fmt::format("{} {}{}", number, noun, number == 1 ? "" : "s");
}

}  // namespace

// From where the program was called, as the site was.
std::string Report::shown(const std::string& file) const {
  if (!file.starts_with(root + "/")) return plain_line(file);
  const std::string below = file.substr(root.size() + 1);
  if (site == ".") return plain_line(below);
  return plain_line(site.ends_with('/') ? site + below : site + "/" + below);
}

std::string Report::text() const {
  std::string lines;
  for (const auto& [place, severity, what] : findings.all())
    lines += fmt::format("{}:{}:{}: {}: {}\n", shown(place.file), place.line, place.column, name_of(severity), what);
  lines += fmt::format("{}, {}: {}, {}\n", counted(pages, "page"), counted(templates, "template"),
                       counted(findings.count(Severity::error), "error"),
                       counted(findings.count(Severity::warning), "warning"));
  return lines;
}

std::string Report::json() const {
  auto list = nlohmann::ordered_json::array();
  for (const auto& [place, severity, what] : findings.all()) {
    list.push_back({{"file", shown(place.file)},
                    {"line", place.line},
                    {"column", place.column},
                    {"severity", name_of(severity)},
                    {"text", what}});
  }
  const nlohmann::ordered_json whole = {{"site", site},
                                        {"pages", pages},
                                        {"templates", templates},
                                        {"errors", findings.count(Severity::error)},
                                        {"warnings", findings.count(Severity::warning)},
                                        {"findings", std::move(list)}};
  // A file's name need not be UTF-8.
  return whole.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace zelto::check
