// Text to and from a driver. A driver takes either UTF-16 or bytes, and the driver manager translates
// between the two through the locale, which loses characters; so each driver is spoken to in its own
// way, bytes being UTF-8.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace korlib::odbc {

enum class DriverText { wide, bytes };

// The path of the library of the driver that a connection string names, as the driver manager finds it; empty when it
// does not.
std::string library_of(std::wstring_view connection_string);
// Which way the driver that a connection string names takes text.
DriverText text_of_driver(std::wstring_view connection_string);

// Text going in: valid while the object lives.
class TextIn {
 public:
  TextIn(DriverText way, std::wstring_view text);

  std::size_t size() const { return way_ == DriverText::wide ? units_.size() : bytes_.size(); }
  unsigned short* wide() { return reinterpret_cast<unsigned short*>(units_.data()); }
  unsigned char* bytes() { return reinterpret_cast<unsigned char*>(bytes_.data()); }

 private:
  DriverText way_;
  std::u16string units_;
  std::string bytes_;
};

// Room for a text coming out.
class TextOut {
 public:
  static constexpr std::int16_t kRoom = 2048;  // units or bytes, the NUL included

  explicit TextOut(DriverText way) : way_(way) { units_[0] = 0; }
  unsigned short* wide() { return units_; }
  unsigned char* bytes() { return bytes_; }
  // Of `length` units or bytes, as the driver has reported.
  std::wstring text(std::int16_t length) const;

 private:
  DriverText way_;
  // The driver writes what is read: filling these first would cost more than most of its calls.
  union {
    unsigned short units_[kRoom];
    unsigned char bytes_[kRoom];
  };
};

}  // namespace korlib::odbc
