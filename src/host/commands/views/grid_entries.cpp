#include "host/commands/views/grid_entries.h"

#include <algorithm>
#include <tuple>

#include "base/translation.h"
#include "host/commands/command_line/folded_text.h"
#include "host/commands/words/item_words.h"

namespace orlocal::host {
namespace {

using store::LocalDay;
using store::LocalTime;

constexpr int kSecondsInDay = 86'400;

GridEntry entryOf(const store::Item& item, const store::Calendar& calendar) {
  GridEntry entry;
  entry.title = printable(item.title.value_or(tr("(no title)")));
  if (isTentative(item)) { entry.title.insert(0, "? "); }
  entry.place = printable(item.location.value_or(""));
  entry.color = calendar.color;
  entry.cancelled = isCancelled(item);
  return entry;
}

GridEntry entryOf(const Agenda::Event& event, const store::Zone& viewer) {
  GridEntry entry = entryOf(*event.item, event.calendar);
  entry.item = event.item;
  entry.when = event.when;
  entry.start = viewer.toLocal(event.when.start);
  entry.end = std::max(entry.start, viewer.toLocal(event.when.end));
  entry.wholeDays = event.item->allDay() || entry.end - entry.start >= kSecondsInDay;
  return entry;
}

GridEntry entryOf(const Agenda::Reminder& reminder, const store::Zone& viewer) {
  GridEntry entry = entryOf(*reminder.item, reminder.calendar);
  entry.item = reminder.item;
  entry.title.insert(0, "☐ ");
  entry.start = entry.end = viewer.toLocal(*reminder.due);
  entry.wholeDays = reminder.item->due && reminder.item->due->kind == store::CalendarTime::Kind::kDate;
  return entry;
}

}  // namespace

LocalDay GridEntry::lastDay() const { return end > start ? LocalDay(end - 1) : firstDay(); }

std::vector<GridEntry> gridEntries(const Agenda& agenda) {
  std::vector<GridEntry> entries;
  for (const auto& event : agenda.events) { entries.push_back(entryOf(event, agenda.viewer)); }
  for (const auto& reminder : agenda.reminders) { entries.push_back(entryOf(reminder, agenda.viewer)); }
  std::stable_sort(entries.begin(), entries.end(), [](const GridEntry& a, const GridEntry& b) {
    const auto rank = [](const GridEntry& each) {
      return std::tuple(each.firstDay(), !each.wholeDays, each.wholeDays ? each.firstDay() - each.lastDay() : 0,
                        each.start, each.end);
    };
    return rank(a) < rank(b);
  });
  return entries;
}

std::string gridTitle(const GridEntry& entry, std::string_view text, const Ink& ink) {
  if (!entry.cancelled) { return std::string(text); }
  return ink.on() ? ink.struck(text) : "× " + std::string(text);
}

std::vector<GridLine> gridLines(const std::vector<const GridEntry*>& entries, LocalDay first) {
  std::vector<GridLine> lines;
  const LocalDay last = first + (kDaysInWeek - 1);
  for (const GridEntry* entry : entries) {
    // What has a time of day stands on the day of its start, also when it goes on after midnight.
    const LocalDay end = entry->wholeDays ? entry->lastDay() : entry->firstDay();
    if (end < first || entry->firstDay() > last) { continue; }
    const auto from = static_cast<std::size_t>(std::max(entry->firstDay(), first) - first);
    const auto to = static_cast<std::size_t>(std::min(end, last) - first);
    const auto isFree = [&](const GridLine& line) {
      return std::none_of(line.taken.begin() + from, line.taken.begin() + to + 1, [](bool taken) { return taken; });
    };
    auto line = std::find_if(lines.begin(), lines.end(), isFree);
    if (line == lines.end()) { line = lines.insert(lines.end(), GridLine()); }
    line->pieces[from] = GridLine::Piece{entry, to - from + 1, entry->firstDay() >= first, end <= last};
    std::fill(line->taken.begin() + from, line->taken.begin() + to + 1, true);
  }
  return lines;
}

std::vector<Lane> lanesOf(const std::vector<std::pair<int, int>>& spans) {
  std::vector<Lane> places(spans.size());
  std::size_t begin = 0;
  int end = 0;
  std::vector<int> taken;  ///< until when each lane is
  const auto closeCluster = [&](std::size_t to) {
    for (; begin < to; ++begin) { places[begin].lanes = taken.size(); }
    taken.clear();
  };
  for (std::size_t i = 0; i < spans.size(); ++i) {
    if (spans[i].first >= end) { closeCluster(i); }
    auto lane = std::find_if(taken.begin(), taken.end(), [&](int until) { return until <= spans[i].first; });
    if (lane == taken.end()) { lane = taken.insert(taken.end(), 0); }
    *lane = spans[i].second;
    places[i].lane = static_cast<std::size_t>(lane - taken.begin());
    end = std::max(end, spans[i].second);
  }
  closeCluster(spans.size());
  return places;
}

std::string barText(const GridLine::Piece& piece, std::size_t width, const Ink& ink) {
  const GridEntry& entry = *piece.entry;
  constexpr std::size_t kEnds = 2;
  const std::size_t inner = width - std::min(width, kEnds);
  if (ink.on()) {
    const std::string text = (piece.begins ? " " : "‹") + cell(entry.title, inner) + (piece.ends ? " " : "›");
    const std::string drawn = ink.onColor(entry.color, text);
    return entry.cancelled ? ink.struck(drawn) : drawn;
  }
  std::string text = clipped(gridTitle(entry, entry.title, ink), inner);
  for (std::size_t taken = displayWidth(text); taken < inner; ++taken) { text += "─"; }
  return (piece.begins ? "[" : "<") + text + (piece.ends ? "]" : ">");
}

std::string cell(std::string_view text, std::size_t width) { return padded(clipped(text, width), width); }

std::string withoutBlanksAtEnd(std::string line) {
  line.erase(line.find_last_not_of(' ') + 1);
  return line;
}

}  // namespace orlocal::host
