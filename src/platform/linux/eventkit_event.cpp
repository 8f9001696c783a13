#include "platform/linux/eventkit_event.h"

#include <algorithm>

#include "platform/linux/eventkit_participant.h"
#include "platform/linux/eventkit_recurrence.h"
#include "platform/linux/zone.h"

namespace orlocal {
namespace {

using store::CalendarTime;

}  // namespace

store::ShownTimes EventObject::times() const {
  return m_times ? m_times->onWholeDays(m_access->viewer()) : storedTimes();
}

store::ShownTimes& EventObject::editTimes(store::ItemField field) {
  // The times have a place of their own; the field is only marked as set.
  edit(field);
  if (!m_times) { m_times = std::make_unique<store::ShownTimes>(storedTimes()); }
  return *m_times;
}

std::shared_ptr<const TimeZone> EventObject::timeZone() const {
  const auto& start = original().start;
  if (isAllDay()) { return nullptr; }
  if (!start || start->kind == CalendarTime::Kind::kDate) { return m_access->defaultTimeZone(); }
  switch (start->kind) {
    case CalendarTime::Kind::kUtc:
      return timeZoneNamed("UTC");
    case CalendarTime::Kind::kZoned: {
      auto zone = timeZoneNamed(start->zone);
      return zone ? zone : m_access->defaultTimeZone();
    }
    default:
      return nullptr;
  }
}

std::optional<Date> EventObject::occurrenceDate() const {
  return m_occurrence ? std::optional<Date>(m_occurrence->originalStart) : startDate();
}

store::Recurrence EventObject::shownRecurrence() const {
  if (m_rulesChanged || !shown().series) { return shown().recurrence; }
  const auto series = orNone(m_access->store().item(*shown().series)).value_or(nullptr);
  return series ? series->recurrence : store::Recurrence();
}

store::Recurrence& EventObject::editRecurrence() {
  if (!m_rulesChanged) {
    store::Recurrence recurrence = shownRecurrence();
    edit(store::ItemField::kRules).recurrence = std::move(recurrence);
    m_rulesChanged = true;
  }
  return edit(store::ItemField::kRules).recurrence;
}

std::optional<std::vector<std::shared_ptr<EKRecurrenceRule>>> EventObject::recurrenceRules() const {
  // Most events of a walk do not repeat: nothing is copied for them.
  if (!shown().series && shown().recurrence.empty()) { return std::nullopt; }
  const store::Recurrence recurrence = shownRecurrence();
  if (recurrence.empty()) { return std::nullopt; }
  std::vector<std::shared_ptr<EKRecurrenceRule>> rules;
  for (const auto& rule : recurrence.rules) {
    rules.push_back(std::make_shared<RecurrenceRuleObject>(rule, m_access->viewer()));
  }
  return rules;
}

void EventObject::addRecurrenceRule(std::shared_ptr<EKRecurrenceRule> rule) {
  if (const auto ours = std::dynamic_pointer_cast<RecurrenceRuleObject>(rule)) {
    editRecurrence().rules.push_back(ours->stored());
  }
}

void EventObject::removeRecurrenceRule(const std::shared_ptr<EKRecurrenceRule>& rule) {
  const auto ours = std::dynamic_pointer_cast<RecurrenceRuleObject>(rule);
  if (!ours) { return; }
  // Rule objects are made anew at each look, so they are told apart by what they say.
  auto& rules = editRecurrence().rules;
  const auto found = std::find(rules.begin(), rules.end(), ours->stored());
  if (found != rules.end()) { rules.erase(found); }
}

void EventObject::setRecurrenceRules(std::optional<std::vector<std::shared_ptr<EKRecurrenceRule>>> rules) {
  store::Recurrence& recurrence = editRecurrence();
  if (!rules || rules->empty()) {
    // The event happens once from now on: single added dates go, too.
    recurrence = store::Recurrence();
    return;
  }
  recurrence.rules.clear();
  for (const auto& rule : *rules) { addRecurrenceRule(rule); }
}

bool EventObject::hasAttendees() const {
  const auto& attendees = shown().attendees;
  return std::any_of(attendees.begin(), attendees.end(), isInvited);
}

std::optional<std::vector<std::shared_ptr<EKParticipant>>> EventObject::attendees() const {
  std::vector<std::shared_ptr<EKParticipant>> participants;
  for (const auto& attendee : shown().attendees) {
    if (isInvited(attendee)) { participants.push_back(std::make_shared<ParticipantObject>(attendee)); }
  }
  if (participants.empty()) { return std::nullopt; }
  return participants;
}

store::ItemEdit EventObject::edited() const {
  store::ItemEdit edit = ItemObject::edited();
  if (m_times) { edit.times = *m_times; }
  return edit;
}

void EventObject::adopt(store::Item saved, std::optional<store::Occurrence> occurrence) {
  m_occurrence = occurrence;
  m_times.reset();
  m_rulesChanged = false;
  adoptItem(std::move(saved));
}

}  // namespace orlocal
