// Classes by identifier and by ProgID: those that this process makes itself, and the form of every such table.
#pragma once

#include <cstring>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include <korlib_host/class_table.h>

#include "base/letter_case.h"

namespace korlib::activation {

// What is known of each class is a `Row`. Any thread may call any method.
template <class Row>
class ClassTable {
 public:
  // A class whose identifier or ProgID is there already is replaced. Without a ProgID (null) it is only found by its
  // identifier.
  void add(REFCLSID clsid, const wchar_t* prog_id, Row row) {
    const std::unique_lock guard(lock_);
    rows_.insert_or_assign(clsid, std::move(row));
    if (prog_id) prog_ids_.insert_or_assign(base::ascii_lowered(prog_id), Named{prog_id, clsid});
  }

  // A copy: modules may add classes while others are being asked.
  std::optional<Row> find(REFCLSID clsid) const {
    const std::shared_lock guard(lock_);
    const auto found = rows_.find(clsid);
    return found == rows_.end() ? std::nullopt : std::optional(found->second);
  }
  bool find_prog_id(const wchar_t* prog_id, CLSID* clsid) const {
    const std::wstring name = base::ascii_lowered(prog_id);
    const std::shared_lock guard(lock_);
    const auto found = prog_ids_.find(name);
    if (found == prog_ids_.end()) return false;
    *clsid = found->second.clsid;
    return true;
  }
  // Those that there are, as they were written last, after what is in `names`.
  void list_prog_ids(std::vector<std::wstring>* names) const {
    const std::shared_lock guard(lock_);
    for (const auto& [key, named] : prog_ids_) names->push_back(named.prog_id);
  }

 private:
  // Identifiers are random enough that any eight bytes of them spread well.
  struct Hash {
    std::size_t operator()(REFCLSID clsid) const noexcept {
      std::size_t halves[2];
      std::memcpy(halves, &clsid, sizeof halves);
      return halves[0] ^ halves[1];
    }
  };

  struct Named {
    std::wstring prog_id;
    CLSID clsid;
  };

  mutable std::shared_mutex lock_;
  std::unordered_map<CLSID, Row, Hash> rows_;
  std::unordered_map<std::wstring, Named> prog_ids_;  // by name in small letters
};

using CreateFunction = HRESULT (*)(REFIID riid, void** ppv);

// The classes that this process makes itself.
ClassTable<CreateFunction>& host_classes();

// A class object for one of them. Throws std::bad_alloc.
HRESULT make_class_object(CreateFunction create, REFIID riid, void** ppv);

}  // namespace korlib::activation
