#pragma once

#include <memory>
#include <vector>

#include "platform/legacy/item_face.h"

namespace orlocal {

/// An event, which the older platform knows by the identifier of its series and with one rule at most.
class EventFace final : public ItemFace<CalEvent, EKEvent> {
 public:
  using ItemFace::ItemFace;
  OptionalText uid() const override { return m_object->eventIdentifier(); }
  std::optional<Date> startDate() const override { return m_object->startDate(); }
  void setStartDate(std::optional<Date> date) override { m_object->setStartDate(date); }
  std::optional<Date> endDate() const override { return m_object->endDate(); }
  void setEndDate(std::optional<Date> date) override { m_object->setEndDate(date); }
  std::optional<Date> occurrence() const override { return m_object->occurrenceDate(); }
  bool isAllDay() const override { return m_object->isAllDay(); }
  void setIsAllDay(bool allDay) override { m_object->setAllDay(allDay); }
  bool isDetached() const override { return m_object->isDetached(); }
  OptionalText location() const override { return m_object->location(); }
  void setLocation(const OptionalText& location) override { m_object->setLocation(location); }
  std::shared_ptr<CalRecurrenceRule> recurrenceRule() const override;
  void setRecurrenceRule(std::shared_ptr<CalRecurrenceRule> rule) override;
  std::optional<std::vector<std::shared_ptr<CalAttendee>>> attendees() const override;

 protected:
  std::optional<Date> alarmAnchor() const override { return startDate(); }
};

}  // namespace orlocal
