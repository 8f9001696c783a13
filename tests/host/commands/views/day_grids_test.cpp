#include "host/commands/views/day_grids.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orlocal::host {
namespace {

using store::LocalDay;
using store::LocalTime;
using testing::Each;
using testing::HasSubstr;
using testing::Not;
using testing::ResultOf;

class DayGrids : public testing::Test {
 protected:
  void timed(const std::string& title, LocalTime start, LocalTime end) {
    GridEntry entry;
    entry.title = title;
    entry.start = start;
    entry.end = end;
    entries.push_back(entry);
  }
  void whole(const std::string& title, LocalDay first, LocalDay last) {
    timed(title, LocalTime(first), LocalTime(last + 1));
    entries.back().wholeDays = true;
  }
  /// The line of the grid that `text` stands in.
  static std::string lineWith(const std::vector<std::string>& grid, const std::string& text) {
    for (const std::string& line : grid) {
      if (line.find(text) != std::string::npos) { return line; }
    }
    return "";
  }

  const LocalDay monday{2026, 11, 2};
  std::vector<GridEntry> entries;
  GridSetting setting{.today = monday};
};

TEST_F(DayGrids, KeepWithinTheirWidth) {
  whole("Ferien 長い会議の題名", monday - 3, monday + 9);
  timed("長い会議の題名がある", LocalTime(2026, 11, 4, 10, 0, 0), LocalTime(2026, 11, 4, 12, 0, 0));
  timed("e\u0301te\u0301 👩‍👩‍👧 family", LocalTime(2026, 11, 4, 11, 0, 0),
        LocalTime(2026, 11, 4, 13, 0, 0));
  timed("Late", LocalTime(2026, 11, 8, 22, 0, 0), LocalTime(2026, 11, 9, 6, 0, 0));
  for (const std::size_t width : {41U, 50U, 80U, 133U}) {
    setting.width = width;
    EXPECT_THAT(monthGrid(monday, entries, setting), Each(ResultOf(displayWidth, testing::Le(width)))) << width;
    EXPECT_THAT(weekGrid(monday, entries, setting), Each(ResultOf(displayWidth, testing::Le(width)))) << width;
  }
}

TEST_F(DayGrids, ColumnsStandUnderEachOtherBehindWideLetters) {
  timed("長い会議の題名", LocalTime(monday) + 9 * 3600, LocalTime(monday) + 10 * 3600);
  timed("Lunch", LocalTime(monday + 1) + 9 * 3600, LocalTime(monday + 1) + 10 * 3600);
  const auto columnOf = [](const std::string& line, const std::string& text) {
    return displayWidth(std::string_view(line).substr(0, line.find(text)));
  };
  const auto month = monthGrid(monday, entries, setting);
  EXPECT_EQ(columnOf(lineWith(month, "長い"), "9:00 Lunch"), columnOf(lineWith(month, "2 ◂"), "3  "));
  const auto week = weekGrid(monday, entries, setting);
  EXPECT_EQ(columnOf(lineWith(week, "長い"), "▌Lunch"), columnOf(lineWith(week, "Tue 3"), "Tue 3"));
}

TEST_F(DayGrids, DrawBarsThatGoOnBeyondTheWeek) {
  whole("Away", monday - 1, monday + 7);
  const auto grid = monthGrid(monday, entries, setting);
  EXPECT_THAT(grid, testing::Contains(testing::EndsWith("[Away────]")).Times(0));
  EXPECT_THAT(lineWith(grid, "[Away"), testing::EndsWith(">"));
  EXPECT_THAT(lineWith(grid, "<Away──"), testing::EndsWith(">"));
  EXPECT_THAT(grid, testing::Contains(testing::StartsWith("   <Away────]")));
}

TEST_F(DayGrids, PutLinesWhereTheirDaysAreFree) {
  whole("Long", monday, monday + 4);
  whole("Short", monday + 1, monday + 1);
  whole("After", monday + 5, monday + 6);
  std::vector<const GridEntry*> all;
  for (const GridEntry& entry : entries) { all.push_back(&entry); }
  const auto lines = gridLines(all, monday);
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0].pieces[5]->entry->title, "After");
  EXPECT_EQ(lines[1].pieces[1]->entry->title, "Short");
}

TEST_F(DayGrids, CountWhatDoesNotFitIntoAMonthsDay) {
  for (int i = 0; i < 9; ++i) { timed("Event", LocalTime(monday) + i * 3600, LocalTime(monday) + (i + 1) * 3600); }
  EXPECT_THAT(monthGrid(monday, entries, setting), testing::Contains("   +3"));
  setting.lines = 9;
  EXPECT_THAT(monthGrid(monday, entries, setting), Not(testing::Contains(HasSubstr("+"))));
}

TEST_F(DayGrids, PutWhatOverlapsSideBySide) {
  timed("One", LocalTime(monday) + 9 * 3600, LocalTime(monday) + 11 * 3600);
  timed("Two", LocalTime(monday) + 10 * 3600, LocalTime(monday) + 12 * 3600);
  timed("Six", LocalTime(monday) + 12 * 3600, LocalTime(monday) + 13 * 3600);
  const auto grid = weekGrid(monday, entries, setting);
  EXPECT_EQ(lineWith(grid, "09:00"), "09:00 ▌One");
  EXPECT_EQ(lineWith(grid, "10:00"), "10:00 ▌   ▌Two");
  EXPECT_EQ(lineWith(grid, "12:00"), "12:00 ▌Six");
}

TEST_F(DayGrids, ShowTheWorkingDayAndTheHoursOfTheirEvents) {
  EXPECT_EQ(lineWith(weekGrid(monday, entries, setting), "07:00"), "");
  EXPECT_EQ(lineWith(weekGrid(monday, entries, setting), "18:00"), "");
  timed("Early", LocalTime(monday) + 6 * 3600 + 1800, LocalTime(monday) + 7 * 3600);
  timed("Late", LocalTime(monday) + 23 * 3600, LocalTime(monday + 1) + 3600);
  const auto grid = weekGrid(monday, entries, setting);
  EXPECT_EQ(lineWith(grid, "00:00"), "00:00           ▌Late");
  EXPECT_EQ(lineWith(grid, "23:00 ▌"), "23:00 ▌Late");
  std::vector<std::string> hours;
  for (const std::string& line : grid) {
    if (line == "  ⋮" || (line.size() > 2 && line[2] == ':')) { hours.push_back(line.substr(0, 5)); }
  }
  EXPECT_THAT(hours, testing::ElementsAre("00:00", "  ⋮", "06:00", "  ⋮", "08:00", "09:00", "10:00", "11:00", "12:00",
                                          "13:00", "14:00", "15:00", "16:00", "17:00", "  ⋮", "23:00"));
}

TEST_F(DayGrids, WeeksBeginAsTheCountryHasThem) {
  EXPECT_EQ(weekStart(monday, cctz::weekday::monday), monday);
  EXPECT_EQ(weekStart(monday, cctz::weekday::sunday), monday - 1);
  EXPECT_EQ(weekStart(monday - 1, cctz::weekday::monday), monday - 7);
}

}  // namespace
}  // namespace orlocal::host
