#include "language/own_source.h"

#include <korlib_host/unicode.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <numeric>

#include "language/generated_lines.h"
#include "language/lexemes.h"

namespace zelto::language {
namespace {

constexpr std::size_t kNone = std::u16string_view::npos;

// In steps that grow with the text alone: a page may have function in function in function.
std::size_t find(std::u16string_view text, std::u16string_view piece) {
  const auto* const bytes = reinterpret_cast<const char*>(text.data());
  const std::size_t size = text.size() * sizeof(char16_t);
  for (std::size_t from = 0; from <= size;) {
    const void* const found = ::memmem(bytes + from, size - from, piece.data(), piece.size() * sizeof(char16_t));
    if (!found) break;
    const auto at = static_cast<std::size_t>(static_cast<const char*>(found) - bytes);
    if (at % sizeof(char16_t) == 0) return at / sizeof(char16_t);
    from = at + 1;
  }
  return kNone;
}

// Goes through the lines that a range of the text lies in, and writes what they were.
class Reader {
 public:
  Reader(const Program& program, std::size_t begin, std::size_t end)
      : program_(program), text_(program.text), begin_(begin), end_(end) {
    for (std::size_t at = 0; at < begin; ++at) {
      if (ends_line(text_, at)) begin_line(at + 1);
    }
    shift_ = std::ranges::lower_bound(program.shifts, line_, {}, &ColumnShift::line);
    removed_ = std::accumulate(program.shifts.begin(), shift_, std::size_t{0}, [&](std::size_t sum, const auto& shift) {
      return sum + (is_compiled(shift.line) ? 0 : static_cast<std::size_t>(shift.removed));
    });
  }

  bool begins_compiled() const { return is_compiled(line_); }

  std::u16string read() {
    while (at_ < end_) {
      if (is_generated())
        pass_generated_line();
      else
        pass_line();
    }
    return std::move(source_);
  }

 private:
  void begin_line(std::size_t at) {
    at_ = at;
    ++line_;
  }
  const SourceLine* source_line(int line) const {
    const auto index = static_cast<std::size_t>(line) - 1;
    return index < program_.lines.size() ? &program_.lines[index] : nullptr;
  }
  const SourceLine* source_line() const { return source_line(line_); }
  bool is_compiled(int line) const { return source_line(line) && source_line(line)->is_compiled; }
  bool is_generated() const { return source_line() && source_line()->is_generated; }
  bool line_begins_with(std::wstring_view words) const {
    return std::ranges::equal(text_.substr(at_, words.size()), words);
  }
  bool has_shift(int column) const {
    return shift_ != program_.shifts.end() && shift_->line == line_ && shift_->column <= column;
  }

  void put(std::u16string_view source) {
    if (at_ >= begin_) source_ += source;
  }

  void pass_line() {
    if (is_in_page_text_) put(u"<%");
    is_in_page_text_ = false;
    const int line = line_;
    for (int column = 0; at_ < end_ && line_ == line;) {
      if (has_shift(column)) {
        column += pass_shift();
      } else {
        pass_character();
        ++column;
      }
    }
  }

  // Answers how many characters of the line that was.
  int pass_shift() {
    const auto length = static_cast<std::size_t>(shift_->removed);
    put(korlib::to_utf16(std::wstring_view(program_.removed).substr(removed_, length)));
    removed_ += length;
    for (int i = 0; i < shift_->inserted; ++i) at_ += length_of_character();
    return (shift_++)->inserted;
  }

  // In units.
  std::size_t length_of_character() const {
    return at_ + 1 < text_.size() && (text_[at_] & 0xFC00) == 0xD800 && (text_[at_ + 1] & 0xFC00) == 0xDC00 ? 2 : 1;
  }

  void pass_character() {
    const std::size_t length = length_of_character();
    const SourceLine* const from = text_[at_] == u'\n' ? source_line() : nullptr;
    if (from)
      end_line(*from);
    else
      put(text_.substr(at_, length));
    if (ends_line(text_, at_))
      begin_line(at_ + 1);
    else
      at_ += length;
  }

  void end_line(const SourceLine& line) {
    switch (line.end) {
      case LineEnd::newline:
        return put(u"\n");
      case LineEnd::carriage_return:
        return put(u"\r");
      case LineEnd::both:
        return put(u"\r\n");
      case LineEnd::none:
        break;
    }
    if (!is_before_end_of_expression()) end_script();
  }

  // Whether the line after this one is such an end.
  bool is_before_end_of_expression() const {
    const auto next = static_cast<std::size_t>(line_);
    return next < program_.lines.size() && program_.lines[next].is_generated &&
           std::ranges::equal(text_.substr(at_ + 1, kExpressionEnds.size()), kExpressionEnds);
  }

  void end_script() {
    put(u"%>");
    is_in_page_text_ = true;
  }

  void pass_generated_line() {
    while (has_shift(std::numeric_limits<int>::max())) removed_ += static_cast<std::size_t>((shift_++)->removed);
    const std::size_t end = std::min(text_.find(u'\n', at_), text_.size());
    if (line_begins_with(kPageText)) {
      put_page_text();
    } else if (line_begins_with(kExpressionBegins)) {
      put(u"<%=");
      is_in_page_text_ = false;
    } else if (line_begins_with(kExpressionEnds)) {
      put_behind_expression(text_.substr(at_, end - at_));
      end_script();
    }
    begin_line(end + 1);
  }

  void put_page_text() {
    std::size_t number = 0;
    for (std::size_t at = at_ + kPageText.size(); at < text_.size() && text_[at] >= u'0' && text_[at] <= u'9'; ++at) {
      number = number * 10 + (text_[at] - u'0');
    }
    if (number < program_.literals.size()) put(korlib::to_utf16(program_.literals[number].view()));
  }

  void put_behind_expression(std::u16string_view line) {
    const std::size_t begin = kExpressionEnds.size() + kBehindExpression.size();
    for (std::size_t at = begin; at < line.size(); ++at) {
      put(line[at] == kReturnBehindExpression ? u"\r" : line[at] == kLineBehindExpression ? u"\n" : line.substr(at, 1));
    }
  }

  const Program& program_;
  const std::u16string_view text_;
  const std::size_t begin_;
  const std::size_t end_;
  std::size_t at_ = 0;
  int line_ = 1;
  std::vector<ColumnShift>::const_iterator shift_;
  std::size_t removed_ = 0;  // of program_.removed, in front of shift_
  bool is_in_page_text_ = false;
  std::u16string source_;
};

}  // namespace

std::optional<std::u16string> own_source(const Program& program, std::u16string_view piece) {
  const std::size_t begin = find(program.text, piece);
  if (begin == kNone) return std::nullopt;
  Reader reader(program, begin, begin + piece.size());
  if (reader.begins_compiled()) return std::nullopt;
  return reader.read();
}

}  // namespace zelto::language
