#include "host/commands/alarms/alarm_follow.h"

#include <algorithm>
#include <utility>

#include "base/try.h"
#include "store/time/clock.h"

namespace orlocal::host {
namespace {

using store::Moment;

/// What rings at a moment is due when the clock reads it.
constexpr std::chrono::microseconds kTick{1};
/// After a failure of the store, and while there is no room.
constexpr std::chrono::minutes kLater{1};

}  // namespace

Status AlarmFollower::begin() {
  const Moment now = store::now();
  ORLOCAL_TRY(const auto told, m_book.toldUpTo());
  m_toldUpTo = std::min(told.value_or(now), now);
  m_notedUpTo = told.value_or(Moment());
  if (!told) { return end(); }
  return {};
}

Status AlarmFollower::end() {
  if (m_notedUpTo == m_toldUpTo) { return {}; }
  ORLOCAL_CHECK(m_book.claim({}, store::now(), m_toldUpTo));
  m_notedUpTo = m_toldUpTo;
  return {};
}

Result<Moment> AlarmFollower::turn() {
  const Moment now = store::now();
  // The clock was set back: what rang after that is known by name and rings no second time.
  m_toldUpTo = std::min(m_toldUpTo, now);
  if (m_toldUpTo < now - kTellsLate) { ORLOCAL_CHECK(countMissed(now)); }
  ORLOCAL_TRY(auto due, dueUpTo(now));
  tellTroubles();
  const std::size_t room = m_teller.room();
  std::optional<Moment> waiting;
  if (due.size() > room) {
    waiting = due[room].news.rings;
    due.resize(room);
  }
  const Moment upTo = waiting ? std::clamp(*waiting - kTick, m_toldUpTo, now) : now;
  if (!due.empty()) { ORLOCAL_CHECK(claimAndTell(due, now, upTo)); }
  m_toldUpTo = upTo;
  if (waiting) { return now + kLater; }
  ORLOCAL_TRY(Moment next, m_timetable.nextFrom(now + kTick));
  for (const store::AlarmRecord& record : m_snoozed) {
    if (*record.snoozed > now) { next = std::min(next, *record.snoozed); }
  }
  return next;
}

Status AlarmFollower::follow(AlarmClock& clock) {
  ORLOCAL_CHECK(begin());
  std::string told;
  for (Woken woken = Woken::kByChange; woken != Woken::kByInterruption;) {
    auto next = turn();
    // What cannot be read now can be read later: a service goes on.
    const std::string trouble = next ? "" : next.error().message;
    if (!trouble.empty() && trouble != told) { m_teller.tellTrouble(trouble); }
    told = trouble;
    if (m_teller.isOver()) { break; }
    ORLOCAL_TRY(woken, clock.sleepUntil(next ? *next : store::now() + kLater));
  }
  return end();
}

Status AlarmFollower::readSnoozed() {
  const std::uint64_t generation = m_store.generation();
  if (generation == m_generation) { return {}; }
  ORLOCAL_TRY(m_snoozed, m_book.snoozed());
  ORLOCAL_TRY(auto names, CalendarNames::of(m_store));
  m_calendars = std::make_shared<const CalendarNames>(std::move(names));
  m_generation = generation;
  return {};
}

Result<std::vector<AlarmFollower::Due>> AlarmFollower::dueUpTo(Moment now) {
  ORLOCAL_CHECK(readSnoozed());
  std::vector<Due> due;
  ORLOCAL_TRY(const auto rings, ringsNotTold(std::max(m_toldUpTo, now - kTellsLate), now));
  for (const store::AlarmRing& ring : rings) {
    ORLOCAL_TRY(auto news, newsOf(m_store, ring, m_calendars));
    if (news) { due.push_back({*std::move(news)}); }
  }
  std::vector<store::AlarmKey> moot;
  for (const store::AlarmRecord& record : m_snoozed) {
    if (*record.snoozed > now) { continue; }
    ORLOCAL_TRY(auto news, putOffNews(record));
    if (news) {
      due.push_back({*std::move(news), true});
    } else {
      moot.push_back(record.key);
    }
  }
  if (!moot.empty()) { ORLOCAL_CHECK(m_book.acknowledge(moot, now)); }
  std::stable_sort(due.begin(), due.end(), [](const Due& a, const Due& b) { return a.news.rings < b.news.rings; });
  return due;
}

Result<std::vector<store::AlarmRing>> AlarmFollower::ringsNotTold(Moment after, Moment upTo) {
  ORLOCAL_TRY(auto rings, m_timetable.between(after + kTick, upTo + kTick));
  if (rings.empty()) { return rings; }
  std::vector<store::AlarmKey> keys;
  for (const store::AlarmRing& ring : rings) { keys.push_back(ring.key); }
  ORLOCAL_TRY(const auto unknown, m_book.unknown(keys));
  const std::set<store::AlarmKey> untold(unknown.begin(), unknown.end());
  std::erase_if(rings, [&](const store::AlarmRing& ring) { return !untold.contains(ring.key); });
  return rings;
}

Result<std::optional<AlarmNews>> AlarmFollower::putOffNews(const store::AlarmRecord& record) {
  ORLOCAL_TRY(const auto ring, m_timetable.ringOf(record.key));
  if (!ring) { return std::nullopt; }
  ORLOCAL_TRY(auto news, newsOf(m_store, *ring, m_calendars));
  if (news) {
    news->rings = *record.snoozed;
    news->rung = record.rung;
  }
  return news;
}

Status AlarmFollower::countMissed(Moment now) {
  const Moment from = std::max<Moment>(m_toldUpTo, now - kCountsMissed), to = now - kTellsLate;
  ORLOCAL_TRY(const auto rings, ringsNotTold(from, to));
  // Who notes first that they were counted tells it.
  ORLOCAL_TRY(const auto claimed, m_book.claim({}, now, to));
  const bool first = !claimed.toldUpTo || *claimed.toldUpTo < to;
  m_toldUpTo = m_notedUpTo = to;
  if (!rings.empty() && first) { m_teller.tellMissed({rings.size(), from, to}); }
  return {};
}

Status AlarmFollower::claimAndTell(const std::vector<Due>& due, Moment now, Moment upTo) {
  store::AlarmBook::Wanted wanted;
  for (const Due& each : due) { (each.putOff ? wanted.putOff : wanted.due).push_back(each.news.ring.key); }
  ORLOCAL_TRY(const auto own, m_book.claim(wanted, now, upTo));
  m_notedUpTo = upTo;
  for (Due each : due) {
    const auto& keys = each.putOff ? own.putOff : own.due;
    if (std::find(keys.begin(), keys.end(), each.news.ring.key) == keys.end()) { continue; }
    each.news.state = AlarmState::kRung;
    each.news.rung = now;
    m_teller.tell(each.news);
  }
  return {};
}

void AlarmFollower::tellTroubles() {
  for (const auto& [item, sentence] : m_timetable.troubles()) {
    if (m_toldTroubles.insert(sentence).second) { m_teller.tellTrouble(sentence); }
  }
}

}  // namespace orlocal::host
