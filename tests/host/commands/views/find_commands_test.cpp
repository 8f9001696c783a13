#include <nlohmann/json.hpp>

#include "host/commands/command_line/folded_text.h"
#include "host/commands/store_command_fixture.h"
#include "host/commands/views/item_lines.h"

namespace orlocal::host {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

/// What is typed and what appears, of a store with a bit of everything.
class FindCommands : public StoreCommand {
 protected:
  void SetUp() override {
    imported(calendar(
        "Work",
        event("review", "Design review",
              "DTSTART;TZID=America/New_York:20261102T090000\r\nDTEND;TZID=America/New_York:20261102T103000\r\n"
              "RRULE:FREQ=WEEKLY;BYDAY=MO,WE;COUNT=20\r\nEXDATE;TZID=America/New_York:20261104T090000\r\n"
              "LOCATION:Room 4\\, Zürich\r\nDESCRIPTION:Bring the drawings of the new hall and the list of open "
              "questions. We go through them.\r\nSTATUS:TENTATIVE\r\nPRIORITY:1\r\nURL:https://example.org/r\r\n"
              "ORGANIZER;CN=Ada:mailto:ada@example.org\r\nATTENDEE;CN=Grace "
              "Hopper;PARTSTAT=ACCEPTED:mailto:grace@example.org\r\n"
              "BEGIN:VALARM\r\nACTION:DISPLAY\r\nTRIGGER:-PT15M\r\nDESCRIPTION:x\r\nEND:VALARM\r\n") +
            event("review", "Short review",
                  "RECURRENCE-ID;TZID=America/New_York:20261109T090000\r\n"
                  "DTSTART;TZID=America/New_York:20261109T110000\r\nDTEND;TZID=America/New_York:20261109T113000\r\n") +
            event("old", "Old talk", "DTSTART:20260101T090000\r\nDTEND:20260101T100000\r\nLOCATION:Basel\r\n") +
            event("meeting", "東京で会議", "DTSTART:20261102T120000\r\nDTEND:20261102T130000\r\nSTATUS:CANCELLED\r\n") +
            todo("tax", "Tax", "DUE;VALUE=DATE:20261020\r\n") + todo("read", "Read a book", "") +
            todo("call", "Call Zoe", "DUE;TZID=Europe/Berlin:20261105T170000\r\n") +
            todo("done", "Swept", "STATUS:COMPLETED\r\nCOMPLETED:20261101T100000Z\r\n")));
  }
};

TEST_F(FindCommands, ShowAllThatIsKnownOfASeries) {
  ASSERT_EQ(run({"show", "design", "review", "--next", "2"}), ExitStatus::kDone) << err;
  const auto end = out.find("  Identifier");
  ASSERT_NE(end, std::string::npos);
  EXPECT_EQ(out.substr(0, end),
            "Design review (tentative)\n"
            "  When        Mon 2 Nov 2026 15:00–16:30\n"
            "              Mon 2 Nov 2026 09:00–10:30 in America/New_York\n"
            "              1 hour 30 minutes\n"
            "  Repeats     every week on Monday and Wednesday, 20 times; not on 4 November\n"
            "              2026\n"
            "  Next        Mon 2 Nov 2026 15:00–16:30\n"
            "              Mon 9 Nov 2026 17:00–17:30\n"
            "  Changed     Mon 9 Nov 2026 15:00: Mon 9 Nov 2026 17:00–17:30, \"Short review\",\n"
            "              no place\n"
            "  Place       Room 4, Zürich\n"
            "  Calendar    Work\n"
            "  Status      tentative\n"
            "  Priority    high (1)\n"
            "  Alarms      15 minutes before the start\n"
            "  Organizer   Ada <ada@example.org>\n"
            "  Attendees   Grace Hopper <grace@example.org>, accepted\n"
            "  URL         https://example.org/r\n"
            "  Notes       Bring the drawings of the new hall and the list of open questions.\n"
            "              We go through them.\n");
  EXPECT_THAT(out, HasSubstr("  UID         review\n"));
}

TEST_F(FindCommands, ShowTheOccurrenceOfADay) {
  ASSERT_EQ(run({"show", "review", "--occurrence", "2026-11-09"}), ExitStatus::kDone) << err;
  EXPECT_THAT(out, HasSubstr("Short review\n"));
  EXPECT_THAT(out, HasSubstr("instead of Mon 9 Nov 2026 15:00"));
  EXPECT_EQ(run({"show", "review", "--occurrence", "2026-11-04"}), ExitStatus::kFailed);
  EXPECT_EQ(run({"show", "review", "--occurrence", "2026-11"}), ExitStatus::kUsage);
}

TEST_F(FindCommands, ShowWhatIsNotThereAsAFailure) {
  EXPECT_EQ(run({"show", "nothing"}), ExitStatus::kFailed);
  EXPECT_THAT(err, HasSubstr("\"nothing\""));
}

TEST_F(FindCommands, SearchShowsWhereTheWordsAre) {
  ASSERT_EQ(run({"search", "room", "zur"}), ExitStatus::kDone) << err;
  EXPECT_EQ(out,
            "Design review (tentative) ↻♪✎  Mon 2 Nov 2026 15:00–16:30  Work\n"
            "    place: Room 4, Zürich\n");
  run({"search", "hopper"});
  EXPECT_THAT(out, HasSubstr("    people: Grace Hopper\n"));
  run({"search", "京で"});
  EXPECT_EQ(out, "東京で会議 (cancelled)  Mon 2 Nov 2026 12:00–13:00  Work\n");
  run({"search", "short"});
  EXPECT_THAT(out, HasSubstr("Mon 9 Nov 2026 17:00–17:30"));
}

TEST_F(FindCommands, SearchIsNarrowedDown) {
  run({"search", "re", "--reminders"});
  EXPECT_THAT(out, HasSubstr("Read a book"));
  EXPECT_THAT(out, Not(HasSubstr("review")));
  run({"search", "talk", "--from", "2026-11"});
  EXPECT_EQ(out, "Nothing is found for \"talk\".\n");
  run({"search", "talk", "--to", "2026-01"});
  EXPECT_THAT(out, HasSubstr("Thu 1 Jan 2026 09:00–10:00"));
}

TEST_F(FindCommands, SearchWantsAWord) {
  EXPECT_EQ(run({"search"}), ExitStatus::kUsage);
  EXPECT_EQ(run({"search", "--", "—"}), ExitStatus::kFailed);
  EXPECT_EQ(run({"search", "--rebuild"}), ExitStatus::kDone);
  EXPECT_THAT(err, HasSubstr("made anew"));
}

TEST_F(FindCommands, SearchKeepsALongLineInTheLine) {
  run({"search", "drawings"});
  for (std::size_t at = 0; at < out.size();) {
    const std::size_t end = out.find('\n', at);
    EXPECT_LE(displayWidth(out.substr(at, end - at)), 80U) << out;
    at = end + 1;
  }
}

TEST_F(FindCommands, RemindersStandInBlocks) {
  ASSERT_EQ(run({"reminders"}), ExitStatus::kDone);
  EXPECT_EQ(out,
            "Overdue\n"
            "  Tue 20 Oct 2026  ☐ Tax  Work\n"
            "\n"
            "To come\n"
            "  Thu 5 Nov 2026 17:00  ☐ Call Zoe  Work\n"
            "\n"
            "No date\n"
            "  ☐ Read a book  Work\n");
  run({"reminders", "--done"});
  EXPECT_EQ(out, "Done\n  done Sun 1 Nov 2026  ☑ Swept  Work\n");
  run({"reminders", "--overdue", "--undated"});
  EXPECT_THAT(out, HasSubstr("Tax"));
  EXPECT_THAT(out, Not(HasSubstr("Zoe")));
  run({"reminders", "--all", "--list", "Reminders"});
  EXPECT_EQ(out, "There are no such reminders.\n");
}

TEST_F(FindCommands, AgendaHasWhatIsOverdueAndWhatHasNoDateWhereTodayIsShown) {
  run({"agenda"});
  EXPECT_THAT(out, HasSubstr("Overdue\n  2026-10-20   ☐ Tax  Work\n"));
  EXPECT_THAT(out, HasSubstr("No date\n               ☐ Read a book  Work\n"));
  run({"agenda", "tuesday"});
  EXPECT_EQ(out, "Nothing is planned from 2026-11-03 to 2026-11-03.\n");
}

TEST_F(FindCommands, AgendaTakesDaysWeekdaysAndMonths) {
  run({"agenda", "monday"});
  EXPECT_THAT(out, HasSubstr("Monday, 2 November 2026"));
  EXPECT_THAT(out, Not(HasSubstr("11 November")));
  run({"agenda", "2026-11"});
  EXPECT_THAT(out, HasSubstr("30 November"));
  EXPECT_THAT(out, Not(HasSubstr("2 December")));
  run({"agenda", "2026-11", "--days", "10"});
  EXPECT_THAT(out, HasSubstr("9 November"));
  EXPECT_THAT(out, Not(HasSubstr("11 November")));
  EXPECT_EQ(run({"agenda", "someday"}), ExitStatus::kUsage);
  EXPECT_EQ(run({"agenda", "monday", "--from", "today"}), ExitStatus::kUsage);
}

TEST_F(FindCommands, AgendaIsShownOnTheClockOfAnotherZone) {
  run({"agenda", "monday", "--zone", "America/New_York"});
  EXPECT_THAT(out, HasSubstr("Times in America/New_York\n"));
  EXPECT_THAT(out, HasSubstr("09:00–10:30  Design review"));
  EXPECT_EQ(run({"agenda", "--zone", "Nowhere/None"}), ExitStatus::kUsage);
}

TEST_F(FindCommands, AgendaMarksAndStrikes) {
  run({"agenda", "today"});
  EXPECT_THAT(out, HasSubstr("東京で会議 (cancelled)         Work\n"));
  EXPECT_THAT(out, HasSubstr("Design review (tentative) ↻♪✎  Work"));
  onTerminal = true;
  run({"agenda", "today"});
  EXPECT_THAT(out, HasSubstr("\x1b[9m東京で会議\x1b[0m"));
  EXPECT_THAT(out, Not(HasSubstr("(cancelled)")));
}

TEST_F(FindCommands, CalendarsOfOneTitleAreToldApart) {
  run({"calendars", "new", "Work"});
  run({"calendars", "--json"});
  const auto json = nlohmann::json::parse(out);
  run({"calendars"});
  std::size_t told = 0;
  for (const auto& each : json) {
    if (each["title"] != "Work" || each["holds"] != "events") { continue; }
    const std::string identifier = each["identifier"];
    EXPECT_THAT(out, HasSubstr("Work (" + identifier.substr(identifier.size() - 8) + ")"));
    ++told;
  }
  EXPECT_EQ(told, 2U);
}

TEST_F(FindCommands, WatchTellsThePastWithWhatWasDeletedByName) {
  run({"calendars", "remove", "Calendar"});
  ASSERT_EQ(run({"watch", "--since", "1h", "--until-now"}), ExitStatus::kDone) << err;
  EXPECT_THAT(out, HasSubstr("2026-11-02 09:00  New event              2026-11-02 15:00–16:30  Design review  Work"));
  EXPECT_THAT(out, HasSubstr("2026-11-02 09:00  Deleted calendar       Calendar  "));
  run({"watch", "--since", "0", "--until-now", "--json"});
  const auto first = nlohmann::json::parse(out.substr(0, out.find('\n')));
  run({"watch", "--since", std::to_string(first["position"].get<int>()), "--until-now"});
  EXPECT_THAT(out, Not(HasSubstr("New event")));
  EXPECT_THAT(out, HasSubstr("Deleted calendar"));
  EXPECT_EQ(run({"watch", "--since", "whenever"}), ExitStatus::kUsage);
}

TEST(ReminderBlocks, ChangeWithTheClock) {
  const store::Zone viewer = *store::Zone::named("Europe/Berlin");
  const auto now = viewer.toMoment(store::LocalTime(2026, 11, 2, 9, 0, 0));
  store::Item item;
  item.kind = store::ItemKind::kReminder;
  EXPECT_EQ(blockOf(item, now, viewer), ReminderBlock::kUndated);
  item.due = store::CalendarTime{store::CalendarTime::Kind::kDate, store::LocalTime(2026, 11, 2), ""};
  EXPECT_EQ(blockOf(item, now, viewer), ReminderBlock::kToCome);
  item.due->local = store::LocalTime(2026, 11, 1);
  EXPECT_EQ(blockOf(item, now, viewer), ReminderBlock::kOverdue);
  item.due = store::CalendarTime{store::CalendarTime::Kind::kFloating, store::LocalTime(2026, 11, 2, 8, 59, 0), ""};
  EXPECT_EQ(blockOf(item, now, viewer), ReminderBlock::kOverdue);
  item.due->local = store::LocalTime(2026, 11, 2, 9, 0, 0);
  EXPECT_EQ(blockOf(item, now, viewer), ReminderBlock::kToCome);
  item.completed = now;
  EXPECT_EQ(blockOf(item, now, viewer), ReminderBlock::kDone);
}

TEST(FoldedText, BreaksAtBlanksAndWhereItMust) {
  EXPECT_THAT(foldedText("one two three", 7), ElementsAre("one two", "three"));
  EXPECT_THAT(foldedText("a\n\nb", 10), ElementsAre("a", "", "b"));
  EXPECT_THAT(foldedText("abcdefgh", 3), ElementsAre("abc", "def", "gh"));
  EXPECT_THAT(foldedText("東京で会議", 5), ElementsAre("東京", "で会", "議"));
  EXPECT_THAT(foldedText("", 5), ElementsAre(""));
  EXPECT_THAT(foldedText("a\x1b[2Jb", 10), ElementsAre("a [2Jb"));
  EXPECT_EQ(shortened("東京で会議", 5), "東京…");
}

}  // namespace
}  // namespace orlocal::host
