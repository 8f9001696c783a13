#include "platform/linux/system_log.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <syslog.h>
#include <unistd.h>

#include "platform/address_book.h"
#include "platform/cal_framework.h"
#include "platform/linux/store_fixture.h"
#include "store/file/sqlite.h"

namespace {

struct Logged {
  int priority;
  std::string text;
};
std::vector<Logged> g_systemLog;

}  // namespace

// The executable's definition comes before the library's.
extern "C" void syslog(int priority, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  char text[4096];
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  g_systemLog.push_back({priority, text});
}

namespace orlocal {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

/// What goes to standard error meanwhile.
std::string standardErrorOf(const std::function<void()>& work) {
  testing::internal::CaptureStderr();
  work();
  return testing::internal::GetCapturedStderr();
}

/// Standard error goes to `target` (nowhere, without one) while `work` runs.
void withStandardError(const char* target, const std::function<void()>& work) {
  const int before = ::dup(STDERR_FILENO);
  ::close(STDERR_FILENO);
  if (target != nullptr) {
    const int there = ::open(target, O_WRONLY | O_CLOEXEC);
    if (there != STDERR_FILENO) {
      ::dup2(there, STDERR_FILENO);
      ::close(there);
    }
  }
  work();
  ::dup2(before, STDERR_FILENO);
  ::close(before);
}

class SystemLog : public testing::Test {
 protected:
  SystemLog() { g_systemLog.clear(); }
};

TEST_F(SystemLog, IsStandardErrorWhenSomebodyMayReadIt) {
  EXPECT_EQ(standardErrorOf([] { writeToSystemLog("Empty object"); }), "Empty object\n");
  EXPECT_THAT(g_systemLog, IsEmpty());
}

TEST_F(SystemLog, IsTheSystemsWhenStandardErrorIsClosedOrGoesNowhere) {
  for (const char* target : {static_cast<const char*>(nullptr), "/dev/null"}) {
    g_systemLog.clear();
    withStandardError(target, [] { writeToSystemLog("100% of it"); });
    ASSERT_THAT(g_systemLog, SizeIs(1));
    EXPECT_EQ(g_systemLog[0].text, "100% of it");
    EXPECT_EQ(g_systemLog[0].priority, LOG_USER | LOG_ERR);
  }
}

TEST_F(SystemLog, TakesNoControlCharacters) {
  EXPECT_EQ(standardErrorOf([] { writeToSystemLog("a\nb\x1b[2Jc\x7f"); }), "a?b?[2Jc?\n");
}

TEST_F(SystemLog, TakesNothingThatMisleads) {
  EXPECT_EQ(standardErrorOf([] { writeToSystemLog("a\u0085b\u009b2Jc\u202ed\u2066e\u2028f g\u00fc\u200dh"); }),
            "a?b?2Jc?d?e?f g\u00fc\u200dh\n");
  EXPECT_EQ(standardErrorOf([] {
              writeToSystemLog(
                  "a\xff"
                  "b");
            }),
            "a\uFFFD"
            "b\n");
}

class Troubles : public testing::Test {
 protected:
  /// What the log has of a failure of `call`.
  std::string told(const char* call, const char* message) {
    return standardErrorOf([&] { troubles.failed(call, {ErrorCode::kIo, message}); });
  }

  StoreTroubles troubles;
};

TEST_F(Troubles, AreToldWithFileUserAndReason) {
  troubles.setFile("/srv/calendar.db");
  EXPECT_THAT(told("open", "It is damaged; restore it."),
              AllOf(HasSubstr("\"/srv/calendar.db\""), HasSubstr("(" + std::to_string(::geteuid()) + ")"),
                    HasSubstr(": It is damaged; restore it.\n")));
}

TEST_F(Troubles, AreToldOncePerCause) {
  told("open", "It is damaged.");
  EXPECT_EQ(told("open", "It is damaged."), "");
  EXPECT_EQ(told("calendars", "It is damaged."), "") << "another call, the same cause";
  EXPECT_NE(told("calendars", "It is locked."), "");
}

TEST_F(Troubles, AreToldAgainAfterItWorkedMeanwhile) {
  told("open", "It is damaged.");
  troubles.worked("calendars");
  EXPECT_EQ(told("open", "It is damaged."), "") << "what failed has not worked yet";
  troubles.worked("open");
  EXPECT_NE(told("open", "It is damaged."), "");
}

class StoreInTrouble : public StoreFixture {
 protected:
  void run(const char* sql) {
    auto other = store::Database::open(file, std::chrono::seconds(10)).value();
    ASSERT_TRUE(other.execute(sql));
  }
};

TEST_F(StoreInTrouble, IsToldOnceWhateverIsAskedOfIt) {
  std::filesystem::create_directory(file);
  const std::string log = standardErrorOf([this] {
    for (int i = 0; i < 3; ++i) {
      eventCalendars();
      ek().eventWithIdentifier("x");
      kit();
      system->addressBook().addressOf("a@example.org");
    }
  });
  EXPECT_THAT(log, HasSubstr(file.string()));
  EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 1) << log;
}

TEST_F(StoreInTrouble, IsToldAgainAfterItWasOpened) {
  std::filesystem::create_directory(file);
  EXPECT_NE(standardErrorOf([this] { eventCalendars(); }), "");
  std::filesystem::remove(file);
  EXPECT_EQ(standardErrorOf([this] { EXPECT_THAT(eventCalendars(), SizeIs(1)); }), "");
  events.reset();
  system.reset();
  std::filesystem::remove(file);
  std::filesystem::create_directory(file);
  EXPECT_NE(standardErrorOf([this] { eventCalendars(); }), "");
}

TEST_F(StoreInTrouble, GivesNoArrayWhenAPredicateCannotBeAnsweredAnyMore) {
  put(eventAt("Review", 2026, 11, 2, 9));
  put(reminder("Water the plants"));
  const auto everything = ek().predicateForEvents(distantPast(), distantFuture(), eventCalendars());
  const auto reminders = ek().predicateForRemindersInCalendars(reminderLists());
  ASSERT_NE(ek().eventsMatchingPredicate(everything), nullptr);
  run("ALTER TABLE timeline RENAME TO gone");
  const std::string log = standardErrorOf([&] {
    EXPECT_EQ(ek().eventsMatchingPredicate(everything), nullptr);
    EXPECT_EQ(ek().eventsMatchingPredicate(everything), nullptr);
    ek().fetchRemindersMatchingPredicate(reminders, [](const auto& found) { EXPECT_EQ(found, nullptr); });
    EXPECT_EQ(ek().predicateForEvents(distantPast(), distantFuture(), eventCalendars()), nullptr);
    EXPECT_EQ(ek().predicateForRemindersInCalendars(reminderLists()), nullptr);
  });
  EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 1) << log;
  run("ALTER TABLE gone RENAME TO timeline");
  EXPECT_EQ(ek().eventsMatchingPredicate(everything)->count(), 1U);
}

TEST_F(StoreInTrouble, GivesNoObjectThatCannotBeRead) {
  put(eventAt("Review", 2026, 11, 2, 9));
  const auto found = eventsBetween(distantPast(), distantFuture());
  ASSERT_EQ(found->count(), 1U);
  run("ALTER TABLE items RENAME TO gone");
  EXPECT_NE(standardErrorOf([&] {
              EXPECT_EQ(found->objectAtIndex(0), nullptr);
              EXPECT_EQ(ek().eventWithIdentifier("0193A2B4-0000-7000-8000-000000000000"), nullptr);
            }),
            "");
}

/// Why a save was refused whose caller gets a code alone.
TEST_F(StoreInTrouble, TellsWhyAnItemIsTooLarge) {
  put(eventAt("Review", 2026, 11, 2, 9));
  const auto event = eventsBetween(distantPast(), distantFuture())->objectAtIndex(0);
  event->setNotes(std::string(std::size_t{17} << 20, 'x'));
  std::optional<Error> error;
  EXPECT_THAT(standardErrorOf([&] { EXPECT_FALSE(ek().saveEvent(event, EKSpan::kThisEvent, true, error)); }),
              HasSubstr("The item \"Review\" would take more than 16 MiB"));
  EXPECT_TRUE(error);
}

TEST_F(StoreInTrouble, TellsOnTheOlderPlatformWhyAnItemIsTooLarge) {
  put(eventAt("Choir", 2026, 11, 2, 9));
  put(reminder("Water the plants"));
  kit();
  const auto store = system->calFramework().defaultCalendarStore();
  const auto found = store->eventsWithPredicate(
      store->eventPredicateWithStartDate(distantPast(), distantFuture(), store->calendars()));
  const auto tasks = store->tasksWithPredicate(store->taskPredicateWithCalendars(store->calendars()));
  const auto event = found->objectAtIndex(0);
  const auto task = tasks->objectAtIndex(0);
  const std::string tooMuch(std::size_t{17} << 20, 'x');
  event->setNotes(tooMuch);
  task->setNotes(tooMuch);
  const std::string log = standardErrorOf([&] {
    std::optional<Error> error;
    EXPECT_FALSE(store->saveEvent(event, CalSpan::kThisEvent, error));
    EXPECT_TRUE(error);
    error.reset();
    EXPECT_FALSE(store->saveTask(task, error));
    EXPECT_TRUE(error);
  });
  EXPECT_THAT(log, HasSubstr("The item \"Choir\" would take more than 16 MiB"));
  EXPECT_THAT(log, HasSubstr("The item \"Water the plants\" would take more than 16 MiB"));
}

TEST_F(StoreInTrouble, SaysNothingOfACalendarThatAllowsNoChanges) {
  put(eventAt("Review", 2026, 11, 2, 9));
  run("UPDATE calendars SET read_only = 1");
  const auto event = eventsBetween(distantPast(), distantFuture())->objectAtIndex(0);
  event->setTitle("Other");
  std::optional<Error> error;
  EXPECT_EQ(standardErrorOf([&] { EXPECT_FALSE(ek().saveEvent(event, EKSpan::kThisEvent, true, error)); }), "");
  EXPECT_TRUE(error);
}

TEST_F(StoreInTrouble, IsAskedOnceForAFetchAndItsCount) {
  put(eventAt("Review", 2026, 11, 2, 9));
  const auto predicate = ek().predicateForEvents(distantPast(), distantFuture(), eventCalendars());
  const auto counted = ek().eventsMatchingPredicate(predicate);
  EXPECT_EQ(ek().eventsMatchingPredicate(predicate), counted) << "the answer that was there when it was made";
}

}  // namespace
}  // namespace orlocal
