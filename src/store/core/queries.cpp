#include "store/core/queries.h"

#include <algorithm>
#include <tuple>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "store/rows/packing.h"
#include "store/time/civil_days.h"

namespace orlocal::store {
namespace {

using std::chrono::seconds;

// Years 1 to 9999 with room for every zone: nothing happens outside, and inside nothing overflows.
constexpr Moment kEarliest{seconds(-62'135'596'800 - 2 * 86'400)};
constexpr Moment kLatest{seconds(253'402'300'800 + 2 * 86'400)};
constexpr auto kOpenEnded = std::chrono::days(4 * 365 + 1);

std::int64_t floorSeconds(Moment moment) { return std::chrono::floor<seconds>(moment).time_since_epoch().count(); }
std::int64_t ceilSeconds(Moment moment) { return std::chrono::ceil<seconds>(moment).time_since_epoch().count(); }

/// A moment that the timeline holds as seconds, in UTC or on the viewer's wall clock.
Moment momentAt(std::int64_t value, bool wall, const Zone& viewer) {
  return wall ? viewer.toMoment(localTime(value)) : Moment(seconds(value));
}

struct Range {
  Moment from = kEarliest, to = kLatest;

  bool overlaps(Moment start, Moment end) const { return start < to && (end > from || start >= from); }
  TimelineRange onTimeline(const Zone& viewer) const {
    return {floorSeconds(from), ceilSeconds(to), earliestLocal(viewer, from), latestLocal(viewer, to)};
  }
};

Range rangeOf(const std::optional<Moment>& from, const std::optional<Moment>& to) {
  return {std::clamp(from.value_or(kEarliest), kEarliest, kLatest),
          std::clamp(to.value_or(kLatest), kEarliest, kLatest)};
}

/// Which calendars are asked about.
class CalendarFilter {
 public:
  explicit CalendarFilter(std::vector<CalendarId> ids) : m_ids(std::move(ids)) {
    std::sort(m_ids.begin(), m_ids.end());
  }

  bool takes(CalendarId id) const {
    return m_ids.size() == 1 ? m_ids.front() == id : std::binary_search(m_ids.begin(), m_ids.end(), id);
  }

 private:
  std::vector<CalendarId> m_ids;
};

struct RepeatingEntry {
  ItemId item;
  bool endless;
};

/// Gathers the occurrences of one query.
class Gathering {
 public:
  Gathering(StoreCore& core, const EventQuery& query)
      : m_core(core),
        m_calendars(query.calendars),
        m_range(rangeOf(query.from, query.to)),
        m_endlessTo(query.to ? m_range.to
                             : std::clamp(std::max(now(), m_range.from) + kOpenEnded, kEarliest, kLatest)) {}

  Result<OccurrenceList> run() {
    const auto takeEntry = [&](const TimelineEntry& entry) { return take(entry); };
    const TimelineRange range = m_range.onTimeline(m_core.options.viewer);
    if (m_core.options.keepsLongEvents && m_range.to - m_range.from <= LongEvents::kLongestRange) {
      ORLOCAL_TRY(const bool covered, m_core.longEvents.cover(range));
      if (covered && takePlain()) {
        ORLOCAL_CHECK(m_core.timeline.visitShortEvents(range, takeEntry));
        ORLOCAL_CHECK(m_core.longEvents.visitOthers(range, takeEntry));
        return finished();
      }
      // A series cannot be followed, or the answer is too large: asked one by one they tell which of them it is.
      m_found.clear();
    }
    ORLOCAL_CHECK(m_core.timeline.visitEvents(range, takeEntry));
    return finished();
  }

  /// Of one event alone.
  Result<OccurrenceList> runFor(ItemId id, Queries& queries) {
    ORLOCAL_TRY(const auto event, m_core.rows.read(id));
    if (event == nullptr || event->kind != ItemKind::kEvent || event->series) { return finished(); }
    if (!m_calendars.takes(event->calendar)) { return finished(); }
    ORLOCAL_TRY(const auto changed, m_core.rows.changedOf(id));
    if (event->recurrence.empty() && changed.empty()) {
      ORLOCAL_TRY(const Occurrence only, queries.onlyOccurrence(*event));
      ORLOCAL_CHECK(addIfWithin(only));
      return finished();
    }
    ORLOCAL_TRY(const Series* series, m_core.series.of(id));
    if (series != nullptr) { m_series.push_back({id, !series->bounds().end}); }
    for (const ItemRows::Changed& row : changed) {
      ORLOCAL_TRY(const auto occurrence, m_core.rows.read(row.id));
      if (occurrence == nullptr) { continue; }
      ORLOCAL_TRY(const Occurrence only, queries.onlyOccurrence(*occurrence));
      ORLOCAL_CHECK(addIfWithin(only));
    }
    return finished();
  }

 private:
  Result<OccurrenceList> finished() {
    // In the order of the rows, so that neighbours in the file are read together.
    std::sort(m_series.begin(), m_series.end(),
              [](const RepeatingEntry& a, const RepeatingEntry& b) { return a.item < b.item; });
    for (const RepeatingEntry& entry : m_series) { ORLOCAL_CHECK(expand(entry)); }
    m_found.sort();
    return std::move(m_found);
  }

  /// False when there are too many.
  bool takePlain() {
    const std::size_t most = m_core.options.occurrenceBudget;
    bool fits = true;
    m_core.longEvents.visitPlain(m_range.from, m_range.to, [&](CalendarId calendar, const Occurrence& occurrence) {
      if (!fits || !m_calendars.takes(calendar)) { return; }
      fits = m_found.size() < most;
      if (fits) { m_found.add(occurrence); }
    });
    return fits;
  }

  Status take(const TimelineEntry& entry) {
    if (!m_calendars.takes(entry.calendar)) { return {}; }
    if (entry.repeats) {
      m_series.push_back({entry.item, entry.end == TimelineEntry::kEndless});
      return {};
    }
    Occurrence occurrence;
    occurrence.start = entry.wall ? m_starts.toMoment(entry.start) : Moment(seconds(entry.start));
    const Moment end = entry.wall ? m_ends.toMoment(entry.end) : Moment(seconds(entry.end));
    occurrence.end = std::max(occurrence.start, end);
    if (!m_range.overlaps(occurrence.start, occurrence.end)) { return {}; }
    occurrence.originalStart =
        entry.original ? momentAt(*entry.original, entry.originalIsWall, m_core.options.viewer) : occurrence.start;
    occurrence.item = entry.item;
    occurrence.event = entry.series.value_or(entry.item);
    return add(occurrence);
  }

  Status addIfWithin(const Occurrence& occurrence) {
    return m_range.overlaps(occurrence.start, occurrence.end) ? add(occurrence) : Status();
  }

  Status expand(const RepeatingEntry& entry) {
    const std::uint64_t steps = m_budget.left();
    const std::size_t before = m_found.size();
    Status added;
    const Status followed = [&]() -> Status {
      ORLOCAL_TRY(const Series* series, m_core.series.of(entry.item));
      if (series == nullptr) { return {}; }
      return series->expand(m_range.from, entry.endless ? m_endlessTo : m_range.to, m_budget,
                            [&](const Series::Instance& instance) {
                              added = add({instance.start, instance.end, instance.start, entry.item, entry.item});
                              return added.has_value();
                            });
    }();
    if (!followed && followed.error().code == ErrorCode::kBudget) {
      // The last one of many is not the one to blame.
      if (steps > ExpansionBudget().left() / 2) {
        return blamed(entry.item, tr("repeats in a way that takes too long to follow"));
      }
      return failure(ErrorCode::kBudget, tr("The series in the range take too long to follow; ask for a shorter one."));
    }
    if (!followed && followed.error().code != ErrorCode::kCorrupt && followed.error().code != ErrorCode::kIo) {
      return blamed(entry.item, tr("cannot be followed ({})", followed.error().message));
    }
    if (!added && before < m_found.size() / 2) {
      return blamed(entry.item, tr("has most of the more than {} occurrences in the range", m_found.size()));
    }
    return followed ? added : followed;
  }

  /// Says which event it is and how to get rid of it.
  Status blamed(ItemId id, std::string_view what) {
    ORLOCAL_TRY(const auto item, m_core.rows.read(id));
    if (item == nullptr) { return failure(ErrorCode::kBudget, tr("The range cannot be followed; ask again.")); }
    ORLOCAL_TRY(const auto calendar, m_core.calendars.withId(item->calendar));
    const LocalDay day(item->start ? item->start->local : LocalTime());
    return failure(ErrorCode::kBudget,
                   tr("The event \"{}\" of {:04}-{:02}-{:02} in the calendar \"{}\" (UID {}) {}; remove it with "
                      "Orlo_RemoveItem( \"event\" ; \"{}\" ; \"\" ; \"all\" ), or ask for a shorter range or "
                      "without its calendar.",
                      item->title.value_or(""), day.year(), day.month(), day.day(), calendar ? calendar->title : "",
                      item->uid, what, item->identifier));
  }

  Status add(const Occurrence& occurrence) {
    if (m_found.size() >= m_core.options.occurrenceBudget) {
      return failure(ErrorCode::kBudget, tr("The range holds more than {} occurrences; ask for a shorter one.",
                                            m_core.options.occurrenceBudget));
    }
    m_found.add(occurrence);
    return {};
  }

  StoreCore& m_core;
  CalendarFilter m_calendars;
  Range m_range;
  SteadyClock m_starts{m_core.options.viewer}, m_ends{m_core.options.viewer};
  Moment m_endlessTo;
  ExpansionBudget m_budget;
  std::vector<RepeatingEntry> m_series;
  OccurrenceList m_found;
};

}  // namespace

Result<OccurrenceList> Queries::occurrences(const EventQuery& query) {
  ORLOCAL_TRY(const Transaction snapshot, m_core.beginReading());
  Gathering gathering(m_core, query);
  return query.event ? gathering.runFor(*query.event, *this) : gathering.run();
}

Result<std::vector<ItemId>> Queries::reminders(const ReminderQuery& query) {
  ORLOCAL_TRY(const Transaction snapshot, m_core.beginReading());
  const Zone& viewer = m_core.options.viewer;
  const CalendarFilter calendars(query.calendars);
  const Range range = rangeOf(query.from, query.to);
  const bool bounded = query.from || query.to;
  struct Found {
    Moment due;
    ItemId item;
  };
  std::vector<Found> found;
  if (query.status != ReminderQuery::Status::kCompleted) {
    ORLOCAL_CHECK(m_core.timeline.visitOpenReminders(
        range.onTimeline(viewer), !bounded, [&](const TimelineEntry& entry) -> Status {
          if (!calendars.takes(entry.calendar)) { return {}; }
          const Moment due = entry.hasDue ? momentAt(entry.start, entry.wall, viewer) : Moment::max();
          if (!entry.hasDue || (due >= range.from && due < range.to)) { found.push_back({due, entry.item}); }
          return {};
        }));
  }
  if (query.status != ReminderQuery::Status::kOpen) {
    ORLOCAL_CHECK(
        m_core.timeline.visitCompletedReminders(range.onTimeline(viewer), [&](const TimelineEntry& entry) -> Status {
          const Moment completed{seconds(entry.start)};
          if (!calendars.takes(entry.calendar)) { return {}; }
          if (completed < range.from || completed >= range.to) { return {}; }
          found.push_back({entry.hasDue ? momentAt(entry.end, entry.dueIsWall, viewer) : Moment::max(), entry.item});
          return {};
        }));
  }
  std::sort(found.begin(), found.end(),
            [](const Found& a, const Found& b) { return std::tie(a.due, a.item) < std::tie(b.due, b.item); });
  std::vector<ItemId> ids;
  ids.reserve(found.size());
  for (const Found& reminder : found) { ids.push_back(reminder.item); }
  return ids;
}

Result<Occurrence> Queries::onlyOccurrence(const Item& event) {
  const Zone& viewer = m_core.options.viewer;
  if (!event.start) { return failure(ErrorCode::kInvalid, tr("An event without a start has no occurrence.")); }
  Occurrence occurrence;
  occurrence.start = occurrence.originalStart = momentOf(*event.start, viewer);
  occurrence.end = event.end ? std::max(occurrence.start, momentOf(*event.end, viewer)) : occurrence.start;
  occurrence.item = event.id;
  occurrence.event = event.series.value_or(event.id);
  if (!event.recurrenceId) { return occurrence; }
  ORLOCAL_TRY(const auto place, m_core.rows.place(event.id));
  bool wall = Timeline::isWall(*event.recurrenceId);
  if (event.series) {
    ORLOCAL_TRY(const Series* series, m_core.series.of(*event.series));
    if (series != nullptr) { wall = series->followsViewer(); }
  }
  if (place && place->original) { occurrence.originalStart = momentAt(*place->original, wall, viewer); }
  return occurrence;
}

Result<std::optional<Occurrence>> Queries::firstOccurrence(const Item& event) {
  ORLOCAL_TRY(const Transaction snapshot, m_core.beginReading());
  ORLOCAL_TRY(const auto changed, m_core.rows.changedOf(event.id));
  if (event.recurrence.empty() && changed.empty()) {
    ORLOCAL_TRY(const Occurrence only, onlyOccurrence(event));
    return only;
  }
  ORLOCAL_TRY(const Series* series, m_core.series.of(event.id));
  if (series == nullptr) { return std::nullopt; }
  ExpansionBudget budget;
  ORLOCAL_TRY(const auto first, series->first(budget));
  std::optional<Occurrence> found;
  if (first) { found = Occurrence{first->start, first->end, first->start, event.id, event.id}; }
  if (changed.empty()) { return found; }
  const Moment original = momentAt(changed.front().original, series->followsViewer(), m_core.options.viewer);
  if (found && found->originalStart < original) { return found; }
  ORLOCAL_TRY(const auto row, m_core.rows.read(changed.front().id));
  if (row == nullptr) { return found; }
  ORLOCAL_TRY(const Occurrence only, onlyOccurrence(*row));
  return only;
}

Result<std::optional<Occurrence>> Queries::occurrenceAt(const Item& event, Moment originalStart) {
  ORLOCAL_TRY(const Transaction snapshot, m_core.beginReading());
  ORLOCAL_TRY(const auto row, m_core.rows.read(event.id));
  if (row == nullptr || row->kind != ItemKind::kEvent || row->series) { return std::nullopt; }
  ORLOCAL_TRY(const auto changed, m_core.rows.changedOf(row->id));
  if (row->recurrence.empty() && changed.empty()) {
    ORLOCAL_TRY(const Occurrence only, onlyOccurrence(*row));
    return only.originalStart == originalStart ? std::optional(only) : std::nullopt;
  }
  ORLOCAL_TRY(const Series* series, m_core.series.of(row->id));
  if (series == nullptr) { return std::nullopt; }
  for (const ItemRows::Changed& each : changed) {
    if (momentAt(each.original, series->followsViewer(), m_core.options.viewer) != originalStart) { continue; }
    ORLOCAL_TRY(const auto moved, m_core.rows.read(each.id));
    if (moved == nullptr) { continue; }
    ORLOCAL_TRY(const Occurrence found, onlyOccurrence(*moved));
    return found;
  }
  ExpansionBudget budget;
  ORLOCAL_TRY(const auto found, series->at(originalStart, budget));
  if (!found) { return std::nullopt; }
  return Occurrence{found->start, found->end, found->start, row->id, row->id};
}

}  // namespace orlocal::store
