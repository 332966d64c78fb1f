// The Sys… functions. A string's block is: how large the block is, the length in bytes, the characters,
// a NUL character.
#include <korlib/bstr.h>
#include <korlib_host/own_strings.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>

#include "diagnostics/live_counts.h"
#include "strings/block_cache.h"
#include "strings/write_over.h"

namespace {

struct Header {
  std::uint32_t usable;
  std::uint32_t bytes;
};
static_assert(sizeof(Header) == 8 && alignof(wchar_t) <= 8, "the length lies in the four bytes before the text");
static_assert(offsetof(Header, bytes) == 4, "own_strings.h reads it there");

Header* header_of(BSTR text) { return reinterpret_cast<Header*>(text) - 1; }

constexpr std::size_t padded(std::size_t bytes) {
  return (bytes + sizeof(wchar_t) - 1) / sizeof(wchar_t) * sizeof(wchar_t);
}

constexpr std::size_t block_size(std::size_t bytes) { return sizeof(Header) + padded(bytes) + sizeof(wchar_t); }

// Zeros to the end of the last character, which whole strings need not, and the NUL after it.
void terminate(char* data, std::size_t bytes) {
  constexpr wchar_t kNul = 0;
  if (const std::size_t rest = bytes % sizeof(wchar_t)) std::memset(data + bytes, 0, sizeof(wchar_t) - rest);
  std::memcpy(data + padded(bytes), &kNul, sizeof kNul);
}

// The text is left for the caller to fill; only what lies after it is written.
BSTR allocate(std::size_t bytes) {
  if (bytes >= kMaxBstrBytes) return nullptr;
  if (korlib_host::kCountsStrings && korlib_host::shall_string_fail()) return nullptr;
  std::size_t usable = 0;
  void* const block = korlib::strings::take_block(block_size(bytes), &usable);
  if (!block) return nullptr;
  auto* const header = static_cast<Header*>(block);
  header->usable = static_cast<std::uint32_t>(usable);
  header->bytes = static_cast<std::uint32_t>(bytes);
  char* const data = reinterpret_cast<char*>(header + 1);
  terminate(data, bytes);
  korlib_host::count_live_string(1);
  return reinterpret_cast<BSTR>(data);
}

BSTR allocate_copy(const void* data, std::size_t bytes) {
  BSTR text = allocate(bytes);
  if (text && data && bytes) std::memcpy(text, data, bytes);
  return text;
}

// How many of `bytes` bytes there are to read at `text`: none at null, and text inside of a string ends with it.
std::size_t readable(BSTR string, const OLECHAR* text, std::size_t bytes) {
  if (!text) return 0;
  const auto first = reinterpret_cast<std::uintptr_t>(string);
  const auto at = reinterpret_cast<std::uintptr_t>(text);
  const std::size_t held = korlib_host::byte_length_of(string);
  const bool is_inside = string && at >= first && at - first <= held;
  return is_inside ? std::min<std::size_t>(bytes, held - (at - first)) : bytes;
}

// The new string is made first: `text` may point into the old one, and a failure keeps it.
BOOL replace(BSTR* target, const OLECHAR* text, std::size_t length) {
  const std::size_t bytes = length * sizeof(wchar_t);
  BSTR fresh = allocate(bytes);
  if (!fresh) return FALSE;
  const std::size_t copied = readable(*target, text, bytes);
  if (copied) std::memcpy(fresh, text, copied);
  std::memset(reinterpret_cast<char*>(fresh) + copied, 0, bytes - copied);
  SysFreeString(*target);
  *target = fresh;
  return TRUE;
}

}  // namespace

BSTR SysAllocString(const OLECHAR* text) {
  return text ? allocate_copy(text, std::wcslen(text) * sizeof(wchar_t)) : nullptr;
}

BSTR SysAllocStringLen(const OLECHAR* text, UINT length) {
  return allocate_copy(text, std::size_t{length} * sizeof(wchar_t));
}

BSTR SysAllocStringByteLen(const char* data, UINT bytes) { return allocate_copy(data, bytes); }

BOOL SysReAllocString(BSTR* target, const OLECHAR* text) {
  if (!target) return FALSE;
  if (text) return replace(target, text, std::wcslen(text));
  SysFreeString(*target);
  *target = nullptr;
  return TRUE;
}

BOOL SysReAllocStringLen(BSTR* target, const OLECHAR* text, UINT length) {
  return target ? replace(target, text ? text : *target, length) : FALSE;
}

void SysFreeString(BSTR text) {
  if (!text) return;
  korlib_host::count_live_string(-1);
  Header* const header = header_of(text);
  korlib::strings::give_block(header, header->usable);
}

UINT SysStringLen(BSTR text) { return korlib_host::byte_length_of(text) / static_cast<UINT>(sizeof(wchar_t)); }

UINT SysStringByteLen(BSTR text) { return korlib_host::byte_length_of(text); }

bool korlib::strings::write_over(BSTR text, BSTR target) noexcept {
  if (!text || !target) return false;
  Header* const header = header_of(target);
  const std::size_t bytes = header_of(text)->bytes;
  if (usable_for(block_size(bytes)) != header->usable) return false;
  header->bytes = static_cast<std::uint32_t>(bytes);
  char* const data = reinterpret_cast<char*>(target);
  std::memcpy(data, text, bytes);
  terminate(data, bytes);
  return true;
}
