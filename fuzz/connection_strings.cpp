// Connection strings against a reader written by their rules; and a user and a password, which come back as they were
// given and change no other attribute.
#include "odbc/connection_string.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <korlib/text.h>

#include "base/letter_case.h"
#include "text_input.h"

namespace {

using korlib::odbc::attribute_of;

std::wstring without_blanks(const std::wstring& text) {
  const std::size_t first = text.find_first_not_of(L' ');
  if (first == std::wstring::npos) return {};
  return text.substr(first, text.find_last_not_of(L' ') + 1 - first);
}

struct Attribute {
  std::wstring name;
  std::wstring value;
};

// Reads a character at a time. A text without an equals sign in front of its semicolon is no attribute.
class Reader {
 public:
  explicit Reader(std::wstring_view text) : text_(text) {}

  std::vector<Attribute> all;
  bool is_open = false;  // a brace is not closed

  void read() {
    std::wstring name;
    while (at_ < text_.size()) {
      const wchar_t c = text_[at_++];
      if (c == L';') {
        name.clear();
      } else if (c == L'=') {
        std::wstring value = at_ < text_.size() && text_[at_] == L'{' ? braced() : plain();
        all.push_back({without_blanks(name), std::move(value)});
        name.clear();
      } else {
        name += c;
      }
    }
  }

 private:
  std::wstring plain() {
    std::wstring value;
    while (at_ < text_.size() && text_[at_] != L';') value += text_[at_++];
    ++at_;
    return without_blanks(value);
  }

  // Whatever stands between the closing brace and the semicolon is passed over.
  std::wstring braced() {
    std::wstring value;
    for (++at_; at_ < text_.size(); ++at_) {
      if (text_[at_] == L'}' && (at_ + 1 == text_.size() || text_[at_ + 1] != L'}')) {
        plain();
        return value;
      }
      if (text_[at_] == L'}') ++at_;
      value += text_[at_];
    }
    is_open = true;
    return value;
  }

  std::wstring_view text_;
  std::size_t at_ = 0;
};

std::wstring first_of(const std::vector<Attribute>& all, std::wstring_view name) {
  for (const Attribute& attribute : all) {
    if (base::equal_folded(attribute.name, name)) return attribute.value;
  }
  return {};
}

Reader read(std::wstring_view text) {
  Reader reader(text);
  reader.read();
  return reader;
}

void check(const std::wstring& text) {
  const Reader expected = read(text);
  for (const Attribute& attribute : expected.all) {
    fuzz::require(attribute_of(text, attribute.name) == first_of(expected.all, attribute.name), "each attribute");
  }
  for (const wchar_t* name : {L"Driver", L"dsn", L"DATABASE", L""}) {
    fuzz::require(attribute_of(text, name) == first_of(expected.all, name), "those that the host asks for");
  }
}

void check_credentials(const std::wstring& given, const std::wstring& user, const std::wstring& password) {
  const Reader before = read(given);
  const bool is_source = !given.empty() && given.find(L'=') == std::wstring::npos;
  const std::wstring complete = korlib::odbc::complete_connection_string(given, user, password);
  if (user.empty() && password.empty()) {
    fuzz::require(complete == (is_source ? L"DSN=" + given : given), "nothing is added to it");
    return;
  }
  if (before.is_open || (is_source && given[0] == L'{')) return;  // swallows what follows
  std::vector<Attribute> expected = before.all;
  if (is_source) expected = read(L"DSN=" + given).all;
  if (!user.empty()) expected.push_back({L"UID", user});
  if (!password.empty()) expected.push_back({L"PWD", password});
  const Reader after = read(complete);
  fuzz::require(!after.is_open && after.all.size() == expected.size(), "no attribute of their own");
  for (std::size_t i = 0; i < expected.size(); ++i) {
    fuzz::require(after.all[i].name == expected[i].name && after.all[i].value == expected[i].value, "each as it was");
  }
  check(complete);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto* bytes = reinterpret_cast<const char*>(data);
  std::wstring text(utf8_utf32(bytes, size, nullptr, 0), L'\0');
  utf8_utf32(bytes, size, text.data(), text.size());
  check(text);
  // The string, a line for the user, the rest for the password.
  const std::size_t first = std::min(text.find(L'\n'), text.size());
  const std::size_t second = std::min(text.find(L'\n', first + 1), text.size());
  const auto part = [&](std::size_t begin, std::size_t end) {
    return begin < end ? text.substr(begin, end - begin) : std::wstring();
  };
  check_credentials(part(0, first), part(first + 1, second), part(second + 1, text.size()));
  return 0;
}
