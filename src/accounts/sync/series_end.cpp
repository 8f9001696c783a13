#include "accounts/sync/series_end.h"

#include <algorithm>
#include <map>
#include <vector>

#include "accounts/sync/field_lines.h"
#include "store/time/zone.h"

namespace orlocal::accounts {
namespace {

using store::CalendarTime;
using store::Moment;

/// Whole days and floating times are compared with their like alone, so that no zone comes into it.
bool hasZone(const CalendarTime& time) {
  return time.kind == CalendarTime::Kind::kUtc || time.kind == CalendarTime::Kind::kZoned;
}
Moment momentIn(const CalendarTime& time) { return store::momentOf(time, store::Zone()); }

store::RecurrenceRule withoutEnd(store::RecurrenceRule rule) {
  rule.count.reset();
  rule.until.reset();
  return rule;
}

/// Those that are in one of two lists alone.
std::vector<CalendarTime> inOneAlone(const std::vector<CalendarTime>& one, const std::vector<CalendarTime>& other) {
  std::vector<CalendarTime> alone;
  for (const auto& [list, against] : {std::pair(&one, &other), std::pair(&other, &one)}) {
    for (const CalendarTime& time : *list) {
      if (std::find(against->begin(), against->end(), time) == against->end()) { alone.push_back(time); }
    }
  }
  return alone;
}

using Changed = std::map<Moment, const store::Item*>;

Changed changedOf(const store::WholeItem& whole) {
  Changed changed;
  for (const store::Item& item : whole.changed) {
    if (item.recurrenceId) { changed.emplace(momentIn(*item.recurrenceId), &item); }
  }
  return changed;
}

bool isSame(const store::Item& one, const store::Item& other) { return saysTheSame({one, {}}, {other, {}}); }

}  // namespace

std::optional<Moment> endedSooner(const store::WholeItem& base, const store::WholeItem& later) {
  const store::Item& before = base.main;
  const store::Item& after = later.main;
  const auto& old = before.recurrence;
  const auto& now = after.recurrence;
  const bool sameTimes = before.start == after.start && before.end == after.end && before.due == after.due;
  if (!sameTimes || !before.anchor() || old.rules.size() != 1 || now.rules.size() != 1 ||
      old.exceptionRules != now.exceptionRules) {
    return std::nullopt;
  }
  const auto& until = now.rules.front().until;
  if (!until || hasZone(*until) != hasZone(*before.anchor()) ||
      withoutEnd(old.rules.front()) != withoutEnd(now.rules.front())) {
    return std::nullopt;
  }
  const Moment end = momentIn(*until);
  const auto& oldUntil = old.rules.front().until;
  if (oldUntil && (hasZone(*oldUntil) != hasZone(*until) || momentIn(*oldUntil) < end)) { return std::nullopt; }
  // Of the added dates those behind the end went along, and no other.
  std::vector<CalendarTime> kept;
  for (const CalendarTime& time : old.added) {
    if (hasZone(time) != hasZone(*until)) { return std::nullopt; }
    if (momentIn(time) <= end) { kept.push_back(time); }
  }
  return inOneAlone(kept, now.added).empty() ? std::optional(end) : std::nullopt;
}

bool differOnlyUpTo(Moment end, const store::WholeItem& base, const store::WholeItem& later) {
  const auto isBefore = [&](const CalendarTime& original) {
    return base.main.anchor() && hasZone(original) == hasZone(*base.main.anchor()) && momentIn(original) <= end;
  };
  const auto exceptions = inOneAlone(base.main.recurrence.excluded, later.main.recurrence.excluded);
  if (!std::all_of(exceptions.begin(), exceptions.end(), isBefore)) { return false; }
  const Changed one = changedOf(base), other = changedOf(later);
  for (const auto& [side, against] : {std::pair(&one, &other), std::pair(&other, &one)}) {
    for (const auto& [moment, item] : *side) {
      const auto same = against->find(moment);
      if ((same == against->end() || !isSame(*item, *same->second)) && !isBefore(*item->recurrenceId)) { return false; }
    }
  }
  return true;
}

}  // namespace orlocal::accounts
