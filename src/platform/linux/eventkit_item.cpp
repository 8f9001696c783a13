#include "platform/linux/eventkit_item.h"

#include <algorithm>
#include <chrono>
#include <type_traits>
#include <variant>

namespace orlocal {
namespace {

/// Seconds from the anchor that callers count from (an event's start, a reminder's due moment) to the reference that
/// the stored alarm counts from.
std::chrono::seconds referenceAfterAnchor(const store::Item& item, const store::Alarm& alarm,
                                          const store::Zone& viewer) {
  const auto* relative = std::get_if<store::Alarm::Relative>(&alarm.trigger);
  const auto& last = item.endOrDue();
  if (relative == nullptr || !item.start || !last) { return {}; }
  const auto length =
      std::chrono::floor<std::chrono::seconds>(store::momentOf(*last, viewer) - store::momentOf(*item.start, viewer));
  if (item.kind == store::ItemKind::kEvent) { return relative->fromEnd ? length : std::chrono::seconds(0); }
  return relative->fromEnd ? std::chrono::seconds(0) : -length;
}

}  // namespace

template <class Interface>
store::Item& ItemObject<Interface>::edit(store::ItemField field) {
  m_set.add(field);
  if (!m_edited) { m_edited = std::make_unique<store::Item>(*m_item); }
  return *m_edited;
}

template <class Interface>
std::shared_ptr<EKCalendar> ItemObject<Interface>::calendar() const {
  if (!m_calendar && shown().calendar != 0) {
    if (auto calendar = m_access->calendar(shown().calendar)) {
      m_calendar = std::make_shared<CalendarObject>(m_access, *std::move(calendar));
    }
  }
  return m_calendar;
}

template <class Interface>
void ItemObject<Interface>::setCalendar(std::shared_ptr<EKCalendar> calendar) {
  m_calendar = std::dynamic_pointer_cast<CalendarObject>(calendar);
  edit(store::ItemField::kCalendar).calendar = m_calendar ? m_calendar->stored().id : 0;
}

template <class Interface>
OptionalText ItemObject<Interface>::calendarItemIdentifier() const {
  return presentText(shown().itemIdentifier);
}

template <class Interface>
OptionalText ItemObject<Interface>::calendarItemExternalIdentifier() const {
  return presentText(shown().uid);
}

template <class Interface>
bool ItemObject<Interface>::hasAlarms() const {
  return m_alarms ? !m_alarms->empty() : !shown().alarms.empty();
}

template <class Interface>
typename ItemObject<Interface>::Alarms& ItemObject<Interface>::ownAlarms() const {
  if (!m_alarms) {
    m_alarms = std::make_unique<Alarms>();
    for (const store::Alarm& alarm : shown().alarms) {
      m_alarms->push_back(std::make_shared<AlarmObject>(alarm, creationDate(),
                                                        referenceAfterAnchor(shown(), alarm, m_access->viewer())));
    }
  }
  return *m_alarms;
}

template <class Interface>
std::vector<std::shared_ptr<EKAlarm>> ItemObject<Interface>::alarms() const {
  const Alarms& own = ownAlarms();
  return {own.begin(), own.end()};
}

template <class Interface>
void ItemObject<Interface>::addAlarm(std::shared_ptr<EKAlarm> alarm) {
  auto ours = std::dynamic_pointer_cast<AlarmObject>(alarm);
  Alarms& own = ownAlarms();
  if (ours && std::find(own.begin(), own.end(), ours) == own.end()) { own.push_back(std::move(ours)); }
}

template <class Interface>
void ItemObject<Interface>::removeAlarm(const std::shared_ptr<EKAlarm>& alarm) {
  Alarms& own = ownAlarms();
  const auto found = std::find(own.begin(), own.end(), alarm);
  if (found != own.end()) { own.erase(found); }
}

template <class Interface>
store::ItemEdit ItemObject<Interface>::edited() const {
  store::ItemEdit edit;
  // What was never saved has no row that it could be written on.
  if (m_item->id != 0) { edit.opened = m_item; }
  edit.values = shown();
  edit.set = m_set;
  if (m_alarms) {
    edit.values.alarms.clear();
    for (const auto& alarm : *m_alarms) {
      edit.values.alarms.push_back(alarm->stored(std::is_same_v<Interface, EKReminder>));
    }
    if (edit.values.alarms != m_item->alarms) { edit.set.add(store::ItemField::kAlarms); }
  }
  return edit;
}

template <class Interface>
void ItemObject<Interface>::adoptItem(store::Item saved) {
  m_item = std::make_shared<const store::Item>(std::move(saved));
  m_edited.reset();
  m_set = {};
}

template class ItemObject<EKEvent>;
template class ItemObject<EKReminder>;

}  // namespace orlocal
