#include "store/icalendar/icalendar_reader.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "store/icalendar/calendar_color.h"
#include "store/icalendar/calendar_layout.h"
#include "store/time/time_text.h"
#include "store/time/zone.h"

namespace orlocal::store {
namespace {

using Kind = CalendarTime::Kind;

/// A file read to the end.
struct Read {
  std::vector<CalendarHead> calendars;
  std::vector<ItemGroup> groups;
  std::vector<Problem> refused, warnings;

  const Item& item(std::size_t index = 0) const { return groups.at(index).main.value(); }
};

Read readAll(const std::string& text) {
  auto reader = CalendarReader::ofText(text, "test.ics").value();
  Read read;
  read.calendars = reader.calendars();
  ReadProblems problems = reader.problems();
  for (std::size_t i = 0; i < reader.size(); ++i) { read.groups.push_back(reader.read(i, problems)); }
  read.refused = problems.refused;
  read.warnings = problems.warnings;
  return read;
}

std::string event(const std::string& lines) {
  return "BEGIN:VCALENDAR\nBEGIN:VEVENT\nUID:u\n" + lines + "END:VEVENT\nEND:VCALENDAR\n";
}
std::string reminder(const std::string& lines) {
  return "BEGIN:VCALENDAR\nBEGIN:VTODO\nUID:u\n" + lines + "END:VTODO\nEND:VCALENDAR\n";
}
const std::string kStart = "DTSTART;TZID=Europe/Berlin:20261102T090000\n";

std::string messages(const std::vector<Problem>& problems) {
  std::string text;
  for (const Problem& problem : problems) { text += std::to_string(problem.line) + ": " + problem.message + "\n"; }
  return text;
}

TEST(ReadEvent, FillsTheFields) {
  const Read read =
      readAll(event(kStart + "DTEND;TZID=Europe/Berlin:20261102T103000\nSUMMARY:Tea\\, "
                             "cake\nDESCRIPTION:a\\nb\nLOCATION:Here\nURL:https://x.example/?a,b\n"
                             "PRIORITY:3\nSEQUENCE:7\nCREATED:20260101T000000Z\nLAST-MODIFIED:20260202T000000Z\n"));
  const Item& item = read.item();
  EXPECT_EQ(messages(read.warnings), "");
  EXPECT_EQ(item.uid, "u");
  EXPECT_EQ(item.title, "Tea, cake");
  EXPECT_EQ(item.notes, "a\nb");
  EXPECT_EQ(item.location, "Here");
  EXPECT_EQ(item.url, "https://x.example/?a,b");
  EXPECT_EQ(item.priority, 3);
  EXPECT_EQ(item.sequence, 7);
  EXPECT_EQ(item.start, (CalendarTime{Kind::kZoned, LocalTime(2026, 11, 2, 9), "Europe/Berlin"}));
  EXPECT_EQ(item.end, (CalendarTime{Kind::kZoned, LocalTime(2026, 11, 2, 10, 30), "Europe/Berlin"}));
  EXPECT_EQ(item.created, Zone().toMoment(LocalTime(2026, 1, 1)));
  EXPECT_EQ(item.modified, Zone().toMoment(LocalTime(2026, 2, 2)));
}

TEST(ReadEvent, KeepsTheEndOfTheOtherKind) {
  EXPECT_EQ(readAll(event(kStart + "DUE:20261105T090000\n")).item().extra, "DUE:20261105T090000\n");
  EXPECT_EQ(readAll(event(kStart + "DUE:20261105T090000\n")).item().end, readAll(event(kStart)).item().start);
}

TEST(ReadEvent, TellsAbsentFromEmpty) {
  EXPECT_EQ(readAll(event(kStart)).item().title, std::nullopt);
  EXPECT_EQ(readAll(event(kStart + "SUMMARY:\n")).item().title, "");
}

TEST(ReadEvent, KeepsWhatNoFieldHolds) {
  const Read read = readAll(event(kStart + "SUMMARY;LANGUAGE=de:Tee\nX-FOO;A=b:c\\,d\nCATEGORIES:A,B\nSUMMARY:second\n"
                                           "BEGIN:VLOCATION\nNAME:x\nEND:VLOCATION\nCLASS:PRIVATE\n"));
  EXPECT_EQ(read.item().title, "Tee");
  EXPECT_EQ(read.item().extra,
            "@SUMMARY;LANGUAGE=de\nX-FOO;A=b:c\\,d\nCATEGORIES:A,B\nSUMMARY:second\nCLASS:PRIVATE\nBEGIN:"
            "VLOCATION\nNAME:x\nEND:VLOCATION\n");
}

struct End {
  const char* name;
  const char* lines;
  CalendarTime end;
};

TEST(ReadEvent, EndsWhereTheFileSays) {
  const LocalTime day(2026, 11, 2), ten(2026, 11, 2, 10);
  const End ends[] = {
      {"no end: no length", "DTSTART:20261102T100000\n", {Kind::kFloating, ten, ""}},
      {"no end: one day", "DTSTART;VALUE=DATE:20261102\n", {Kind::kDate, LocalTime(2026, 11, 3), ""}},
      {"a day that ends where it starts is one day",
       "DTSTART;VALUE=DATE:20261102\nDTEND;VALUE=DATE:20261102\n",
       {Kind::kDate, LocalTime(2026, 11, 3), ""}},
      {"an exclusive last day",
       "DTSTART;VALUE=DATE:20261102\nDTEND;VALUE=DATE:20261105\n",
       {Kind::kDate, LocalTime(2026, 11, 5), ""}},
      {"days of a duration", "DTSTART;VALUE=DATE:20261102\nDURATION:P2D\n", {Kind::kDate, LocalTime(2026, 11, 4), ""}},
      {"a duration before its start",
       "DURATION:PT90M\nDTSTART:20261102T100000Z\n",
       {Kind::kUtc, LocalTime(2026, 11, 2, 11, 30), ""}},
      {"a day on the calendar across the clock change",
       "DTSTART;TZID=Europe/Berlin:20261024T120000\nDURATION:P1D\n",
       {Kind::kZoned, LocalTime(2026, 10, 25, 12), "Europe/Berlin"}},
      {"24 hours across the clock change",
       "DTSTART;TZID=Europe/Berlin:20261024T120000\nDURATION:PT24H\n",
       {Kind::kZoned, LocalTime(2026, 10, 25, 11), "Europe/Berlin"}},
      {"a date for a time",
       "DTSTART:20261102T100000\nDTEND;VALUE=DATE:20261103\n",
       {Kind::kFloating, LocalTime(2026, 11, 3), ""}},
      {"a time for a date",
       "DTSTART;VALUE=DATE:20261102\nDTEND:20261104T100000\n",
       {Kind::kDate, LocalTime(2026, 11, 4), ""}},
      {"VALUE=DATE with a time", "DTSTART;VALUE=DATE:20261102T100000\n", {Kind::kDate, LocalTime(day) + 86400, ""}},
  };
  for (const End& expected : ends) {
    EXPECT_EQ(readAll(event(expected.lines)).item().end, expected.end) << expected.name;
  }
}

TEST(RefusedItems, ComeWithLineAndReasonAndLeaveTheOthers) {
  const Read read = readAll(
      "BEGIN:VCALENDAR\nBEGIN:VEVENT\nUID:1\nDTSTART:20261102T100000\nDTEND:20261102T090000\nEND:VEVENT\n"
      "BEGIN:VEVENT\nUID:2\nDTSTART:20261102T100000\nEND:VEVENT\nEND:VCALENDAR\n");
  EXPECT_EQ(messages(read.refused), "5: DTEND lies before DTSTART; the event was not imported\n");
  EXPECT_EQ(read.refused.front().uid, "1");
  EXPECT_FALSE(read.groups[0].main);
  EXPECT_EQ(read.item(1).uid, "2");
}

struct Refusal {
  const char* lines;
  const char* message;
};

TEST(RefusedItems, SayWhatIsWrong) {
  const Refusal refusals[] = {
      {"SUMMARY:x\n", "2: it has no DTSTART; the event was not imported\n"},
      {"DTSTART:yesterday\n", "4: DTSTART has no date that can be read: \"yesterday\"; the event was not imported\n"},
      {"DTSTART:20261102\nDURATION:long\n",
       "5: DURATION has no length that can be read: \"long\"; the event was not imported\n"},
      {"DTSTART:20261102\nDURATION:-P1D\n",
       "5: the end that DURATION gives lies before DTSTART; the event was not imported\n"},
      {"DTSTART:20261102\nRRULE:FREQ=NEVER\n",
       "5: the rule's part \"FREQ=NEVER\" makes no sense; the event was not imported\n"},
      {"DTSTART:20261102\nRRULE:FREQ=HOURLY\n",
       "5: the event \"\" (UID u): the rule repeats by hours, minutes or seconds, which whole days cannot do; the "
       "event was not imported\n"},
  };
  for (const Refusal& refusal : refusals) {
    EXPECT_EQ(messages(readAll(event(refusal.lines)).refused), refusal.message) << refusal.lines;
  }
}

TEST(RefusedItems, IncludeOneThatEndsPastTheYear9999) {
  EXPECT_EQ(messages(readAll(event("DTSTART:99991231\nDURATION:P9W\n")).refused),
            "5: its end lies past the year 9999; the event was not imported\n");
}

TEST(RefusedItems, IncludeOneThatIsNotClosed) {
  const Read read = readAll("BEGIN:VCALENDAR\nBEGIN:VEVENT\nUID:1\n" + kStart + "BEGIN:VEVENT\nUID:2\n" + kStart +
                            "END:VEVENT\nEND:VCALENDAR\n");
  EXPECT_EQ(messages(read.refused), "2: the event is not closed: its END:VEVENT is missing before line 5\n");
  ASSERT_EQ(read.groups.size(), 1U);
  EXPECT_EQ(read.item().uid, "2");
}

TEST(RefusedItems, IncludeTheOlderOfTwoWithOneUid) {
  const Read read = readAll("BEGIN:VCALENDAR\nBEGIN:VEVENT\nUID:1\n" + kStart +
                            "SUMMARY:old\nEND:VEVENT\nBEGIN:VEVENT\nUID:1\nSEQUENCE:1\n" + kStart +
                            "SUMMARY:new\nEND:VEVENT\nEND:VCALENDAR\n");
  ASSERT_EQ(read.groups.size(), 1U);
  EXPECT_EQ(read.item().title, "new");
  EXPECT_EQ(messages(read.refused),
            "2: its UID is also that of the item in line 7, which is newer; this one was not imported\n");
}

TEST(RefusedItems, IncludeWhatIsNestedTooDeep) {
  std::string lines = kStart;
  for (int i = 0; i < 20; ++i) { lines += "BEGIN:X-A\n"; }
  for (int i = 0; i < 20; ++i) { lines += "END:X-A\n"; }
  const Read read = readAll(event(lines));
  EXPECT_EQ(messages(read.refused), "2: components stand in it more than 16 deep\n");
}

TEST(RefusedItems, IncludeOneThatIsTooLong) {
  std::string lines = kStart;
  for (int i = 0; i < 100'001; ++i) { lines += "X-A:b\n"; }
  EXPECT_EQ(messages(readAll(event(lines)).refused),
            "100002: it has more than 100,000 lines; the event was not imported\n");
}

TEST(Kept, IsOnlyEventsAndReminders) {
  const Read read = readAll("BEGIN:VCALENDAR\nBEGIN:VJOURNAL\nUID:1\nEND:VJOURNAL\nBEGIN:VEVENT\nUID:2\n" + kStart +
                            "END:VEVENT\nEND:VCALENDAR\n");
  EXPECT_EQ(messages(read.warnings), "2: VJOURNAL components are not kept\n");
  EXPECT_EQ(read.groups.size(), 1U);
}

TEST(Files, MayHaveAByteOrderMark) { EXPECT_EQ(readAll("\xEF\xBB\xBF" + event(kStart)).groups.size(), 1U); }

TEST(Files, MayBeUtf16) {
  const std::string text = event(kStart + "SUMMARY:x\n");
  std::string wide = "\xFF\xFE";
  for (char c : text) { wide += {c, '\0'}; }
  EXPECT_EQ(readAll(wide).item().title, "x");
}

TEST(Files, MayDoWithoutVcalendar) {
  EXPECT_EQ(readAll("BEGIN:VEVENT\nUID:1\n" + kStart + "END:VEVENT\n").groups.size(), 1U);
}

TEST(Files, AreRefusedWhenThereIsNoComponentInThem) {
  const auto reader = CalendarReader::ofText("<html></html>\n", "page.ics");
  ASSERT_FALSE(reader);
  EXPECT_EQ(reader.error().message, "page.ics is no iCalendar file: there is no component in it");
}

TEST(Files, ThatAreNotThereAreRefused) {
  EXPECT_EQ(CalendarReader::open("/nowhere/x.ics").error().message,
            "/nowhere/x.ics cannot be read: No such file or directory");
  EXPECT_FALSE(CalendarReader::open("/"));
}

TEST(Files, ThatAreNotUtf8AreReadAsWindows1252WithAWarning) {
  const Read read = readAll(event(kStart + "SUMMARY:Gr\xFC\xDF\x65\n"));
  EXPECT_EQ(read.item().title, "Grüße");
  EXPECT_EQ(messages(read.warnings), "5: the text is not UTF-8 and was read as Windows-1252\n");
}

TEST(Heads, SayNameColorAndMethod) {
  const Read read = readAll(
      "BEGIN:VCALENDAR\nMETHOD:PUBLISH\nNAME:Other\nX-WR-CALNAME:Work\\, "
      "home\nCOLOR:teal\nX-APPLE-CALENDAR-COLOR:#FF8000FF\nEND:VCALENDAR\n");
  ASSERT_EQ(read.calendars.size(), 1U);
  EXPECT_EQ(read.calendars[0].name, "Work, home");
  EXPECT_EQ(read.calendars[0].color, (Rgb{1, 128.0 / 255, 0}));
  EXPECT_EQ(read.calendars[0].method, "PUBLISH");
}

TEST(Colors, HaveNamesAndNumbers) {
  EXPECT_EQ(parseColor("SlateBlue"), (Rgb{0x6A / 255.0, 0x5A / 255.0, 0xCD / 255.0}));
  EXPECT_EQ(colorText(*parseColor("#12ab9F")), "#12AB9F");
  for (const char* text : {"", "#12", "#GGGGGG", "nocolour"}) { EXPECT_FALSE(parseColor(text)) << text; }
}

TEST(Zones, AreReadFromBlocksThatComeLater) {
  const Read read = readAll(
      "BEGIN:VCALENDAR\nBEGIN:VEVENT\nUID:1\nDTSTART;TZID=Mine:20261102T090000\nEND:VEVENT\nBEGIN:VTIMEZONE\nTZID:"
      "Mine\nBEGIN:STANDARD\nDTSTART:19700101T000000\n"
      "TZOFFSETFROM:+0217\nTZOFFSETTO:+0217\nEND:STANDARD\nEND:VTIMEZONE\nEND:VCALENDAR\n");
  const auto start = read.item().start;
  ASSERT_EQ(start->kind, Kind::kZoned);
  EXPECT_TRUE(start->zone.starts_with("Mine #"));
  EXPECT_EQ(momentOf(*start, Zone()), Zone().toMoment(LocalTime(2026, 11, 2, 6, 43)));
}

TEST(Zones, OfTheSameCalendarCountFirst) {
  const auto block = [](const char* offset) {
    return std::string("BEGIN:VTIMEZONE\nTZID:Mine\nBEGIN:STANDARD\nDTSTART:19700101T000000\nTZOFFSETFROM:") + offset +
           "\nTZOFFSETTO:" + offset + "\nEND:STANDARD\nEND:VTIMEZONE\n";
  };
  const std::string at = "DTSTART;TZID=Mine:20261102T090000\nEND:VEVENT\n";
  const Read read =
      readAll("BEGIN:VCALENDAR\n" + block("+0217") + "BEGIN:VEVENT\nUID:1\n" + at + "END:VCALENDAR\nBEGIN:VCALENDAR\n" +
              block("+0317") + "BEGIN:VEVENT\nUID:2\n" + at + "END:VCALENDAR\n");
  EXPECT_EQ(momentOf(*read.item(0).start, Zone()) - momentOf(*read.item(1).start, Zone()), std::chrono::hours(1));
}

TEST(Zones, AreNeverSilentlyLocal) {
  const Read read = readAll(event("DTSTART;TZID=Nowhere:20261102T090000\nDTEND;TZID=Nowhere:20261102T100000\n"));
  EXPECT_EQ(read.item().start->kind, Kind::kFloating);
  EXPECT_EQ(
      messages(read.warnings),
      "4: TZID \"Nowhere\" names no known time zone and the file does not define it; its times are read as floating\n");
}

TEST(Zones, GiveWayToUtcAndDates) {
  EXPECT_EQ(readAll(event("DTSTART;TZID=Europe/Berlin:20261102T090000Z\n")).item().start->kind, Kind::kUtc);
  EXPECT_EQ(readAll(event("DTSTART;TZID=Europe/Berlin;VALUE=DATE:20261102\n")).item().start->kind, Kind::kDate);
}

TEST(Series, AreGroupedWithTheirChangedOccurrences) {
  const Read read = readAll(
      "BEGIN:VCALENDAR\nBEGIN:VEVENT\nUID:1\nRECURRENCE-ID;TZID=Europe/"
      "Berlin:20261103T090000\nDTSTART:20261103T120000Z\nEND:VEVENT\n"
      "BEGIN:VEVENT\nUID:2\n" +
      kStart + "END:VEVENT\nBEGIN:VEVENT\nUID:1\n" + kStart +
      "RRULE:FREQ=DAILY\nEXDATE;TZID=Europe/"
      "Berlin:20261104T090000,20261105T090000\nRDATE;VALUE=DATE:20261201\nEND:VEVENT\nEND:VCALENDAR\n");
  ASSERT_EQ(read.groups.size(), 2U);
  EXPECT_EQ(read.item(0).recurrence.rules.size(), 1U);
  EXPECT_EQ(read.item(0).recurrence.excluded.size(), 2U);
  EXPECT_EQ(read.item(0).recurrence.added, (std::vector<CalendarTime>{*parseTime("20261201")}));
  ASSERT_EQ(read.groups[0].changed.size(), 1U);
  EXPECT_EQ(read.groups[0].changed[0].recurrenceId->local, LocalTime(2026, 11, 3, 9));
}

TEST(Series, KeepAChangedOccurrenceWithoutItsSeries) {
  const Read read = readAll(event("RECURRENCE-ID:20261103T090000\nDTSTART:20261103T120000\n"));
  ASSERT_EQ(read.groups.size(), 1U);
  EXPECT_FALSE(read.groups[0].main);
  EXPECT_EQ(read.groups[0].changed.size(), 1U);
}

TEST(Series, TurnPeriodsOfAnotherLengthIntoChangedOccurrences) {
  const Read read =
      readAll(event("DTSTART:20261102T090000Z\nDTEND:20261102T100000Z\nRDATE;VALUE=PERIOD:20261103T090000Z/"
                    "PT1H,20261104T090000Z/20261104T120000Z\n"));
  EXPECT_EQ(read.item().recurrence.added.size(), 2U);
  ASSERT_EQ(read.groups[0].changed.size(), 1U);
  EXPECT_EQ(timeText(*read.groups[0].changed[0].end), "20261104T120000Z");
}

TEST(Series, SayWhatTheyDoNotFollow) {
  EXPECT_EQ(
      messages(readAll(event("RECURRENCE-ID;RANGE=THISANDPRIOR:20261103T090000\nDTSTART:20261103T120000\n")).warnings),
      "4: RANGE=THISANDPRIOR is not followed: only this one occurrence is changed\n");
  EXPECT_EQ(
      messages(readAll(event(kStart + "EXDATE:\nRDATE:soon\n")).warnings),
      "5: EXDATE is empty and was passed over\n6: RDATE has no date that can be read and was passed over: \"soon\"\n");
}

TEST(Alarms, ComeInEveryKind) {
  const Read read =
      readAll(event(kStart +
                    "BEGIN:VALARM\nACTION:DISPLAY\nTRIGGER:-PT15M\nDESCRIPTION:Reminder\nX-WR-ALARMUID:a1\nEND:VALARM\n"
                    "BEGIN:VALARM\nACTION:AUDIO\nTRIGGER;RELATED=END:PT5M\nATTACH;VALUE=URI:Basso\nREPEAT:2\nDURATION:"
                    "PT1M\nEND:VALARM\n"
                    "BEGIN:VALARM\nACTION:EMAIL\nTRIGGER;VALUE=DATE-TIME:20261102T070000Z\nATTENDEE:mailto:a@example."
                    "org\nSUMMARY:s\nEND:VALARM\n"
                    "BEGIN:VALARM\nACTION:PROCEDURE\nTRIGGER:PT0S\nATTACH:file:///bin/x\nEND:VALARM\n"
                    "BEGIN:VALARM\nTRIGGER:-P1D\nEND:VALARM\n"));
  const auto& alarms = read.item().alarms;
  ASSERT_EQ(alarms.size(), 5U);
  using std::chrono::seconds;
  EXPECT_EQ(alarms[0],
            (Alarm{Alarm::Action::kDisplay, Alarm::Relative{seconds(-900), false}, {}, {}, {}, "X-WR-ALARMUID:a1\n"}));
  EXPECT_EQ(
      alarms[1],
      (Alarm{
          Alarm::Action::kAudio, Alarm::Relative{seconds(300), true}, {}, "Basso", {}, "REPEAT:2\nDURATION:PT1M\n"}));
  EXPECT_EQ(
      alarms[2],
      (Alarm{
          Alarm::Action::kEmail, Zone().toMoment(LocalTime(2026, 11, 2, 7)), "a@example.org", {}, {}, "SUMMARY:s\n"}));
  EXPECT_EQ(alarms[3], (Alarm{Alarm::Action::kProcedure, Alarm::Relative{}, {}, {}, "file:///bin/x", ""}));
  EXPECT_EQ(alarms[4], (Alarm{Alarm::Action::kDisplay, Alarm::Relative{seconds(-86400), false}, {}, {}, {}, ""}));
}

TEST(Alarms, HaveTheirSoundProgramAndAddressWhateverElseTheirLinesSay) {
  const Read read = readAll(event(
      kStart +
      "BEGIN:VALARM\nACTION:AUDIO\nTRIGGER:PT0S\nX-A:1\nATTACH;FMTTYPE=audio/basic;VALUE=URI:ping.wav\nEND:VALARM\n"
      "BEGIN:VALARM\nACTION:EMAIL\nTRIGGER:PT0S\nATTENDEE;CN=\"Doe, J\":mailto:j@x\nATTENDEE:mailto:k@x\nEND:VALARM\n"
      "BEGIN:VALARM\nACTION:PROCEDURE\nTRIGGER:PT0S\nATTACH;FMTTYPE=text/plain:file:///x\nEND:VALARM\n"));
  const auto& alarms = read.item().alarms;
  ASSERT_EQ(alarms.size(), 3U);
  EXPECT_EQ(alarms[0].soundName, "ping.wav");
  EXPECT_EQ(alarms[0].extra, "@ATTACH;FMTTYPE=audio/basic\nX-A:1\n");
  EXPECT_EQ(alarms[1].emailAddress, "j@x");
  EXPECT_EQ(alarms[1].extra, "@ATTENDEE;CN=\"Doe, J\"\nATTENDEE:mailto:k@x\n");
  EXPECT_EQ(alarms[2].url, "file:///x");
}

TEST(Alarms, KeepASoundOfBytesAndAnAddressThatIsNoMailAddress) {
  const Read read = readAll(
      event(kStart + "BEGIN:VALARM\nACTION:AUDIO\nTRIGGER:PT0S\nATTACH;ENCODING=BASE64;VALUE=BINARY:AAAA\nEND:VALARM\n"
                     "BEGIN:VALARM\nACTION:EMAIL\nTRIGGER:PT0S\nATTENDEE:urn:uuid:1\nEND:VALARM\n"));
  const auto& alarms = read.item().alarms;
  ASSERT_EQ(alarms.size(), 2U);
  EXPECT_EQ(alarms[0].soundName, std::nullopt);
  EXPECT_EQ(alarms[0].extra, "ATTACH;ENCODING=BASE64;VALUE=BINARY:AAAA\n");
  EXPECT_EQ(alarms[1].emailAddress, std::nullopt);
  EXPECT_EQ(alarms[1].extra, "ATTENDEE:urn:uuid:1\n");
}

TEST(ReadItem, KeepsTheStampWhereADateIsMissing) {
  const Moment stamp = Zone().toMoment(LocalTime(2026, 1, 2, 3, 4, 5));
  const std::string line = "DTSTAMP:20260102T030405Z\n";
  EXPECT_EQ(readAll(event(kStart + line)).item().stamped, stamp);
  EXPECT_EQ(readAll(event(kStart + line + "CREATED:20250101T000000Z\n")).item().stamped, stamp);
  EXPECT_EQ(readAll(event(kStart + line + "LAST-MODIFIED:20250101T000000Z\n")).item().stamped, stamp);
  EXPECT_EQ(readAll(event(kStart + line + "CREATED:20250101T000000Z\nLAST-MODIFIED:20250101T000000Z\n")).item().stamped,
            std::nullopt);
  EXPECT_EQ(readAll(event(kStart)).item().stamped, std::nullopt);
  EXPECT_EQ(readAll(event(kStart + "DTSTAMP:19700101T000000Z\n")).item().stamped, std::nullopt);
}

TEST(ChangedOccurrences, HaveNoRulesWhetherTheseCanBeFollowedOrNot) {
  for (const std::string rule : {"FREQ=DAILY;COUNT=2", "FREQ=DAILY;BYWHAT=2"}) {
    const Read read =
        readAll("BEGIN:VCALENDAR\nBEGIN:VEVENT\nUID:u\n" + kStart +
                "RRULE:FREQ=DAILY;COUNT=3\nEND:VEVENT\nBEGIN:VEVENT\nUID:u\n" + kStart +
                "RECURRENCE-ID;TZID=Europe/Berlin:20261103T090000\nRRULE:" + rule + "\nEND:VEVENT\nEND:VCALENDAR\n");
    const Item& changed = read.groups.at(0).changed.at(0);
    EXPECT_TRUE(changed.recurrence.empty());
    EXPECT_EQ(changed.extra, "");
    EXPECT_EQ(messages(read.warnings), "11: a changed occurrence cannot repeat itself; its rule was passed over\n");
  }
}

TEST(Alarms, ThatCannotBeFollowedAreKeptAsTheyAre) {
  const Read read =
      readAll(event(kStart + "BEGIN:VALARM\nACTION:NONE\nTRIGGER;VALUE=DATE-TIME:19760401T005545Z\nEND:VALARM\n"));
  EXPECT_TRUE(read.item().alarms.empty());
  EXPECT_EQ(read.item().extra, "BEGIN:VALARM\nACTION:NONE\nTRIGGER;VALUE=DATE-TIME:19760401T005545Z\nEND:VALARM\n");
  EXPECT_EQ(read.warnings.size(), 1U);
}

TEST(Attendees, TakeTheFirstOfAParameterThatComesTwice) {
  const Read read = readAll(event(kStart + "ATTENDEE;PARTSTAT=DECLINED;PARTSTAT=ACCEPTED:mailto:a@x\n"
                                           "ATTENDEE;PARTSTAT=X-PERHAPS;PARTSTAT=ACCEPTED:mailto:b@x\n"));
  const auto& attendees = read.item().attendees;
  EXPECT_EQ(attendees.at(0).status, Attendee::Status::kDeclined);
  EXPECT_EQ(attendees.at(0).extra, "");
  EXPECT_EQ(attendees.at(1).status, Attendee::Status::kUnknown);
  EXPECT_EQ(attendees.at(1).extra, ";PARTSTAT=X-PERHAPS");
}

TEST(Attendees, ComeWithStateRoleAndKind) {
  const Read read = readAll(event(kStart + "ORGANIZER;CN=Anna;SENT-BY=\"mailto:b@x\":mailto:a@x\nATTENDEE:mailto:c@x\n"
                                           "ATTENDEE;CN=\"Doe, "
                                           "J\";PARTSTAT=tentative;ROLE=OPT-PARTICIPANT;CUTYPE=ROOM;RSVP=TRUE:mailto:d@"
                                           "x\nATTENDEE;PARTSTAT=X-LATER:mailto:e@x\n"));
  const auto& people = read.item().attendees;
  ASSERT_EQ(people.size(), 4U);
  using S = Attendee::Status;
  using R = Attendee::Role;
  using T = Attendee::Type;
  EXPECT_EQ(people[0],
            (Attendee{"mailto:a@x", "Anna", S::kUnknown, R::kUnknown, T::kUnknown, true, ";SENT-BY=\"mailto:b@x\""}));
  EXPECT_EQ(people[1], (Attendee{"mailto:c@x", {}, S::kPending, R::kRequired, T::kPerson, false, ""}));
  EXPECT_EQ(people[2], (Attendee{"mailto:d@x", "Doe, J", S::kTentative, R::kOptional, T::kRoom, false, ";RSVP=TRUE"}));
  EXPECT_EQ(people[3], (Attendee{"mailto:e@x", {}, S::kUnknown, R::kRequired, T::kPerson, false, ";PARTSTAT=X-LATER"}));
}

TEST(ReadReminder, HasDueDatesOfEveryKind) {
  EXPECT_EQ(readAll(reminder("SUMMARY:x\n")).item().due, std::nullopt);
  EXPECT_EQ(readAll(reminder("DUE;VALUE=DATE:20261102\n")).item().due, parseTime("20261102"));
  EXPECT_EQ(readAll(reminder("DUE:20261102T090000\n")).item().due->kind, Kind::kFloating);
  EXPECT_EQ(readAll(reminder("DUE;TZID=Europe/Berlin:20261102T090000\n")).item().due->zone, "Europe/Berlin");
  EXPECT_EQ(readAll(reminder("DTSTART:20261102T090000Z\nDURATION:PT1H\n")).item().due, parseTime("20261102T100000Z"));
}

TEST(ReadReminder, DoesWithoutADateThatCannotBeRead) {
  const Read read = readAll(reminder("DUE:soon\nSUMMARY:x\n"));
  EXPECT_EQ(read.item().due, std::nullopt);
  EXPECT_EQ(messages(read.warnings), "4: DUE has no date that can be read: \"soon\"\n");
}

TEST(ReadReminder, IsDoneWhenItWasCompleted) {
  EXPECT_EQ(
      readAll(reminder("COMPLETED:20261030T120000Z\nSTATUS:NEEDS-ACTION\nPERCENT-COMPLETE:50\n")).item().completed,
      Zone().toMoment(LocalTime(2026, 10, 30, 12)));
  EXPECT_EQ(readAll(reminder("COMPLETED:20261030T120000Z\nSTATUS:NEEDS-ACTION\nPERCENT-COMPLETE:50\n")).item().extra,
            "");
  EXPECT_EQ(readAll(reminder("STATUS:COMPLETED\nLAST-MODIFIED:20261030T120000Z\n")).item().completed,
            Zone().toMoment(LocalTime(2026, 10, 30, 12)));
  EXPECT_EQ(readAll(reminder("STATUS:IN-PROCESS\nPERCENT-COMPLETE:50\n")).item().extra,
            "STATUS:IN-PROCESS\nPERCENT-COMPLETE:50\n");
}

TEST(Uids, AreMadeFromTheContentWhenMissing) {
  const std::string text =
      "BEGIN:VCALENDAR\nBEGIN:VEVENT\nDTSTAMP:2026%sT000000Z\n" + kStart + "SUMMARY:x\nEND:VEVENT\nEND:VCALENDAR\n";
  const auto with = [&](const char* day) {
    return readAll(std::string(text).replace(text.find("%s"), 2, day)).item().uid;
  };
  EXPECT_TRUE(with("0101").starts_with("content-"));
  EXPECT_EQ(with("0101"), with("0102"));
}

TEST(BrokenLines, ArePassedOverWithAWarning) {
  const Read read = readAll(event(kStart + "this is no line\nSUMMARY:x\n"));
  EXPECT_EQ(read.item().title, "x");
  EXPECT_EQ(messages(read.warnings), "5: \"this is no line\" is no content line and was passed over\n");
}

}  // namespace
}  // namespace orlocal::store
