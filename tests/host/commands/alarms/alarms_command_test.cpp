#include <cstdlib>
#include <fstream>

#include <nlohmann/json.hpp>

#include "host/commands/store_command_fixture.h"

namespace orlocal::host {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// With a clock that goes on between commands; the test program's own stands at 2026-11-02 09:00.
class AlarmCommands : public StoreCommand {
 protected:
  AlarmCommands() : m_clock(std::getenv("ORLOCAL_NOW")) {}
  ~AlarmCommands() override { ::setenv("ORLOCAL_NOW", m_clock.c_str(), 1); }

  /// `time` is UTC: an hour less than the clock on the wall shows.
  static void setClock(const std::string& time) { ::setenv("ORLOCAL_NOW", ("2026-11-02T" + time + "Z").c_str(), 1); }
  static std::string withAlarm(const std::string& trigger) {
    return "BEGIN:VALARM\r\nACTION:DISPLAY\r\nDESCRIPTION:x\r\nTRIGGER:" + trigger + "\r\nEND:VALARM\r\n";
  }
  static std::string times(const std::string& start, const std::string& end) {
    return "DTSTART;TZID=Europe/Berlin:" + start + "\r\nDTEND;TZID=Europe/Berlin:" + end + "\r\n";
  }
  void givenAlarms() {
    imported(
        calendar("Work", event("talk", "Talk", times("20261102T100000", "20261102T110000") + withAlarm("-PT15M")) +
                             event("tea", "Tea", times("20261102T110000", "20261102T113000") + withAlarm("-PT5M")) +
                             event("team", "Team day", "DTSTART;VALUE=DATE:20261104\r\n" + withAlarm("-PT15H"))));
    imported(
        calendar("Errands", todo("tax", "Tax", "DUE;TZID=Europe/Berlin:20261103T083000\r\n" + withAlarm("-PT30M"))));
    // From here on alarms are told.
    EXPECT_EQ(run({"watch", "--alarms", "--once"}), ExitStatus::kDone) << err;
    EXPECT_THAT(out, IsEmpty());
  }
  std::string shownBy(const std::vector<std::string>& words) {
    EXPECT_EQ(run(words), ExitStatus::kDone) << err;
    return out;
  }
  nlohmann::json jsonOf(std::vector<std::string> words) {
    words.emplace_back("--json");
    return nlohmann::json::parse(shownBy(words));
  }

  const std::string m_clock;
};

TEST_F(AlarmCommands, ListTheAlarmsOfTheComingDay) {
  givenAlarms();
  EXPECT_EQ(shownBy({"alarms"}),
            "Monday, 2 November 2026 (today)\n"
            "  09:45  Talk  10:00      Work\n"
            "  10:55  Tea   11:00      Work\n"
            "\n"
            "Tuesday, 3 November 2026\n"
            "  08:00  Tax   due 08:30  Errands\n");
}

TEST_F(AlarmCommands, ListAsFarAsIsAskedAndOfTheCalendarsThatAre) {
  givenAlarms();
  EXPECT_THAT(shownBy({"alarms", "--next", "1h"}), AllOf(HasSubstr("Talk"), Not(HasSubstr("Tea"))));
  EXPECT_THAT(shownBy({"alarms", "--next", "2 days"}), HasSubstr("  09:00  Team day  Wed 4 Nov 2026  Work\n"));
  EXPECT_THAT(shownBy({"alarms", "--calendar", "Errands"}), AllOf(HasSubstr("Tax"), Not(HasSubstr("Talk"))));
  EXPECT_EQ(shownBy({"alarms", "--next", "10m"}), "No alarm rings until Mon 2 Nov 2026 09:10.\n");
}

TEST_F(AlarmCommands, RefuseALengthThatIsNone) {
  givenAlarms();
  EXPECT_EQ(run({"alarms", "--next", "soon"}), ExitStatus::kUsage);
  EXPECT_THAT(err, HasSubstr("write 1h"));
  EXPECT_EQ(run({"alarms", "--next", "0m"}), ExitStatus::kUsage);
  EXPECT_EQ(run({"alarms", "snooze", "Talk", "--for", "0m"}), ExitStatus::kUsage);
}

TEST_F(AlarmCommands, ShowWhatHasRungUntilItIsDismissed) {
  givenAlarms();
  setClock("08:46:00");
  EXPECT_THAT(shownBy({"watch", "--alarms", "--once"}),
              testing::MatchesRegex("2026-11-02 09:45  Talk  2026-11-02 10:00–11:00  Work  [0-9A-F-]{36}\n"));
  EXPECT_EQ(shownBy({"watch", "--alarms", "--once"}), "");
  EXPECT_THAT(shownBy({"alarms", "--next", "2h"}), HasSubstr("  09:45  rung     Talk  10:00  Work\n"));
  EXPECT_EQ(shownBy({"alarms", "dismiss", "talk"}), "Dismissed: Talk, Mon 2 Nov 2026 10:00, in Work\n");
  EXPECT_THAT(shownBy({"alarms", "--next", "2h"}), Not(HasSubstr("Talk")));
  EXPECT_EQ(shownBy({"alarms", "dismiss", "--all"}), "No alarm has rung that was not dismissed.\n");
}

TEST_F(AlarmCommands, SayThatARingIsLate) {
  givenAlarms();
  setClock("09:30:00");
  EXPECT_THAT(shownBy({"watch", "--alarms", "--once"}), HasSubstr("2026-11-02 09:45 (late)  Talk  "));
}

TEST_F(AlarmCommands, LetAnAlarmRingAgain) {
  givenAlarms();
  setClock("08:45:00");
  ASSERT_THAT(shownBy({"watch", "--alarms", "--once"}), HasSubstr("Talk"));
  EXPECT_EQ(shownBy({"alarms", "snooze", "talk", "--for", "5m"}),
            "Rings again at 09:50: Talk, Mon 2 Nov 2026 10:00, in Work\n");
  EXPECT_THAT(shownBy({"alarms"}), HasSubstr("  09:50  snoozed  Talk      10:00           Work\n"));
  setClock("08:49:59");
  EXPECT_EQ(shownBy({"watch", "--alarms", "--once"}), "");
  setClock("08:50:00");
  EXPECT_THAT(shownBy({"watch", "--alarms", "--once"}), HasSubstr("2026-11-02 09:50  Talk  "));
  EXPECT_EQ(shownBy({"watch", "--alarms", "--once"}), "");
}

TEST_F(AlarmCommands, LetOneAlarmOfAnEventRingAgainAndNotAll) {
  givenAlarms();
  imported(calendar(
      "Work",
      event("two", "Twice", times("20261102T100000", "20261102T110000") + withAlarm("-PT45M") + withAlarm("-PT40M"))));
  setClock("08:21:00");
  ASSERT_THAT(shownBy({"watch", "--alarms", "--once"}), AllOf(HasSubstr("09:15"), HasSubstr("09:20")));
  EXPECT_EQ(shownBy({"alarms", "snooze", "twice", "twice", "--for", "5m"}),
            "Rings again at 09:26: Twice, Mon 2 Nov 2026 10:00, in Work\n");
  setClock("08:26:00");
  EXPECT_THAT(shownBy({"watch", "--alarms", "--once"}), testing::MatchesRegex("2026-11-02 09:26  Twice  [^\n]*\n"));
  EXPECT_THAT(shownBy({"alarms", "--next", "1m"}), testing::MatchesRegex("[^\n]*\n  09:20  rung     Twice  [^\n]*\n"));
}

TEST_F(AlarmCommands, SnoozeNothingThatHasNotRung) {
  givenAlarms();
  EXPECT_EQ(run({"alarms", "snooze", "Talk"}), ExitStatus::kFailed);
  EXPECT_EQ(
      err,
      "orlocal: The alarm of \"Talk\" has not rung yet; it rings Mon 2 Nov 2026 09:45. `orlocal edit` moves it.\n");
}

TEST_F(AlarmCommands, DismissWhatHasNotRungSoThatItDoesNot) {
  givenAlarms();
  EXPECT_EQ(shownBy({"alarms", "dismiss", "Talk"}), "Will not ring: Talk, Mon 2 Nov 2026 10:00, in Work\n");
  setClock("08:45:00");
  EXPECT_EQ(shownBy({"watch", "--alarms", "--once"}), "");
}

TEST_F(AlarmCommands, DismissOfASeriesTheNextAlone) {
  imported(calendar("Work",
                    event("daily", "Standup",
                          times("20261102T100000", "20261102T101000") + "RRULE:FREQ=DAILY\r\n" + withAlarm("-PT15M"))));
  EXPECT_EQ(shownBy({"alarms", "dismiss", "standup", "--next", "3 days"}),
            "Will not ring: Standup, Mon 2 Nov 2026 10:00, in Work\n");
  EXPECT_THAT(shownBy({"alarms", "--next", "2 days"}), testing::StartsWith("Tuesday, 3 November 2026\n"));
}

TEST_F(AlarmCommands, SayWhatTheyCouldNotFind) {
  givenAlarms();
  EXPECT_EQ(run({"alarms", "dismiss", "Concert"}), ExitStatus::kFailed);
  EXPECT_THAT(err, HasSubstr("There is no event or reminder \"Concert\""));
  EXPECT_EQ(run({"alarms", "snooze", "Team day"}), ExitStatus::kFailed);
  EXPECT_EQ(
      err,
      "orlocal: No alarm of \"Team day\" has rung, and none rings until Tue 3 Nov 2026 09:00; --next looks further "
      "ahead.\n");
  EXPECT_EQ(run({"alarms", "dismiss", "t"}), ExitStatus::kFailed);
  EXPECT_THAT(err, AllOf(HasSubstr("\"t\" may be 3 things; name one by its identifier:\n  "),
                         HasSubstr("  Tea, Mon 2 Nov 2026 11:00, in Work")));
  EXPECT_EQ(run({"alarms", "dismiss"}), ExitStatus::kUsage);
  EXPECT_EQ(run({"alarms", "dismiss", "Talk", "--all"}), ExitStatus::kUsage);
}

TEST_F(AlarmCommands, TellThemAsJson) {
  givenAlarms();
  const auto listed = jsonOf({"alarms", "--next", "1h"});
  EXPECT_EQ(listed["from"], "2026-11-02T09:00:00+01:00");
  EXPECT_EQ(listed["to"], "2026-11-02T10:00:00+01:00");
  ASSERT_EQ(listed["alarms"].size(), 1U);
  const auto& talk = listed["alarms"][0];
  EXPECT_EQ(talk["rings"], "2026-11-02T09:45:00+01:00");
  EXPECT_EQ(talk["state"], "coming");
  EXPECT_EQ(talk["title"], "Talk");
  EXPECT_EQ(talk["start"], "2026-11-02T10:00:00+01:00");
  EXPECT_TRUE(talk["rung"].is_null());
  setClock("08:45:00");
  const auto told = jsonOf({"watch", "--alarms", "--once"});
  EXPECT_EQ(told["title"], "Talk");
  EXPECT_EQ(told["rung"], "2026-11-02T09:45:00+01:00");
  const auto snoozed = jsonOf({"alarms", "snooze", told["identifier"].get<std::string>()});
  EXPECT_EQ(snoozed["alarms"][0]["state"], "snoozed");
  EXPECT_EQ(snoozed["alarms"][0]["rings"], "2026-11-02T09:55:00+01:00");
}

TEST_F(AlarmCommands, TellInOneLineWhatIsTooOld) {
  givenAlarms();
  ::setenv("ORLOCAL_NOW", "2026-11-04T08:00:00Z", 1);
  EXPECT_THAT(shownBy({"watch", "--alarms", "--once"}),
              AllOf(HasSubstr("4 alarms between Mon 2 Nov 2026 09:00 and Tue 3 Nov 2026 09:00 were missed, as nobody "
                              "watched for alarms then.\n"),
                    Not(HasSubstr("Talk"))));
  EXPECT_EQ(shownBy({"watch", "--alarms", "--once"}), "");
}

TEST_F(AlarmCommands, RunACommandForEach) {
  givenAlarms();
  setClock("10:00:00");
  const std::string told = (folder / "told").string();
  EXPECT_EQ(run({"watch", "--alarms", "--once", "--", "sh", "-c", "echo \"$ORLOCAL_ALARM_TITLE\" >> " + told}),
            ExitStatus::kDone)
      << err;
  EXPECT_THAT(out, IsEmpty());
  EXPECT_THAT(textOf(told), AllOf(HasSubstr("Talk\n"), HasSubstr("Tea\n")));
}

TEST_F(AlarmCommands, TellOnceOfACommandThatFails) {
  givenAlarms();
  setClock("08:45:00");
  EXPECT_EQ(run({"watch", "--alarms", "--once", "--", "false"}), ExitStatus::kFailed);
  EXPECT_EQ(err, "orlocal: false ended with status 1 (Talk, Mon 2 Nov 2026 10:00, in Work)\n");
  EXPECT_EQ(run({"watch", "--alarms", "--once", "--", "false"}), ExitStatus::kDone) << "it is not tried again";
}

TEST_F(AlarmCommands, TakeOnlyWordsThatGoTogether) {
  EXPECT_EQ(run({"watch", "--once"}), ExitStatus::kUsage);
  EXPECT_EQ(run({"watch", "--alarms", "--file", "A", "--script", "B"}), ExitStatus::kUsage);
  EXPECT_EQ(run({"watch", "--", "echo"}), ExitStatus::kUsage);
  EXPECT_THAT(err, HasSubstr("--alarms"));
}

TEST_F(AlarmCommands, MakeNoStoreToLookInto) {
  EXPECT_EQ(run({"alarms"}), ExitStatus::kFailed);
  EXPECT_THAT(err, HasSubstr("There is no calendar store"));
}

TEST_F(AlarmCommands, KeepTheirColumnsWhereTitlesAreLong) {
  imported(
      calendar("Work", event("long", "A title that is much longer than any column of a list can be made for it",
                             times("20261102T100000", "20261102T110000") + withAlarm("-PT15M")) +
                           event("wide", "会議", times("20261102T100000", "20261102T110000") + withAlarm("-PT10M"))));
  EXPECT_EQ(shownBy({"alarms"}),
            "Monday, 2 November 2026 (today)\n"
            "  09:45  A title that is much longer than any column of a list can   10:00  Work\n"
            "         be made for it\n"
            "  09:50  会議                                                        10:00  Work\n");
}

}  // namespace
}  // namespace orlocal::host
