#include "host/commands/command_line/child_process.h"

#include <csignal>
#include <ostream>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

namespace orlocal::host {
namespace {

using ::testing::HasSubstr;

ChildResult inChild(const std::function<void(std::ostream&)>& work) {
  return runInChild([&work](std::ostream& out) {
           work(out);
           return Status();
         })
      .value();
}

TEST(ChildProcessTest, BringsBackWhatAChildWrote) {
  const ChildResult result = inChild([](std::ostream& out) { out << "hello"; });
  EXPECT_TRUE(result.succeeded());
  EXPECT_EQ(result.output, "hello");
}

TEST(ChildProcessTest, BringsBackMoreThanAPipeHolds) {
  const ChildResult result = inChild([](std::ostream& out) { out << std::string(1'000'000, 'x'); });
  EXPECT_EQ(result.output.size(), 1'000'000U);
}

TEST(ChildProcessTest, KeepsWhatWasWrittenBeforeACrash) {
  const ChildResult result = inChild([](std::ostream& out) {
    out << "before";
    ::signal(SIGTERM, SIG_DFL);
    ::kill(::getpid(), SIGTERM);
    ::pause();
  });
  EXPECT_FALSE(result.succeeded());
  EXPECT_EQ(result.output, "before");
  EXPECT_THAT(result.ending, HasSubstr("signal 15"));
}

TEST(ChildProcessTest, EndsAsFailedWithAFailureOfTheWork) {
  const auto result = runInChild([](std::ostream&) { return Status(failure(ErrorCode::kIo, "expected by the test")); });
  ASSERT_TRUE(result);
  EXPECT_EQ(result->status, 1);
  EXPECT_EQ(result->ending, "ended with status 1");
}

TEST(ChildProcessTest, FailsWhenNoPipeCanBeMade) {
  rlimit before{};
  ::getrlimit(RLIMIT_NOFILE, &before);
  const rlimit none{0, before.rlim_max};
  ::setrlimit(RLIMIT_NOFILE, &none);
  const auto result = runProgram({"/bin/true"});
  ::setrlimit(RLIMIT_NOFILE, &before);
  ASSERT_FALSE(result);
  EXPECT_EQ(result.error().message, "no pipe: Too many open files");
  EXPECT_EQ(endingOf(result), "was not run: no pipe: Too many open files");
}

TEST(ChildProcessTest, MakesAFailureOfAnException) {
  const ChildResult result = inChild([](std::ostream&) { throw std::runtime_error("expected by the test"); });
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.ending, "ended with status 1");
}

TEST(ChildProcessTest, LeavesTheParentAsItWas) {
  int value = 1;
  inChild([&](std::ostream&) { value = 2; });
  EXPECT_EQ(value, 1);
}

TEST(ChildProcessTest, RunsAProgramAndBringsBackBothItsStreams) {
  const ChildResult result = runProgram({"/bin/sh", "-c", "echo out; echo err >&2; exit 3"}).value();
  EXPECT_EQ(result.output, "out\nerr\n");
  EXPECT_EQ(result.status, 3);
}

TEST(ChildProcessTest, FailsForAProgramThatIsNotThere) {
  EXPECT_EQ(runProgram({"/no/such/program"}).value().status, 127);
}

TEST(RunVisiblyTest, SearchesThePath) { EXPECT_TRUE(runVisibly({"true"}).value().succeeded()); }

TEST(RunVisiblyTest, TellsHowTheProgramEnded) {
  const ChildResult result = runVisibly({"sh", "-c", "exit 3"}).value();
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.ending, "ended with status 3");
}

TEST(RunVisiblyTest, SaysWhyAProgramCannotBeRun) {
  const ChildResult result = runVisibly({"there-is-no-such-program"}).value();
  EXPECT_FALSE(result.succeeded());
  EXPECT_EQ(result.ending, "cannot be run: No such file or directory");
}

}  // namespace
}  // namespace orlocal::host
