#include "store/recurrence/recurrence.h"

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "store/recurrence/rule_text.h"
#include "store/time/time_text.h"

namespace orlocal::store {
namespace {

struct Case {
  int line = 0;
  std::string name;
  std::string zone = "America/New_York";
  Item item;
  std::vector<CalendarTime> changed;
  std::vector<std::string> expected;
  bool more = false;
};

CalendarTime timeOf(std::string text, const std::string& zone) {
  std::string own = zone;
  if (const auto colon = text.find(':'); colon != std::string::npos) {
    own = text.substr(0, colon);
    text = text.substr(colon + 1);
  }
  CalendarTime time = parseTime(text).value();
  if (time.kind == CalendarTime::Kind::kFloating) {
    time.kind = CalendarTime::Kind::kZoned;
    time.zone = own;
  }
  return time;
}

void readLine(Case& current, const std::string& word, std::istringstream& rest) {
  std::string text;
  if (word == "start") {
    rest >> text >> current.zone;
    current.item.start = timeOf(text, current.zone);
  } else if (word == "end") {
    rest >> text;
    current.item.end = timeOf(text, current.zone);
  } else if (word == "rule") {
    rest >> text;
    current.item.recurrence.rules.push_back(parseRule(text).value());
  } else if (word == "exrule") {
    rest >> text;
    current.item.recurrence.exceptionRules.push_back({parseRule(text).value(), std::nullopt});
  } else if (word == "more") {
    current.more = true;
  } else {
    while (rest >> text) {
      if (word == "occurs") { current.expected.push_back(text); }
      if (word == "rdate") { current.item.recurrence.added.push_back(timeOf(text, current.zone)); }
      if (word == "exdate") { current.item.recurrence.excluded.push_back(timeOf(text, current.zone)); }
      if (word == "changed") { current.changed.push_back(timeOf(text, current.zone)); }
    }
  }
}

std::vector<Case> casesOf(const std::string& file) {
  std::ifstream in(std::string(ORLOCAL_TEST_DATA "/data/") + file);
  std::vector<Case> cases;
  int number = 0;
  for (std::string line; std::getline(in, line);) {
    ++number;
    std::istringstream rest(line);
    std::string word;
    if (!(rest >> word) || word.front() == '#') { continue; }
    if (word == "case") {
      cases.emplace_back().line = number;
      cases.back().name = line.substr(5);
    } else {
      readLine(cases.back(), word, rest);
    }
  }
  return cases;
}

struct Table {
  const char* file;
  std::size_t cases;  ///< at least
};
class RecurrenceTable : public testing::TestWithParam<Table> {};

TEST_P(RecurrenceTable, HoldsForEveryCase) {
  const std::string file = GetParam().file;
  const auto cases = casesOf(file);
  ASSERT_GE(cases.size(), GetParam().cases);
  for (const Case& current : cases) {
    SCOPED_TRACE(file + ":" + std::to_string(current.line) + ": " + current.name);
    const Zone viewer = Zone::named(current.zone).value();
    const auto series = Series::compile(current.item, viewer, current.changed);
    ASSERT_TRUE(series) << series.error().message;
    const Zone zone = current.item.start->kind == CalendarTime::Kind::kUtc ? Zone() : viewer;
    std::vector<std::string> found;
    ExpansionBudget budget;
    const auto status = series->expand(Moment::min(), Moment::max(), budget, [&](const Series::Instance& instance) {
      const auto kind = current.item.allDay() ? CalendarTime::Kind::kDate : CalendarTime::Kind::kFloating;
      const LocalTime shown = current.item.allDay() ? instance.local : zone.toLocal(instance.start);
      found.push_back(timeText({kind, shown, ""}));
      return found.size() < current.expected.size() || !current.more;
    });
    ASSERT_TRUE(status) << status.error().message;
    EXPECT_EQ(found, current.expected);
  }
}

INSTANTIATE_TEST_SUITE_P(Files, RecurrenceTable,
                         testing::Values(Table{"rules.txt", 60}, Table{"scales.txt", 9}, Table{"exceptions.txt", 8}));

Item eventAt(const char* start, const char* rule, const char* end = nullptr) {
  Item item;
  item.title = "Review";
  item.uid = "u1";
  item.start = timeOf(start, "Europe/Berlin");
  if (end != nullptr) { item.end = timeOf(end, "Europe/Berlin"); }
  if (rule != nullptr) { item.recurrence.rules.push_back(parseRule(rule).value()); }
  return item;
}

Zone viewer() { return Zone::named("Europe/Berlin").value(); }
Moment viewedAt(const char* text) { return momentOf(timeOf(text, "Europe/Berlin"), viewer()); }
Series seriesOf(const Item& item) { return Series::compile(item, viewer()).value(); }

std::vector<std::string> startsBetween(const Series& series, Moment from, Moment to) {
  std::vector<std::string> found;
  ExpansionBudget budget;
  const auto status = series.expand(from, to, budget, [&](const Series::Instance& instance) {
    found.push_back(timeText({CalendarTime::Kind::kFloating, viewer().toLocal(instance.start), ""}));
    return true;
  });
  EXPECT_TRUE(status);
  return found;
}

using Texts = std::vector<std::string>;

TEST(SeriesWindow, TakesAnOccurrenceThatReachesInFromBefore) {
  const Series series = seriesOf(eventAt("20260105T220000", "FREQ=WEEKLY", "20260106T020000"));
  EXPECT_EQ(startsBetween(series, viewedAt("20260113T000000"), viewedAt("20260114T000000")), Texts{"20260112T220000"});
}

TEST(SeriesWindow, LeavesOutAnOccurrenceThatEndsWhereItBegins) {
  const Series series = seriesOf(eventAt("20260105T220000", "FREQ=WEEKLY", "20260106T000000"));
  EXPECT_EQ(startsBetween(series, viewedAt("20260113T000000"), viewedAt("20260114T000000")), Texts{});
}

TEST(SeriesWindow, LeavesOutAnOccurrenceThatStartsAtItsEnd) {
  const Series series = seriesOf(eventAt("20260105T000000", "FREQ=WEEKLY", "20260105T010000"));
  EXPECT_EQ(startsBetween(series, viewedAt("20260111T000000"), viewedAt("20260112T000000")), Texts{});
}

TEST(SeriesWindow, TakesAnOccurrenceWithoutLengthWhereItStands) {
  const Series series = seriesOf(eventAt("20260105T000000", "FREQ=WEEKLY"));
  EXPECT_EQ(startsBetween(series, viewedAt("20260112T000000"), viewedAt("20260113T000000")), Texts{"20260112T000000"});
}

TEST(SeriesWindow, ShowsTheSameAsTheWholeSeriesWould) {
  const char* rules[] = {"FREQ=DAILY;INTERVAL=3",   "FREQ=WEEKLY;INTERVAL=2;BYDAY=MO,TH",
                         "FREQ=MONTHLY;BYDAY=-1FR", "FREQ=YEARLY;BYMONTH=3,10",
                         "FREQ=HOURLY;INTERVAL=7",  "FREQ=MONTHLY;COUNT=40",
                         "FREQ=DAILY;BYHOUR=1,2,3"};
  for (const char* rule : rules) {
    const Series series = seriesOf(eventAt("20200229T023000", rule, "20200301T043000"));
    const Texts all = startsBetween(series, viewedAt("20200101T000000"), viewedAt("20240101T000000"));
    Texts pieces;
    for (Moment low = viewedAt("20200101T000000"); low < viewedAt("20240101T000000"); low += std::chrono::days(30)) {
      const Moment high = std::min(low + std::chrono::days(30), viewedAt("20240101T000000"));
      ExpansionBudget budget;
      ASSERT_TRUE(series.expand(low, high, budget, [&](const Series::Instance& instance) {
        if (instance.start >= low) {
          pieces.push_back(timeText({CalendarTime::Kind::kFloating, viewer().toLocal(instance.start), ""}));
        }
        return true;
      }));
    }
    EXPECT_EQ(pieces, all) << rule;
  }
}

TEST(SeriesWindow, IsReachedByAJump) {
  const Series series = seriesOf(eventAt("19000101T090000", "FREQ=SECONDLY"));
  ExpansionBudget budget(100);
  int seen = 0;
  ASSERT_TRUE(series.expand(viewedAt("20260105T120000"), viewedAt("20260105T120003"), budget,
                            [&](const Series::Instance&) { return ++seen < 3; }));
  EXPECT_EQ(seen, 3);
}

TEST(SeriesLength, IsExactForTimedOccurrences) {
  const Series series = seriesOf(eventAt("20260327T220000", "FREQ=DAILY", "20260328T060000"));
  ExpansionBudget budget;
  std::vector<Series::Instance> seen;
  ASSERT_TRUE(series.expand(viewedAt("20260328T120000"), viewedAt("20260329T120000"), budget,
                            [&](const auto& instance) { return seen.push_back(instance), true; }));
  ASSERT_EQ(seen.size(), 1U);
  EXPECT_EQ(seen[0].end - seen[0].start, std::chrono::hours(8));
}

TEST(SeriesLength, IsANumberOfDaysForWholeDays) {
  Item item = eventAt("20260328", "FREQ=WEEKLY", "20260330");
  const Series series = seriesOf(item);
  ExpansionBudget budget;
  const auto first = series.first(budget).value();
  ASSERT_TRUE(first);
  EXPECT_EQ(first->end - first->start, std::chrono::hours(47));  // the clock goes forward on the 29th
}

TEST(WholeDays, AreTheViewersInEveryZone) {
  for (const char* name : {"Pacific/Pago_Pago", "UTC", "Pacific/Kiritimati"}) {
    const Zone viewer = Zone::named(name).value();
    const Series series = Series::compile(eventAt("20260105", "FREQ=DAILY;COUNT=2", "20260106"), viewer).value();
    ExpansionBudget budget;
    const auto first = series.first(budget).value();
    ASSERT_TRUE(first);
    EXPECT_EQ(viewer.toLocal(first->start), LocalTime(2026, 1, 5)) << name;
    EXPECT_EQ(viewer.toLocal(first->end), LocalTime(2026, 1, 6)) << name;
  }
}

TEST(SeriesBounds, EndWithTheLastOccurrence) {
  const auto bounds = seriesOf(eventAt("20260105T090000", "FREQ=DAILY;COUNT=3", "20260105T100000")).bounds();
  EXPECT_EQ(bounds.start, viewedAt("20260105T090000"));
  EXPECT_EQ(bounds.end, viewedAt("20260107T100000"));
}

TEST(SeriesBounds, AreOpenForAnEndlessRule) {
  EXPECT_FALSE(seriesOf(eventAt("20260105T090000", "FREQ=DAILY")).bounds().end);
}

TEST(SeriesBounds, OfABillionDaysAreOpen) {
  EXPECT_FALSE(seriesOf(eventAt("20260105T090000", "FREQ=DAILY;COUNT=1000000000")).bounds().end);
}

TEST(SeriesBounds, OfABillionSecondsAreExact) {
  const auto bounds = seriesOf(eventAt("20260105T090000", "FREQ=SECONDLY;COUNT=1000000000")).bounds();
  EXPECT_EQ(bounds.end, viewer().toMoment(LocalTime(2026, 1, 5, 9) + 999'999'999));
}

TEST(SeriesBounds, OfASingleItemAreItsOwn) {
  const auto bounds = seriesOf(eventAt("20260105T090000", nullptr, "20260105T100000")).bounds();
  EXPECT_EQ(bounds.start, viewedAt("20260105T090000"));
  EXPECT_EQ(bounds.end, viewedAt("20260105T100000"));
}

TEST(SeriesBounds, BeginWithAnEarlierAddedDate) {
  Item item = eventAt("20260105T090000", "FREQ=DAILY;COUNT=3");
  item.recurrence.added.push_back(timeOf("20260101T090000", "Europe/Berlin"));
  EXPECT_EQ(seriesOf(item).bounds().start, viewedAt("20260101T090000"));
}

TEST(CountBefore, CountsTheRulesOwnStartsAndTheFirst) {
  const Series series = seriesOf(eventAt("20260105T090000", "FREQ=WEEKLY;COUNT=10"));
  ExpansionBudget budget;
  EXPECT_EQ(series.countBefore(viewedAt("20260105T090000"), 0, budget).value(), 0);
  EXPECT_EQ(series.countBefore(viewedAt("20260112T090000"), 0, budget).value(), 1);
  EXPECT_EQ(series.countBefore(viewedAt("20260112T090001"), 0, budget).value(), 2);
  EXPECT_EQ(series.countBefore(viewedAt("20400101T090000"), 0, budget).value(), 10);
}

TEST(CountBefore, CountsAStartThatTheRuleDoesNotMake) {
  const Series series = seriesOf(eventAt("20260106T090000", "FREQ=WEEKLY;BYDAY=MO;COUNT=10"));
  ExpansionBudget budget;
  EXPECT_EQ(series.countBefore(viewedAt("20260112T090000"), 0, budget).value(), 1);
  EXPECT_EQ(series.countBefore(viewedAt("20260113T090000"), 0, budget).value(), 2);
}

TEST(CountBefore, CountsExceptionsToo) {
  Item item = eventAt("20260105T090000", "FREQ=DAILY;COUNT=10");
  item.recurrence.excluded.push_back(timeOf("20260106T090000", "Europe/Berlin"));
  ExpansionBudget budget;
  EXPECT_EQ(seriesOf(item).countBefore(viewedAt("20260108T090000"), 0, budget).value(), 3);
}

TEST(CountBefore, IsRightAroundASkippedTime) {
  const Series series = seriesOf(eventAt("20260327T023000", "FREQ=DAILY"));
  ExpansionBudget budget;
  EXPECT_EQ(series.countBefore(viewedAt("20260329T033000"), 0, budget).value(), 2);
  EXPECT_EQ(series.countBefore(viewedAt("20260330T023000"), 0, budget).value(), 3);
}

TEST(RecurrenceIds, AreOfTheSeriesKindAndZone) {
  const Series series = seriesOf(eventAt("20260105T090000", "FREQ=DAILY"));
  const CalendarTime id = series.recurrenceId(viewedAt("20260107T090000"));
  EXPECT_EQ(id, timeOf("20260107T090000", "Europe/Berlin"));
  EXPECT_EQ(series.originalStart(id), viewedAt("20260107T090000"));
  EXPECT_EQ(series.originalStart(timeOf("20260107T080000Z", "")), viewedAt("20260107T090000"));
}

TEST(RecurrenceIds, AreDatesForWholeDays) {
  const Series series = seriesOf(eventAt("20260105", "FREQ=DAILY"));
  EXPECT_EQ(series.recurrenceId(viewedAt("20260107T000000")), timeOf("20260107", ""));
  EXPECT_EQ(series.originalStart(timeOf("20260107T230000Z", "")), viewedAt("20260107T000000"));
}

TEST(SeriesErrors, NameTheItem) {
  const Series series = seriesOf(eventAt("20260105T090000", "FREQ=SECONDLY"));
  ExpansionBudget budget(1000);
  const auto status = series.expand(Moment::min(), Moment::max(), budget, [](const auto&) { return true; });
  ASSERT_FALSE(status);
  EXPECT_EQ(status.error().code, ErrorCode::kBudget);
  EXPECT_EQ(status.error().message,
            "the event \"Review\" (UID u1) repeats in a way that takes too long to follow; give it a simpler rule or "
            "remove it");
}

TEST(SeriesErrors, ReportARuleThatCannotBeFollowed) {
  const auto series = Series::compile(eventAt("20260105", "FREQ=HOURLY"), viewer());
  ASSERT_FALSE(series);
  EXPECT_EQ(series.error().message,
            "the event \"Review\" (UID u1): the rule repeats by hours, minutes or seconds, which whole days cannot do");
}

TEST(SeriesErrors, ReportAMissingStart) {
  EXPECT_EQ(Series::compile(Item(), viewer()).error().code, ErrorCode::kInvalid);
}

TEST(DenseRules, AreEnteredWhereTheWindowLies) {
  std::string rule = "FREQ=YEARLY;BYDAY=SU,MO,TU,WE,TH,FR,SA;BYHOUR=0";
  for (int i = 1; i < 24; ++i) { rule += "," + std::to_string(i); }
  rule += ";BYMINUTE=0";
  for (int i = 1; i < 60; ++i) { rule += "," + std::to_string(i); }
  const Series series = seriesOf(eventAt("20260105T090000", rule.c_str()));
  EXPECT_EQ(startsBetween(series, viewedAt("20261231T235800"), viewedAt("20270101T000100")),
            (Texts{"20261231T235800", "20261231T235900", "20270101T000000"}));
}

TEST(Reminders, RepeatFromTheirDueMomentWithoutAStart) {
  Item item = eventAt("20260105T090000", "FREQ=DAILY;COUNT=2");
  item.kind = ItemKind::kReminder;
  std::swap(item.start, item.due);
  EXPECT_EQ(startsBetween(seriesOf(item), viewedAt("20260101T000000"), viewedAt("20270101T000000")),
            (Texts{"20260105T090000", "20260106T090000"}));
}

}  // namespace
}  // namespace orlocal::store
