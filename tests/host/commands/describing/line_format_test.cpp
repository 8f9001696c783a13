#include "host/commands/describing/line_format.h"

#include "host/commands/describing/time_format.h"
#include "host/commands/store_command_fixture.h"

namespace orlocal::host {
namespace {

using testing::HasSubstr;

std::string lineFor(std::string_view text, const nlohmann::json& row, RowKind kind = RowKind::kItem) {
  const auto format = LineFormat::read(text, shapeOf(kind));
  return format ? format->line(row) : "refused: " + format.error().message;
}

TEST(LineFormat, PutsMembersBetweenTextAndEndsTheLine) {
  EXPECT_EQ(lineFor("{title} in {calendar}.", {{"title", "Lunch"}, {"calendar", "Work"}}), "Lunch in Work.\n");
}

TEST(LineFormat, EscapesBracesLineFeedsTabulatorsAndBackslashes) {
  EXPECT_EQ(lineFor(R"({{{title}}}\t\n\\)", {{"title", "x"}}), "{x}\t\n\\\n");
}

TEST(LineFormat, LeavesEmptyWhatTheRowDoesNotHaveOrHasAsNull) {
  EXPECT_EQ(lineFor("<{start}{location}{organizer.name}>", {{"location", nullptr}, {"organizer", nullptr}}), "<>\n");
}

TEST(LineFormat, WritesNumbersAndTruthAsJsonDoes) {
  EXPECT_EQ(lineFor("{priority} {repeats}", {{"priority", 5}, {"repeats", false}}), "5 false\n");
}

TEST(LineFormat, FollowsDotsIntoObjectsAndThroughLists) {
  const nlohmann::json row = {{"organizer", {{"name", "Ada"}}},
                              {"attendees", {{{"name", "Ben"}}, {{"name", nullptr}}, {{"name", "Cy"}}}},
                              {"categories", {"a", "b"}}};
  EXPECT_EQ(lineFor("{organizer.name}|{attendees.name}|{categories}", row), "Ada|Ben, , Cy|a, b\n");
  EXPECT_EQ(lineFor("{organizer}", row), "{\"name\":\"Ada\"}\n");
}

TEST(LineFormat, FillsAndShortensToAWidthInCells) {
  EXPECT_EQ(lineFor("{title:5}|", {{"title", "abc"}}), "abc  |\n");
  EXPECT_EQ(lineFor("{title:>5}|", {{"title", "abc"}}), "  abc|\n");
  EXPECT_EQ(lineFor("{title:5}|", {{"title", "評価会議"}}), "評価…|\n");
}

TEST(LineFormat, KeepsARowOnItsLineAndTheTerminalInPeace) {
  EXPECT_EQ(lineFor("{notes}", {{"notes", "one\ntwo\x1b[31m"}}), "one two [31m\n");
}

TEST(LineFormat, WritesDaysAndMomentsAsAsked) {
  const nlohmann::json row = {{"start", "2026-11-02T09:05:07+01:00"}, {"due", "2026-11-08"}};
  EXPECT_EQ(lineFor("{start:%a %e. %B %y %H:%M} {due:%d.%m.}", row), "Mon  2. November 26 09:05 08.11.\n");
  EXPECT_EQ(lineFor("{start:%A %b %j %V %u %I%p %S %F %R %T %z %%}", row),
            "Monday Nov 306 45 1 09AM 07 2026-11-02 09:05 09:05:07 +01:00 %\n");
  EXPECT_EQ(lineFor("{due:%H:%M}", row), "00:00\n");
}

TEST(LineFormat, FormatsEachTimeOfAList) {
  EXPECT_EQ(
      lineFor("{next:%d.}", {{"next", {"2026-11-02T09:00:00+01:00", "2026-11-09T09:00:00+01:00"}}}, RowKind::kShown),
      "02., 09.\n");
}

TEST(LineFormat, RefusesWhatRowsOfTheCommandDoNotHave) {
  EXPECT_THAT(lineFor("{titel}", {}), HasSubstr(R"(no field "titel", but there is "title")"));
  EXPECT_THAT(lineFor("{zzz}", {}), HasSubstr("attendees.name"));
  EXPECT_THAT(lineFor("{title.x}", {}), HasSubstr("no field"));
  EXPECT_THAT(lineFor("{}", {}), HasSubstr("no field"));
  EXPECT_THAT(lineFor("{block}", {}), HasSubstr("no field"));
  EXPECT_EQ(lineFor("{block}", {{"block", "overdue"}}, RowKind::kReminder), "overdue\n");
}

TEST(LineFormat, RefusesWhatItCannotRead) {
  EXPECT_THAT(lineFor("a {title", {}), HasSubstr("is not closed"));
  EXPECT_THAT(lineFor("a } b", {}), HasSubstr("closes nothing"));
  EXPECT_THAT(lineFor(R"(\q)", {}), HasSubstr(R"("\q" is none of)"));
  EXPECT_THAT(lineFor("\\", {}), HasSubstr("is none of"));
  EXPECT_THAT(lineFor("{title:0}", {}), HasSubstr("no width"));
  EXPECT_THAT(lineFor("{title:1001}", {}), HasSubstr("no width"));
  EXPECT_THAT(lineFor("{title:%H}", {}), HasSubstr("no day and no time"));
  EXPECT_THAT(lineFor("{start:%Q}", {}), HasSubstr(R"("%Q" is none of %Y)"));
  EXPECT_THAT(lineFor("{start:%H%}", {}), HasSubstr(R"("%" is none of)"));
}

TEST(TimeFormat, LeavesAloneWhatIsNoTime) {
  EXPECT_EQ(formattedTime("soon", "%H"), "soon");
  EXPECT_EQ(formattedTime("2026-11-02X", "%H"), "2026-11-02X");
}

TEST(RowShape, KnowsWhatEachCommandAdds) {
  EXPECT_TRUE(shapeOf(RowKind::kShown).field("changed.attendees.name") != nullptr);
  EXPECT_TRUE(shapeOf(RowKind::kAlarm).field("rings")->isTime);
  EXPECT_TRUE(shapeOf(RowKind::kCalendar).field("uid") == nullptr);
}

using FormatOptionOfCommands = StoreCommand;

TEST_F(FormatOptionOfCommands, IsJudgedBeforeTheStoreIsOpened) {
  EXPECT_EQ(run({"agenda", "--format", "{titel}"}), ExitStatus::kUsage);
  EXPECT_EQ(out, "");
  EXPECT_THAT(err, HasSubstr("\"titel\""));
}

TEST_F(FormatOptionOfCommands, ExcludesJsonAndWordsUnderTheCommand) {
  makeStore();
  EXPECT_EQ(run({"--json", "agenda", "--format", "{title}"}), ExitStatus::kUsage);
  EXPECT_EQ(run({"calendars", "--format", "{title}", "new", "X"}), ExitStatus::kUsage);
  EXPECT_EQ(run({"calendars", "--format", "{title} {default}"}), ExitStatus::kDone) << err;
  EXPECT_EQ(out, "Calendar true\nReminders true\n");
}

TEST_F(FormatOptionOfCommands, PrintsTheAgendaInTheOrderOfTime) {
  imported(calendar("Mixed", event("b", "Later", "DTSTART:20261103T090000Z\r\nDTEND:20261103T100000Z\r\n") +
                                 event("a", "Earlier", "DTSTART:20261102T090000Z\r\nDTEND:20261102T100000Z\r\n") +
                                 event("c", "Holiday", "DTSTART;VALUE=DATE:20261103\r\nDTEND;VALUE=DATE:20261105\r\n") +
                                 todo("d", "Between", "DUE:20261102T200000Z\r\n") +
                                 todo("e", "Late", "DUE:20261001T200000Z\r\n") + todo("f", "Sometime", "")));
  ASSERT_EQ(run({"agenda", "--format", "{title}"}), ExitStatus::kDone) << err;
  EXPECT_EQ(out, "Late\nEarlier\nBetween\nHoliday\nLater\nSometime\n");
}

TEST_F(FormatOptionOfCommands, WritesTimesInTheZoneThatIsAskedFor) {
  imported(calendar("Work", event("a", "Call", "DTSTART:20261102T090000Z\r\nDTEND:20261102T100000Z\r\n")));
  ASSERT_EQ(run({"agenda", "--zone", "Asia/Tokyo", "--format", "{start:%H:%M}"}), ExitStatus::kDone) << err;
  EXPECT_EQ(out, "18:00\n");
}

}  // namespace
}  // namespace orlocal::host
