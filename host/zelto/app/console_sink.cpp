#include "app/console_sink.h"

#include <unistd.h>

#include <algorithm>
#include <array>

namespace zelto {

void ConsoleSink::start(ResponseHead head, std::uint64_t) {
  status_ = head.status;
  if (!with_head_) return;
  write("HTTP/1.1 " + std::to_string(head.status) + " " + head.reason + "\r\n");
  for (const Header& header : head.headers) write(header.name + ": " + header.value + "\r\n");
  write("\r\n");
}

void ConsoleSink::write(std::string_view bytes) {
  if (out_) std::fwrite(bytes.data(), 1, bytes.size(), out_);
}

void ConsoleSink::write_file(SharedFile file, std::uint64_t offset, std::uint64_t length) {
  std::array<char, 16384> piece{};
  while (length > 0) {
    const std::size_t wanted = std::min<std::uint64_t>(length, piece.size());
    const ssize_t got = pread(file->get(), piece.data(), wanted, static_cast<off_t>(offset));
    if (got <= 0) break;
    write({piece.data(), static_cast<std::size_t>(got)});
    offset += static_cast<std::uint64_t>(got);
    length -= static_cast<std::uint64_t>(got);
  }
}

void ConsoleSink::append_to_log(std::string_view text) {
  if (!out_) return;
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fputc('\n', stderr);
}

}  // namespace zelto
