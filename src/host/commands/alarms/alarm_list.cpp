#include "host/commands/alarms/alarm_list.h"

#include <algorithm>
#include <chrono>
#include <set>
#include <tuple>
#include <utility>

#include "base/try.h"
#include "store/alarm_book.h"

namespace orlocal::host {
namespace {

/// So long what rang is shown at least.
constexpr std::chrono::hours kShown{24};

bool isOver(const AlarmNews& news, store::Moment now) {
  const store::Moment end =
      std::max(news.ring.end.value_or(store::Moment()), news.ring.start.value_or(store::Moment()));
  return std::max(news.rung.value_or(news.rings) + kShown, end) <= now;
}

}  // namespace

const std::string& AlarmNews::identifier() const {
  return item->kind == store::ItemKind::kEvent ? item->identifier : item->itemIdentifier;
}

std::string AlarmNews::calendar() const {
  const store::Calendar* found = calendars->calendar(item->calendar);
  return found != nullptr ? calendars->name(*found) : std::string();
}

Result<std::optional<AlarmNews>> newsOf(store::CalendarStore& store, const store::AlarmRing& ring,
                                        const std::shared_ptr<const CalendarNames>& calendars) {
  AlarmNews news;
  news.ring = ring;
  news.rings = ring.key.moment;
  news.calendars = calendars;
  ORLOCAL_TRY(news.item, store.item(ring.row));
  if (news.item == nullptr || ring.alarm >= news.item->alarms.size()) { return std::nullopt; }
  return news;
}

Result<std::vector<AlarmNews>> listAlarms(store::CalendarStore& store, store::AlarmTimetable& timetable,
                                          const std::vector<store::Calendar>& calendars, store::Moment now,
                                          store::Moment until) {
  ORLOCAL_TRY(auto allNames, CalendarNames::of(store));
  const auto names = std::make_shared<const CalendarNames>(std::move(allNames));
  std::vector<AlarmNews> list;
  const auto add = [&](AlarmNews news) {
    const bool wanted = std::any_of(calendars.begin(), calendars.end(),
                                    [&](const store::Calendar& each) { return each.id == news.item->calendar; });
    if (wanted) { list.push_back(std::move(news)); }
  };
  std::set<store::AlarmKey> recorded;
  ORLOCAL_TRY(const auto records, store::AlarmBook(store).records());
  for (const store::AlarmRecord& record : records) {
    recorded.insert(record.key);
    if (record.acknowledged) { continue; }
    ORLOCAL_TRY(const auto ring, timetable.ringOf(record.key));
    if (!ring) { continue; }
    ORLOCAL_TRY(auto news, newsOf(store, *ring, names));
    if (!news) { continue; }
    news->rung = record.rung;
    news->state = record.snoozed ? AlarmState::kSnoozed : AlarmState::kRung;
    news->rings = record.snoozed.value_or(record.key.moment);
    if (record.snoozed || !isOver(*news, now)) { add(*std::move(news)); }
  }
  ORLOCAL_TRY(const auto coming, timetable.between(now, until));
  for (const store::AlarmRing& ring : coming) {
    if (recorded.contains(ring.key)) { continue; }
    ORLOCAL_TRY(auto news, newsOf(store, ring, names));
    if (news) { add(*std::move(news)); }
  }
  std::stable_sort(list.begin(), list.end(), [](const AlarmNews& a, const AlarmNews& b) {
    return std::tie(a.rings, a.ring.key) < std::tie(b.rings, b.ring.key);
  });
  return list;
}

}  // namespace orlocal::host
