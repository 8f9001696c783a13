#include "host/commands/views/item_lines.h"

#include <algorithm>
#include <chrono>

#include <fmt/format.h>

#include "base/translation.h"
#include "host/commands/words/day_words.h"
#include "host/commands/words/item_words.h"

namespace orlocal::host {
namespace {

using store::CalendarTime;
using store::LocalDay;
using store::LocalTime;

}  // namespace

std::string marksOf(const store::Item& item) {
  std::string marks;
  if (!item.recurrence.empty() || item.series) { marks += "↻"; }
  if (!item.alarms.empty()) { marks += "♪"; }
  if (item.notes && !item.notes->empty()) { marks += "✎"; }
  return marks.empty() ? marks : " " + marks;
}

std::string shownTitle(const store::Item& item, const Ink& ink) {
  const std::string title = printable(item.title.value_or(tr("(no title)")));
  if (isCancelled(item)) { return ink.on() ? ink.struck(title) : title + tr(" (cancelled)"); }
  return isTentative(item) ? title + tr(" (tentative)") : title;
}

std::string spanWords(store::Moment start, store::Moment end, bool allDay, const store::Zone& viewer) {
  const LocalTime from = viewer.toLocal(start), to = viewer.toLocal(end);
  if (allDay) {
    const LocalDay last(viewer.toLocal(std::max(start, end - std::chrono::microseconds(1))));
    return last == LocalDay(from) ? shortDay(last) : fmt::format("{} – {}", shortDay(LocalDay(from)), shortDay(last));
  }
  std::string begin = fmt::format("{} {}", shortDay(LocalDay(from)), clockTime(from));
  if (end <= start) { return begin; }
  if (LocalDay(from) == LocalDay(to)) { return fmt::format("{}–{}", begin, clockTime(to)); }
  if (to == LocalTime(LocalDay(from) + 1)) { return begin + "–24:00"; }
  return fmt::format("{} – {} {}", begin, shortDay(LocalDay(to)), clockTime(to));
}

std::string timeWords(const CalendarTime& time, const store::Zone& viewer) {
  if (time.kind == CalendarTime::Kind::kDate) { return shortDay(LocalDay(time.local)); }
  const LocalTime local = viewer.toLocal(store::momentOf(time, viewer));
  return fmt::format("{} {}", shortDay(LocalDay(local)), clockTime(local));
}

std::optional<LocalDay> firstDayOf(const store::Item& item, const store::Zone& viewer) {
  const auto& anchor = item.anchor();
  if (!anchor) { return std::nullopt; }
  return LocalDay(anchor->kind == CalendarTime::Kind::kUtc ? viewer.toLocal(store::momentOf(*anchor, viewer))
                                                           : anchor->local);
}

ReminderBlock blockOf(const store::Item& reminder, store::Moment now, const store::Zone& viewer) {
  if (reminder.completed) { return ReminderBlock::kDone; }
  if (!reminder.due) { return ReminderBlock::kUndated; }
  const bool over = reminder.due->kind == CalendarTime::Kind::kDate
                        ? LocalDay(reminder.due->local) < LocalDay(viewer.toLocal(now))
                        : store::momentOf(*reminder.due, viewer) < now;
  return over ? ReminderBlock::kOverdue : ReminderBlock::kToCome;
}

}  // namespace orlocal::host
