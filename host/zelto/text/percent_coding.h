// Percent-coding: a byte as "%" and two hexadecimal digits, where an address or a form cannot hold the byte itself.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zelto {

// The byte's two hexadecimal digits, in upper case.
void append_hex(std::string& out, char byte);

// The byte that the escape at the front of the text stands for; nothing when there is no "%" with two hexadecimal
// digits after it. The escape is three characters long.
std::optional<char> escaped_byte(std::string_view text);

// Every byte for which `stays` is false becomes an escape.
std::string percent_encode(std::string_view bytes, bool (*stays)(char));

// The form "application/x-www-form-urlencoded" of one name or value: letters, digits and "-_." stay, a blank
// becomes "+", every other byte an escape.
std::string form_encode(std::string_view bytes);
// Back: a "%" that begins no escape stands for itself.
std::string form_decode(std::string_view text);

// An address with escapes for what no address holds (blanks, quotes, controls, bytes above 0x7E). Those that it has
// stay.
std::string escape_url(std::string_view url);

}  // namespace zelto
