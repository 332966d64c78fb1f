#include "pages/programs.h"

#include <korlib/hresult.h>

#include <algorithm>

#include "text/charset.h"

namespace zelto {

namespace {

LoadedPage failed(const pages::PageSourceError& error) {
  return {
      nullptr,
      language::ScriptError{{error.file, error.line, error.column}, to_wide(error.what()), error.source, error.number},
      {}};
}

bool is_current(const pages::CompiledPage& page, const std::string& physical,
                const std::optional<pages::FileStamp>& seen) {
  return page.is_settled && std::ranges::all_of(page.files, [&](const auto& file) {
           const auto& [path, stamp] = file;
           return (seen == stamp && path == physical) || pages::stamp_of(path) == stamp;
         });
}

}  // namespace

// The compiled page if none of its files has changed. They are looked at outside the lock.
std::shared_ptr<const pages::CompiledPage> Programs::current(const std::string& physical,
                                                             const std::optional<pages::FileStamp>& seen) {
  std::shared_ptr<const pages::CompiledPage> page;
  {
    std::lock_guard guard(lock_);
    if (const auto found = pages_.find(physical); found != pages_.end()) page = found->second;
  }
  return page && is_current(*page, physical, seen) ? page : nullptr;
}

LoadedPage Programs::load(const std::string& virtual_path, const std::string& physical,
                          const std::optional<pages::FileStamp>& seen) {
  std::shared_ptr<const pages::CompiledPage> page = current(physical, seen);
  if (!page) {
    try {
      page = std::make_shared<pages::CompiledPage>(pages::compile_page(root_, physical, language_));
    } catch (const pages::PageSourceError& error) {
      return failed(error);
    } catch (const std::bad_alloc&) {
      return failed({"There is no memory left to compile " + virtual_path + ".", physical, 0, 0});
    }
    std::lock_guard guard(lock_);
    pages_[physical] = page;
  }
  return {page->program, std::nullopt, page->directive};
}

bool Programs::uses_session(const std::string& physical) {
  const std::lock_guard guard(lock_);
  const auto found = pages_.find(physical);
  return found != pages_.end() && found->second->directive.uses_session;
}

}  // namespace zelto
