#include "fakes/fake_eventkit_items.h"

namespace orlocal::fakes {

void FakeAlarm::setAbsoluteDate(std::optional<Date> date) {
  m_absoluteDate = date;
  if (date) { m_relativeOffset = 0; }
}

void FakeAlarm::setRelativeOffset(double seconds) {
  m_relativeOffset = seconds;
  m_absoluteDate.reset();
}

int FakeAlarm::type() const {
  if (m_type) { return *m_type; }
  if (m_emailAddress) { return static_cast<int>(EKAlarmType::kEmail); }
  if (m_soundName) { return static_cast<int>(EKAlarmType::kAudio); }
  if (m_url) { return static_cast<int>(EKAlarmType::kProcedure); }
  return static_cast<int>(EKAlarmType::kDisplay);
}

void FakeEvent::addRecurrenceRule(std::shared_ptr<EKRecurrenceRule> rule) {
  if (!m_rules) { m_rules.emplace(); }
  m_rules->push_back(std::move(rule));
}

void FakeEvent::removeRecurrenceRule(const std::shared_ptr<EKRecurrenceRule>& rule) {
  if (!m_rules) { return; }
  std::erase(*m_rules, rule);
  if (m_rules->empty()) { m_rules.reset(); }
}

void FakeEvent::setRecurrenceRules(std::optional<std::vector<std::shared_ptr<EKRecurrenceRule>>> rules) {
  m_rules = std::move(rules);
}

void FakeReminder::setCompleted(bool completed) {
  if (!completed) {
    m_completionDate.reset();
  } else if (!m_completionDate) {
    m_completionDate = m_now;
  }
}

}  // namespace orlocal::fakes
