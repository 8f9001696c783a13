#include <chrono>
#include <tuple>

#include "fakes/fake_event_store_records.h"

namespace orlocal::fakes {
namespace {

using namespace std::chrono_literals;

struct FakeEventPredicate final : EKPredicate {
  Date start, end;
  Identifiers calendars;
  OptionalText identifier;
};

/// Visits the occurrences that `rule`, if there is one, gives `event` before `end` by their start, until `visit` says
/// no.
void forEachStart(const FakeEvent& event, const std::shared_ptr<EKRecurrenceRule>& rule, Date end,
                  const std::function<bool(Date)>& visit) {
  const auto ruleEnd = rule ? rule->recurrenceEnd() : nullptr;
  Date start = *event.m_startDate;
  for (int number = 1; start < end; ++number) {
    if (ruleEnd && ruleEnd->endDate() && start > *ruleEnd->endDate()) { return; }
    if (ruleEnd && !ruleEnd->endDate() && number > ruleEnd->occurrenceCount()) { return; }
    const bool excluded = std::ranges::find(event.m_excluded, start) != event.m_excluded.end();
    if ((!excluded && !visit(start)) || !rule) { return; }
    start += rule->interval() * 24h;
  }
}

/// Series are expanded so far when the range has no end of its own.
Date lastStart(Date start, Date end) {
  if (end < distantFuture()) { return end; }
  return std::max(start > distantPast() ? start : fakeNow(), fakeNow()) + 4 * 365 * 24h;
}

/// `rule`, ended before the occurrence that it put at `date`.
std::shared_ptr<EKRecurrenceRule> endedBefore(const EKRecurrenceRule& rule, Date date) {
  auto ended = std::make_shared<FakeRecurrenceRule>();
  ended->m_interval = rule.interval();
  auto end = std::make_shared<FakeRecurrenceEnd>();
  end->m_endDate = date - 1us;
  ended->m_end = end;
  return ended;
}

}  // namespace

std::shared_ptr<FakeEvent> FakeEventStore::addEvent(std::string_view calendarTitle, std::string_view title, Date start,
                                                    Date end) {
  FakeEvent event;
  event.m_calendar = recordTitled(calendarTitle);
  event.m_title = title;
  event.m_startDate = start;
  event.m_endDate = end;
  keep(m_events, event, "event");
  return m_events.back();
}

std::shared_ptr<EKRecurrenceRule> FakeEventStore::ruleOf(const FakeEvent& event) const {
  if (!m_expandsSeries || event.m_detached || !event.m_rules || event.m_rules->empty()) { return nullptr; }
  const auto& rule = event.m_rules->front();
  return rule->frequency() == static_cast<int>(EKRecurrenceFrequency::kDaily) ? rule : nullptr;
}

std::shared_ptr<FakeEvent> FakeEventStore::occurrenceCopy(const FakeEvent& record, Date start) const {
  auto copy = copyOf(record);
  if (ruleOf(record)) {
    copy->m_endDate = *record.m_endDate + (start - *record.m_startDate);
    copy->m_startDate = start;
    copy->m_occurrenceDate = start;
  }
  return copy;
}

std::shared_ptr<const EKPredicate> FakeEventStore::predicateForEvents(Date start, Date end,
                                                                      const EKCalendarArray& calendars) {
  if (!m_answers || start > end) { return nullptr; }
  auto predicate = std::make_shared<FakeEventPredicate>();
  predicate->start = start;
  predicate->end = end;
  predicate->calendars = identifiersOf(calendars);
  return predicate;
}

std::shared_ptr<const EKPredicate> FakeEventStore::predicateForOneEvent(Date start, Date end,
                                                                        const EKCalendarArray& calendars,
                                                                        std::string_view identifier) {
  if (!m_answers || start > end) { return nullptr; }
  auto predicate = std::make_shared<FakeEventPredicate>();
  predicate->start = start;
  predicate->end = end;
  predicate->calendars = identifiersOf(calendars);
  predicate->identifier = identifier;
  return predicate;
}

std::shared_ptr<const EKEventArray> FakeEventStore::eventsMatchingPredicate(
    const std::shared_ptr<const EKPredicate>& predicate) {
  const auto* asked = dynamic_cast<const FakeEventPredicate*>(predicate.get());
  if (!m_answers || asked == nullptr) { return nullptr; }
  std::vector<std::tuple<Date, Date, OptionalText, std::shared_ptr<FakeEvent>>> found;
  for (const auto& event : m_events) {
    if (!asked->calendars.contains(event->m_calendar->calendarIdentifier())) { continue; }
    if (asked->identifier && event->m_eventIdentifier != asked->identifier) { continue; }
    const auto rule = ruleOf(*event);
    forEachStart(*event, rule, rule ? lastStart(asked->start, asked->end) : asked->end, [&](Date start) {
      const Date end = start + (*event->m_endDate - *event->m_startDate);
      if (end > asked->start || start >= asked->start) {
        found.emplace_back(start, end, event->m_eventIdentifier, event);
      }
      return true;
    });
  }
  std::ranges::stable_sort(
      found, {}, [](const auto& each) { return std::tuple(std::get<0>(each), std::get<1>(each), std::get<2>(each)); });
  std::vector<FakeArray<EKEvent>::Make> makers;
  for (const auto& [start, end, identifier, event] : found) {
    makers.emplace_back([this, at = start, kept = std::weak_ptr(event)] {
      const auto record = kept.lock();
      return record ? occurrenceCopy(*record, at) : nullptr;
    });
  }
  return std::make_shared<FakeArray<EKEvent>>(std::move(makers));
}

std::shared_ptr<EKEvent> FakeEventStore::eventWithIdentifier(std::string_view identifier) {
  if (!m_answers) { return nullptr; }
  std::shared_ptr<FakeEvent> first;
  for (const auto& event : m_events) {
    if (event->m_eventIdentifier != identifier) { continue; }
    forEachStart(*event, ruleOf(*event), distantFuture(), [&](Date start) {
      auto candidate = occurrenceCopy(*event, start);
      if (!first || candidate->occurrenceDate() < first->occurrenceDate()) { first = std::move(candidate); }
      return false;
    });
  }
  return first;
}

std::shared_ptr<EKEvent> FakeEventStore::occurrenceOfEvent(std::string_view identifier, Date occurrenceDate) {
  if (!m_answers) { return nullptr; }
  std::shared_ptr<FakeEvent> found;
  for (const auto& event : m_events) {
    if (event->m_eventIdentifier != identifier) { continue; }
    if (event->m_detached) {
      if (event->m_occurrenceDate == occurrenceDate) { return copyOf(*event); }
      continue;
    }
    forEachStart(*event, ruleOf(*event), occurrenceDate + 1us, [&](Date start) {
      if (start == occurrenceDate) { found = occurrenceCopy(*event, start); }
      return !found;
    });
  }
  return found;
}

std::shared_ptr<FakeEvent> FakeEventStore::seriesOf(const EKEvent& occurrence) const {
  for (const auto& event : m_events) {
    if (event->m_eventIdentifier == occurrence.eventIdentifier() && ruleOf(*event)) { return event; }
  }
  return nullptr;
}

bool FakeEventStore::saveEvent(const std::shared_ptr<EKEvent>& event, EKSpan span, bool, std::optional<Error>& error) {
  error = objection(event.get(), EKEntityType::kEvent);
  if (error) { return false; }
  auto* fake = dynamic_cast<FakeEvent*>(event.get());
  if (fake == nullptr) { return refuseBecause(error, "The event is not of this store."); }
  if (!fake->m_startDate || !fake->m_endDate) { return refuseBecause(error, "The event has no start or no end."); }
  if (fake->hasAttendees()) { return refuseBecause(error, "The event has attendees."); }
  const auto series = fake->m_detached ? nullptr : seriesOf(*fake);
  if (series && fake->m_occurrenceDate) {
    const Date place = *fake->m_occurrenceDate;
    if (span == EKSpan::kThisEvent) {
      series->m_excluded.push_back(place);
      fake->m_detached = true;
      fake->m_itemIdentifier = "item-" + nextIdentifier("event");
    } else if (span == EKSpan::kFutureEvents && place != *series->m_startDate) {
      return refuseBecause(error, "The fake store splits no series.");
    } else {
      *fake->m_startDate += *series->m_startDate - place;
      *fake->m_endDate += *series->m_startDate - place;
      fake->m_occurrenceDate.reset();
    }
  }
  keep(m_events, *fake, "event");
  return true;
}

bool FakeEventStore::removeEvent(const std::shared_ptr<EKEvent>& event, EKSpan span, bool,
                                 std::optional<Error>& error) {
  error = objection(event.get(), EKEntityType::kEvent);
  if (error) { return false; }
  const auto series = seriesOf(*event);
  const auto place = event->occurrenceDate();
  if (series && place && span == EKSpan::kThisEvent && !event->isDetached()) {
    series->m_excluded.push_back(*place);
    return true;
  }
  const bool whole = span == EKSpan::kAllEvents || !series || place == series->m_startDate;
  if (series && span == EKSpan::kFutureEvents && !whole) {
    series->m_rules = {{endedBefore(*ruleOf(*series), *place)}};
  }
  const auto gone = std::erase_if(m_events, [&](const auto& record) {
    if (record->m_eventIdentifier != event->eventIdentifier()) { return false; }
    if (event->isDetached() && span == EKSpan::kThisEvent) {
      return record->m_itemIdentifier == event->calendarItemIdentifier();
    }
    return whole || (record->m_detached && record->m_occurrenceDate >= place);
  });
  return gone > 0 || series || refuseBecause(error, "There is no such event.");
}

}  // namespace orlocal::fakes
