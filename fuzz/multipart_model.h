// A multipart body read by its rules, one byte at a time: what the parser and the intake must make of it.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fuzz {

struct Delimiter {
  bool is_found = false;
  bool is_good = false;    // the end of a line, or two dashes, stands behind it
  bool is_last = false;    // it was the dashes
  std::size_t start = 0;   // where it stands
  std::size_t behind = 0;  // where reading goes on
};

inline Delimiter next_delimiter(std::string_view body, std::size_t from, std::string_view delimiter) {
  for (std::size_t at = from; at + delimiter.size() <= body.size(); ++at) {
    if (body.substr(at, delimiter.size()) != delimiter) continue;
    const std::size_t behind = at + delimiter.size();
    const std::string_view tail = body.substr(behind, 2);
    const bool is_good = tail == "\r\n" || tail == "--";
    return {true, is_good, tail == "--", at, is_good ? behind + 2 : behind};
  }
  Delimiter none;
  none.behind = body.size();
  return none;
}

using Params = std::map<std::string, std::string>;

struct HeaderLine {
  std::size_t behind = 0;  // where reading goes on
  bool is_empty = false;
  bool has_colon = false;
  std::string name;
  std::string value;
};

// Nothing where no line ends before the body does, or a NUL. `params` takes what the line brings.
inline std::optional<HeaderLine> header_line(std::string_view body, std::size_t from, Params& params) {
  std::size_t end = from;
  for (;; ++end) {
    if (end + 1 >= body.size() || body[end] == 0) return std::nullopt;
    if (body[end] == '\r' && body[end + 1] == '\n') break;
  }
  const std::string_view line = body.substr(from, end - from);
  HeaderLine read;
  read.behind = end + 2;
  read.is_empty = line.empty();
  std::size_t at = 0;
  const auto skip_blanks = [&] {
    while (at < line.size() && line[at] == ' ') ++at;
  };
  const auto take = [&](char mark) {
    std::string taken;
    while (at < line.size() && line[at] != mark) taken += line[at++];
    if (at < line.size()) ++at;
    return taken;
  };
  if (line.find(':') == line.npos) return read;
  read.has_colon = true;
  read.name = take(':');
  skip_blanks();
  read.value = take(';');
  skip_blanks();
  while (line.find('=', at) != line.npos) {
    const std::string key = take('=');
    std::string text = take(';');
    skip_blanks();
    if (text.size() > 1 && text[0] == '"' && text.back() == '"') text = text.substr(1, text.size() - 2);
    params[key] = text;
  }
  return read;
}

// What a whole part says, in bytes.
struct Part {
  std::string field_name;
  std::string file_name;
  std::string content_type;
  std::string content;
};

struct Parts {
  std::vector<Part> all;  // in the order of the body, up to the first fault
  bool is_whole = false;  // the last delimiter was reached
};

inline Parts parts_of(std::string_view body, std::string_view delimiter) {
  Parts parts;
  Delimiter mark = next_delimiter(body, 0, delimiter);
  while (mark.is_good && !mark.is_last) {
    Part part;
    Params params;
    std::optional<HeaderLine> line;
    std::size_t at = mark.behind;
    do {
      line = header_line(body, at, params);
      if (!line) return parts;
      at = line->behind;
      if (line->name == "Content-Disposition" && line->value == "form-data") {
        part.field_name = params["name"];
        part.file_name = params["filename"];
      } else if (line->name == "Content-Type") {
        part.content_type = line->value;
      }
    } while (!line->is_empty);
    mark = next_delimiter(body, at, delimiter);
    if (!mark.is_good) return parts;
    if (mark.start >= at + 2) part.content = body.substr(at, mark.start - 2 - at);
    parts.all.push_back(part);
  }
  parts.is_whole = mark.is_good;
  return parts;
}

}  // namespace fuzz
