#include "store/alarm_timetable.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <tuple>
#include <utility>

#include "base/try.h"

namespace orlocal::store {
namespace {

using std::chrono::seconds;

/// So far ahead rings are kept.
constexpr std::chrono::hours kAhead{24};
/// Of so many changed items at once each is looked at; of more, all are.
constexpr std::size_t kMostChanged = 1'000;
constexpr std::size_t kReadTogether = 200;
/// An absolute alarm of a series is about an occurrence so soon after it.
constexpr std::chrono::days kSoonAfter{35};

bool earlier(const AlarmRing& a, const AlarmRing& b) {
  return std::tie(a.key.moment, a.key) < std::tie(b.key.moment, b.key);
}

std::optional<Moment> momentOf(const std::optional<CalendarTime>& time, const Zone& viewer) {
  return time ? std::optional(momentOf(*time, viewer)) : std::nullopt;
}

/// Of an item that stands for itself.
AlarmAnchors anchorsOf(const Item& item, const Zone& viewer) {
  const auto start = momentOf(item.start, viewer);
  auto end = momentOf(item.endOrDue(), viewer);
  if (item.kind == ItemKind::kEvent && start) { end = std::max(end.value_or(*start), *start); }
  return {start, end};
}

std::vector<AlarmMoment> allMoments(const Item& item, const AlarmAnchors& anchors, const AlarmRange& range = {}) {
  auto moments = alarmMoments(item, AlarmTriggers::kRelative, anchors, range);
  for (const AlarmMoment& each : alarmMoments(item, AlarmTriggers::kAbsolute, anchors, range)) {
    moments.push_back(each);
  }
  return moments;
}

AlarmRing ringAt(const AlarmMoment& moment, const Item& row, ItemId main, const AlarmAnchors& anchors,
                 Moment original) {
  return {{main, original, moment.moment}, row.id, moment.alarm, anchors.start, anchors.end};
}

AlarmRing ringAt(const AlarmMoment& moment, ItemId main, const Occurrence& occurrence) {
  return {
      {main, occurrence.originalStart, moment.moment}, occurrence.item, moment.alarm, occurrence.start, occurrence.end};
}

/// Tells apart those that ring at one moment.
void number(std::vector<AlarmRing>& rings) {
  std::stable_sort(rings.begin(), rings.end(), earlier);
  for (std::size_t i = 1; i < rings.size(); ++i) {
    const AlarmKey& before = rings[i - 1].key;
    AlarmKey& key = rings[i].key;
    if (key.original == before.original && key.moment == before.moment) { key.number = before.number + 1; }
  }
}

}  // namespace

Result<std::vector<AlarmRing>> AlarmTimetable::between(Moment from, Moment to) {
  ORLOCAL_CHECK(follow());
  if (from < m_loaded.from || to > m_loaded.to) { ORLOCAL_CHECK(load(from, std::max(to, from + kAhead))); }
  std::vector<AlarmRing> found;
  std::copy_if(m_rings.begin(), m_rings.end(), std::back_inserter(found),
               [&](const AlarmRing& ring) { return ring.key.moment >= from && ring.key.moment < to; });
  return found;
}

Result<Moment> AlarmTimetable::nextFrom(Moment moment) {
  ORLOCAL_CHECK(follow());
  if (moment < m_loaded.from || moment + kAhead / 2 > m_loaded.to) { ORLOCAL_CHECK(load(moment, moment + kAhead)); }
  const auto next =
      std::find_if(m_rings.begin(), m_rings.end(), [&](const AlarmRing& ring) { return ring.key.moment >= moment; });
  return next != m_rings.end() ? next->key.moment : moment + kAhead / 4;
}

Result<std::optional<AlarmRing>> AlarmTimetable::ringOf(const AlarmKey& key) {
  ORLOCAL_CHECK(follow());
  if (!m_known.contains(key.item)) { return std::nullopt; }
  ORLOCAL_TRY(const auto rings, ringsOf(key.item, {key.moment, key.moment + std::chrono::microseconds(1)}));
  const auto found = std::find_if(rings.begin(), rings.end(), [&](const AlarmRing& ring) { return ring.key == key; });
  return found != rings.end() ? std::optional(*found) : std::nullopt;
}

Status AlarmTimetable::follow() {
  const std::uint64_t generation = m_store.generation();
  if (m_position && m_generation == generation) { return {}; }
  ORLOCAL_TRY(const LogPosition newest, m_store.newestChange());
  if (!m_position || m_position->file != newest.file) {
    ORLOCAL_CHECK(readAll());
    m_position = newest;
  } else {
    ORLOCAL_TRY(const TouchedItems touched, m_store.touchedSince(m_position->row));
    if (!touched.complete || touched.items.size() > kMostChanged) {
      ORLOCAL_CHECK(readAll());
    } else {
      for (const ItemId item : touched.items) { ORLOCAL_CHECK(readAgain(item)); }
    }
    // Anew, as reading all forgets it.
    m_position = LogPosition{.row = touched.upTo, .file = newest.file};
  }
  m_generation = generation;
  return {};
}

Status AlarmTimetable::readAll() {
  // Whoever comes after a failure begins anew.
  m_position.reset();
  m_known.clear();
  m_rings.clear();
  m_troubles.clear();
  m_loaded = {Moment(), Moment()};
  ORLOCAL_TRY(const auto rows, m_store.itemsWithAlarms());
  for (std::size_t at = 0; at < rows.size(); at += kReadTogether) {
    const auto some = std::span(rows).subspan(at, std::min(kReadTogether, rows.size() - at));
    m_store.prefetch(some);
    for (const ItemId id : some) {
      ORLOCAL_TRY(const auto row, m_store.item(id));
      if (row != nullptr) { ORLOCAL_CHECK(learn(*row)); }
    }
  }
  return {};
}

Status AlarmTimetable::readAgain(ItemId main) {
  forget(main);
  ORLOCAL_TRY(const auto whole, m_store.wholeItem(main));
  if (!whole) { return {}; }
  ORLOCAL_CHECK(learn(whole->main));
  for (const Item& changed : whole->changed) { ORLOCAL_CHECK(learn(changed)); }
  ORLOCAL_CHECK(addRings(main));
  std::sort(m_rings.begin(), m_rings.end(), earlier);
  return {};
}

Status AlarmTimetable::learn(const Item& row) {
  if (row.alarms.empty()) { return {}; }
  const ItemId main = row.series.value_or(row.id);
  const bool inParts = row.series || (row.kind == ItemKind::kEvent && !row.recurrence.empty());
  if (inParts) {
    Known& known = m_known[main];
    known.inParts = true;
    known.reach.widen(reachOf(row));
    return {};
  }
  if (!canRing(row)) { return {}; }
  const auto moments = allMoments(row, anchorsOf(row, m_viewer));
  if (moments.empty()) { return {}; }
  const auto [first, last] = std::minmax_element(moments.begin(), moments.end());
  Known& known = m_known[main];
  known.first = first->moment;
  known.last = last->moment;
  return {};
}

void AlarmTimetable::forget(ItemId main) {
  m_known.erase(main);
  m_troubles.erase(main);
  std::erase_if(m_rings, [&](const AlarmRing& ring) { return ring.key.item == main; });
}

Status AlarmTimetable::load(Moment from, Moment to) {
  m_loaded = {from, to};
  m_rings.clear();
  for (const auto& [main, known] : m_known) {
    if (known.inParts || (known.first < to && known.last >= from)) { ORLOCAL_CHECK(addRings(main)); }
  }
  std::sort(m_rings.begin(), m_rings.end(), earlier);
  return {};
}

Status AlarmTimetable::addRings(ItemId main) {
  auto rings = ringsOf(main, m_loaded);
  if (rings) {
    m_rings.insert(m_rings.end(), rings->begin(), rings->end());
    return {};
  }
  const ErrorCode code = rings.error().code;
  if (code == ErrorCode::kBusy || code == ErrorCode::kIo || code == ErrorCode::kNotPermitted) {
    return failure(std::move(rings.error()));
  }
  // One item that cannot be followed silences no other.
  m_troubles.emplace(main, rings.error().message);
  return {};
}

Result<std::vector<AlarmRing>> AlarmTimetable::ringsOf(ItemId main, const AlarmRange& range) {
  const auto known = m_known.find(main);
  ORLOCAL_TRY(const auto item, m_store.item(main));
  std::vector<AlarmRing> rings;
  if (known == m_known.end() || item == nullptr) { return rings; }
  if (known->second.inParts) {
    ORLOCAL_TRY(rings, ringsInParts(*item, range));
  } else if (canRing(*item)) {
    const AlarmAnchors anchors = anchorsOf(*item, m_viewer);
    const Moment original = item->kind == ItemKind::kEvent ? anchors.start.value_or(Moment()) : Moment();
    for (const AlarmMoment& each : allMoments(*item, anchors, range)) {
      rings.push_back(ringAt(each, *item, main, anchors, original));
    }
  }
  number(rings);
  return rings;
}

Result<std::vector<AlarmRing>> AlarmTimetable::ringsInParts(const Item& main, const AlarmRange& range) {
  const AlarmReach reach = m_known.at(main.id).reach;
  const auto occurrencesIn = [&](Moment from, Moment to) {
    return m_store.occurrences({from, to, {main.calendar}, main.id});
  };
  std::vector<AlarmRing> rings;
  // What ends at the edge counts, too.
  ORLOCAL_TRY(const auto occurrences,
              occurrencesIn(range.from - reach.after - seconds(1), range.to + reach.before + seconds(1)));
  for (const Occurrence& occurrence : occurrences) {
    ORLOCAL_TRY(const auto row, m_store.item(occurrence.item));
    if (row == nullptr || row->alarms.empty() || !canRing(*row)) { continue; }
    const AlarmAnchors anchors{occurrence.start, occurrence.end};
    for (const AlarmMoment& each : alarmMoments(*row, AlarmTriggers::kRelative, anchors, range)) {
      rings.push_back(ringAt(each, main.id, occurrence));
    }
  }
  ORLOCAL_TRY(const auto whole, m_store.wholeItem(main.id));
  if (!whole) { return rings; }
  std::vector<const Item*> rows{&whole->main};
  for (const Item& changed : whole->changed) { rows.push_back(&changed); }
  for (const Item* row : rows) {
    if (!canRing(*row)) { continue; }
    for (const AlarmMoment& each : alarmMoments(*row, AlarmTriggers::kAbsolute, {}, range)) {
      // It is about the next occurrence of its row, if that is soon, or else about the first one.
      ORLOCAL_TRY(const auto soon, occurrencesIn(each.moment, each.moment + kSoonAfter));
      ORLOCAL_TRY(auto about, m_store.firstOccurrence(whole->main));
      for (const Occurrence& occurrence : soon) {
        if (occurrence.item != row->id) { continue; }
        about = occurrence;
        break;
      }
      if (!about) { continue; }
      AlarmRing ring = ringAt(each, main.id, *about);
      ring.row = row->id;
      rings.push_back(ring);
    }
  }
  return rings;
}

}  // namespace orlocal::store
