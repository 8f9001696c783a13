#include "functions/functions_fixture.h"

namespace orlocal {
namespace {

class Fetch : public OnBothBackEnds {
 protected:
  std::string reminderFetch() const { return g_bUseEK ? "fetchReminders" : "fetchTasks"; }
};
ORLO_ON_BOTH_BACK_ENDS(Fetch);

TEST_P(Fetch, PassesTheIdentifierBeforeTheCalendars) {
  EXPECT_EQ(callWith(&Orlo_EventsFetch, WallClock{2026, 7, 1}, WallClock{2026, 12, 1}, "Work\rHome", "U"), kWorked);
  EXPECT_EQ(told(), only("fetchEventsWithStartDate(2026-06-30 22:00:00 +0000, 2026-11-30 23:00:00 +0000, \"U\", "
                         "\"Work\rHome\")"));
}

TEST_P(Fetch, AsksForAllEventsWithoutArguments) {
  EXPECT_EQ(callWith(&Orlo_EventsFetch, kEmpty, kEmpty, kEmpty, kEmpty), kWorked);
  EXPECT_EQ(told(), only("fetchEventsWithStartDate(" + formatDate(distantPast(), 0) + ", " +
                         formatDate(distantFuture(), 0) + ", nil, nil)"));
}

TEST_P(Fetch, PassesAStartAfterTheEnd) {
  callWith(&Orlo_EventsFetch, WallClock{2026, 12, 2}, WallClock{2026, 12, 1}, kEmpty, kEmpty);
  EXPECT_EQ(told(), only("fetchEventsWithStartDate(2026-12-01 23:00:00 +0000, 2026-11-30 23:00:00 +0000, nil, nil)"));
}

TEST_P(Fetch, AsksForAllEventsInZonesOfHalfHours) {
  useZone(5 * 3600 + 2700);
  callWith(&Orlo_EventsFetch, WallClock{2026, 12, 1}, WallClock{2026, 12, 2}, kEmpty, kEmpty);
  EXPECT_EQ(told(), only("fetchEventsWithStartDate(" + formatDate(distantPast(), 0) + ", " +
                         formatDate(distantFuture(), 0) + ", nil, nil)"));
}

TEST_P(Fetch, GivesZeroAndNotTheCount) {
  notes().number = 12;
  EXPECT_EQ(callWith(&Orlo_EventsFetch, kEmpty, kEmpty, kEmpty, kEmpty), kWorked);
  EXPECT_EQ(callWith(&Orlo_RemindersFetch, kEmpty, kEmpty, kEmpty), kWorked);
}

TEST_P(Fetch, PassesCalendarsStatusAndDateOfReminders) {
  EXPECT_EQ(callWith(&Orlo_RemindersFetch, "Home", "Completed", WallClock{2026, 12, 1, 12}), kWorked);
  EXPECT_EQ(told(), only(reminderFetch() + "(\"Home\", \"Completed\", 2026-12-01 11:00:00 +0000)"));
}

TEST_P(Fetch, PassesWhatIsAbsentOfReminders) {
  callWith(&Orlo_RemindersFetch, kEmpty, "completed", WallClock{2026, 12, 1, 12});
  callWith(&Orlo_RemindersFetch, kEmpty, kEmpty, kEmpty);
  EXPECT_EQ(told(), (std::vector<std::string>{reminderFetch() + "(nil, \"completed\", 2026-12-01 11:00:00 +0000)",
                                              reminderFetch() + "(nil, nil, nil)"}));
}

TEST_P(Fetch, IsTheSentinelAfterAFailure) {
  notes().failure = 9003;
  EXPECT_EQ(callWith(&Orlo_EventsFetch, kEmpty, kEmpty, kEmpty, kEmpty), kFailed);
  EXPECT_EQ(lastError(), "text Unable to create event predicate.");
  notes().failure = -4;
  EXPECT_EQ(callWith(&Orlo_RemindersFetch, kEmpty, "late", kEmpty), kFailed);
  EXPECT_EQ(lastError(), "text Invalid Parameter value(s)");
}

}  // namespace
}  // namespace orlocal
