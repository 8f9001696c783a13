#pragma once

#include "platform/legacy/item_face.h"

namespace orlocal {

/// A reminder, which the older platform knows by its own identifier and with a moment for its due date.
class TaskFace final : public ItemFace<CalTask, EKReminder> {
 public:
  using ItemFace::ItemFace;
  OptionalText uid() const override { return m_object->calendarItemIdentifier(); }
  std::optional<Date> dueDate() const override;
  void setDueDate(std::optional<Date> date) override;
  std::optional<Date> completedDate() const override { return m_object->completionDate(); }
  void setCompletedDate(std::optional<Date> date) override { m_object->setCompletionDate(date); }
  bool isCompleted() const override { return m_object->isCompleted(); }
  void setIsCompleted(bool completed) override { m_object->setCompleted(completed); }
  int priority() const override { return m_object->priority(); }
  void setPriority(int priority) override { m_object->setPriority(priority); }

 protected:
  std::optional<Date> alarmAnchor() const override { return dueDate(); }
};

}  // namespace orlocal
