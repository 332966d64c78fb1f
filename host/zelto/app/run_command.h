// `zelto run`: one page from the command line.
#pragma once

#include <string>
#include <vector>

namespace zelto {

struct RunCommand {
  std::string page;  // a file
  std::string site;  // its root; the page's folder when empty
  std::string query;
  std::string method;  // GET, or POST when there is a body
  std::vector<std::string> headers;
  std::string body_file;  // "-" is standard input; empty for none
  bool include_headers = false;
  unsigned times = 1;  // the page is asked for; the last answer is printed
  bool debug = false;
};

// Prints the page's answer. The exit code, of the last answer; throws WrongUse for what cannot be run.
int run_page_file(const RunCommand& command);

}  // namespace zelto
