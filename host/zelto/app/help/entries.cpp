#include "app/help/entries.h"

#include <algorithm>
#include <utility>

#include "base/ascii.h"

namespace zelto::help {

namespace {

constexpr std::string_view kTutorial = "tutorial.md";  // has things to do below its beginning, and tells of no name

constexpr bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

void replace_all(std::string& text, std::string_view what, std::string_view with) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size())
    text.replace(at, what.size(), with);
}

// Code between one or two backticks, or <code> and </code>.
struct Span {
  std::size_t begin = std::string_view::npos;
  std::size_t end = 0;
  std::string code;
};

Span next_span(std::string_view text, std::size_t from) {
  for (const std::string_view open : {"`` ", "``", "`", "<code>"}) {
    const std::string_view close = open == "`` " ? " ``" : open == "<code>" ? "</code>" : open;
    const std::size_t begin = text.find(open, from);
    if (begin == std::string_view::npos || text.find_first_of("`<", from) < begin) continue;
    const std::size_t end = text.find(close, begin + open.size());
    if (end == std::string_view::npos) continue;
    std::string code(text.substr(begin + open.size(), end - begin - open.size()));
    replace_all(code, "&#124;", "|");
    return {begin, end + close.size(), std::move(code)};
  }
  const std::size_t other = text.find_first_of("`<", from);
  return other == std::string_view::npos ? Span{} : next_span(text, other + 1);
}

std::vector<Span> spans_of(std::string_view text) {
  std::vector<Span> spans;
  for (Span span = next_span(text, 0); span.begin != std::string_view::npos; span = next_span(text, spans.back().end))
    spans.push_back(std::move(span));
  return spans;
}

// The name that a piece of code begins with, "Write" of "Write(value)", or the type of a mark or another sign of
// templates; empty for other code, such as a path.
std::string name_in(std::string_view code) {
  constexpr std::size_t kLongestSign = 3;
  std::size_t end = 0;
  while (end < code.size() && is_name(code[end])) ++end;
  if (end < code.size() && end > 0 && code[end] == '/') return {};
  if (end > 0 && !base::is_digit(code[0])) return std::string(code.substr(0, end));
  const bool is_sign = code.size() <= kLongestSign &&
                       std::ranges::none_of(code, [](char c) { return base::is_alphanumeric(c) || is_blank(c); });
  return is_sign ? std::string(code) : std::string();
}

// "Select Case", which is a name as a whole: words of letters and digits, each with a capital in front.
bool is_phrase(std::string_view code) {
  if (code.find(' ') == std::string_view::npos) return false;
  char before = ' ';
  for (const char c : code) {
    if (before == ' ' ? base::ascii_lower(c) == c : !base::is_alphanumeric(c) && c != ' ') return false;
    before = c;
  }
  return before != ' ';
}

void add_name(std::string_view code, std::vector<std::string>* names) {
  if (is_phrase(code)) names->emplace_back(code);
  names->push_back(name_in(code));
}

// Links as their words, code without its quotes.
std::string plain(std::string_view markdown) {
  std::string text;
  std::size_t at = 0;
  for (const Span& span : spans_of(markdown)) {
    text.append(markdown.substr(at, span.begin - at)).append(span.code);
    at = span.end;
  }
  text.append(markdown.substr(at));
  for (std::size_t middle = 0; (middle = text.find("](", middle)) != std::string::npos;) {
    const std::size_t open = text.rfind('[', middle);
    const std::size_t close = text.find(')', middle);
    if (open == std::string::npos || close == std::string::npos) break;
    text = text.substr(0, open) + text.substr(open + 1, middle - open - 1) + text.substr(close + 1);
    middle = open;
  }
  replace_all(text, "**", "");
  return text;
}

class Reader {
 public:
  explicit Reader(const Page& page) : page_(page) {}

  std::vector<Entry> read() {
    for (std::size_t at = 0; at < page_.text.size();) {
      const std::size_t end = std::min(page_.text.find('\n', at), page_.text.size());
      line(page_.text.substr(at, end - at));
      at = end + 1;
    }
    end_block();
    if (!sections_.empty()) {
      heading_ = title_;
      add({}, {}, "Sections: " + sections_);
    }
    return std::move(entries_);
  }

 private:
  void begin_section(std::string heading) {
    end_block();
    heading_ = std::move(heading);
    if (title_.empty()) {
      title_ = heading_;
    } else {
      sections_ += (sections_.empty() ? "" : ", ") + heading_;
    }
  }

  void line(std::string_view text) {
    if (text.starts_with("```")) {
      end_block();
      fence_ = fence_.empty() ? (text.size() > 3 ? text : "``` ") : "";
    } else if (!fence_.empty()) {
      if (fence_ == "```toml") setting(text);
    } else if (text.starts_with("#")) {
      begin_section(plain(text.substr(std::min(text.find_first_not_of("# "), text.size()))));
    } else if (text.starts_with("|")) {
      row(text);
    } else if (base::trimmed(text, is_blank).empty()) {
      end_block();
    } else {
      if (text.starts_with("- ")) end_block();
      block_.append(block_.empty() ? "" : " ").append(base::trimmed(text, is_blank));
    }
  }

  // `key = value  # meaning`
  void setting(std::string_view text) {
    const std::size_t equals = text.find(" = ");
    if (equals == std::string_view::npos || text.find('#') == std::string_view::npos) return;
    add({std::string(text.substr(0, equals))}, {}, std::string(text));
  }

  static bool is_type(const std::vector<Span>& spans) { return spans.size() == 1 && spans[0].code.size() == 1; }

  void row(std::string_view text) {
    std::vector<std::string_view> cells;
    for (std::size_t at = 1; at < text.size();) {
      const std::size_t end = std::min(text.find('|', at), text.size());
      cells.push_back(base::trimmed(text.substr(at, end - at), is_blank));
      at = end + 1;
    }
    if (columns_.empty()) {
      columns_ = std::move(cells);
      return;
    }
    if (cells.empty() || cells[0].starts_with("--")) return;
    std::vector<std::string> names, mentions;
    std::string words;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      const std::vector<Span> spans = spans_of(cells[i]);
      const bool is_name = i == 0 || (spans.size() == 1 && spans[0].begin == 0 && spans[0].end == cells[i].size());
      for (const Span& span : spans) add_name(span.code, is_name ? &names : &mentions);
      if (i == 0 && !cells[i].empty() && std::ranges::all_of(cells[i], [](char c) { return base::is_digit(c); }))
        names.emplace_back(cells[i]);  // of an error, say
      const bool has_column = i < columns_.size() && cells.size() > 2 && (i > 0 || is_type(spans));
      if (cells[i].empty()) continue;
      words += words.empty() ? "" : i == 1 && (cells.size() == 2 || !is_type(spans_of(cells[0]))) ? ": " : "; ";
      words += (has_column ? plain(columns_[i]) + ": " : std::string()) + plain(cells[i]);
    }
    add(std::move(names), std::move(mentions), std::move(words));
  }

  // A paragraph or an item is about what it begins with.
  void end_block() {
    columns_.clear();
    const std::string block = std::exchange(block_, {});
    std::string_view text = block;
    if (text.starts_with("- ")) text.remove_prefix(2);
    if (text.empty() || text.starts_with("![")) return;  // a picture
    std::vector<std::string> names, mentions;
    for (const Span& span : spans_of(text)) add_name(span.code, span.begin == 0 ? &names : &mentions);
    add(std::move(names), std::move(mentions), plain(text));
  }

  void add(std::vector<std::string> names, std::vector<std::string> mentions, std::string text) {
    std::erase(names, "");
    std::erase(mentions, "");
    if (page_.file == kTutorial && heading_ != title_) return;
    entries_.push_back(
        {page_.file, heading_, heading_ == title_, std::move(names), std::move(mentions), std::move(text)});
  }

  const Page& page_;
  std::string title_;     // the first heading
  std::string sections_;  // the other ones
  std::string heading_;
  std::string_view fence_;  // the line that began the code at hand
  std::vector<std::string_view> columns_;
  std::string block_;
  std::vector<Entry> entries_;
};

}  // namespace

std::vector<Entry> entries_of(const Page& page) { return Reader(page).read(); }

}  // namespace zelto::help
