#include "functions/functions_fixture.h"

namespace orlocal {
namespace {

class RecurrenceFunction : public FunctionTest {};

TEST_F(RecurrenceFunction, AddsWithLists) {
  EXPECT_EQ(callWith(&Orlo_AddRecurrence, "Weekly", 2, "2\r4", "1\rx\r15", "1\r12", WallClock{2026, 12, 1, 9}, 10),
            kWorked);
  EXPECT_EQ(told(), only("addRecurrence(\"Weekly\", 2, days [2 4], [1 15], 0, [1 12], 2026-12-01 08:00:00 +0000, 10)"));
}

TEST_F(RecurrenceFunction, AddsOnTheLegacyBackEndWithoutAWeekOfTheMonth) {
  use(BackEnd::kLegacy);
  EXPECT_EQ(callWith(&Orlo_AddRecurrence, "monthly", 1, "2", "3", "4", kEmpty, 5), kWorked);
  EXPECT_EQ(told(), only("addRecurrence(\"monthly\", 1, days [2], [3], 0, 0, [4], nil, 5)"));
}

TEST_F(RecurrenceFunction, PassesNoListForAnEmptyArgument) {
  callWith(&Orlo_AddRecurrence, "weekly", 2, "2\r4", kEmpty, kEmpty, kEmpty, kEmpty);
  callWith(&Orlo_AddRecurrence, kEmpty, kEmpty, kEmpty, kEmpty, kEmpty, kEmpty, kEmpty);
  EXPECT_EQ(told(), (std::vector<std::string>{"addRecurrence(\"weekly\", 2, days [2 4], nil, 0, nil, nil, 0)",
                                              "addRecurrence(nil, 0, nil, nil, 0, nil, nil, 0)"}));
}

TEST_F(RecurrenceFunction, PassesAnEmptyListWhenNothingInItIsMeant) {
  callWith(&Orlo_AddRecurrence, "monthly", 1, "9", "x", "y", kEmpty, kEmpty);
  EXPECT_EQ(told(), only("addRecurrence(\"monthly\", 1, days [], [], 0, [], nil, 0)"));
}

TEST_F(RecurrenceFunction, LeavesTheIntervalToTheBackEnd) {
  callWith(&Orlo_AddRecurrence, "daily", 0, kEmpty, kEmpty, kEmpty, kEmpty, kEmpty);
  callWith(&Orlo_AddRecurrence, "daily", -3, kEmpty, kEmpty, kEmpty, kEmpty, -1);
  EXPECT_EQ(told(), (std::vector<std::string>{"addRecurrence(\"daily\", 0, nil, nil, 0, nil, nil, 0)",
                                              "addRecurrence(\"daily\", -3, nil, nil, 0, nil, nil, -1)"}));
}

TEST_F(RecurrenceFunction, LosesTheEndInZonesOfHalfHours) {
  useZone(5 * 3600 + 1800);
  callWith(&Orlo_AddRecurrence, "daily", 1, kEmpty, kEmpty, kEmpty, WallClock{2026, 12, 1}, kEmpty);
  EXPECT_EQ(told(), only("addRecurrence(\"daily\", 1, nil, nil, 0, nil, nil, 0)"));
}

class RecurrenceOnBoth : public OnBothBackEnds {};
ORLO_ON_BOTH_BACK_ENDS(RecurrenceOnBoth);

TEST_P(RecurrenceOnBoth, IsRemoved) {
  EXPECT_EQ(callWith(&Orlo_RemoveRecurrence), kWorked);
  EXPECT_EQ(told(), only("removeRecurrence()"));
}

TEST_P(RecurrenceOnBoth, IsTheSentinelAfterAFailure) {
  notes().failure = 9048;
  EXPECT_EQ(callWith(&Orlo_RemoveRecurrence), kFailed);
  EXPECT_EQ(lastError(), "text An event must be opened before a recurrence rule can be removed.");
  notes().failure = 9024;
  EXPECT_EQ(callWith(&Orlo_AddRecurrence, "daily", 0, kEmpty, kEmpty, kEmpty, kEmpty, kEmpty), kFailed);
  EXPECT_EQ(lastError(), "text An interval greater than 0 is required for adding recurrence to an event.");
}

}  // namespace
}  // namespace orlocal
