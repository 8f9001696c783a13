#include <algorithm>
#include <array>
#include <bitset>

#include <fmt/format.h>

#include "base/translation.h"
#include "host/commands/command_line/folded_text.h"
#include "host/commands/views/day_grids.h"
#include "host/commands/words/date_locale.h"
#include "host/commands/words/date_names.h"
#include "host/commands/words/day_words.h"

namespace orlocal::host {
namespace {

using store::LocalDay;
using store::LocalTime;

constexpr std::size_t kTimeColumn = 6;
constexpr int kRowMinutes = 30;
constexpr int kRowsInHour = 60 / kRowMinutes;
constexpr int kHoursInDay = 24;
/// Shown in any case: from eight to six.
constexpr int kFirstHour = 8, kLastHour = 18;

/// The part of an event that lies on a day.
struct Block {
  const GridEntry* entry;
  int from, to;  ///< rows, the last excluded
  Lane place;
};

using Hours = std::bitset<kHoursInDay>;
using Blocks = std::array<std::vector<Block>, kDaysInWeek>;

int minutesOf(LocalTime time, LocalDay day) { return static_cast<int>((time - LocalTime(day)) / 60); }

std::optional<Block> blockOn(LocalDay day, const GridEntry& entry) {
  if (entry.wholeDays || entry.firstDay() > day || entry.lastDay() < day) { return std::nullopt; }
  const int begin = std::max(0, minutesOf(entry.start, day));
  const int end = std::min(kHoursInDay * 60, minutesOf(entry.end, day));
  const int from = begin / kRowMinutes;
  const int to = std::max(from + 1, (end + kRowMinutes - 1) / kRowMinutes);
  return Block{&entry, from, to, {}};
}

std::vector<Block> blocksOn(LocalDay day, const std::vector<GridEntry>& entries) {
  std::vector<Block> blocks;
  for (const GridEntry& entry : entries) {
    if (const auto block = blockOn(day, entry)) { blocks.push_back(*block); }
  }
  std::stable_sort(blocks.begin(), blocks.end(), [](const Block& a, const Block& b) { return a.from < b.from; });
  std::vector<std::pair<int, int>> rows;
  for (const Block& block : blocks) { rows.emplace_back(block.from, block.to); }
  const std::vector<Lane> places = lanesOf(rows);
  for (std::size_t i = 0; i < blocks.size(); ++i) { blocks[i].place = places[i]; }
  return blocks;
}

/// What stands in a row of a block.
std::string blockText(const Block& block, int row, std::size_t width, const Ink& ink) {
  const GridEntry& entry = *block.entry;
  if (width == 0) { return ""; }
  const std::size_t inner = width - 1;
  std::vector<std::string> texts;
  if (inner > 0) {
    texts = foldedText(ink.on() ? entry.title : gridTitle(entry, entry.title, ink), inner);
    // The title may take all of it but the last row.
    texts.resize(std::min(texts.size(), static_cast<std::size_t>(std::max(1, block.to - block.from - 1))));
  }
  const std::string start = clockTime(entry.start), times = start + "–" + clockTime(entry.end);
  if (entry.end > entry.start) {
    texts.push_back(displayWidth(times) <= inner ? times : displayWidth(start) <= inner ? start : "");
  }
  if (!entry.place.empty()) { texts.push_back(entry.place); }
  const auto at = static_cast<std::size_t>(row - block.from);
  std::string text = cell(at < texts.size() ? texts[at] : "", inner);
  if (entry.cancelled && ink.on()) { text = ink.struck(text); }
  return ink.colored(entry.color, "▌") + text;
}

std::string dayText(const std::vector<Block>& blocks, int row, std::size_t width, const Ink& ink) {
  std::size_t lanes = 0;
  for (const Block& block : blocks) {
    if (block.from <= row && row < block.to) { lanes = block.place.lanes; }
  }
  if (lanes == 0) { return std::string(width, ' '); }
  const std::size_t share = std::max<std::size_t>(1, width / lanes);
  std::string text;
  std::size_t taken = 0;
  for (std::size_t lane = 0; lane < lanes && taken < width; ++lane) {
    const std::size_t own = lane + 1 == lanes ? width - taken : std::min(share, width - taken);
    const auto block = std::find_if(blocks.begin(), blocks.end(), [&](const Block& each) {
      return each.place.lane == lane && each.from <= row && row < each.to;
    });
    text += block != blocks.end() ? blockText(*block, row, own, ink) : std::string(own, ' ');
    taken += own;
  }
  return text;
}

/// The hours of the working day, and those in which something lies.
Hours hoursShown(const Blocks& blocks) {
  Hours shown;
  for (std::size_t hour = kFirstHour; hour < kLastHour; ++hour) { shown.set(hour); }
  for (const auto& ofDay : blocks) {
    for (const Block& block : ofDay) {
      for (int row = block.from; row < block.to; ++row) { shown.set(static_cast<std::size_t>(row / kRowsInHour)); }
    }
  }
  return shown;
}

std::string headOf(LocalDay first, const GridSetting& setting) {
  const LocalDay last = first + (static_cast<int>(kDaysInWeek) - 1);
  std::string head = shortDay(first) + " – " + shortDay(last);
  if (setting.firstWeekday == cctz::weekday::monday) { head += tr(", week {}", weekNumber(first)); }
  return setting.ink.bold(head);
}

/// The half hours that are shown; a mark stands for a night between what is early and what is late.
std::vector<std::string> hourLines(const Blocks& blocks, std::size_t column, const Ink& ink) {
  std::vector<std::string> text;
  const Hours shown = hoursShown(blocks);
  bool leftOut = false;
  for (int hour = 0; hour < kHoursInDay; ++hour) {
    if (!shown[static_cast<std::size_t>(hour)]) {
      leftOut = !text.empty();
      continue;
    }
    if (leftOut) { text.push_back(ink.dim("  ⋮")); }
    leftOut = false;
    for (int row = hour * kRowsInHour; row < (hour + 1) * kRowsInHour; ++row) {
      const bool full = row % kRowsInHour == 0;
      std::string line = ink.dim(cell(full ? fmt::format("{:02}:00", hour) : "", kTimeColumn));
      for (const auto& ofDay : blocks) { line += dayText(ofDay, row, column - 1, ink) + ' '; }
      text.push_back(withoutBlanksAtEnd(std::move(line)));
    }
  }
  return text;
}

}  // namespace

std::vector<std::string> weekGrid(LocalDay day, const std::vector<GridEntry>& entries, const GridSetting& setting) {
  constexpr std::size_t kNarrowest = 5;
  const std::size_t column = std::max(kNarrowest, (setting.width - std::min(setting.width, kTimeColumn)) / kDaysInWeek);
  const Ink& ink = setting.ink;
  const LocalDay first = weekStart(day, setting.firstWeekday);
  std::vector<std::string> text{headOf(first, setting), ""};
  std::string days(kTimeColumn, ' ');
  Blocks blocks;
  for (std::size_t i = 0; i < kDaysInWeek; ++i) {
    const LocalDay each = first + static_cast<int>(i);
    const std::string name =
        fmt::format("{} {}{}", DateNames::ofUser().shortWeekday(each), each.day(), each == setting.today ? " ◂" : "");
    days += (each == setting.today ? ink.bold(cell(name, column - 1)) : cell(name, column - 1)) + ' ';
    blocks[i] = blocksOn(each, entries);
  }
  text.push_back(withoutBlanksAtEnd(std::move(days)));
  std::vector<const GridEntry*> whole;
  for (const GridEntry& entry : entries) {
    if (entry.wholeDays) { whole.push_back(&entry); }
  }
  for (const GridLine& line : gridLines(whole, first)) {
    std::string bars(kTimeColumn, ' ');
    for (std::size_t i = 0; i < kDaysInWeek;) {
      const auto& piece = line.pieces[i];
      const std::size_t covered = piece ? piece->days : 1;
      const bool isDue = piece && piece->entry->start == piece->entry->end;
      bars += !piece  ? std::string(column - 1, ' ')
              : isDue ? ink.colored(piece->entry->color, cell(piece->entry->title, column - 1))
                      : barText(*piece, covered * column - 1, ink);
      bars += ' ';
      i += covered;
    }
    text.push_back(withoutBlanksAtEnd(std::move(bars)));
  }
  for (std::string& line : hourLines(blocks, column, ink)) { text.push_back(std::move(line)); }
  return text;
}

}  // namespace orlocal::host
