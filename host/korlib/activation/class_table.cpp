#include "activation/class_table.h"

#include <mutex>
#include <new>
#include <shared_mutex>
#include <unordered_map>

#include <korlib_host/counted.h>

#include "activation/guid_hash.h"
#include "base/letter_case.h"

namespace korlib::activation {

namespace {

struct Table {
  std::shared_mutex lock;
  std::unordered_map<CLSID, CreateFunction, GuidHash> classes;
  std::unordered_map<std::wstring, CLSID> prog_ids;
};

// Never destroyed: objects are made until the last thread ends, and rows arrive before main().
Table& table() {
  static auto* const instance = new Table;
  return *instance;
}

class HostClassObject final : public Counted<IClassFactory> {
 public:
  explicit HostClassObject(CreateFunction create) : create_(create) {}

  HRESULT QueryInterface(REFIID riid, void** ppv) override {
    return query_list<IClassFactory, IUnknown>(this, riid, ppv);
  }
  HRESULT CreateInstance(IUnknown* outer, REFIID riid, void** ppv) override {
    if (!ppv) return E_POINTER;
    *ppv = nullptr;
    return outer ? CLASS_E_NOAGGREGATION : create_(riid, ppv);
  }
  HRESULT LockServer(BOOL) override { return S_OK; }  // the table is not unloaded

 private:
  const CreateFunction create_;
};

}  // namespace

CreateFunction find_host_class(REFCLSID clsid) {
  Table& t = table();
  const std::shared_lock guard(t.lock);
  const auto found = t.classes.find(clsid);
  return found == t.classes.end() ? nullptr : found->second;
}

bool find_host_prog_id(const wchar_t* prog_id, CLSID* clsid) {
  Table& t = table();
  const std::wstring name = base::ascii_lowered(prog_id);
  const std::shared_lock guard(t.lock);
  const auto found = t.prog_ids.find(name);
  if (found == t.prog_ids.end()) return false;
  *clsid = found->second;
  return true;
}

HRESULT make_class_object(CreateFunction create, REFIID riid, void** ppv) {
  CComPtr<IClassFactory> object;
  object.attach(new (std::nothrow) HostClassObject(create));
  return object ? object->QueryInterface(riid, ppv) : E_OUTOFMEMORY;
}

}  // namespace korlib::activation

namespace korlib_host {

void register_classes(std::span<const ClassRow> rows) {
  korlib::activation::Table& t = korlib::activation::table();
  const std::unique_lock guard(t.lock);
  for (const ClassRow& row : rows) {
    t.classes.insert_or_assign(row.clsid, row.create);
    if (row.prog_id) t.prog_ids.insert_or_assign(base::ascii_lowered(row.prog_id), row.clsid);
  }
}

}  // namespace korlib_host
