#include "host/commands/changes/change_fixture.h"

namespace orlocal::host {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class AvailabilityCommand : public ChangeCommand {
 protected:
  ~AvailabilityCommand() override { ::unsetenv("ORLOCAL_SETTINGS"); }

  void SetUp() override {
    imported(calendar("Work", event("a", "Review", "DTSTART:20261103T090000Z\r\nDTEND:20261103T100000Z\r\n") +
                                  event("b", "Perhaps",
                                        "DTSTART:20261103T120000Z\r\nDTEND:20261103T130000Z\r\nSTATUS:TENTATIVE\r\n") +
                                  event("c", "Free",
                                        "DTSTART:20261104T090000Z\r\nDTEND:20261104T100000Z\r\n"
                                        "TRANSP:TRANSPARENT\r\n") +
                                  event("d", "Away", "DTSTART;VALUE=DATE:20261105\r\nDTEND;VALUE=DATE:20261106\r\n")));
  }
  /// "03T11:00+60": the day, the time and the minutes of each gap.
  std::vector<std::string> free(std::vector<std::string> words) {
    words.insert(words.begin(), "free");
    std::vector<std::string> gaps;
    const auto json = typedJson(words);
    for (const auto& gap : json["free"]) {
      gaps.push_back(gap["start"].get<std::string>().substr(8, 8) + "+" + std::to_string(gap["minutes"].get<int>()));
    }
    return gaps;
  }
  std::vector<std::string> busy(std::vector<std::string> words) {
    words.insert(words.begin(), "busy");
    std::vector<std::string> times;
    const auto json = typedJson(words);
    for (const auto& time : json["busy"]) {
      times.push_back(time["start"].get<std::string>().substr(8, 8) + "-" +
                      time["end"].get<std::string>().substr(8, 8) + " " + time["kind"].get<std::string>());
    }
    return times;
  }
};

TEST_F(AvailabilityCommand, ShowsWhatIsFreeOfTheAskedHours) {
  EXPECT_THAT(free({"tuesday", "--hours", "9-17"}), ElementsAre("03T09:00+60", "03T11:00+120", "03T14:00+180"));
  EXPECT_THAT(free({"tuesday", "--hours", "9-17", "--length", "2h"}), ElementsAre("03T11:00+120", "03T14:00+180"));
  EXPECT_THAT(free({"wednesday", "--hours", "9-17"}), ElementsAre("04T09:00+480"));
  EXPECT_THAT(free({"thursday"}), IsEmpty());
  EXPECT_THAT(free({"thursday", "--hours", "9-17", "--ignore-all-day"}), ElementsAre("05T09:00+480"));
  EXPECT_THAT(free({"tuesday", "--hours", "9-17", "--calendar", "Calendar"}), ElementsAre("03T09:00+480"));
  // A night is one gap.
  EXPECT_THAT(free({"--from", "tuesday", "--to", "wednesday", "--length", "11h"}), ElementsAre("03T14:00+2040"));
}

TEST_F(AvailabilityCommand, OffersNoTimeThatIsOver) {
  EXPECT_THAT(free({"today"}), ElementsAre("02T09:00+900"));
  EXPECT_THAT(free({"this", "week", "--hours", "8-10", "--weekdays"}),
              ElementsAre("02T09:00+60", "03T08:00+120", "04T08:00+120", "06T08:00+120"));
  EXPECT_THAT(free({"yesterday", "--hours", "8-10"}), ElementsAre("01T08:00+120"));
  EXPECT_THAT(free({"today", "--hours", "6-8"}), IsEmpty());
}

TEST_F(AvailabilityCommand, TakesDaysWeeksAndMonths) {
  EXPECT_EQ(typedJson({"free"})["to"], "2026-11-08");
  EXPECT_EQ(typedJson({"free", "friday"})["to"], "2026-11-06");
  EXPECT_EQ(typedJson({"free", "next", "week"})["from"], "2026-11-09");
  EXPECT_EQ(typedJson({"free", "next week"})["to"], "2026-11-15");
  EXPECT_EQ(typedJson({"free", "2026-12"})["to"], "2026-12-31");
  EXPECT_EQ(typedJson({"free", "--from", "friday"})["to"], "2026-11-12");
  // The Friday after that Saturday.
  EXPECT_EQ(typedJson({"free", "--from", "saturday", "--to", "friday"})["to"], "2026-11-13");
  EXPECT_EQ(typedJson({"free", "--days", "mon,wed-thu"})["weekDays"].size(), 3U);
}

TEST_F(AvailabilityCommand, ReadsTheClockOfAnotherZone) {
  EXPECT_THAT(busy({"tuesday", "--zone", "America/New_York"}),
              ElementsAre("03T04:00-03T05:00 busy", "03T07:00-03T08:00 tentative"));
  // A whole day is one wherever one is.
  EXPECT_THAT(busy({"thursday", "--zone", "America/New_York"}), ElementsAre("05T00:00-06T00:00 busy"));
}

TEST_F(AvailabilityCommand, SaysWhatItDidNotUnderstand) {
  EXPECT_THAT(refused({"free", "someday"}, ExitStatus::kUsage), HasSubstr("\"someday\" is no day"));
  EXPECT_THAT(refused({"free", "--to", "whenever"}, ExitStatus::kUsage), HasSubstr("\"whenever\" is no day"));
  EXPECT_THAT(refused({"free", "--hours", "late"}, ExitStatus::kUsage), HasSubstr("write 9-17"));
  EXPECT_THAT(refused({"free", "--hours", "9-9"}, ExitStatus::kUsage), HasSubstr("end when they begin"));
  EXPECT_THAT(refused({"free", "--hours", "9-25"}, ExitStatus::kUsage), HasSubstr("9-25"));
  EXPECT_THAT(refused({"free", "--length", "long"}, ExitStatus::kUsage), HasSubstr("write 1h"));
  EXPECT_THAT(refused({"free", "--days", "never"}, ExitStatus::kUsage), HasSubstr("write mon-fri"));
  EXPECT_THAT(refused({"busy", "--zone", "Mars"}, ExitStatus::kUsage), HasSubstr("no time zone"));
  EXPECT_THAT(refused({"busy", "--from", "friday", "--to", "2026-11-04"}, ExitStatus::kUsage), HasSubstr("before"));
  EXPECT_THAT(refused({"busy", "--calendar", "Nowhere"}), HasSubstr("There is no calendar"));
  EXPECT_THAT(refused({"free", "--calendar", "Reminders"}), HasSubstr("holds no events"));
  EXPECT_THAT(refused({"busy", "--ics", "--json"}, ExitStatus::kUsage), HasSubstr("--ics or --json"));
  EXPECT_THAT(refused({"busy", "-o", "x.ics"}, ExitStatus::kUsage), HasSubstr("--ics"));
}

TEST_F(AvailabilityCommand, MergesBusyTimes) {
  typed({"new", "Long tuesday 9:30-13:30"});
  EXPECT_THAT(busy({"tuesday"}), ElementsAre("03T09:30-03T13:30 busy", "03T13:30-03T14:00 tentative"));
  EXPECT_THAT(busy({"tuesday", "--hours", "10-12"}), ElementsAre("03T10:00-03T12:00 busy"));
}

TEST_F(AvailabilityCommand, WritesABusyFileThatSaysNothingOfWhy) {
  const auto path = (folder / "busy.ics").string();
  const auto settings = file("settings.conf", "[person]\naddresses = grace@example.org, g@example.com\n");
  ::setenv("ORLOCAL_SETTINGS", settings.c_str(), 1);
  typed({"busy", "--from", "tuesday", "--to", "thursday", "--ics", "-o", path});
  const std::string text = textOf(path);
  EXPECT_THAT(text,
              AllOf(HasSubstr("BEGIN:VFREEBUSY\r\n"), HasSubstr("ORGANIZER:mailto:grace@example.org\r\n"),
                    HasSubstr("DTSTART:20261102T230000Z\r\nDTEND:20261105T230000Z\r\n"),
                    HasSubstr("FREEBUSY;FBTYPE=BUSY:20261103T090000Z/20261103T100000Z\r\n"),
                    HasSubstr("FREEBUSY;FBTYPE=BUSY-TENTATIVE:20261103T120000Z/20261103T130000Z\r\n"),
                    HasSubstr("FREEBUSY;FBTYPE=BUSY:20261104T230000Z/20261105T230000Z\r\n"), Not(HasSubstr("Review"))));
  // Read back, it is told that there is nothing in it to keep.
  EXPECT_EQ(run({"import", path}), ExitStatus::kDone);
  EXPECT_THAT(err, HasSubstr("VFREEBUSY"));
  EXPECT_EQ(typed({"busy", "tuesday", "--ics"}).find("BEGIN:VCALENDAR"), 0U);
}

TEST_F(AvailabilityCommand, CountsWhatTheOwnerAnswered) {
  imported(calendar("Invitations",
                    event("i", "Invited",
                          "DTSTART:20261106T090000Z\r\nDTEND:20261106T100000Z\r\nORGANIZER:mailto:boss@example.org\r\n"
                          "ATTENDEE;PARTSTAT=DECLINED:mailto:grace@example.org\r\n")));
  EXPECT_THAT(busy({"friday"}), ElementsAre("06T10:00-06T11:00 busy"));
  const auto settings = file("settings.conf", "[person]\naddresses = grace@example.org\n");
  ::setenv("ORLOCAL_SETTINGS", settings.c_str(), 1);
  EXPECT_THAT(busy({"friday"}), IsEmpty());
}

TEST_F(AvailabilityCommand, ABirthdayTakesNoTime) {
  ASSERT_EQ(run({"import-contacts", file("a.vcf",
                                         "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:a\r\nFN:Ada\r\n"
                                         "BDAY:1815-11-06\r\nEND:VCARD\r\n")}),
            ExitStatus::kDone)
      << err;
  EXPECT_EQ(typedJson({"agenda", "friday"})["events"].size(), 1U);
  EXPECT_THAT(busy({"friday"}), IsEmpty());
}

TEST_F(AvailabilityCommand, TellsWhatANewEventOverlaps) {
  EXPECT_THAT(typed({"new", "Lunch tuesday 10:30-13:30"}),
              HasSubstr("\n  overlaps \"Review\" 10:00–11:00 in Work\n"
                        "  overlaps \"Perhaps\" 13:00–14:00 in Work (tentative)\n"));
  EXPECT_THAT(typed({"new", "Call wednesday 10:30"}), Not(HasSubstr("overlaps")));
  EXPECT_THAT(typed({"new", "Call thursday 10:30", "--dry-run"}),
              HasSubstr("overlaps \"Away\" Thu 5 Nov 2026, all day in Work"));
  // What ends when it begins is not in its way.
  EXPECT_THAT(typed({"new", "Tea tuesday 9:00-10:00"}), Not(HasSubstr("overlaps")));
  const auto json = typedJson({"new", "Other tuesday 10:00", "--dry-run"});
  ASSERT_EQ(json["overlaps"].size(), 2U);
  EXPECT_EQ(json["overlaps"][0]["title"], "Review");
  EXPECT_EQ(typedJson({"new", "Quiet saturday 10:00"})["overlaps"].size(), 0U);
  EXPECT_FALSE(typedJson({"new", "--reminder", "Milk tuesday 10:00"})["overlaps"].size());
}

TEST_F(AvailabilityCommand, TellsAFewOfManyOverlaps) {
  typed({"new", "Standup every day 12:00 30m"});
  const std::string told = typed({"new", "Course every weekday 12:15 1h"});
  EXPECT_THAT(told,
              AllOf(HasSubstr("overlaps \"Standup\" Mon 2 Nov 2026 12:00–12:30 in Calendar\n"), HasSubstr("  and ")));
  // Two a weekday for a year, and two of this week.
  EXPECT_EQ(typedJson({"new", "Course every weekday 12:15 1h", "--calendar", "Work", "--dry-run"})["overlaps"].size(),
            261U * 2 + 2);
}

TEST_F(AvailabilityCommand, TellsWhatAnEditedEventOverlaps) {
  typed({"new", "Lunch saturday 12:00"});
  EXPECT_THAT(typed({"edit", "Lunch", "--start", "tuesday 10:30"}),
              HasSubstr("\n  overlaps \"Review\" 10:00–11:00 in Work\n"));
  EXPECT_THAT(typed({"edit", "Lunch", "--title", "Late lunch"}), Not(HasSubstr("overlaps")));
  typed({"new", "Standup every day 12:00 30m"});
  // A series is not in its own way, whatever part of it moves.
  EXPECT_THAT(typed({"edit", "Standup", "--occurrence", "saturday", "--future", "--start", "12:10", "--dry-run"}),
              Not(HasSubstr("overlaps")));
  EXPECT_THAT(typed({"edit", "Standup", "--occurrence", "saturday", "--start", "12:10"}), Not(HasSubstr("overlaps")));
  EXPECT_THAT(typed({"edit", "Standup", "--occurrence", "tuesday", "--start", "10:10"}),
              AllOf(HasSubstr("\"Review\""), HasSubstr("\"Late lunch\"")));
  EXPECT_THAT(typed({"edit", "Standup", "--all", "--start", "11:20", "--count", "3"}),
              HasSubstr("overlaps \"Late lunch\" Tue 3 Nov 2026 10:30–11:30 in Calendar"));
}

}  // namespace
}  // namespace orlocal::host
