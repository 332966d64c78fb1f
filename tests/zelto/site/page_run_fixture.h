// A site of one page after the other, and a client that keeps its session cookie.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/runtime.h"
#include "base/thread.h"
#include "site/page_run.h"
#include "support/temporary_folder.h"
#include "zelto/support/memory_sink.h"

namespace test {

class PageRunFixture : public testing::Test {
 protected:
  PageRunFixture() {
    options.root = folder.path().string();
    options.log = [this](std::string_view line) { log.push_back(without_reference(line)); };
    zelto::set_up_runtime();
  }

  zelto::Site& site() {
    if (!site_) site_.emplace(options);
    return *site_;
  }

  // "/page.asp:1: words (Error, 0x80004005) [1f0a9c44]" without its end, which is another one each time.
  std::string without_reference(std::string_view line) {
    const std::size_t begin = line.size() - std::min<std::size_t>(line.size(), 11);
    if (!line.ends_with(']') || !line.substr(begin).starts_with(" [")) return std::string(line);
    reference = line.substr(begin + 2, 8);
    return std::string(line.substr(0, begin));
  }

  // The one line of the log without the limit's size, and without the line that the page had come to.
  std::string told_of_limit() const {
    if (log.size() != 1) return std::to_string(log.size()) + " lines";
    std::string told = log[0];
    const std::size_t end = told.find(": ");
    const std::size_t colon = std::min(told.find(':'), end);
    if (end != told.npos) told.erase(colon, end - colon);
    constexpr std::string_view kLimit = " Its limit is ";
    const std::size_t size = told.find(kLimit);
    if (size == told.npos) return told;
    const std::size_t digits = size + kLimit.size();
    const std::size_t unit = told.find_first_not_of("0123456789", digits);
    for (const std::string_view words :
         {" s: script_timeout, or Server.ScriptTimeout where that is more.", " bytes: script_memory."}) {
      if (unit > digits && std::string_view(told).substr(unit).starts_with(words))
        return told.replace(size, unit + words.size() - size, " Its limit.");
    }
    return told;
  }

  // Has the options as they are now hold.
  void restart() { site_.reset(); }

  // Of a page.asp that fails: the answer and, in log, its line.
  std::string failed(const std::string& text) {
    log.clear();
    const MemorySink sink = run(text, "");
    EXPECT_EQ(500, sink.head.status) << sink.body;
    EXPECT_EQ(1u, log.size());
    if (log.empty()) log.emplace_back();
    return sink.body;
  }
  static bool has(const std::string& text, const std::string& piece) { return text.find(piece) != text.npos; }

  // For page.asp, with that cookie.
  zelto::HttpRequest request(const std::string& sent) const {
    zelto::HttpRequest made;
    made.method = "GET";
    made.path = made.target = "/page.asp";
    made.query = query;
    made.remote_address = address;
    if (!sent.empty()) made.headers.push_back({"Cookie", sent});
    return made;
  }

  // Runs the text as a page for a client that sends that cookie; its answer.
  MemorySink run(const std::string& text, const std::string& sent) {
    namespace fs = std::filesystem;
    // A page of the same second would be taken for the old one.
    fs::last_write_time(folder.write("page.asp", text),
                        fs::file_time_type::clock::now() + std::chrono::hours(++pages_));
    zelto::HttpRequest asked = request(sent);
    if (!form.empty()) {
      asked.method = "POST";
      asked.headers.push_back({"Content-Type", "application/x-www-form-urlencoded"});
      asked.body = form;
    }
    asked.body_too_large = body_too_large;
    asked.body_length = body_too_large ? 5 : form.size();
    MemorySink sink;
    base::run_on_thread(zelto::kPageStack, [&] {
      zelto::script::Engine engine;
      zelto::run_page(site(), engine, std::move(asked), "/page.asp", sink);
    });
    return sink;
  }
  // The same for the client that keeps its cookie; the answer's body.
  std::string body(const std::string& text) {
    const MemorySink sink = run(text, cookie);
    for (const std::string& set : sink.header("Set-Cookie")) cookie = set.substr(0, set.find(';'));
    return sink.body;
  }

  const TemporaryFolder folder;
  zelto::SiteOptions options;
  std::vector<std::string> log;
  std::string reference;  // of the last line that had one
  std::string cookie;
  std::string query;
  std::string address;  // the client's
  std::string form;     // what is posted; empty: nothing is
  bool body_too_large = false;

 private:
  std::optional<zelto::Site> site_;
  int pages_ = 0;
};

}  // namespace test
