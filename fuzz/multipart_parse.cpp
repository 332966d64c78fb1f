// Any bytes as a body: the parser stays within them, goes forward, and looks at each a bounded number of
// times.
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "upload/multipart_parser.h"

namespace {

void require(bool claim) {
  if (!claim) std::abort();
}

void walk(const std::vector<char>& body, const char* boundary) {
  CMultipartParser parser(body.data(), body.size(), boundary);
  std::size_t before = 0;
  std::size_t start = 0;
  bool is_last = false;
  while (!is_last && SUCCEEDED(parser.MoveNextBoundary(start, is_last))) {
    require(start >= before && start < parser.position() && parser.position() <= body.size());
    CMultipartHeader header;
    HRESULT hr = S_OK;
    while ((hr = parser.GetHeader(header)) == S_OK) require(parser.position() <= body.size());
    require(hr == S_FALSE || hr == E_FAIL);
    if (hr == E_FAIL) break;
    before = parser.position();
  }
  require(parser.work() <= 16 * body.size() + 16);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // A block of exactly that size, so that a byte read beyond it is seen.
  const std::vector<char> body(data, data + size);
  walk(body, "--B");
  walk(body, "-----");
  return 0;
}
