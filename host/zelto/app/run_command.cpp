#include "app/run_command.h"

#include <spdlog/logger.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "app/command_line.h"
#include "app/configuration.h"
#include "app/console_sink.h"
#include "app/log_sink.h"
#include "app/runtime.h"
#include "base/thread.h"
#include "platform/canonical_path.h"
#include "site/page_run.h"
#include "text/http_grammar.h"

namespace zelto {

namespace {

std::string read_body(const std::string& file) {
  if (file == "-") return {std::istreambuf_iterator<char>(std::cin), {}};
  std::ifstream in(file, std::ios::binary);
  if (!in) throw WrongUse("--body: '" + file + "' cannot be read");
  return {std::istreambuf_iterator<char>(in), {}};
}

[[noreturn]] void refuse_header(const std::string& line) {
  throw WrongUse("--header: '" + line + "' is not a header; a right one is 'Accept: text/html'");
}

Header parse_header(const std::string& line) {
  const std::size_t colon = line.find(':');
  Header header{line.substr(0, colon), ""};
  if (colon == std::string::npos || !is_token(header.name)) refuse_header(line);
  const std::size_t start = line.find_first_not_of(" \t", colon + 1);
  if (start != std::string::npos) header.value = line.substr(start);
  if (!is_field_value(header.value)) refuse_header(line);
  return header;
}

HttpRequest make_request(const RunCommand& command, const std::string& path, std::string_view body) {
  HttpRequest request;
  request.method = !command.method.empty() ? command.method : command.body_file.empty() ? "GET" : "POST";
  if (!is_token(request.method))
    throw WrongUse("--method: '" + request.method + "' is not a method; a right one is POST");
  request.path = path;
  request.query = command.query;
  request.target = path + (command.query.empty() ? "" : "?" + command.query);
  for (const std::string& line : command.headers) request.headers.push_back(parse_header(line));
  if (!request.header("Host")) request.headers.insert(request.headers.begin(), {"Host", "localhost"});
  if (!command.body_file.empty()) {
    request.body = body;
    request.body_length = request.body.size();
    if (!request.header("Content-Type")) {
      request.headers.push_back({"Content-Type", "application/x-www-form-urlencoded"});
    }
  }
  request.remote_address = request.local_address = "127.0.0.1";
  request.local_port = 80;
  return request;
}

}  // namespace

int run_page_file(const RunCommand& command) {
  set_up_runtime();
  const auto page = canonical_path(command.page);
  if (!page || !std::filesystem::is_regular_file(*page))
    throw WrongUse("'" + command.page + "' is not a file that can be read");
  if (!command.site.empty() && !std::filesystem::is_directory(command.site))
    throw WrongUse("--site: '" + command.site + "' is not a folder");
  ServeCommand serve;
  serve.site = command.site.empty() ? page->substr(0, std::max<std::size_t>(page->rfind('/'), 1)) : command.site;
  serve.debug = command.debug;
  SiteOptions options = read_configuration(serve).site;
  spdlog::logger log("zelto", std::make_shared<LogSink>());
  options.log = [&log](std::string_view line) { log.info("zelto: {}", line); };
  Site site(std::move(options));
  if (const std::string notice = site.notice(); !notice.empty()) log.info(notice);
  if (!page->starts_with(site.root() + "/"))
    throw WrongUse("--site: '" + command.page + "' does not lie in '" + command.site + "'");
  const std::string path = page->substr(site.root().size());
  const std::string body = command.body_file.empty() ? std::string() : read_body(command.body_file);
  int status = 0;
  HttpRequest request = make_request(command, path, body);
  base::run_on_thread(kPageStack, [&] {
    script::Engine engine;
    for (unsigned left = command.times; left > 1; --left) {
      ConsoleSink nowhere(nullptr, false);
      run_page(site, engine, std::exchange(request, make_request(command, path, body)), path, nowhere);
    }
    ConsoleSink sink(stdout, command.include_headers);
    status = run_page(site, engine, std::move(request), path, sink);
  });
  return status < 400 ? kSuccess : kFailure;
}

}  // namespace zelto
