#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "platform/cal_items.h"
#include "platform/eventkit_items.h"
#include "platform/legacy/alarm_face.h"
#include "platform/legacy/faces.h"

namespace orlocal {

/// What events and tasks have in common: `Interface` is `CalEvent` or `CalTask`, `Object` what it is a face of.
template <class Interface, class Object>
class ItemFace : public Interface {
 public:
  ItemFace(std::shared_ptr<Object> object, Surroundings surroundings)
      : m_object(std::move(object)), m_surroundings(surroundings) {}

  std::shared_ptr<CalCalendar> calendar() const override;
  void setCalendar(std::shared_ptr<CalCalendar> calendar) override;
  OptionalText title() const override { return m_object->title(); }
  void setTitle(const OptionalText& title) override { m_object->setTitle(title); }
  OptionalText notes() const override { return m_object->notes(); }
  void setNotes(const OptionalText& notes) override { m_object->setNotes(notes); }
  OptionalText url() const override { return m_object->url(); }
  void setUrl(const OptionalText& url) override { m_object->setUrl(url); }
  std::optional<Date> dateStamp() const override { return m_object->lastModifiedDate(); }
  bool hasAlarm() const override { return m_object->hasAlarms(); }
  std::optional<Date> nextAlarmDate() const override;
  std::vector<std::shared_ptr<CalAlarm>> alarms() const override;
  void addAlarm(std::shared_ptr<CalAlarm> alarm) override;
  void removeAlarm(const std::shared_ptr<CalAlarm>& alarm) override;
  void removeAlarms(const std::vector<std::shared_ptr<CalAlarm>>& alarms) override;

  const std::shared_ptr<Object>& object() const { return m_object; }

 protected:
  /// What relative alarms count from: an event's start, a task's due moment.
  virtual std::optional<Date> alarmAnchor() const = 0;

  std::shared_ptr<Object> m_object;
  Surroundings m_surroundings;

 private:
  /// Faces of alarms that were handed out or added, so that callers meet the same ones again.
  mutable std::vector<std::shared_ptr<AlarmFace>> m_alarms;
};

extern template class ItemFace<CalEvent, EKEvent>;
extern template class ItemFace<CalTask, EKReminder>;

}  // namespace orlocal
