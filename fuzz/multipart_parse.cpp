// Any bytes as a body: the parser goes the way that the rules go, stays within the body, and looks at each
// byte a bounded number of times.
#include <vector>

#include "multipart_model.h"
#include "text_input.h"
#include "upload/multipart_parser.h"

namespace {

// Whether the line at hand is read as the rules read it; answers whether another may follow.
bool reads_line_alike(CMultipartParser& parser, std::string_view body, CMultipartHeader& header, fuzz::Params& params) {
  const CMultipartHeader before = header;
  const std::size_t from = parser.position();
  const auto expected = fuzz::header_line(body, from, params);
  const HRESULT hr = parser.GetHeader(header);
  fuzz::require(hr == (!expected ? E_FAIL : expected->is_empty ? S_FALSE : S_OK), "what a line is");
  fuzz::require(parser.position() == (expected ? expected->behind : from), "where a line ends");
  fuzz::require(header.params == params, "the parameters so far");
  if (!expected) return false;
  fuzz::require(header.has_colon == expected->has_colon, "whether it has a colon");
  fuzz::require(header.name == (expected->has_colon ? expected->name : before.name), "its name");
  fuzz::require(header.value == (expected->has_colon ? expected->value : before.value), "its value");
  return hr == S_OK;
}

void walk(const std::vector<char>& bytes, const char* delimiter) {
  const std::string_view body(bytes.data(), bytes.size());
  CMultipartParser parser(bytes.data(), bytes.size(), delimiter);
  for (;;) {
    const fuzz::Delimiter expected = fuzz::next_delimiter(body, parser.position(), delimiter);
    std::size_t start = 0;
    bool is_last = false;
    const HRESULT hr = parser.MoveNextBoundary(start, is_last);
    fuzz::require(hr == (expected.is_good ? S_OK : E_FAIL), "whether there is a delimiter");
    fuzz::require(start == expected.start, "where it stands");
    fuzz::require(is_last == expected.is_last, "whether it is the last");
    fuzz::require(parser.position() == expected.behind, "where reading goes on");
    if (FAILED(hr) || is_last) break;
    CMultipartHeader header;
    fuzz::Params params;
    while (reads_line_alike(parser, body, header, params)) continue;
  }
  fuzz::require(parser.work() <= 16 * bytes.size() + 16, "the work");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // A block of exactly that size, so that a byte read beyond it is seen.
  const std::vector<char> body(data, data + size);
  walk(body, "--B");
  walk(body, "-----");
  return 0;
}
