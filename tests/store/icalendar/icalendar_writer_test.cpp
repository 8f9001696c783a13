#include "store/icalendar/icalendar_writer.h"

#include <string>

#include <gtest/gtest.h>

#include "store/icalendar/icalendar_reader.h"

namespace orlocal::store {
namespace {

using Kind = CalendarTime::Kind;

std::string written(const Item& item) {
  std::string out;
  writeItem(out, item);
  std::string plain;
  for (char c : out) {
    if (c != '\r') { plain += c; }
  }
  return plain;
}

Item event() {
  Item item;
  item.uid = "u";
  item.start = CalendarTime{Kind::kZoned, LocalTime(2026, 11, 2, 9), "Europe/Berlin"};
  item.end = CalendarTime{Kind::kZoned, LocalTime(2026, 11, 2, 10), "Europe/Berlin"};
  return item;
}

TEST(WriteItem, WritesNoLineBreakThatSomebodyPutIntoAnAddress) {
  const std::string evil = "x:y\r\nEND:VALARM\nEND:VEVENT\n";
  Item item = event();
  item.url = evil;
  item.attendees.emplace_back().address = evil;
  Alarm sound, mail, program;
  sound.action = Alarm::Action::kAudio;
  sound.soundName = evil;
  mail.action = Alarm::Action::kEmail;
  mail.emailAddress = evil;
  program.action = Alarm::Action::kProcedure;
  program.url = evil;
  item.alarms = {sound, mail, program};
  const std::string text = written(item);
  EXPECT_EQ(text.find("\nEND:VEVENT\n"), text.size() - std::string("\nEND:VEVENT\n").size());
  EXPECT_NE(text.find("URL:x:yEND:VALARMEND:VEVENT\n"), std::string::npos);
  auto reader = CalendarReader::ofText(text, "again.ics");
  ASSERT_TRUE(reader);
  ReadProblems problems;
  ASSERT_EQ(reader->size(), 1U);
  EXPECT_EQ(reader->read(0, problems).main->alarms.size(), 3U);
}

TEST(WriteItem, WritesAnEvent) {
  Item item = event();
  item.title = "Tea, cake";
  item.modified = Zone().toMoment(LocalTime(2026, 1, 2));
  EXPECT_EQ(written(item),
            "BEGIN:VEVENT\nUID:u\nDTSTAMP:20260102T000000Z\nLAST-MODIFIED:20260102T000000Z\nSUMMARY:Tea\\, cake\n"
            "DTSTART;TZID=Europe/Berlin:20261102T090000\nDTEND;TZID=Europe/Berlin:20261102T100000\nEND:VEVENT\n");
}

TEST(WriteItem, WritesTheStampThatAnItemCameWithUntilItIsChanged) {
  Item item = event();
  item.stamped = Zone().toMoment(LocalTime(2026, 1, 2));
  EXPECT_NE(written(item).find("DTSTAMP:20260102T000000Z\nDTSTART"), std::string::npos);
  item.modified = Zone().toMoment(LocalTime(2026, 1, 1));
  EXPECT_NE(written(item).find("DTSTAMP:20260102T000000Z\nLAST-MODIFIED:20260101T000000Z\n"), std::string::npos);
  item.modified = Zone().toMoment(LocalTime(2026, 1, 3));
  EXPECT_NE(written(item).find("DTSTAMP:20260103T000000Z\nLAST-MODIFIED:20260103T000000Z\n"), std::string::npos);
}

TEST(WriteItem, WritesWhatTheLinesOfAnAlarmSaidBesideItsFields) {
  Item item = event();
  Alarm sound{Alarm::Action::kAudio, Alarm::Relative{}, {}, "ping.wav", {}, "@ATTACH;FMTTYPE=audio/basic\nX-A:1\n"};
  Alarm mail{Alarm::Action::kEmail, Alarm::Relative{}, "j@x", {}, {}, "@ATTENDEE;CN=J\nSUMMARY:s\nDESCRIPTION:d\n"};
  item.alarms = {sound, mail};
  const std::string text = written(item);
  EXPECT_NE(text.find("ATTACH;VALUE=URI;FMTTYPE=audio/basic:ping.wav\nX-A:1\nEND:VALARM\n"), std::string::npos) << text;
  EXPECT_NE(text.find("ATTENDEE;CN=J:mailto:j@x\nSUMMARY:s\nDESCRIPTION:d\nEND:VALARM\n"), std::string::npos) << text;
}

TEST(WriteItem, LeavesOutTheEndOfAnEventWithoutLength) {
  Item item = event();
  item.end = item.start;
  EXPECT_EQ(written(item).find("DTEND"), std::string::npos);
}

TEST(WriteItem, PutsDoneInThePlaceOfEveryOtherState) {
  Item item;
  item.kind = ItemKind::kReminder;
  item.uid = "u";
  item.completed = Zone().toMoment(LocalTime(2026, 10, 30));
  item.extra = "STATUS:IN-PROCESS\nPERCENT-COMPLETE:50\nCLASS:PRIVATE\n";
  EXPECT_EQ(written(item),
            "BEGIN:VTODO\nUID:u\nDTSTAMP:19700101T000000Z\nCOMPLETED:20261030T000000Z\nSTATUS:COMPLETED\nPERCENT-"
            "COMPLETE:100\nCLASS:PRIVATE\nEND:VTODO\n");
  item.completed.reset();
  EXPECT_EQ(written(item),
            "BEGIN:VTODO\nUID:u\nDTSTAMP:19700101T000000Z\nSTATUS:IN-PROCESS\nPERCENT-COMPLETE:50\nCLASS:PRIVATE\nEND:"
            "VTODO\n");
}

TEST(WriteItem, WritesWhatTheReaderReads) {
  Item item = event();
  item.title = "Grüße, \"quoted\"; \\ and\nlines — " + std::string(200, 'x') + "🎂";
  item.notes = "";
  item.location = "Here";
  item.url = "https://x.example/";
  item.priority = 5;
  item.sequence = 3;
  item.recurrence.rules.push_back({});
  item.recurrence.added = {*item.start,
                           {Kind::kUtc, LocalTime(2026, 12, 1), ""},
                           {Kind::kUtc, LocalTime(2026, 12, 2), ""},
                           {Kind::kDate, LocalTime(2026, 12, 3), ""}};
  item.recurrence.excluded = {{Kind::kZoned, LocalTime(2026, 11, 3, 9), "Europe/Berlin"}};
  item.alarms.push_back(
      {Alarm::Action::kAudio, Alarm::Relative{std::chrono::seconds(-90), true}, {}, "Basso", {}, "X-A:b\n"});
  item.alarms.push_back({Alarm::Action::kEmail, Zone().toMoment(LocalTime(2026, 1, 1)), "a@x", {}, {}, ""});
  item.attendees.push_back({"mailto:a@x", "A \"B\", C", Attendee::Status::kUnknown, Attendee::Role::kUnknown,
                            Attendee::Type::kUnknown, true, ""});
  item.attendees.push_back({"mailto:b@x",
                            {},
                            Attendee::Status::kInProcess,
                            Attendee::Role::kNonParticipant,
                            Attendee::Type::kRoom,
                            false,
                            ";RSVP=TRUE"});
  item.extra = "@DTSTART;X-P=1\n@SUMMARY;LANGUAGE=de\nX-B;C=d:e\nBEGIN:X-C\nX-D:e\nEND:X-C\n";
  std::string text = "BEGIN:VCALENDAR\r\n";
  writeItem(text, item);
  text += "END:VCALENDAR\r\n";
  auto reader = CalendarReader::ofText(text, "x").value();
  ReadProblems problems;
  ASSERT_EQ(reader.size(), 1U);
  const ItemGroup group = reader.read(0, problems);
  EXPECT_TRUE(problems.refused.empty() && problems.warnings.empty());
  EXPECT_EQ(group.main, item);
}

}  // namespace
}  // namespace orlocal::store
