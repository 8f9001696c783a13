#include "host/commands/changes/change_fixture.h"

namespace orlocal::host {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;

class NewCommand : public ChangeCommand {};

TEST_F(NewCommand, MakesAnEventOfASentence) {
  EXPECT_THAT(typed({"new", "Lunch with Grace tomorrow 12:30 1h"}),
              MatchesRegex("Made \"Lunch with Grace\" \\([0-9A-F]{8}\\): Tue 3 Nov 2026 12:30–13:30, in Calendar\n"));
  EXPECT_THAT(planned("today", "+3"), ElementsAre("2026-11-03T12:30 Lunch with Grace"));
}

TEST_F(NewCommand, TakesWordsWithoutQuotesToo) {
  typed({"new", "Lunch", "friday", "at", "noon"});
  EXPECT_THAT(planned("today", "+6"), ElementsAre("2026-11-06T12:00 Lunch"));
}

TEST_F(NewCommand, SaysWhatItUnderstood) {
  ASSERT_EQ(run({"calendars", "new", "Work"}), ExitStatus::kDone);
  EXPECT_THAT(
      typed({"new", "Standup every weekday 9:15 15m", "--calendar", "Work", "--alarm", "15m", "--alarm",
             "at 18:00 the day before", "--until", "2026-11-13", "--location", "Room 1"}),
      AllOf(HasSubstr(
          "Mon 2 Nov 2026 09:15–09:30, every weekday, until 13 November 2026, "
          "alarm 15 minutes before the start, alarm 15 hours 15 minutes before the start, at Room 1, in Work")));
  EXPECT_EQ(planned("today", "+30").size(), 10U);
}

TEST_F(NewCommand, LetsOptionsWin) {
  typed({"new", "--title", "Tomorrow at noon", "--start", "2026-11-05 9:00", "--end", "10:15"});
  typed({"new", "Call tomorrow 8:00", "--start", "9:00", "--duration", "2h"});
  typed({"new", "Fair friday 8:00", "--all-day", "--end", "sunday"});
  EXPECT_THAT(planned("today", "+6"),
              ElementsAre("2026-11-03T09:00 Call", "2026-11-05T09:00 Tomorrow at noon", "2026-11-06 Fair"));
}

TEST_F(NewCommand, PutsTimesIntoTheZoneThatIsNamed) {
  const auto json = typedJson({"new", "Call tomorrow 9:00", "--zone", "America/New_York"});
  EXPECT_EQ(json["zone"], "America/New_York");
  EXPECT_EQ(json["start"], "2026-11-03T15:00:00+01:00");
  EXPECT_THAT(refused({"new", "Call tomorrow 9:00", "--zone", "Berlin"}, ExitStatus::kUsage),
              HasSubstr("Europe/Berlin"));
}

TEST_F(NewCommand, FilesItUnderCategories) {
  const auto json = typedJson({"new", "Lunch tomorrow 12:30", "--category", "food, drink", "--category", "Team"});
  EXPECT_EQ(json["categories"], nlohmann::json({"food, drink", "Team"}));
  EXPECT_EQ(typedJson({"edit", "Lunch", "--location", "Canteen"})["categories"], json["categories"]);
  EXPECT_EQ(typedJson({"edit", "Lunch", "--category", "Work"})["categories"], nlohmann::json({"Work"}));
  typed({"undo"});
  EXPECT_EQ(typedJson({"show", "Lunch"})["categories"], json["categories"]);
  EXPECT_EQ(typedJson({"edit", "Lunch", "--category", ""})["categories"], nlohmann::json::array());
}

TEST_F(NewCommand, GivesWhatWasWrittenAsJson) {
  const auto json =
      typedJson({"new", "Lunch tomorrow 12:30", "--repeat", "weekly", "--count", "3", "--alarm", "1h before", "--notes",
                 "bring cake", "--url", "https://example.org", "--priority", "high"});
  EXPECT_EQ(json["kind"], "event");
  EXPECT_EQ(json["title"], "Lunch");
  EXPECT_EQ(json["rules"], nlohmann::json({"FREQ=WEEKLY;COUNT=3"}));
  EXPECT_EQ(json["alarms"][0]["offsetSeconds"], -3600);
  EXPECT_EQ(json["notes"], "bring cake");
  EXPECT_EQ(json["priority"], 1);
  EXPECT_EQ(json["identifier"].get<std::string>().size(), 36U);
}

TEST_F(NewCommand, MakesReminders) {
  EXPECT_THAT(typed({"new", "--reminder", "Buy milk"}), HasSubstr("\"Buy milk\""));
  EXPECT_THAT(out, HasSubstr("no date, in Reminders"));
  EXPECT_THAT(typed({"new", "--reminder", "Pay rent friday", "--repeat", "monthly", "--alarm", "9:00"}),
              HasSubstr("due Fri 6 Nov 2026, every month, alarm 9 hours after it is due, in Reminders"));
  EXPECT_THAT(typed({"new", "--list", "Reminders", "Call tomorrow 14:00"}), HasSubstr("due Tue 3 Nov 2026 14:00"));
  EXPECT_THAT(refused({"new", "--reminder", "Call 14:00 1h"}, ExitStatus::kUsage), HasSubstr("no length"));
  EXPECT_THAT(refused({"new", "--reminder", "Call", "--list", "Calendar"}), HasSubstr("holds no reminders"));
}

TEST_F(NewCommand, PointsAtWhatItDidNotUnderstand) {
  EXPECT_EQ(refused({"new", "Lunch at 25:00"}, ExitStatus::kUsage),
            "orlocal: \"25:00\" is no time of day\n"
            "  Lunch at 25:00\n"
            "           ^^^^^\n");
  EXPECT_THAT(refused({"new", "Lunch tomorrow 12:00", "--repeat", "now and then"}, ExitStatus::kUsage),
              HasSubstr("  now and then\n  ^^^\n"));
  EXPECT_THAT(refused({"new", "Lunch tomorrow 12:00", "--alarm", "loudly"}, ExitStatus::kUsage), HasSubstr("no alarm"));
  EXPECT_THAT(refused({"new", "Lunch"}, ExitStatus::kUsage), HasSubstr("no day or time"));
  EXPECT_THAT(refused({"new", "tomorrow 12:00"}, ExitStatus::kUsage), HasSubstr("no title"));
  EXPECT_THAT(refused({"new", "Lunch 1h"}, ExitStatus::kUsage), HasSubstr("no time of day to start at"));
  EXPECT_THAT(refused({"new", "Lunch tomorrow 12:00", "--until", "friday"}, ExitStatus::kUsage), HasSubstr("--repeat"));
  EXPECT_THAT(refused({"new", "Lunch tomorrow 12:00", "--priority", "urgent"}, ExitStatus::kUsage),
              HasSubstr("priority"));
  EXPECT_THAT(planned("today", "+6"), IsEmpty());
}

TEST_F(NewCommand, DryRunsMakeNothing) {
  EXPECT_THAT(typed({"new", "Lunch tomorrow 12:30", "--dry-run"}),
              HasSubstr("Would make \"Lunch\": Tue 3 Nov 2026 12:30"));
  EXPECT_FALSE(std::filesystem::exists(folder / "calendar.db"));
  typed({"calendars", "new", "Errands"});
  typed({"new", "Lunch tomorrow 12:30", "--dry-run"});
  EXPECT_THAT(planned("today", "+3"), IsEmpty());
  EXPECT_THAT(refused({"undo"}), HasSubstr("no command of yours"));
}

TEST_F(NewCommand, TellsWhyTheStoreRefuses) {
  EXPECT_THAT(refused({"new", "Lunch tomorrow 12:30", "--calendar", "Nowhere"}), HasSubstr("\"Calendar\""));
  ASSERT_EQ(run({"subscribe", file("feed.ics", calendar("Holidays", ""))}), ExitStatus::kDone) << err;
  EXPECT_THAT(refused({"new", "Lunch tomorrow 12:30", "--calendar", "Holidays"}), HasSubstr("allows no changes"));
  EXPECT_THAT(refused({"new", "Lunch", "--start", "2026-11-05 12:00", "--end", "2026-11-04 12:00"}),
              AllOf(HasSubstr("\"Lunch\": "), HasSubstr("ends before it starts")));
}

TEST_F(NewCommand, GoesToTheDefaultCalendar) {
  typed({"calendars", "new", "Work"});
  typed({"calendars", "default", "Work"});
  EXPECT_THAT(typed({"new", "Lunch tomorrow 12:30"}), HasSubstr("in Work"));
}

}  // namespace
}  // namespace orlocal::host
