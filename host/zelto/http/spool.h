// Where bytes wait for a slow client, or for the rest of a body: in memory as far as all connections together may,
// beyond that in files.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <system_error>

#include "base/file_descriptor.h"
#include "http/quota.h"

namespace zelto {

struct SpoolLimits {
  std::uint64_t memory_bytes = std::uint64_t{128} << 20;
  std::uint64_t file_bytes = std::uint64_t{4} << 30;
  std::string folder;  // of the files; empty for $TMPDIR, else /var/tmp: /tmp is memory on some systems
};

// Shared by all connections of a server, and outlives them.
class Spool {
 public:
  // `report` is called with a line for the log, on any thread.
  explicit Spool(const SpoolLimits& limits, std::function<void(std::string_view)> report = {});

  // Tells that no file can be made or written: once, until one can.
  void tell(std::string_view problem);
  void forget_problem() { told_ = false; }

  const std::string folder;
  const std::uint64_t answer_bytes;  // that one answer may have in its file
  Quota memory;
  Quota files;

 private:
  const std::function<void(std::string_view)> report_;
  std::atomic<bool> told_ = false;
};

// A file without a name: it goes with its holder, however the program ends.
class SpoolFile {
 public:
  // Throws std::system_error when there can be no file.
  explicit SpoolFile(Spool& spool);

  // False when the disk or the quota is full; what the file held before stays.
  bool append(std::string_view bytes);
  // What the last append() has failed of; `task` says what it was for.
  std::system_error failure(const std::string& task) const;
  // Forgets what lies after the first `size` bytes.
  void shrink(std::uint64_t size);
  std::uint64_t size() const { return size_; }
  int descriptor() const { return file_.get(); }
  // Reads from the beginning until the buffer is full. Throws std::system_error.
  void read(char* buffer, std::size_t size) const;

 private:
  base::FileDescriptor file_;
  Share share_;
  std::uint64_t size_ = 0;
  int error_ = 0;  // of the system; 0 for none, or when the share was not to be had
};

}  // namespace zelto
