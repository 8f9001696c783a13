#include <nlohmann/json.hpp>

#include "host/commands/store_command_fixture.h"

namespace orlocal::host {
namespace {

using testing::HasSubstr;
using testing::Not;

class AgendaCommand : public StoreCommand {
 protected:
  void given(const std::string& components) { imported(calendar("Work", components)); }
};

TEST_F(AgendaCommand, ShowsTheWeekFromTodayOn) {
  given(event("1", "Yesterday", "DTSTART:20261101T090000\r\nDTEND:20261101T100000\r\n") +
        event("2", "Today", "DTSTART:20261102T070000\r\nDTEND:20261102T080000\r\n") +
        event("3", "Sunday", "DTSTART:20261108T220000\r\nDTEND:20261108T230000\r\n") +
        event("4", "Next week", "DTSTART:20261109T090000\r\nDTEND:20261109T100000\r\n"));
  ASSERT_EQ(run({"agenda"}), ExitStatus::kDone);
  EXPECT_EQ(out,
            "Monday, 2 November 2026 (today)\n"
            "  07:00–08:00  Today  Work\n"
            "\n"
            "Sunday, 8 November 2026\n"
            "  22:00–23:00  Sunday  Work\n");
}

TEST_F(AgendaCommand, IncludesTheLastDayNamed) {
  given(event("1", "First", "DTSTART:20261201T090000\r\nDTEND:20261201T100000\r\n") +
        event("2", "Last", "DTSTART:20261203T230000\r\nDTEND:20261203T233000\r\n"));
  run({"agenda", "--from", "2026-12-01", "--to", "2026-12-03"});
  EXPECT_THAT(out, HasSubstr("First"));
  EXPECT_THAT(out, HasSubstr("Last"));
}

TEST_F(AgendaCommand, PutsWholeDaysFirst) {
  given(event("1", "Early", "DTSTART:20261102T000000\r\nDTEND:20261102T003000\r\n") +
        event("2", "Holiday", "DTSTART;VALUE=DATE:20261102\r\nDTEND;VALUE=DATE:20261103\r\n"));
  run({"agenda", "--to", "today"});
  EXPECT_LT(out.find("all day      Holiday"), out.find("00:00–00:30  Early"));
}

TEST_F(AgendaCommand, CountsTheDaysOfALongerOne) {
  given(event("1", "Holiday", "DTSTART;VALUE=DATE:20261101\r\nDTEND;VALUE=DATE:20261104\r\n"));
  run({"agenda"});
  EXPECT_THAT(out, Not(HasSubstr("day 1 of 3")));
  EXPECT_THAT(out, HasSubstr("Holiday (day 2 of 3)"));
  EXPECT_THAT(out, HasSubstr("Holiday (day 3 of 3)"));
}

TEST_F(AgendaCommand, ShowsAnEventOnEachDayThatItTouches) {
  given(event("1", "Night shift", "DTSTART:20261102T220000\r\nDTEND:20261104T060000\r\n"));
  run({"agenda"});
  EXPECT_THAT(out, HasSubstr("22:00–…"));
  EXPECT_THAT(out, HasSubstr("all day      Night shift"));
  EXPECT_THAT(out, HasSubstr("…–06:00"));
}

TEST_F(AgendaCommand, EndsAnEventAtTwentyFourHoursRatherThanOnTheNextDay) {
  given(event("1", "Concert", "DTSTART:20261102T200000\r\nDTEND:20261103T000000\r\n"));
  run({"agenda"});
  EXPECT_THAT(out, HasSubstr("20:00–24:00"));
  EXPECT_THAT(out, Not(HasSubstr("3 November")));
}

TEST_F(AgendaCommand, ShowsAMomentWithoutAnEnd) {
  given(event("1", "Launch", "DTSTART:20261102T200000\r\n"));
  run({"agenda"});
  EXPECT_THAT(out, HasSubstr("  20:00        Launch"));
}

TEST_F(AgendaCommand, ShowsEachOccurrenceOfASeriesOnItsDay) {
  given(event("1", "Stand-up", "DTSTART;TZID=Europe/Berlin:20261019T090000\r\nDURATION:PT15M\r\nRRULE:FREQ=DAILY\r\n"));
  run({"agenda", "--from", "2026-10-24", "--to", "2026-10-26"});
  std::size_t found = 0;
  for (std::size_t at = out.find("09:00–09:15"); at != std::string::npos; at = out.find("09:00–09:15", at + 1)) {
    ++found;
  }
  EXPECT_EQ(found, 3U) << out;
}

TEST_F(AgendaCommand, ShowsOpenRemindersThatAreDue) {
  given(todo("1", "Report", "DUE;TZID=Europe/Berlin:20261102T170000\r\n") +
        todo("2", "Library", "DUE;VALUE=DATE:20261102\r\n") +
        todo("3", "Done", "DUE;VALUE=DATE:20261102\r\nSTATUS:COMPLETED\r\nCOMPLETED:20261101T100000Z\r\n"));
  run({"agenda"});
  EXPECT_THAT(out, HasSubstr("due 17:00    ☐ Report"));
  EXPECT_THAT(out, HasSubstr("due          ☐ Library"));
  EXPECT_THAT(out, Not(HasSubstr("Done")));
}

TEST_F(AgendaCommand, ShowsTheCalendarsNamedOnly) {
  given(event("1", "Review", "DTSTART:20261102T090000\r\nDTEND:20261102T100000\r\n"));
  imported(calendar("Family", event("2", "Piano", "DTSTART:20261102T160000\r\nDTEND:20261102T170000\r\n")));
  run({"agenda", "--calendar", "Family"});
  EXPECT_THAT(out, HasSubstr("Piano"));
  EXPECT_THAT(out, Not(HasSubstr("Review")));
  run({"agenda", "--calendar", "Family", "--calendar", "Work"});
  EXPECT_THAT(out, HasSubstr("Review"));
}

TEST_F(AgendaCommand, FailsForACalendarThatIsNotThere) {
  makeStore();
  EXPECT_EQ(run({"agenda", "--calendar", "Nowhere"}), ExitStatus::kFailed);
  EXPECT_THAT(err, HasSubstr("\"Nowhere\""));
  EXPECT_THAT(err, HasSubstr("\"Calendar\""));
}

TEST_F(AgendaCommand, SaysWhenNothingIsPlanned) {
  makeStore();
  EXPECT_EQ(run({"agenda"}), ExitStatus::kDone);
  EXPECT_EQ(out, "Nothing is planned from 2026-11-02 to 2026-11-08.\n");
}

TEST_F(AgendaCommand, RefusesWordsThatAreNoDay) {
  for (const char* words : {"2026-02-30", "20261102", "someday", "+", "2026-13-01"}) {
    EXPECT_EQ(run({"agenda", "--from", words}), ExitStatus::kUsage) << words;
  }
}

TEST_F(AgendaCommand, RefusesALastDayBeforeTheFirst) {
  EXPECT_EQ(run({"agenda", "--from", "2026-11-02", "--to", "2026-11-01"}), ExitStatus::kUsage);
  EXPECT_THAT(err, HasSubstr("2026-11-01"));
}

TEST_F(AgendaCommand, LetsNoTitleSteerTheTerminal) {
  given(event("1", "A\x1b[2Jclear", "DTSTART:20261102T090000\r\nDTEND:20261102T100000\r\n"));
  onTerminal = true;
  run({"agenda"});
  EXPECT_THAT(out, Not(HasSubstr("\x1b[2J")));
}

TEST_F(AgendaCommand, UsesColorsOnATerminalOnly) {
  given(event("1", "Review", "DTSTART:20261102T090000\r\nDTEND:20261102T100000\r\n"));
  run({"agenda"});
  EXPECT_THAT(out, Not(HasSubstr("\x1b")));
  onTerminal = true;
  run({"agenda"});
  EXPECT_THAT(out, HasSubstr("\x1b["));
}

TEST_F(AgendaCommand, PrintsJsonWithMomentsAndDays) {
  given(event("1", "Review",
              "DTSTART;TZID=Europe/Berlin:20261102T090000\r\nDTEND;TZID=Europe/Berlin:20261102T100000\r\n") +
        event("2", "Holiday", "DTSTART;VALUE=DATE:20261102\r\nDTEND;VALUE=DATE:20261104\r\n") +
        todo("3", "Report", "DUE;VALUE=DATE:20261103\r\n"));
  ASSERT_EQ(run({"agenda", "--json"}), ExitStatus::kDone);
  const auto json = nlohmann::json::parse(out);
  EXPECT_EQ(json["from"], "2026-11-02");
  EXPECT_EQ(json["to"], "2026-11-08");
  EXPECT_EQ(json["timeZone"], "Europe/Berlin");
  ASSERT_EQ(json["events"].size(), 2U);
  EXPECT_EQ(json["events"][0]["title"], "Holiday");
  EXPECT_EQ(json["events"][0]["firstDay"], "2026-11-02");
  EXPECT_EQ(json["events"][0]["lastDay"], "2026-11-03");
  EXPECT_EQ(json["events"][1]["start"], "2026-11-02T09:00:00+01:00");
  EXPECT_EQ(json["events"][1]["location"], nullptr);
  EXPECT_EQ(json["reminders"][0]["due"], "2026-11-03");
}

TEST_F(AgendaCommand, FoldsLongTitlesAndPlacesUnderTheirColumnsOnATerminal) {
  imported(calendar("Work", event("1", "Quarterly review of everything that was planned",
                                  "DTSTART:20261103T090000Z\r\nLOCATION:Conference room on the third floor\r\n")));
  const std::string whole =
      "  10:00        Quarterly review of everything that was planned  Work  Conference room on the third floor\n";
  ASSERT_EQ(run({"agenda", "2026-11-03"}), ExitStatus::kDone) << err;
  EXPECT_THAT(out, testing::HasSubstr(whole)) << "a program that reads it wants one line";
  onTerminal = true;
  ::setenv("COLUMNS", "72", 1);
  ASSERT_EQ(run({"agenda", "2026-11-03", "--color", "never"}), ExitStatus::kDone) << err;
  EXPECT_THAT(out, testing::HasSubstr("  10:00        Quarterly review of            Work  Conference room on\n"
                                      "               everything that was planned          the third floor\n"));
  ::setenv("COLUMNS", "40", 1);
  ASSERT_EQ(run({"agenda", "2026-11-03", "--color", "never"}), ExitStatus::kDone) << err;
  EXPECT_THAT(out, testing::HasSubstr("               Conference room on the\n               third floor\n"));
  ::unsetenv("COLUMNS");
}

}  // namespace
}  // namespace orlocal::host
