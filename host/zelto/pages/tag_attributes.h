// Names and values as tags and directives hold them: name="value", name='value', name=value, name.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zelto::pages {

struct Attribute {
  std::wstring_view name;
  std::wstring_view value;  // empty without one
};

struct AttributeValue {
  std::wstring_view text;
  std::size_t end;  // after the value and its closing quote
};

enum class Language : unsigned char { javascript, vbscript };

struct TagAttributes {
  std::vector<Attribute> all;
  std::size_t end;  // after the '>'

  bool has(std::wstring_view name) const;
  std::wstring_view value_of(std::wstring_view name) const;  // of the first of that name in any letter case
};

std::size_t skip_blanks(std::wstring_view text, std::size_t at);
// Whether the word stands there, in any letter case, and ends there.
bool has_word(std::wstring_view text, std::size_t at, std::wstring_view word);
std::string ascii(std::wstring_view text);  // for messages; other characters become '?'
// As a page names it; nothing for one that the host does not run.
std::optional<Language> language_of(std::wstring_view name);

// `= value`, from the equals sign or the blanks before it. Nothing without an equals sign or a closing quote.
std::optional<AttributeValue> read_attribute_value(std::wstring_view text, std::size_t at);
// The attributes of a tag from the end of its name on. Nothing when the tag has no end.
std::optional<TagAttributes> read_tag(std::wstring_view text, std::size_t at);

// Finds the tags of one text that are for the server. Remembers where it was in those that are not, so that a text of
// nothing but beginnings of tags is not read again for each of them.
class ServerTags {
 public:
  explicit ServerTags(std::wstring_view text) : text_(text) {}

  // As read_tag(), of a tag with runat="server". Nothing for any other, and when the tag has no end.
  std::optional<TagAttributes> read(std::size_t at);

 private:
  enum Known : unsigned char {
    nothing,
    of_others,  // a tag whose attributes are read from here on, without a "runat" before, is not for the server
    endless,    // it has no end either
  };

  std::wstring_view text_;
  std::vector<Known> known_;  // of the places where attributes begin
};

// The attributes of a text that holds nothing else. Nothing when it cannot be read as such.
std::optional<std::vector<Attribute>> read_attributes(std::wstring_view text);

}  // namespace zelto::pages
