#include "host/commands/accounts/account_fixture.h"

namespace orlocal::host {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

class CalendarChanges : public AccountCommand {
 protected:
  nlohmann::json calendarTitled(const std::string& title) {
    for (auto& each : listed({"calendars"})) {
      if (each["title"] == title) { return each; }
    }
    return nullptr;
  }
};

TEST_F(CalendarChanges, MakesCalendarsAndLists) {
  ASSERT_EQ(run({"calendars", "new", "Garden"}), ExitStatus::kDone) << err;
  ASSERT_EQ(run({"calendars", "new", "Errands", "--kind", "reminders"}), ExitStatus::kDone) << err;
  EXPECT_EQ(calendarTitled("Garden")["holds"], "events");
  EXPECT_EQ(calendarTitled("Garden")["from"], "local");
  EXPECT_EQ(calendarTitled("Errands")["holds"], "reminders");
  EXPECT_EQ(run({"calendars", "new", ""}), ExitStatus::kFailed);
}

TEST_F(CalendarChanges, GoToTheServerOfAnAccount) {
  added("Work");
  synced();
  ASSERT_EQ(run({"calendars", "new", "Private", "--account", "Work"}), ExitStatus::kDone) << err;
  synced();
  EXPECT_EQ(server.content().snapshot().calendars.size(), 2U);
  ASSERT_EQ(run({"calendars", "rename", "Team", "Crew"}), ExitStatus::kDone) << err;
  synced();
  EXPECT_EQ(server.content().calendarAt(team).displayName, "Crew");
  ASSERT_EQ(run({"calendars", "remove", "Crew"}), ExitStatus::kDone) << err;
  synced();
  EXPECT_FALSE(server.content().snapshot().calendars.contains("team"));
  EXPECT_EQ(run({"calendars", "new", "Lost", "--account", "Wrok"}), ExitStatus::kFailed);
}

TEST_F(CalendarChanges, RenamesRecoloursAndRemoves) {
  run({"calendars", "new", "Garden"});
  ASSERT_EQ(run({"calendars", "rename", "Garden", "Plants"}), ExitStatus::kDone);
  ASSERT_EQ(run({"calendars", "recolour", "Plants", "#336699"}), ExitStatus::kDone);
  EXPECT_EQ(calendarTitled("Plants")["colour"], "#336699");
  ASSERT_EQ(run({"calendars", "recolour", "Plants", "tomato"}), ExitStatus::kDone);
  EXPECT_EQ(calendarTitled("Plants")["colour"], "#FF6347");
  EXPECT_EQ(run({"calendars", "recolour", "Plants", "greenish"}), ExitStatus::kUsage);
  ASSERT_EQ(run({"calendars", "remove", "Plants"}), ExitStatus::kDone);
  EXPECT_THAT(titles(), Not(Contains("Plants")));
  EXPECT_EQ(run({"calendars", "remove", "Plants"}), ExitStatus::kFailed);
}

TEST_F(CalendarChanges, WantTheIdentifierWhereTwoHaveOneTitle) {
  run({"calendars", "new", "Garden"});
  run({"calendars", "new", "Garden", "--kind", "reminders"});
  EXPECT_EQ(run({"calendars", "remove", "Garden"}), ExitStatus::kFailed);
  const std::string identifier = calendarTitled("Garden")["identifier"];
  run({"calendars", "remove", "Garden"});
  EXPECT_THAT(err, HasSubstr(identifier + " (events; Local)"));
  ASSERT_EQ(run({"calendars", "rename", identifier, "Plants"}), ExitStatus::kDone) << err;
  EXPECT_EQ(calendarTitled("Plants")["holds"], "events");
  EXPECT_EQ(calendarTitled("Garden")["holds"], "reminders");
}

TEST_F(CalendarChanges, LeaveTheLastCalendarAndReadOnlyOnesAlone) {
  EXPECT_EQ(run({"calendars", "remove", "Calendar"}), ExitStatus::kFailed);
  ASSERT_EQ(run({"subscribe", file("feed.ics", calendar("Holidays", ""))}), ExitStatus::kDone) << err;
  EXPECT_EQ(run({"calendars", "rename", "Holidays", "Mine"}), ExitStatus::kFailed);
  EXPECT_EQ(run({"calendars", "new", "More", "--account", "Holidays"}), ExitStatus::kFailed);
}

}  // namespace
}  // namespace orlocal::host
