#include <gmock/gmock.h>

#include "store/export.h"
#include "store/icalendar/content_line.h"
#include "store/import.h"
#include "store/recurrence/rule_text.h"
#include "store/store_fixture.h"

// Files that were made to hurt: what they cost stays small, and nothing else suffers for them.
namespace orlocal::store {

static void PrintTo(const Problem& problem, std::ostream* out) { *out << problem.line << ": " << problem.message; }

namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

std::string eventLines(const std::string& uid, const std::string& lines = "") {
  return "BEGIN:VEVENT\r\nUID:" + uid + "\r\nDTSTART:20261101T090000Z\r\nSUMMARY:" + uid + "\r\n" + lines +
         "END:VEVENT\r\n";
}

std::string calendarOf(const std::string& items) {
  return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\n" + items + "END:VCALENDAR\r\n";
}

std::string repeated(std::size_t times, const std::function<std::string(std::size_t)>& piece) {
  std::string text;
  for (std::size_t i = 0; i < times; ++i) { text += piece(i); }
  return text;
}

auto says(const std::string& text) { return Field(&Problem::message, HasSubstr(text)); }

class HostileInput : public StoreTest {
 protected:
  ImportReport imported(const std::string& text) {
    auto report = importCalendarText(*store, text, "test.ics");
    EXPECT_TRUE(report) << report.error().message;
    return report.value_or(ImportReport());
  }
  std::string exported(ExportReport* notes = nullptr) {
    std::string text;
    auto report = exportCalendars(*store, *store->calendars(CalendarKind::kEvents), [&](std::string_view piece) {
      text += piece;
      return Status();
    });
    EXPECT_TRUE(report) << report.error().message;
    if (notes != nullptr) { *notes = *report; }
    return text;
  }
  void useAnotherStore() {
    file = folder / "another.db";
    store = opened();
  }
  std::vector<std::string> titlesAnywhere() {
    std::vector<std::string> titles;
    for (const Occurrence& found : occurrences(at("2026-01-01 00:00"), at("2027-01-01 00:00"))) {
      titles.push_back(read(found.item).title.value_or("-"));
    }
    std::sort(titles.begin(), titles.end());
    return titles;
  }
};

/// Events outside of any VCALENDAR, in which nothing but their own END closes what is open.
class Spoiler : public HostileInput, public testing::WithParamInterface<const char*> {};

TEST_P(Spoiler, LeavesOtherEventsAlone) {
  imported(eventLines("before") + eventLines("spoiler", GetParam()) + eventLines("after"));
  EXPECT_THAT(titlesAnywhere(), ElementsAre("after", "before", "spoiler"));
  const std::string text = exported();
  useAnotherStore();
  const ImportReport again = imported(text);
  EXPECT_THAT(again.problems, IsEmpty());
  EXPECT_THAT(again.warnings, IsEmpty());
  EXPECT_THAT(titlesAnywhere(), ElementsAre("after", "before", "spoiler"));
}

INSTANTIATE_TEST_SUITE_P(Kept, Spoiler,
                         testing::Values("BEGIN:X\r\n", "BEGIN:X\r\nX-A:1\r\n", "END:VCALENDAR\r\n", "END:X\r\n",
                                         "BEGIN:X\r\nEND:VCALENDAR\r\nEND:X\r\n", "BEGIN:X\r\nBEGIN:Y\r\nEND:X\r\n",
                                         "BEGIN:X\r\nEND:Y\r\n", "BEGIN:X\r\nBEGIN:Y\r\nEND:Y\r\n",
                                         "BEGIN:VALARM\r\nACTION:DISPLAY\r\nTRIGGER:-PT5M\r\n",
                                         "BEGIN:VALARM\r\nACTION:DISPLAY\r\nTRIGGER:-PT5M\r\nBEGIN:Y\r\nEND:VALARM\r\n",
                                         "BEGIN;A=B:X\r\nEND:X\r\n", "BEGIN :X\r\nEND : X\r\n", "BEGIN:\r\n"));

TEST_F(HostileInput, TellsOfAComponentThatIsNotClosedAndKeepsTheOthers) {
  const auto report =
      imported(eventLines("one", "BEGIN:X\r\nX-A:lost\r\nBEGIN:Y\r\nEND:X\r\nBEGIN:Z\r\nX-A:kept\r\nEND:Z\r\n"));
  EXPECT_THAT(report.warnings, Contains(says("is not closed; it is not kept")));
  EXPECT_THAT(exported(), HasSubstr("BEGIN:Z\r\nX-A:kept\r\nEND:Z\r\n"));
  EXPECT_THAT(exported(), Not(HasSubstr("lost")));
}

TEST_F(HostileInput, AnExportLeavesOutKeptLinesThatWouldSpoilOthers) {
  // As an earlier program may have kept it.
  Item spoiler = event("spoiler", utc("2026-11-01 09:00"), utc("2026-11-01 10:00"));
  spoiler.extra = "X-A:1\nBEGIN:X\n";
  saved(spoiler);
  imported(calendarOf(eventLines("innocent")));
  ExportReport notes;
  const std::string text = exported(&notes);
  EXPECT_THAT(notes.notes, ElementsAre(HasSubstr("\"spoiler\"")));
  useAnotherStore();
  EXPECT_EQ(imported(text).added, 2U);
  EXPECT_THAT(titlesAnywhere(), ElementsAre("innocent", "spoiler"));
}

TEST_F(HostileInput, AChangeOfAnOccurrenceThatCannotBeToldIsRefused) {
  for (const char* kind : {"VEVENT", "VTODO"}) {
    for (const char* original : {"", "2026", "Tuesday", "20261399T000000"}) {
      const std::string begin = std::string("BEGIN:") + kind + "\r\nUID:told\r\nDTSTART:20261101T090000Z\r\n";
      const std::string change = begin + "RECURRENCE-ID;TZID=Europe/Berlin:" + original + "\r\nEND:" + kind + "\r\n";
      const ImportReport report = imported(calendarOf(change + eventLines("other")));
      EXPECT_THAT(report.problems, ElementsAre(says("RECURRENCE-ID"))) << kind << original;
      EXPECT_EQ(report.refused, 1u);
    }
  }
  EXPECT_THAT(titlesAnywhere(), ElementsAre("other"));
}

TEST_F(HostileInput, AZoneThatIsNotBalancedIsNotKept) {
  const auto report = imported(
      "BEGIN:VTIMEZONE\r\nTZID:Own\r\nBEGIN:X\r\nBEGIN:STANDARD\r\nDTSTART:19700101T000000\r\nTZOFFSETFROM:+0017\r\n"
      "TZOFFSETTO:+0017\r\nEND:STANDARD\r\nEND:VTIMEZONE\r\nBEGIN:VEVENT\r\nUID:a\r\nDTSTART;TZID=Own:20261101T090000"
      "\r\nEND:VEVENT\r\n");
  EXPECT_THAT(report.warnings, Contains(says("a component in it is not closed")));
  EXPECT_THAT(exported(), Not(HasSubstr("VTIMEZONE")));
}

struct NeverCase {
  const char* rule;
  bool allDay = false;
};

class NeverMet : public testing::TestWithParam<NeverCase> {};

TEST_P(NeverMet, IsFoundByArithmetic) {
  const auto rule = parseRule(GetParam().rule);
  ASSERT_TRUE(rule);
  Item item;
  item.uid = "never";
  item.start = GetParam().allDay ? day("2026-11-01") : utc("2026-11-01 09:00");
  item.recurrence.rules = {*rule};
  item.recurrence.rules.front().count = 5;
  // Far less than walking to the year 9999 would take.
  ExpansionBudget budget(40'000);
  const auto series = Series::compile(item, Zone(), {}, &budget);
  ASSERT_TRUE(series) << series.error().message;
  EXPECT_EQ(series->bounds().start, Zone().toMoment(item.start->local));
  ASSERT_TRUE(series->bounds().end);
  EXPECT_LE(*series->bounds().end - series->bounds().start, std::chrono::days(1));
}

INSTANTIATE_TEST_SUITE_P(
    Rules, NeverMet,
    testing::Values(NeverCase{"FREQ=DAILY;BYMONTH=2;BYMONTHDAY=30"},
                    NeverCase{"FREQ=DAILY;BYMONTH=2;BYMONTHDAY=30", true},
                    NeverCase{"FREQ=WEEKLY;BYMONTH=4;BYDAY=MO;INTERVAL=3;BYSETPOS=2"},
                    NeverCase{"FREQ=MONTHLY;BYMONTH=2;BYMONTHDAY=-30"}, NeverCase{"FREQ=MONTHLY;BYMONTH=4;INTERVAL=12"},
                    NeverCase{"FREQ=MONTHLY;BYDAY=MO;BYSETPOS=6"}, NeverCase{"FREQ=YEARLY;BYMONTH=2;BYMONTHDAY=30"},
                    NeverCase{"FREQ=YEARLY;BYMONTH=6;BYWEEKNO=53;BYDAY=MO"},
                    NeverCase{"FREQ=YEARLY;BYYEARDAY=366;BYMONTH=3"}, NeverCase{"FREQ=DAILY;INTERVAL=7;BYDAY=MO"},
                    NeverCase{"FREQ=DAILY;BYSETPOS=2"}, NeverCase{"FREQ=HOURLY;BYMONTH=4;BYMONTHDAY=-31"},
                    NeverCase{"FREQ=HOURLY;INTERVAL=24;BYHOUR=1,3,5"}, NeverCase{"FREQ=HOURLY;INTERVAL=2;BYHOUR=0,2,4"},
                    NeverCase{"FREQ=HOURLY;BYSETPOS=-2"}, NeverCase{"FREQ=MINUTELY;INTERVAL=60;BYMINUTE=7"},
                    NeverCase{"FREQ=SECONDLY;INTERVAL=3600;BYSECOND=11"},
                    NeverCase{"FREQ=SECONDLY;BYMONTH=2;BYMONTHDAY=31"}));

TEST(MetRules, AreNotTakenForOthers) {
  for (const char* text :
       {"FREQ=DAILY;BYMONTH=2;BYMONTHDAY=29", "FREQ=YEARLY;BYWEEKNO=53;BYDAY=SU", "FREQ=YEARLY;BYYEARDAY=-366",
        "FREQ=MONTHLY;BYDAY=MO;BYSETPOS=5", "FREQ=MONTHLY;BYMONTH=5;INTERVAL=6", "FREQ=DAILY;INTERVAL=14;BYDAY=SU",
        "FREQ=HOURLY;INTERVAL=25;BYHOUR=3", "FREQ=MINUTELY;INTERVAL=7;BYMINUTE=0;BYHOUR=1", "FREQ=YEARLY;BYDAY=53MO",
        "FREQ=SECONDLY;INTERVAL=61;BYSECOND=59;BYMINUTE=0;BYHOUR=0", "FREQ=WEEKLY;BYDAY=MO,TU;BYSETPOS=-2"}) {
    const auto rule = parseRule(text);
    ASSERT_TRUE(rule) << text;
    Item item;
    item.uid = "met";
    item.start = utc("2026-11-01 09:00");
    item.recurrence.rules = {*rule};
    item.recurrence.rules.front().count = 3;
    const auto series = Series::compile(item, Zone());
    ASSERT_TRUE(series) << text << ": " << series.error().message;
    std::size_t found = 0;
    ExpansionBudget budget;
    EXPECT_TRUE(
        series->expand(Moment::min(), Moment::max(), budget, [&](const Series::Instance&) { return ++found < 9; }));
    EXPECT_EQ(found, 3U) << text;
  }
}

TEST_F(HostileInput, CostlyRulesAreRefusedPastTheFilesBudgetAndUsualOnesAreNot) {
  const std::string costly = "RRULE:FREQ=DAILY;BYMONTH=2;BYMONTHDAY=29;BYDAY=MO;COUNT=900\r\n";
  const auto report = imported(
      calendarOf(repeated(50, [&](std::size_t i) { return eventLines("costly" + std::to_string(i), costly); }) +
                 eventLines("usual", "RRULE:FREQ=WEEKLY;COUNT=200\r\n")));
  EXPECT_THAT(report.problems, Not(IsEmpty()));
  EXPECT_THAT(report.problems, Each(says("takes too long to follow")));
  EXPECT_THAT(report.problems, Not(Contains(Field(&Problem::uid, "usual"))));
  EXPECT_GT(report.added, 1U);
}

TEST_F(HostileInput, EventsThatFillAMonthTogetherAreRefusedPastTheFilesBudget) {
  const auto report = imported(calendarOf(
      repeated(30, [](std::size_t i) { return eventLines("m" + std::to_string(i), "RRULE:FREQ=MINUTELY\r\n"); }) +
      eventLines("usual", "RRULE:FREQ=DAILY\r\n")));
  EXPECT_THAT(report.problems, Each(says("too often in a month")));
  EXPECT_EQ(report.added, 9U);  // eight of 44,640, and the daily one
  EXPECT_TRUE(store->occurrences({at("2026-12-01 00:00"), at("2027-01-01 00:00"), {defaultCalendar()}}));
}

TEST_F(HostileInput, SeriesInOtherCalendarsAreFewInAFile) {
  const auto report = imported(calendarOf(repeated(45, [](std::size_t i) {
    return eventLines("c" + std::to_string(i), "RRULE:RSCALE=HEBREW;FREQ=YEARLY;BYMONTH=1;BYMONTHDAY=1\r\n");
  })));
  EXPECT_EQ(report.added, 40U);
  EXPECT_THAT(report.problems, Each(says("more than 40 series")));
}

TEST_F(HostileInput, AnEventHasNotAnyNumberOfRules) {
  const auto report = imported(
      calendarOf(eventLines("one", repeated(501, [](std::size_t) { return std::string("RRULE:FREQ=YEARLY\r\n"); }))));
  EXPECT_THAT(report.problems, ElementsAre(says("more than 500 rules")));
}

TEST_F(HostileInput, WarningsAreCountedPastTenThousand) {
  const auto report =
      imported(calendarOf(eventLines("one", repeated(10'500, [](std::size_t) { return std::string("?\r\n"); }))));
  ASSERT_THAT(report.warnings, SizeIs(10'001));
  EXPECT_THAT(report.warnings.back(), says("500 more warnings are not listed"));
}

TEST_F(HostileInput, AVeryLongUidIsToldByItsBeginning) {
  const auto report = imported(calendarOf(eventLines(std::string(100'000, 'u'), "RDATE:x\r\n")));
  ASSERT_THAT(report.warnings, SizeIs(1));
  EXPECT_EQ(report.warnings.front().uid, std::string(255, 'u') + "…");
  EXPECT_EQ(report.added, 1U);
}

TEST_F(HostileInput, PeriodsOfAnEventAreNoMoreThanAnEventMayHold) {
  const std::string long_ = "DESCRIPTION:" + std::string(200'000, 'd') + "\r\nRDATE;VALUE=PERIOD:20261102T090000Z/PT1H";
  const auto periods = [&](std::size_t count) {
    return long_ +
           repeated(count, [](std::size_t i) { return ",20271102T0900" + std::to_string(10 + i % 50) + "Z/PT2H"; }) +
           "\r\n";
  };
  EXPECT_THAT(imported(calendarOf(eventLines("few", periods(20)))).problems, IsEmpty());
  EXPECT_THAT(imported(calendarOf(eventLines("many", periods(200)))).problems,
              ElementsAre(says("more periods of their own length")));
}

std::string zoneText(const std::string& tzid, const std::string& further = "") {
  return "BEGIN:VTIMEZONE\r\nTZID:" + tzid + "\r\n" + further +
         "BEGIN:STANDARD\r\nDTSTART:19700101T000000\r\nTZOFFSETFROM:+0017\r\nTZOFFSETTO:+0017\r\nEND:STANDARD\r\n"
         "END:VTIMEZONE\r\n";
}

TEST_F(HostileInput, ADefinitionOfAZoneIsNotLongerThanAnybodyNeeds) {
  const std::string event = "BEGIN:VEVENT\r\nUID:a\r\nDTSTART;TZID=Own:20261101T090000\r\nEND:VEVENT\r\n";
  EXPECT_THAT(imported(calendarOf(zoneText("Own", "X-A:" + std::string(60'000, 'x') + "\r\n") + event)).warnings,
              IsEmpty());
  EXPECT_THAT(imported(calendarOf(zoneText("Own", "X-A:" + std::string(70'000, 'x') + "\r\n") + event)).warnings,
              ElementsAre(says("longer than 64 KiB")));
}

TEST_F(HostileInput, OneDefinitionInManyCalendarsIsOneZone) {
  std::string text;
  for (int i = 0; i < 2'000; ++i) {
    text += calendarOf("X-WR-CALNAME:C\r\n" + zoneText("Own") + "BEGIN:VEVENT\r\nUID:e" + std::to_string(i) +
                       "\r\nDTSTART;TZID=Own:20261101T090000\r\nEND:VEVENT\r\n");
  }
  const auto report = imported(text);
  EXPECT_THAT(report.warnings, IsEmpty());
  EXPECT_EQ(report.added, 2'000U);
}

TEST_F(HostileInput, ADefinitionWithOtherNotesIsTheSameZone) {
  const std::string event = "BEGIN:VEVENT\r\nUID:a\r\nDTSTART;TZID=Own:20261101T090000\r\nEND:VEVENT\r\n";
  EXPECT_THAT(imported(calendarOf(zoneText("Own", "X-NOTE:one\r\n") + event)).warnings, IsEmpty());
  EXPECT_THAT(imported(calendarOf(zoneText("Own", "X-NOTE:two\r\n") + event)).warnings, IsEmpty());
}

TEST(ContentLineNumbers, CountEveryKindOfLineEnd) {
  ContentLines lines("A:1\rB:2\r\rC:3\n\n\nD:4\r\n \r\nE:5");
  std::vector<std::pair<std::string, int>> found;
  for (ContentLine line; lines.next(line);) { found.emplace_back(line.text, line.line); }
  EXPECT_THAT(found, ElementsAre(std::pair("A:1", 1), std::pair("B:2", 2), std::pair("C:3", 4), std::pair("D:4", 7),
                                 std::pair("E:5", 9)));
}

TEST_F(HostileInput, OthersSaveWhileAFileIsRead) {
  const auto other = opened();
  std::size_t count = 0;
  ImportOptions options;
  options.progress = [&](std::size_t done, std::size_t all) {
    if (done == all) { return; }
    // Waiting would be for ever: this is the thread that imports.
    Item item = event("meanwhile", utc("2026-11-01 09:00"), utc("2026-11-01 10:00"));
    if (saveEvent(*other, item, std::nullopt, Span::kThis)) { ++count; }
  };
  const auto report =
      importCalendarText(*store, calendarOf(repeated(600, [](std::size_t i) { return eventLines(std::to_string(i)); })),
                         "test.ics", options);
  ASSERT_TRUE(report);
  EXPECT_EQ(report->added, 600U);
  EXPECT_EQ(count, 3U);
}

TEST_F(HostileInput, AnImportIsStoppedWhileARuleIsFollowed) {
  std::atomic<bool> stop = false;
  ImportOptions options;
  options.stop = &stop;
  options.progress = [&](std::size_t, std::size_t) { stop = true; };
  const auto report = importCalendarText(
      *store,
      calendarOf(
          eventLines("one", "RRULE:FREQ=SECONDLY;INTERVAL=3601;BYMINUTE=7;BYSECOND=11;BYMONTHDAY=31;COUNT=50\r\n")),
      "test.ics", options);
  ASSERT_FALSE(report);
  EXPECT_EQ(report.error().code, ErrorCode::kInterrupted);
}

TEST(ABudget, IsAtAnEndOnceSomebodyStopsIt) {
  std::atomic<bool> stop = true;
  ExpansionBudget budget(20'000'000, std::chrono::hours(1), &stop);
  std::size_t steps = 0;
  while (budget.step()) { ++steps; }
  EXPECT_LE(steps, 4'096U);
}

}  // namespace
}  // namespace orlocal::store
