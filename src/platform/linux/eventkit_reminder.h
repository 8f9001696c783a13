#pragma once

#include "platform/linux/eventkit_item.h"

namespace orlocal {

class ReminderObject final : public ItemObject<EKReminder> {
 public:
  using ItemObject::ItemObject;

  std::optional<DateComponents> dueDateComponents() const override;
  void setDueDateComponents(std::optional<DateComponents> parts) override;
  bool isCompleted() const override { return shown().completed.has_value(); }
  void setCompleted(bool completed) override;
  std::optional<Date> completionDate() const override { return shown().completed; }
  void setCompletionDate(std::optional<Date> date) override { edit(store::ItemField::kCompleted).completed = date; }
  int priority() const override { return shown().priority; }
  void setPriority(int priority) override { edit(store::ItemField::kPriority).priority = priority; }

  using ItemObject::edited;
  void adopt(store::Item saved) { adoptItem(std::move(saved)); }
};

}  // namespace orlocal
