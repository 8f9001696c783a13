#include "platform/linux/external_changes.h"

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

#include "fakes/no_descriptor_left.h"
#include "platform/linux/notification_center.h"
#include "platform/linux/run_loop.h"
#include "platform/linux/store_access.h"
#include "platform/linux/store_fixture.h"
#include "store/edits/edited_items.h"
#include "store/file/change_log.h"
#include "store/file/schema.h"

namespace orlocal {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// Longer than another thread takes to commit on a machine that is busy.
constexpr auto kPatience = 20s;

class ExternalChangesOfAStore : public StoreFixture {
 protected:
  ExternalChangesOfAStore() {
    center.addObserver(kCalEventsChangedExternallyNotification, [this](const auto& notification) {
      posted.push_back(notification);
      if (onPost) { onPost(); }
    });
  }

  RunLoop& loop() { return currentThreadRunLoop(); }

  /// Until so many were posted; not for ever.
  void waitFor(std::size_t count) {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (posted.size() < count && std::chrono::steady_clock::now() < deadline) { loop().runFor(10ms); }
  }

  /// "New" and the like with the first identifier, of each notification.
  std::vector<std::string> told() const {
    std::vector<std::string> lines;
    for (const auto& notification : posted) {
      std::string line;
      for (const auto key : {kCalInsertedRecordsKey, kCalUpdatedRecordsKey, kCalDeletedRecordsKey}) {
        if (const auto* records = notification->valueForKey(key)) {
          for (const auto& record : *records) { line += std::string(key.substr(3, 1)) + " " + record + ";"; }
        }
      }
      lines.push_back(line);
    }
    return lines;
  }

  std::string inserted(const std::string& title = "Review") {
    return "I " + put(eventAt(title, 2026, 11, 2, 9)).identifier + ";";
  }

  StoreAccess access;
  LinuxNotificationCenter center{[](bool) {}};
  ExternalChanges changes{access, center};
  std::vector<std::shared_ptr<const Notification>> posted;
  std::function<void()> onPost;
};

TEST_F(ExternalChangesOfAStore, PostWhatAnotherStoreInserted) {
  changes.listen();
  const std::string expected = inserted();
  loop().turn();
  EXPECT_THAT(told(), ElementsAre(expected));
  EXPECT_EQ(posted.at(0)->name, kCalEventsChangedExternallyNotification);
}

TEST_F(ExternalChangesOfAStore, LeaveOutListsWithoutMembers) {
  changes.listen();
  inserted();
  loop().turn();
  EXPECT_NE(posted.at(0)->valueForKey(kCalInsertedRecordsKey), nullptr);
  EXPECT_EQ(posted.at(0)->valueForKey(kCalUpdatedRecordsKey), nullptr);
  EXPECT_EQ(posted.at(0)->valueForKey(kCalDeletedRecordsKey), nullptr);
}

TEST_F(ExternalChangesOfAStore, PostOneNotificationWithThreeListsForOneCommit) {
  changes.listen();
  store::UuidMaker uuids;
  auto database = store::openStoreFile(file, 10s, uuids).value();
  store::ChangeLog log(database, uuids.randomNumber());
  auto transaction = store::Transaction::write(database).value();
  ASSERT_TRUE(log.startCommit());
  const auto record = [&](store::Operation operation) {
    const store::Uuid uuid = uuids.next();
    EXPECT_TRUE(log.record(operation, store::Subject::kEvent, 1, std::nullopt, uuid));
    return uuid.text();
  };
  const std::string gone = record(store::Operation::kDeleted);
  const std::string changed = record(store::Operation::kUpdated);
  const std::string fresh = record(store::Operation::kInserted);
  ASSERT_TRUE(log.finishCommit());
  ASSERT_TRUE(transaction.commit());
  store::Bell(file).ring();
  loop().turn();
  EXPECT_THAT(told(), ElementsAre("I " + fresh + ";U " + changed + ";D " + gone + ";"));
}

TEST_F(ExternalChangesOfAStore, PostNothingForOnesOwnCommits) {
  changes.listen();
  store::Item mine = eventAt("Mine", 2026, 11, 2, 9);
  mine.calendar = access.store().defaultCalendar(store::CalendarKind::kEvents).value()->id;
  ASSERT_TRUE(saveEvent(access.store(), mine, std::nullopt, store::Span::kThis));
  loop().turn();
  EXPECT_THAT(posted, IsEmpty());
}

TEST_F(ExternalChangesOfAStore, PostNothingForRemindersAndCalendars) {
  changes.listen();
  put(reminder("Water the plants"));
  const auto other = otherStore();
  store::Calendar calendar;
  calendar.title = "Work";
  calendar.source = other->sources().value().front().id;
  ASSERT_TRUE(other->saveCalendar(calendar));
  loop().turn();
  EXPECT_THAT(posted, IsEmpty());
}

TEST_F(ExternalChangesOfAStore, PostInTheOrderOfCommitting) {
  changes.listen();
  std::vector<std::string> expected;
  for (int i = 0; i < 20; ++i) { expected.push_back(inserted()); }
  loop().turn();
  EXPECT_EQ(told(), expected);
}

TEST_F(ExternalChangesOfAStore, PostNothingTwice) {
  changes.listen();
  inserted();
  loop().turn();
  loop().turn();
  loop().runFor(50ms);
  EXPECT_THAT(posted, SizeIs(1));
}

TEST_F(ExternalChangesOfAStore, BeginWithWhatIsCommittedFromNowOn) {
  inserted("Before");
  changes.listen();
  const std::string after = inserted("After");
  loop().turn();
  EXPECT_THAT(told(), ElementsAre(after));
}

TEST_F(ExternalChangesOfAStore, DoNotBeginAnewAtASecondListen) {
  changes.listen();
  const std::string expected = inserted();
  changes.listen();
  loop().turn();
  EXPECT_THAT(told(), ElementsAre(expected));
}

TEST_F(ExternalChangesOfAStore, PostNothingWhilePaused) {
  changes.listen();
  changes.pause();
  inserted();
  loop().runFor(10ms);
  EXPECT_THAT(posted, IsEmpty());
}

TEST_F(ExternalChangesOfAStore, MakeUpForAPauseAfterwards) {
  changes.listen();
  changes.pause();
  const std::string first = inserted();
  const std::string second = inserted();
  changes.listen();
  loop().turn();
  EXPECT_THAT(told(), ElementsAre(first, second));
}

TEST_F(ExternalChangesOfAStore, StopInTheMiddleWhenAnObserverPauses) {
  changes.listen();
  onPost = [this] { changes.pause(); };
  const std::string first = inserted();
  const std::string second = inserted();
  loop().turn();
  EXPECT_THAT(told(), ElementsAre(first));
  onPost = nullptr;
  changes.listen();
  loop().turn();
  EXPECT_THAT(told(), ElementsAre(first, second));
}

TEST_F(ExternalChangesOfAStore, LoseNothingWhenAnObserverThrows) {
  changes.listen();
  bool thrown = false;
  onPost = [&] {
    if (!std::exchange(thrown, true)) { throw std::runtime_error("an observer's"); }
  };
  const std::string first = inserted();
  const std::string second = inserted();
  const std::string third = inserted();
  EXPECT_THROW(loop().turn(), std::runtime_error);
  loop().turn();
  EXPECT_THAT(told(), ElementsAre(first, second, third)) << "and at once, not when the next commit comes";
}

TEST_F(ExternalChangesOfAStore, KeepTheOrderWhenAnObserverLetsTheLoopTurn) {
  changes.listen();
  std::vector<std::string> expected{inserted(), inserted()};
  bool nested = false;
  onPost = [&] {
    if (std::exchange(nested, true)) { return; }
    expected.push_back(inserted());
    loop().turn();
  };
  loop().turn();
  EXPECT_EQ(told(), expected);
}

TEST_F(ExternalChangesOfAStore, PostWhatIsCommittedWhileAnObserverIsAtWork) {
  changes.listen();
  std::vector<std::string> expected{inserted()};
  onPost = [&] {
    if (expected.size() < 3) { expected.push_back(inserted()); }
  };
  loop().turn();
  loop().turn();
  loop().turn();
  EXPECT_EQ(told(), expected);
}

TEST_F(ExternalChangesOfAStore, ArePostedInsideALoopThatRunsInSmallSteps) {
  // As the reminder fetch waits for its answer.
  changes.listen();
  std::string expected;
  std::thread writer([&] { expected = inserted(); });
  waitFor(1);
  writer.join();
  EXPECT_THAT(told(), ElementsAre(expected));
}

TEST_F(ExternalChangesOfAStore, ComeAtTheNextTurnThoughNobodyRang) {
  changes.listen();
  loop().turn();
  const auto bell = file.string() + "-bell";
  // A folder in its place cannot be written: as if the writer had died before it rang.
  std::filesystem::remove(bell);
  std::filesystem::create_directory(bell);
  const std::string silent = inserted();
  loop().turn();
  EXPECT_THAT(told(), ElementsAre(silent));
}

TEST_F(ExternalChangesOfAStore, AreFollowedWithoutADescriptorOfTheirOwn) {
  if (fakes::kSanitizersNeedDescriptors) { GTEST_SKIP() << "the sanitizers need descriptors of their own"; }
  access.store();
  {
    const fakes::NoDescriptorLeft none;
    changes.listen();
  }
  const std::string expected = inserted();
  {
    const fakes::NoDescriptorLeft none;
    loop().turn();
  }
  EXPECT_THAT(told(), ElementsAre(expected));
}

TEST_F(ExternalChangesOfAStore, ArePostedToAProcessThatMayOnlyReadAFileThatNobodyHadOpen) {
  if (::geteuid() != 0) { GTEST_SKIP() << "another user can only be tried as root"; }
  inserted("Before");
  std::filesystem::permissions(folder, std::filesystem::perms(0755));
  std::filesystem::permissions(file, std::filesystem::perms(0644));
  std::filesystem::permissions(file.string() + "-bell", std::filesystem::perms(0644));
  int ready[2];
  ASSERT_EQ(::pipe(ready), 0);
  const pid_t child = ::fork();
  if (child == 0) {
    if (::setgid(65534) != 0 || ::setuid(65534) != 0) { ::_exit(99); }
    try {
      changes.listen();
    } catch (const Exception&) { ::_exit(2); }
    if (::write(ready[1], "x", 1) != 1) { ::_exit(3); }
    waitFor(1);
    ::_exit(posted.size() == 1 ? 0 : 1);
  }
  ::close(ready[1]);
  char sign = 0;
  if (::read(ready[0], &sign, 1) == 1) { inserted("After"); }
  ::close(ready[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST_F(ExternalChangesOfAStore, CannotBeFollowedWithoutAStore) {
  ::setenv("ORLOCAL_STORE", (folder / "file" / "calendar.db").c_str(), 1);
  std::ofstream(folder / "file") << "no folder";
  StoreAccess nowhere;
  ExternalChanges lost(nowhere, center);
  EXPECT_THROW(lost.listen(), Exception);
}

TEST_F(ExternalChangesOfAStore, AreFollowedOnceTheStoreIsThere) {
  ::setenv("ORLOCAL_STORE", (folder / "file" / "calendar.db").c_str(), 1);
  std::ofstream(folder / "file") << "no folder";
  StoreAccess late;
  ExternalChanges lateChanges(late, center);
  EXPECT_THROW(lateChanges.listen(), Exception);
  std::filesystem::remove(folder / "file");
  file = folder / "file" / "calendar.db";
  lateChanges.listen();
  const std::string expected = inserted();
  loop().turn();
  EXPECT_THAT(told(), ElementsAre(expected));
}

/// The whole platform at work.
class ExternalChangesOfThePlatform : public StoreFixture {};

TEST_F(ExternalChangesOfThePlatform, ComeOnceNotificationsOfOtherProcessesAreLetIn) {
  system = makeSystemPlatform();
  int posted = 0;
  system->notificationCenter().addObserver(kCalEventsChangedExternallyNotification, [&](const auto&) { ++posted; });
  system->notificationCenter().setSuspended(false);
  put(eventAt("Review", 2026, 11, 2, 9));
  system->currentRunLoop().turn();
  EXPECT_EQ(posted, 1);
}

TEST_F(ExternalChangesOfThePlatform, LeaveOutWhatTheEventStoreOfThePlatformSaves) {
  system = makeSystemPlatform();
  int posted = 0;
  system->notificationCenter().addObserver(kCalEventsChangedExternallyNotification, [&](const auto&) { ++posted; });
  system->notificationCenter().setSuspended(false);
  put(eventAt("Review", 2026, 11, 2, 9));
  system->currentRunLoop().turn();
  const auto found = eventsBetween(moment("2026-11-02 00:00:00 +0100"), moment("2026-11-03 00:00:00 +0100"));
  ASSERT_EQ(found->count(), 1U);
  std::optional<Error> error;
  ASSERT_TRUE(ek().removeEvent(found->objectAtIndex(0), EKSpan::kThisEvent, true, error));
  system->currentRunLoop().turn();
  EXPECT_EQ(posted, 1) << "the one of before";
}

}  // namespace
}  // namespace orlocal
