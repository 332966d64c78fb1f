#include <korlib_host/counted.h>
// The header stands alone when it is included first.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

class Lamp final : public korlib::Counted<IUnknown> {
 public:
  explicit Lamp(bool* is_gone) : is_gone_(is_gone) {}
  ~Lamp() override { *is_gone_ = true; }
  HRESULT QueryInterface(REFIID riid, void** ppv) override { return korlib::query_list<IUnknown>(this, riid, ppv); }

 private:
  bool* is_gone_;
};

TEST(Counted, GoesWithItsLastReference) {
  const std::int64_t live = korlib_host::live_objects();
  bool is_gone = false;
  CComPtr<Lamp> lamp = korlib::make<Lamp>(&is_gone);
  EXPECT_EQ(live + 1, korlib_host::live_objects());
  EXPECT_EQ(2u, lamp->AddRef());
  EXPECT_EQ(1u, lamp->Release());
  EXPECT_FALSE(is_gone);
  EXPECT_EQ(0u, lamp.detach()->Release());
  EXPECT_TRUE(is_gone);
  EXPECT_EQ(live, korlib_host::live_objects());
}

// Through an interface, as every caller but the object's own room counts it.
TEST(Counted, IsCountedThroughItsInterface) {
  bool is_gone = false;
  IUnknown* lamp = korlib::make<Lamp>(&is_gone).detach();
  void* again = nullptr;
  EXPECT_EQ(S_OK, lamp->QueryInterface(IID_IUnknown, &again));
  EXPECT_EQ(lamp, again);
  EXPECT_EQ(1u, lamp->Release());
  EXPECT_EQ(0u, lamp->Release());
  EXPECT_TRUE(is_gone);
}

TEST(Counted, KeepsCountOfManyThreads) {
  bool is_gone = false;
  const CComPtr<Lamp> lamp = korlib::make<Lamp>(&is_gone);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int turn = 0; turn < 10'000; ++turn) {
        EXPECT_TRUE(lamp->try_add_ref());
        lamp->Release();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(2u, lamp->AddRef());
  lamp->Release();
}

// One that must not go where its last reference does.
class Keepsake final : public korlib::Counted<IUnknown> {
 public:
  ~Keepsake() override = default;
  HRESULT QueryInterface(REFIID riid, void** ppv) override { return korlib::query_list<IUnknown>(this, riid, ppv); }
  bool is_due = false;

 private:
  void on_last_release() override { is_due = true; }
};

TEST(Counted, LeavesItsEndToAClassThatWantsIt) {
  auto* const kept = new Keepsake;
  EXPECT_FALSE(kept->is_due);
  kept->Release();
  EXPECT_TRUE(kept->is_due);
  EXPECT_FALSE(kept->try_add_ref()) << "there is no way back";
  delete kept;
}

}  // namespace
