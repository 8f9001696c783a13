#pragma once

#include <memory>
#include <utility>

#include "platform/cal_items.h"
#include "platform/eventkit_items.h"

namespace orlocal {

/// A calendar of events or a reminder list.
class CalendarFace final : public CalCalendar {
 public:
  explicit CalendarFace(std::shared_ptr<EKCalendar> calendar) : m_calendar(std::move(calendar)) {}
  OptionalText title() const override { return m_calendar->title(); }
  void setTitle(const OptionalText& title) override { m_calendar->setTitle(title); }
  OptionalText notes() const override { return m_calendar->notes(); }
  void setNotes(const OptionalText& notes) override { m_calendar->setNotes(notes); }
  OptionalText type() const override;
  OptionalText uid() const override { return m_calendar->calendarIdentifier(); }
  bool isEditable() const override { return m_calendar->allowsContentModifications() && !m_calendar->isImmutable(); }
  std::optional<Color> color() const override { return m_calendar->color(); }
  void setColor(const Color& color) override { m_calendar->setColor(color); }

  const std::shared_ptr<EKCalendar>& object() const { return m_calendar; }

 private:
  std::shared_ptr<EKCalendar> m_calendar;
};

}  // namespace orlocal
