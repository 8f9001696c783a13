#include <thread>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "bridge/plugin_error.h"
#include "fakes/no_descriptor_left.h"
#include "notify/script_host.h"
#include "platform/exception.h"

namespace orlocal::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RegisterUpdateScript : public testing::Test {
 protected:
  ScriptHost host;
};

TEST_F(RegisterUpdateScript, LeavesTheResultEmptyAndReturnsZero) {
  const Registration registration = registerScript({"Solution", "Calendar changed"});
  EXPECT_EQ(registration.status, 0);
  EXPECT_EQ(registration.result, "");
}

TEST_F(RegisterUpdateScript, SubscribesToEventChanges) {
  registerScript({"Solution", "Calendar changed"});
  host.center().post(changed({"A"}));
  ASSERT_EQ(host.started.size(), 1U);
  EXPECT_EQ(host.started[0].file, "Solution");
  EXPECT_EQ(host.started[0].script, "Calendar changed");
  EXPECT_EQ(host.started[0].parameter, "New A");
}

TEST_F(RegisterUpdateScript, SubscribesToNothingElse) {
  registerScript({"Solution", "Calendar changed"});
  auto other = std::make_shared<Notification>(*changed({"A"}));
  other->name = "CalTasksChangedExternallyNotification";
  host.center().post(other);
  EXPECT_THAT(host.started, IsEmpty());
}

TEST_F(RegisterUpdateScript, LetsNotificationsOfOtherProcessesIn) {
  registerScript({"Solution", "Calendar changed"});
  EXPECT_THAT(host.listening, ElementsAre(true));
}

TEST_F(RegisterUpdateScript, KeepsOneListenerWithTheLastNamesAndRunsOncePerCall) {
  registerScript({"One", "First"});
  NAXiCalNotificationListener* const first = listener;
  registerScript({"Two", "Second"});
  EXPECT_EQ(listener, first);
  host.center().post(changed({"A"}));
  ASSERT_EQ(host.started.size(), 2U);
  for (const auto& start : host.started) {
    EXPECT_EQ(start.file, "Two");
    EXPECT_EQ(start.script, "Second");
  }
}

TEST_F(RegisterUpdateScript, TakesAnEmptyScriptName) {
  const Registration registration = registerScript({"Solution", ""});
  EXPECT_EQ(registration.result, "");
  EXPECT_EQ(g_llasterror, 0);
}

TEST_F(RegisterUpdateScript, ClearsTheErrorState) {
  g_llasterror = kItemNotFound;
  error->setError(9001, 0, std::nullopt);
  registerScript({"Solution", "Calendar changed"});
  EXPECT_EQ(g_llasterror, 0);
  EXPECT_EQ(error->getError(), "Success");
}

TEST_F(RegisterUpdateScript, RemembersTheEnvironmentOfTheLastCall) {
  registerScript({"Solution", "Calendar changed"});
  EXPECT_NE(listener->environment(), nullptr);
}

/// A centre that cannot be subscribed to.
class BrokenCenter : public NotificationCenter {
 public:
  void addObserver(std::string_view, Observer) override { throw Exception("NSBrokenException", "no centre"); }
  void post(const std::shared_ptr<const Notification>&) override {}
  void setSuspended(bool) override {}
};

TEST_F(RegisterUpdateScript, ShowsAPlatformExceptionOnlyInTheLastError) {
  host.platform().m_notificationCenter = std::make_shared<BrokenCenter>();
  const Registration registration = registerScript({"Solution", "Calendar changed"});
  EXPECT_EQ(registration.status, 0);
  EXPECT_EQ(registration.result, "");
  EXPECT_EQ(g_llasterror, 0);
  EXPECT_EQ(error->getError(), "System Error NSBrokenException");
}

TEST_F(RegisterUpdateScript, ShowsThatThereIsNoDescriptorForItsPortOnlyInTheLastError) {
  if (fakes::kSanitizersNeedDescriptors) { GTEST_SKIP() << "the sanitizers need descriptors of their own"; }
  std::thread([this] {
    host.platform().m_runLoop = std::shared_ptr<RunLoop>(std::shared_ptr<RunLoop>(), &currentThreadRunLoop());
    {
      const fakes::NoDescriptorLeft none;
      EXPECT_EQ(registerScript({"Solution", "Calendar changed"}).result, "");
    }
    EXPECT_EQ(g_llasterror, 0);
    EXPECT_EQ(error->getError(), "System Error RunLoopException");
    registerScript({"Solution", "Calendar changed"});
    EXPECT_EQ(error->getError(), "Success");
    host.center().post(changed({"A"}));
    EXPECT_EQ(host.started.size(), 1U) << "the call that failed has not subscribed";
    delete std::exchange(listener, nullptr);
  }).join();
}

TEST_F(RegisterUpdateScript, LetsTheHostsOwnFailurePass) {
  EXPECT_THROW(registerScript({"Solution"}), std::exception) << "there is no second argument to read";
}

TEST_F(RegisterUpdateScript, KeepsTheFileWhenOnlyTheScriptCannotBeRead) {
  registerScript({"One", "First"});
  EXPECT_THROW(registerScript({"Two"}), std::exception);
  host.center().post(changed({"A"}));
  ASSERT_FALSE(host.started.empty());
  EXPECT_EQ(host.started[0].file, "Two");
  EXPECT_EQ(host.started[0].script, "First");
}

}  // namespace
}  // namespace orlocal::test
