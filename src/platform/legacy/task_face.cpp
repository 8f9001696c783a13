#include "platform/legacy/task_face.h"

#include "platform/platform.h"
#include "platform/zone.h"

namespace orlocal {

std::optional<Date> TaskFace::dueDate() const {
  const auto parts = m_object->dueDateComponents();
  return parts ? m_surroundings.platform.defaultTimeZone().dateFromComponents(*parts) : std::nullopt;
}

void TaskFace::setDueDate(std::optional<Date> date) {
  if (!date) {
    m_object->setDueDateComponents(std::nullopt);
    return;
  }
  // The moment stays what it is for whoever looks from elsewhere.
  const TimeZone& zone = m_surroundings.platform.defaultTimeZone();
  DateComponents parts = zone.components(*date);
  parts.timeZone = zone.name();
  m_object->setDueDateComponents(parts);
}

}  // namespace orlocal
