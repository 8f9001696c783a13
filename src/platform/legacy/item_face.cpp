#include "platform/legacy/item_face.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include "platform/legacy/calendar_face.h"

namespace orlocal {

template <class Interface, class Object>
std::shared_ptr<CalCalendar> ItemFace<Interface, Object>::calendar() const {
  return faceOf<CalendarFace>(m_object->calendar());
}

template <class Interface, class Object>
void ItemFace<Interface, Object>::setCalendar(std::shared_ptr<CalCalendar> calendar) {
  m_object->setCalendar(behind<CalendarFace>(calendar));
}

template <class Interface, class Object>
std::optional<Date> ItemFace<Interface, Object>::nextAlarmDate() const {
  const auto anchor = alarmAnchor();
  const Date now = m_surroundings.now();
  std::optional<Date> next;
  for (const auto& alarm : m_object->alarms()) {
    auto date = alarm->absoluteDate();
    if (!date && anchor) { date = *anchor + std::chrono::seconds(std::llround(alarm->relativeOffset())); }
    if (date && *date >= now && (!next || *date < *next)) { next = date; }
  }
  return next;
}

template <class Interface, class Object>
std::vector<std::shared_ptr<CalAlarm>> ItemFace<Interface, Object>::alarms() const {
  std::vector<std::shared_ptr<AlarmFace>> faces;
  for (const auto& alarm : m_object->alarms()) {
    const auto known =
        std::ranges::find_if(m_alarms, [&](const auto& face) { return face && face->object() == alarm; });
    faces.push_back(known != m_alarms.end() ? *known : faceOf<AlarmFace>(alarm, false));
  }
  m_alarms = faces;
  return {faces.begin(), faces.end()};
}

template <class Interface, class Object>
void ItemFace<Interface, Object>::addAlarm(std::shared_ptr<CalAlarm> alarm) {
  if (auto face = std::dynamic_pointer_cast<AlarmFace>(alarm)) {
    m_object->addAlarm(face->object());
    m_alarms.push_back(std::move(face));
  }
}

template <class Interface, class Object>
void ItemFace<Interface, Object>::removeAlarm(const std::shared_ptr<CalAlarm>& alarm) {
  if (const auto object = behind<AlarmFace>(alarm)) { m_object->removeAlarm(object); }
}

template <class Interface, class Object>
void ItemFace<Interface, Object>::removeAlarms(const std::vector<std::shared_ptr<CalAlarm>>& alarms) {
  for (const auto& alarm : alarms) { removeAlarm(alarm); }
}

template class ItemFace<CalEvent, EKEvent>;
template class ItemFace<CalTask, EKReminder>;

}  // namespace orlocal
