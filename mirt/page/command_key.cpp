#include "page/command_key.h"

#include <boost/random/mersenne_twister.hpp>
#include <boost/random/uniform_int.hpp>
#include <boost/random/variate_generator.hpp>

#include <korlib/winapi.h>

namespace page {

std::wstring draw_command_key(std::uint32_t seed) {
  constexpr wchar_t kLetters[] = L"ABCDEFGHIJKLMNOPQRSTUVWXYZ";
  constexpr std::size_t kLength = 6;
  boost::variate_generator<boost::mt19937, boost::uniform_int<int>> draw(boost::mt19937(seed),
                                                                         boost::uniform_int<int>(0, 25));
  std::wstring key;
  for (std::size_t i = 0; i < kLength; ++i) key += kLetters[draw()];
  return key;
}

std::wstring draw_command_key() { return draw_command_key(static_cast<std::uint32_t>(GetTickCount())); }

}  // namespace page
