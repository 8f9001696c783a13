#include "host/commands/command_line/change_wait.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/commands/command_line/interruption.h"

namespace orlocal::host {
namespace {

using namespace std::chrono_literals;

class ChangeWaitTest : public testing::Test {
 protected:
  ChangeWaitTest() {
    std::string pattern = (std::filesystem::temp_directory_path() / "orlocal-wait-XXXXXX").string();
    folder = ::mkdtemp(pattern.data());
    signal = store::ChangeSignal::listen(folder / "calendar.db").value();
  }
  ~ChangeWaitTest() override { std::filesystem::remove_all(folder); }

  void ring() const { store::Bell(folder / "calendar.db").ring(); }

  std::filesystem::path folder;
  std::unique_ptr<store::ChangeSignal> signal;
  Interruption interruption;
};

TEST_F(ChangeWaitTest, EndsWithAChange) {
  ring();
  EXPECT_EQ(waitForChange(*signal), Woken::kByChange);
}

TEST_F(ChangeWaitTest, TakesAChangeOnce) {
  ring();
  waitForChange(*signal);
  EXPECT_EQ(waitForChange(*signal, 0ms), Woken::kByTime);
}

TEST_F(ChangeWaitTest, EndsWhenPatienceDoes) { EXPECT_EQ(waitForChange(*signal, 1ms), Woken::kByTime); }

TEST_F(ChangeWaitTest, EndsWithAnInterruptionOfBefore) {
  ::raise(SIGINT);
  EXPECT_EQ(waitForChange(*signal), Woken::kByInterruption);
}

TEST_F(ChangeWaitTest, EndsWithAnInterruptionInBetween) {
  const pid_t child = ::fork();
  if (child == 0) {
    ::usleep(20'000);
    ::kill(::getppid(), SIGTERM);
    ::_exit(0);
  }
  EXPECT_EQ(waitForChange(*signal, 60s), Woken::kByInterruption);
  ::waitpid(child, nullptr, 0);
}

TEST_F(ChangeWaitTest, PutsInterruptionBeforeChange) {
  ring();
  ::raise(SIGINT);
  EXPECT_EQ(waitForChange(*signal), Woken::kByInterruption);
}

TEST_F(ChangeWaitTest, LeavesTheSignalsAsTheyWere) {
  waitForChange(*signal, 0ms);
  sigset_t held;
  ::sigprocmask(SIG_SETMASK, nullptr, &held);
  EXPECT_FALSE(::sigismember(&held, SIGINT));
  EXPECT_FALSE(::sigismember(&held, SIGTERM));
}

}  // namespace
}  // namespace orlocal::host
