// A site of one page after the other, and a client that keeps its session cookie.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
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
    options.log = [this](std::string_view line) { log.emplace_back(line); };
    zelto::set_up_runtime();
  }

  zelto::Site& site() {
    if (!site_) site_.emplace(options);
    return *site_;
  }

  // Has the options as they are now hold.
  void restart() { site_.reset(); }

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
