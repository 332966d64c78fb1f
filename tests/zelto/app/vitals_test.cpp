#include "app/vitals.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>

namespace {

// What another process does until it is killed in the middle of it.
void die_after(const std::function<void()>& act) {
  const pid_t child = ::fork();
  if (child == 0) {
    act();
    ::kill(::getpid(), SIGKILL);
    ::_exit(0);
  }
  int status = 0;
  ASSERT_EQ(child, ::waitpid(child, &status, 0));
  ASSERT_TRUE(WIFSIGNALED(status));
}

using Pages = std::vector<std::string>;

TEST(Vitals, TellThePagesOfAProcessThatWasKilled) {
  zelto::Vitals vitals(3);
  die_after([&] {
    vitals.begin_page(0, "GET", "/first.asp");
    vitals.begin_page(1, "GET", "/done.asp");
    vitals.begin_page(2, "POST", "/last.asp");
    vitals.end_page(1);
    vitals.beat();
  });
  EXPECT_EQ((Pages{"GET /first.asp", "POST /last.asp"}), vitals.pages());
  EXPECT_EQ(1u, vitals.beats());
  vitals.clear();
  EXPECT_EQ(Pages{}, vitals.pages());
}

TEST(Vitals, CutWhatIsTooLongAtACharacter) {
  zelto::Vitals vitals(1);
  for (const std::size_t before : {0, 1}) {
    std::string path(before, '/');
    while (path.size() < 400) path += "\xC3\xA9";
    vitals.begin_page(0, "GET", path);
    EXPECT_EQ("GET " + path.substr(0, 240 - before), vitals.pages().at(0));
  }
  vitals.begin_page(0, std::string(1000, 'G'), "/");
  EXPECT_EQ(std::string(244, 'G'), vitals.pages().at(0));
}

TEST(Vitals, TellTheFirstDeadlineOfAProcessThatWasKilled) {
  using std::chrono::nanoseconds;
  using Time = std::chrono::steady_clock::time_point;
  zelto::Vitals vitals(3);
  EXPECT_EQ(Time::max(), vitals.first_deadline());
  die_after([&] {
    vitals.deadline(0) = 3000;
    vitals.deadline(2) = 2000;
  });
  EXPECT_EQ(Time(nanoseconds(2000)), vitals.first_deadline());
  vitals.clear();
  EXPECT_EQ(Time::max(), vitals.first_deadline());
}

TEST(Vitals, KnowWhichProcessWasReadyFirst) {
  zelto::Vitals vitals(1);
  die_after([] {});
  EXPECT_FALSE(vitals.is_ready());
  die_after([&] { vitals.become_ready(); });
  EXPECT_TRUE(vitals.is_ready());
  vitals.clear();
  EXPECT_FALSE(vitals.is_ready());
  EXPECT_FALSE(vitals.become_ready()) << "it is not the first";
  EXPECT_TRUE(vitals.is_ready());
}

}  // namespace
