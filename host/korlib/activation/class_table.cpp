#include "activation/class_table.h"

#include <korlib_host/counted.h>

namespace korlib::activation {

namespace {

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

// Never destroyed: objects are made until the last thread ends, and rows arrive before main().
ClassTable<CreateFunction>& host_classes() {
  static auto* const instance = new ClassTable<CreateFunction>;
  return *instance;
}

HRESULT make_class_object(CreateFunction create, REFIID riid, void** ppv) {
  return make<HostClassObject>(create)->QueryInterface(riid, ppv);
}

}  // namespace korlib::activation

namespace korlib_host {

void register_classes(std::span<const ClassRow> rows) {
  for (const ClassRow& row : rows) korlib::activation::host_classes().add(row.clsid, row.prog_id, row.create);
}

}  // namespace korlib_host
