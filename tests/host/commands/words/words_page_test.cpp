#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "host/commands/words/alarm_words.h"
#include "host/commands/words/date_words.h"
#include "host/commands/words/day_range.h"
#include "host/commands/words/day_words.h"
#include "host/commands/words/item_words.h"
#include "host/commands/words/repeat_words.h"
#include "host/commands/words/rule_words.h"
#include "host/commands/words/week_words.h"
#include "host/commands/words/when_words.h"

namespace orlocal::host {
namespace {

/// What stands between the bars of a row, without the marks of code.
std::vector<std::string> cellsOf(const std::string& line) {
  std::vector<std::string> cells;
  for (std::size_t at = 1; at < line.size();) {
    const std::size_t end = line.find('|', at);
    std::string cell = line.substr(at, end - at);
    at = end + 1;
    cell.erase(0, cell.find_first_not_of(" `"));
    cell.erase(cell.find_last_not_of(" `") + 1);
    cells.push_back(cell);
  }
  return cells;
}

std::string refusedAt(const Failure& why) { return fmt::format("refused at {}", why.place.value_or(998) + 1); }

std::string clockWords(TimeOfDay time) { return fmt::format("{:02}:{:02}", time.count() / 60, time.count() % 60); }

std::string repeatWords(const store::RecurrenceRule& rule) { return ruleWords(rule, std::nullopt, store::Zone()); }

std::string whenWords(const When& when, const WordsSetting& setting) {
  if (when.empty()) { return "nothing"; }
  const auto times = timesOf(when, setting);
  if (!times) { return times.error().message; }
  return timesInWords(*times) + (when.repeat ? ", " + repeatWords(*when.repeat) : "");
}

template <class Value, class Shown>
std::string shownOr(const Result<Value>& value, Shown shown) {
  return value ? shown(*value) : refusedAt(value.error());
}

/// What the row's first cell means, by the table's first heading.
std::vector<std::string> meaningOf(const std::string& heading, const std::string& words, const WordsSetting& setting) {
  if (heading == "Day") { return {shownOr(readDay(words, setting), shortDay)}; }
  if (heading == "Time") { return {shownOr(readTime(words, setting), clockWords)}; }
  if (heading == "Length") {
    return {shownOr(readLength(words, setting),
                    [](const Length& length) { return lengthWords(std::chrono::days(length.days) + length.minutes); })};
  }
  if (heading == "Hours") {
    return {shownOr(readHours(words, setting),
                    [](const TimeRange& hours) { return clockWords(hours.start) + "–" + clockWords(hours.end); })};
  }
  if (heading == "Days of the week") { return {shownOr(readWeekDays(words, setting), weekDaysInWords)}; }
  if (heading == "Stretch of days") {
    const auto days = daysFromWords(words, setting.today());
    if (!days) { return {"nothing"}; }
    return {days->first == days->last ? shortDay(days->first)
                                      : fmt::format("{} – {}", shortDay(days->first), shortDay(days->last))};
  }
  if (heading == "Repetition") { return {shownOr(readRepeat(words, setting), repeatWords)}; }
  if (heading == "Alarm") {
    return {shownOr(readAlarm(words, setting), [](const AlarmWords& alarm) {
      const auto offset = offsetOf(alarm, store::LocalTime(2026, 11, 3, 12, 30, 0));
      store::Alarm shown;
      shown.trigger = store::AlarmOffset{offset};
      return alarmWords(shown, store::ItemKind::kEvent, store::Zone());
    })};
  }
  const auto read = readTitleAndWhen(words, setting);
  if (!read) { return {refusedAt(read.error()), ""}; }
  return {read->title, whenWords(read->when, setting)};
}

TEST(WordsPage, SaysWhatIsUnderstood) {
  std::ifstream page(ORLOCAL_WORDS_PAGE);
  WordsSetting setting{store::LocalTime(2026, 11, 2, 9, 0, 0)};
  std::string line, heading;
  std::map<std::string, int> tried;
  while (std::getline(page, line)) {
    if (line.starts_with("## ")) { setting.german = line == "## German"; }
    if (!line.starts_with("|")) {
      heading.clear();
      continue;
    }
    auto cells = cellsOf(line);
    if (heading.empty()) {
      heading = cells.front();
      continue;
    }
    if (line.starts_with("|---")) { continue; }
    const std::string words = cells.front();
    cells.erase(cells.begin());
    EXPECT_EQ(meaningOf(heading, words, setting), cells) << heading << ": " << words;
    ++tried[heading];
  }
  EXPECT_EQ(tried.size(), 9U);
  for (const auto& [name, rows] : tried) { EXPECT_GT(rows, 8) << name; }
}

TEST(Words, OfTheOtherLanguageAreNoneWhereItIsNotSpoken) {
  const WordsSetting setting{store::LocalTime(2026, 11, 2, 9, 0, 0)};
  EXPECT_FALSE(readDay("morgen", setting));
}

TEST(Words, AreThoseOfTheEnvironment) {
  struct Case {
    const char *language, *all;
    bool german;
    WordsSetting::Slashes slashes;
  };
  const Case cases[] = {{"", "de_DE.UTF-8", true, WordsSetting::Slashes::kDayFirst},
                        {"de:en", "C.UTF-8", true, WordsSetting::Slashes::kUnknown},
                        {"en", "de_AT.UTF-8", false, WordsSetting::Slashes::kDayFirst},
                        {"", "en_US.UTF-8", false, WordsSetting::Slashes::kMonthFirst},
                        {"", "C", false, WordsSetting::Slashes::kUnknown}};
  for (const Case& each : cases) {
    ::setenv("LANGUAGE", each.language, 1);
    ::setenv("LC_ALL", each.all, 1);
    const WordsSetting setting = settingOfUser(store::LocalTime());
    EXPECT_EQ(setting.german, each.german) << each.all;
    EXPECT_EQ(setting.slashes, each.slashes) << each.all;
  }
  ::unsetenv("LANGUAGE");
  ::setenv("LC_ALL", "C.UTF-8", 1);
}

TEST(Words, WithASlashAreReadAsTheCountryHasThem) {
  WordsSetting setting{store::LocalTime(2026, 11, 2, 9, 0, 0)};
  setting.slashes = WordsSetting::Slashes::kMonthFirst;
  EXPECT_EQ(readDay("11/2", setting), store::LocalDay(2026, 11, 2));
  setting.slashes = WordsSetting::Slashes::kDayFirst;
  EXPECT_EQ(readDay("11/2", setting), store::LocalDay(2027, 2, 11));
}

TEST(Words, ChangeOnlyWhatTheySay) {
  const WordsSetting setting{store::LocalTime(2026, 11, 2, 9, 0, 0)};
  const Times noon{store::LocalTime(2026, 11, 3, 12, 0, 0), store::LocalTime(2026, 11, 3, 13, 30, 0), false};
  const Times days{store::LocalTime(2026, 11, 3), store::LocalTime(2026, 11, 5), true};
  struct Case {
    Times now;
    const char *words, *meaning;
  };
  const Case cases[] = {
      {noon, "friday", "Fri 6 Nov 2026 12:00–13:30"},
      {noon, "14:00", "Tue 3 Nov 2026 14:00–15:30"},
      {noon, "14:00-14:15", "Tue 3 Nov 2026 14:00–14:15"},
      {noon, "30m", "Tue 3 Nov 2026 12:00–12:30"},
      {noon, "all day", "Tue 3 Nov 2026, all day"},
      {noon, "friday 2 days", "Fri 6 Nov 2026 12:00 – Sun 8 Nov 2026 12:00"},
      {days, "friday", "Fri 6 Nov 2026 – Sat 7 Nov 2026, 2 days"},
      {days, "3 days", "Tue 3 Nov 2026 – Thu 5 Nov 2026, 3 days"},
      {days, "9:00 1h", "Tue 3 Nov 2026 09:00–10:00"},
  };
  for (const Case& each : cases) {
    const auto when = readWhen(each.words, setting);
    ASSERT_TRUE(when) << each.words;
    const auto times = timesOf(*when, each.now);
    ASSERT_TRUE(times) << each.words;
    EXPECT_EQ(timesInWords(*times), each.meaning) << each.words;
  }
}

}  // namespace
}  // namespace orlocal::host
