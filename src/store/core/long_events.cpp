#include "store/core/long_events.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/try.h"

namespace orlocal::store {
namespace {

/// Kept at most, some 150 bytes each; where a range adds more to them they begin anew.
constexpr std::size_t kMostKept = 1'000'000;
/// Events that may change between two answers before all is read again.
constexpr std::size_t kMostChanged = 4'096;
/// Wheels are for occurrences up to these lengths: each at most twice the one before, so that a range looks back
/// little.
constexpr std::int64_t kMinute = 60, kHour = 3'600;
constexpr std::int64_t kWheelLengths[] = {30 * kMinute, kHour,      2 * kHour,  4 * kHour, 8 * kHour,
                                          16 * kHour,   24 * kHour, 48 * kHour, 72 * kHour};

}  // namespace

Result<bool> LongEvents::cover(const TimelineRange& range) {
  if (m_changed.size() > kMostChanged || m_useless > m_places.size() + kMostChanged) { forgetAll(); }
  ORLOCAL_TRY(const bool changedOnes, placeChanged());
  if (!changedOnes) { return false; }
  std::vector<TimelineEntry> found;
  const auto stretches = Timeline::longStretches(range);
  for (const Timeline::Stretch& stretch : stretches) {
    for (const auto& part : m_read[stretch.shelf].missing({stretch.from, stretch.to})) {
      ORLOCAL_CHECK(m_timeline.visitStretch({stretch.shelf, part.from, part.to}, [&](const TimelineEntry& entry) {
        if (!m_places.contains(entry.item)) { found.push_back(entry); }
        return Status();
      }));
    }
  }
  // In the order of the rows, so that neighbours in the file are read together. On the shelves of its months an entry
  // is met several times.
  std::sort(found.begin(), found.end(), [](const TimelineEntry& a, const TimelineEntry& b) { return a.item < b.item; });
  found.erase(std::unique(found.begin(), found.end(),
                          [](const TimelineEntry& a, const TimelineEntry& b) { return a.item == b.item; }),
              found.end());
  if (m_places.size() + found.size() > kMostKept && !m_places.empty()) {
    forgetAll();
    return cover(range);
  }
  for (const TimelineEntry& entry : found) {
    ORLOCAL_TRY(const bool placed, place(entry));
    if (!placed) { return false; }
  }
  for (const Timeline::Stretch& stretch : stretches) { m_read[stretch.shelf].add({stretch.from, stretch.to}); }
  return true;
}

Result<bool> LongEvents::placeChanged() {
  std::sort(m_changed.begin(), m_changed.end());
  m_changed.erase(std::unique(m_changed.begin(), m_changed.end()), m_changed.end());
  while (!m_changed.empty()) {
    const ItemId item = m_changed.back();
    bool placed = true;
    ORLOCAL_TRY(const auto row, m_rows.place(item));
    if (row && Timeline::isLong(row->shelf)) {
      ORLOCAL_TRY(const auto entry, m_timeline.entryAt(item, row->shelf, row->shelfStart));
      if (entry) { ORLOCAL_TRY(placed, place(*entry)); }
    }
    m_changed.pop_back();
    if (!placed) { return false; }
  }
  return true;
}

Result<bool> LongEvents::place(const TimelineEntry& entry) {
  const auto isOther = [&] { return addOther(entry), true; };
  if (!entry.repeats) { return isOther(); }
  auto series = m_series.compiled(entry.item);
  if (!series) {
    const ErrorCode code = series.error().code;
    if (code == ErrorCode::kCorrupt || code == ErrorCode::kIo) { return failure(series.error()); }
    return !isOther();
  }
  if (!*series) { return isOther(); }
  const auto plain = (*series)->plain();
  const auto* const longest = plain
                                  ? std::lower_bound(std::begin(kWheelLengths), std::end(kWheelLengths), plain->length)
                                  : std::end(kWheelLengths);
  if (longest != std::end(kWheelLengths)) { return addPlain(entry, *plain, *longest), true; }
  m_series.keep(entry.item, std::move(**series));
  return isOther();
}

void LongEvents::addOther(const TimelineEntry& entry) {
  m_places[entry.item] = {static_cast<std::uint32_t>(m_others.size()), false};
  m_others.push_back(entry);
}

void LongEvents::addPlain(const TimelineEntry& entry, const PlainSeries& series, std::int64_t longest) {
  Wheel& wheel = m_wheels.try_emplace({series.zone, series.allDay, longest}, series.zone).first->second;
  Place& place = m_places[entry.item] = {static_cast<std::uint32_t>(m_gone.size()), true, 0};
  const auto add = [&](const DayPattern& days, DayNumber first, DayNumber last, LocalSeconds timeOfDay,
                       const std::vector<DayNumber>& excluded) {
    DayWheel::Entry added;
    added.firstDay = static_cast<std::int32_t>(first);
    added.lastDay = static_cast<std::int32_t>(last);
    added.timeOfDay = static_cast<std::int32_t>(timeOfDay);
    added.length = static_cast<std::int32_t>(series.length);
    added.item = entry.item;
    added.calendar = entry.calendar;
    added.number = place.number + place.count++;
    added.exclusions = addExclusions(excluded);
    wheel.days.add(days, added);
    m_gone.push_back(false);
  };
  if (series.start) {
    const DayNumber day = dayOf(*series.start);
    add(DayPattern::onDateOf(day), day, day, *series.start - day * kSecondsPerDay, {});
  }
  add(series.days, series.firstDay, series.lastDay, series.timeOfDay, series.excluded);
}

std::uint32_t LongEvents::addExclusions(const std::vector<DayNumber>& days) {
  if (days.empty()) { return 0; }
  const auto place = static_cast<std::uint32_t>(m_exclusions.size());
  m_exclusions.push_back(static_cast<std::int32_t>(days.size()));
  for (const DayNumber day : days) { m_exclusions.push_back(static_cast<std::int32_t>(day)); }
  return place;
}

bool LongEvents::isExcluded(std::uint32_t exclusions, LocalSeconds local) const {
  const auto first = m_exclusions.begin() + exclusions + 1;
  return std::binary_search(first, first + m_exclusions[exclusions], dayOf(local));
}

Status LongEvents::visitOthers(const TimelineRange& range, const Timeline::Visitor& visit) const {
  for (const TimelineEntry& entry : m_others) {
    const auto [from, to] = entry.wall ? std::pair(range.wallFrom, range.wallTo) : std::pair(range.from, range.to);
    if (entry.item != 0 && entry.start < to && entry.end >= from) { ORLOCAL_CHECK(visit(entry)); }
  }
  return {};
}

void LongEvents::forget(ItemId item) {
  if (m_read.empty()) { return; }
  remove(item);
  if (m_changed.size() <= kMostChanged) { m_changed.push_back(item); }
}

void LongEvents::remove(ItemId item) {
  const auto found = m_places.find(item);
  if (found == m_places.end()) { return; }
  const Place place = found->second;
  m_places.erase(found);
  m_useless += place.count;
  if (!place.plain) {
    m_others[place.number].item = 0;
    return;
  }
  for (std::uint32_t number = place.number; number < place.number + place.count; ++number) { m_gone[number] = true; }
}

void LongEvents::forgetAll() {
  m_read.clear();
  m_wheels.clear();
  m_gone.clear();
  m_exclusions = {0};
  m_others.clear();
  m_places.clear();
  m_changed.clear();
  m_useless = 0;
}

}  // namespace orlocal::store
