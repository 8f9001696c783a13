#include "platform/linux/run_loop.h"

#include <stdexcept>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include "fakes/no_descriptor_left.h"
#include "platform/exception.h"

namespace orlocal {
namespace {

using namespace std::chrono_literals;

class RunLoopOfThisThread : public testing::Test {
 protected:
  RunLoop& loop = currentThreadRunLoop();
  int handled = 0;
  std::unique_ptr<RunLoopPort> port = loop.addPort([this] { ++handled; });
};

TEST_F(RunLoopOfThisThread, IsTheSameAtEachCall) { EXPECT_EQ(&currentThreadRunLoop(), &loop); }

TEST_F(RunLoopOfThisThread, IsNotThatOfAnotherThread) {
  const RunLoop* other = nullptr;
  std::thread([&other] { other = &currentThreadRunLoop(); }).join();
  EXPECT_NE(other, &loop);
}

TEST_F(RunLoopOfThisThread, HandlesSeveralSendsAtOnce) {
  port->send();
  port->send();
  loop.turn();
  EXPECT_EQ(handled, 1);
  loop.turn();
  EXPECT_EQ(handled, 1);
}

TEST_F(RunLoopOfThisThread, LetsAHandlerDestroyAnotherPort) {
  std::unique_ptr<RunLoopPort> killer = loop.addPort([this] { port.reset(); });
  std::unique_ptr<RunLoopPort> second = loop.addPort([&] { killer.reset(); });
  killer->send();
  port->send();
  loop.turn();
  EXPECT_EQ(port, nullptr);
  EXPECT_LE(handled, 1);
}

TEST_F(RunLoopOfThisThread, MayGoBeforeItsPorts) {
  std::unique_ptr<RunLoopPort> orphan;
  std::thread([&orphan] { orphan = currentThreadRunLoop().addPort([] {}); }).join();
  orphan->send();
  orphan.reset();
}

class RunLoopWithoutDescriptors : public testing::Test {
 protected:
  /// Does `work` with a loop that nobody has used yet.
  static void withNewLoop(const std::function<void(RunLoop& loop)>& work) {
    std::thread([&work] { work(currentThreadRunLoop()); }).join();
  }
};

TEST_F(RunLoopWithoutDescriptors, TurnsAndRunsAsLongAsItHasNoPort) {
  withNewLoop([](RunLoop& loop) {
    const fakes::NoDescriptorLeft none;
    EXPECT_NO_THROW(loop.turn());
    const auto before = std::chrono::steady_clock::now();
    EXPECT_NO_THROW(loop.runFor(20ms));
    EXPECT_GE(std::chrono::steady_clock::now() - before, 20ms);
  });
}

TEST_F(RunLoopWithoutDescriptors, RefusesAPortWithAPlatformException) {
  if (fakes::kSanitizersNeedDescriptors) { GTEST_SKIP() << "the sanitizers need descriptors of their own"; }
  for (const rlim_t left : {rlim_t{0}, rlim_t{1}}) {
    withNewLoop([left](RunLoop& loop) {
      const fakes::NoDescriptorLeft none(left);
      try {
        loop.addPort([] {});
        ADD_FAILURE() << "a port was made";
      } catch (const Exception& exception) {
        EXPECT_EQ(exception.name(), "RunLoopException");
        EXPECT_NE(exception.reason().find("Too many open files"), std::string::npos) << exception.reason();
      }
      EXPECT_NO_THROW(loop.turn());
    });
  }
}

/// Something that the loop looks at whenever it turns.
class LookedAt : public testing::Test {
 protected:
  RunLoop& loop = currentThreadRunLoop();
  int looks = 0;
  std::shared_ptr<const TurnLook> look = lookAtEachTurn([this] { ++looks; });
};

TEST_F(LookedAt, IsLookedAtOnceATurn) {
  EXPECT_EQ(looks, 0);
  loop.turn();
  EXPECT_EQ(looks, 1);
  loop.turn();
  EXPECT_EQ(looks, 2);
}

TEST_F(LookedAt, IsLeftAloneOnceNobodyHoldsIt) {
  look.reset();
  loop.turn();
  EXPECT_EQ(looks, 0);
}

TEST_F(LookedAt, IsLookedAtAgainWhileTheLoopRuns) {
  const auto deadline = std::chrono::steady_clock::now() + 10s;
  const auto enough = lookAtEachTurn([this] {
    if (looks > 2) { throw std::runtime_error("enough"); }
  });
  // Would run on with a single look for as long as it is told.
  EXPECT_THROW(loop.runFor(60s), std::runtime_error);
  EXPECT_LT(std::chrono::steady_clock::now(), deadline);
}

TEST_F(LookedAt, IsNotLookedAtOnAnotherThread) {
  std::thread([] { currentThreadRunLoop().turn(); }).join();
  EXPECT_EQ(looks, 0);
}

TEST_F(LookedAt, MayBeDroppedByItsOwnLook) {
  std::shared_ptr<const TurnLook> once;
  int own = 0;
  once = lookAtEachTurn([&] {
    once.reset();
    ++own;
  });
  loop.turn();
  loop.turn();
  EXPECT_EQ(own, 1);
  EXPECT_EQ(looks, 2);
}

TEST_F(LookedAt, MayLetTheLoopTurn) {
  bool nested = false;
  const auto turning = lookAtEachTurn([&] {
    if (!std::exchange(nested, true)) { loop.turn(); }
  });
  loop.turn();
  EXPECT_EQ(looks, 2);
}

TEST_F(LookedAt, MayThrow) {
  int failures = 0;
  const auto failing = lookAtEachTurn([&] {
    if (++failures == 1) { throw std::runtime_error("the look's"); }
  });
  EXPECT_THROW(loop.turn(), std::runtime_error);
  loop.turn();
  EXPECT_EQ(looks, 2);
  EXPECT_EQ(failures, 2);
}

TEST_F(RunLoopOfThisThread, MayThrowFromAHandler) {
  const auto throwing = loop.addPort([] { throw std::runtime_error("the handler's"); });
  throwing->send();
  EXPECT_THROW(loop.turn(), std::runtime_error);
  loop.turn();
}

TEST_F(RunLoopOfThisThread, KeepsTheOthersOfATurnWhenOneThrows) {
  const auto throwing = loop.addPort([] { throw std::runtime_error("the handler's"); });
  throwing->send();
  port->send();
  EXPECT_THROW(loop.turn(), std::runtime_error);
  loop.turn();
  EXPECT_EQ(handled, 1);
}

}  // namespace
}  // namespace orlocal
