#include "http/mailbox.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <string_view>
#include <thread>
#include <vector>

#include "http/io_loop.h"

namespace {

using zelto::IoLoop;

struct Note {
  std::function<void()> read;
};

zelto::Letter letter(std::function<void()> read) {
  return {std::make_shared<Note>(Note{std::move(read)}), [](void* note) noexcept { static_cast<Note*>(note)->read(); }};
}

void send(IoLoop& loop, std::function<void()> read) { loop.mailbox().send(letter(std::move(read))); }

void start(IoLoop& loop) {
  loop.start([] {}, [](std::string_view) {}, [] {});
}

// What the loop has opened by now.
void wait_for_what_was_sent(IoLoop& loop) {
  std::promise<void> done;
  send(loop, [&] { done.set_value(); });
  done.get_future().wait();
}

TEST(Mailbox, WakesALoopThatHasNothingElseToDo) {
  IoLoop loop;
  start(loop);
  for (int i = 0; i < 100; ++i) wait_for_what_was_sent(loop);
  loop.stop();
}

TEST(Mailbox, KeepsTheOrderOfEachThreadAndLosesNothing) {
  constexpr int kLetters = 2000;
  IoLoop loop;
  start(loop);
  std::array<std::vector<int>, 3> opened;
  {
    std::vector<std::jthread> threads;
    for (auto& mine : opened)
      threads.emplace_back([&] {
        for (int i = 0; i < kLetters; ++i) send(loop, [&mine, i] { mine.push_back(i); });
      });
  }
  wait_for_what_was_sent(loop);
  for (const auto& mine : opened) {
    ASSERT_EQ(std::size_t{kLetters}, mine.size());
    for (int i = 0; i < kLetters; ++i) ASSERT_EQ(i, mine[static_cast<std::size_t>(i)]);
  }
  loop.stop();
}

TEST(Mailbox, TakesLettersFromALetter) {
  IoLoop loop;
  start(loop);
  std::promise<void> done;
  send(loop, [&] { send(loop, [&] { done.set_value(); }); });
  done.get_future().wait();
  loop.stop();
}

// Leaves a letter, and waits until it is opened.
void leave_one(IoLoop& loop, bool is_urgent) {
  const std::atomic<bool> urgent = is_urgent;
  std::promise<void> opened;
  loop.mailbox().leave(letter([&] { opened.set_value(); }), urgent);
  opened.get_future().wait();
}

TEST(Mailbox, OpensWhatWasLeftWhetherItLooksOrNot) {
  IoLoop loop;
  start(loop);
  for (const bool is_urgent : {false, true}) {
    leave_one(loop, is_urgent);
    send(loop, [&] { loop.mailbox().look_soon(); });
    leave_one(loop, is_urgent);
    leave_one(loop, is_urgent);
  }
  loop.stop();
}

TEST(Mailbox, LetsGoOfWhatNobodyOpens) {
  const auto held = std::make_shared<int>(1);
  {
    IoLoop loop;
    send(loop, [held] {});
    EXPECT_EQ(2, held.use_count());
  }
  EXPECT_EQ(1, held.use_count());
}

}  // namespace
