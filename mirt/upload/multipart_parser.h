// CMultipartParser: walks a multipart/form-data body by its delimiter lines and header lines.
//
// Works on bytes as received. Comparisons of header names and keys are the caller's; nothing is unescaped.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <korlib/hresult.h>

// One header line. Reused for all lines of a part: `params` gathers what every line of it had, while name
// and value are those of the last line with a colon.
struct CMultipartHeader {
  std::string name;                           // before the first ':', as sent
  std::string value;                          // after it, without leading blanks, up to the first ';'
  std::map<std::string, std::string> params;  // a later key replaces an earlier one

  // What the last line brought, so that a reader of very many lines copies only what is new: whether it
  // had a colon, and the keys that it stored.
  bool has_colon = false;
  std::vector<const std::string*> stored;
};

// Body and boundary are the caller's and outlive the parser. `boundary` is the whole delimiter: "--" and
// the boundary parameter.
class CMultipartParser {
 public:
  CMultipartParser(const char* body, std::size_t length, const char* boundary);

  // Moves past the next delimiter, wherever in a line it stands, and the CR LF (or "--", then it is the
  // last) that must follow it. E_FAIL when there is none, or when something else follows.
  HRESULT MoveNextBoundary(std::size_t& boundaryStart, bool& isLast);
  // Moves past the header line at hand. S_FALSE for the empty line that ends the headers, E_FAIL when no
  // line end is left or a NUL lies before it.
  HRESULT GetHeader(CMultipartHeader& header);

  std::size_t position() const noexcept { return position_; }
  // Bytes looked at so far, a byte compared twice counting twice; grows with the body, not with its square.
  std::size_t work() const noexcept { return work_; }

 private:
  const char* find_boundary();
  bool read_line(std::string_view* line);

  const char* body_;
  std::size_t length_;
  const char* boundary_;
  std::size_t boundary_length_;
  std::size_t position_ = 0;
  std::size_t work_ = 0;
};
