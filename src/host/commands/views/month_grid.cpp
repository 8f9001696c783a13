#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "host/commands/views/day_grids.h"
#include "host/commands/words/date_locale.h"
#include "host/commands/words/date_names.h"

namespace orlocal::host {
namespace {

using store::LocalDay;

constexpr std::size_t kWeekColumn = 3;

std::size_t columnWidth(const GridSetting& setting) {
  constexpr std::size_t kNarrowest = 5;
  return std::max(kNarrowest, (setting.width - std::min(setting.width, kWeekColumn)) / kDaysInWeek);
}

/// The name of the month in the middle, and those of the days.
std::vector<std::string> head(LocalDay month, LocalDay first, const GridSetting& setting) {
  const DateNames& names = DateNames::ofUser();
  const std::size_t column = columnWidth(setting), width = kWeekColumn + kDaysInWeek * column;
  const std::string title = fmt::format("{} {}", names.month(month.month()), month.year());
  const std::size_t before = (width - std::min(width, displayWidth(title))) / 2;
  std::string days(kWeekColumn, ' ');
  for (std::size_t i = 0; i < kDaysInWeek; ++i) {
    days += cell(names.weekday(first + static_cast<int>(i)), column - 1) + ' ';
  }
  return {std::string(before, ' ') + setting.ink.bold(title), setting.ink.dim(withoutBlanksAtEnd(days))};
}

std::string dayNumber(LocalDay day, LocalDay month, const GridSetting& setting) {
  const bool outside = day.month() != month.month();
  std::string text = day.day() == 1 ? DateNames::ofUser().shortDayOfYear(day.month(), 1) : std::to_string(day.day());
  if (day == setting.today) { text += " ◂"; }
  text = cell(text, columnWidth(setting) - 1);
  if (day == setting.today) { return setting.ink.bold(text); }
  return outside ? setting.ink.dim(text) : text;
}

std::string numbers(LocalDay first, LocalDay month, const GridSetting& setting) {
  // Weeks that begin on another day have other numbers.
  const bool counted = setting.firstWeekday == cctz::weekday::monday;
  std::string line = setting.ink.dim(cell(counted ? fmt::format("{:2}", weekNumber(first)) : "", kWeekColumn));
  for (std::size_t i = 0; i < kDaysInWeek; ++i) {
    line += dayNumber(first + static_cast<int>(i), month, setting) + ' ';
  }
  return withoutBlanksAtEnd(std::move(line));
}

std::string entryText(const GridLine::Piece& piece, std::size_t width, const Ink& ink) {
  const GridEntry& entry = *piece.entry;
  const bool isDue = entry.start == entry.end && entry.wholeDays;
  if (entry.wholeDays && !isDue) { return barText(piece, width, ink); }
  constexpr std::size_t kRoomForTimes = 8;
  const std::string time =
      isDue || width < kRoomForTimes ? "" : fmt::format("{}:{:02} ", entry.start.hour(), entry.start.minute());
  std::string text = cell(time + (ink.on() ? entry.title : gridTitle(entry, entry.title, ink)), width);
  if (!ink.on()) { return text; }
  return ink.colored(entry.color, entry.cancelled ? ink.struck(text) : text);
}

std::string drawn(const GridLine& line, const GridSetting& setting) {
  const std::size_t column = columnWidth(setting);
  std::string text(kWeekColumn, ' ');
  for (std::size_t i = 0; i < kDaysInWeek;) {
    const auto& piece = line.pieces[i];
    const std::size_t days = piece ? piece->days : 1;
    text += piece ? entryText(*piece, days * column - 1, setting.ink) : std::string(column - 1, ' ');
    text += ' ';
    i += days;
  }
  return withoutBlanksAtEnd(std::move(text));
}

/// How many entries of each day stand in lines from `from` on.
std::array<std::size_t, kDaysInWeek> counted(const std::vector<GridLine>& lines, std::size_t from) {
  std::array<std::size_t, kDaysInWeek> counts{};
  for (std::size_t at = from; at < lines.size(); ++at) {
    for (std::size_t i = 0; i < kDaysInWeek; ++i) { counts[i] += lines[at].taken[i] ? 1 : 0; }
  }
  return counts;
}

std::string leftOut(const std::vector<GridLine>& lines, const GridSetting& setting) {
  const auto counts = counted(lines, setting.lines);
  std::string text(kWeekColumn, ' ');
  for (const std::size_t count : counts) {
    text += cell(count == 0 ? "" : fmt::format("+{}", count), columnWidth(setting) - 1) + ' ';
  }
  return setting.ink.dim(withoutBlanksAtEnd(std::move(text)));
}

}  // namespace

LocalDay weekStart(LocalDay day, cctz::weekday firstWeekday) {
  const int ahead = (static_cast<int>(cctz::get_weekday(day)) - static_cast<int>(firstWeekday) + 7) % 7;
  return day - ahead;
}

std::vector<std::string> monthGrid(LocalDay day, const std::vector<GridEntry>& entries, const GridSetting& setting) {
  const LocalDay month(day.year(), day.month(), 1);
  const LocalDay end(cctz::civil_month(month) + 1);
  std::vector<const GridEntry*> all;
  for (const GridEntry& entry : entries) { all.push_back(&entry); }
  LocalDay week = weekStart(month, setting.firstWeekday);
  std::vector<std::string> text = head(month, week, setting);
  for (; week < end; week += kDaysInWeek) {
    std::string rule;
    for (std::size_t i = 0; i < kWeekColumn + kDaysInWeek * columnWidth(setting); ++i) { rule += "─"; }
    text.push_back(setting.ink.dim(rule));
    text.push_back(numbers(week, month, setting));
    const auto lines = gridLines(all, week);
    for (std::size_t i = 0; i < std::min(lines.size(), setting.lines); ++i) {
      text.push_back(drawn(lines[i], setting));
    }
    if (lines.size() > setting.lines) { text.push_back(leftOut(lines, setting)); }
  }
  return text;
}

}  // namespace orlocal::host
