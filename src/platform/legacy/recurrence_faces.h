#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "platform/cal_items.h"
#include "platform/eventkit_items.h"

namespace orlocal {

class RecurrenceEndFace final : public CalRecurrenceEnd {
 public:
  explicit RecurrenceEndFace(std::shared_ptr<EKRecurrenceEnd> end) : m_end(std::move(end)) {}
  bool usesEndDate() const override { return m_end->endDate().has_value(); }
  std::optional<Date> endDate() const override { return m_end->endDate(); }
  int occurrenceCount() const override { return m_end->occurrenceCount(); }

  const std::shared_ptr<EKRecurrenceEnd>& object() const { return m_end; }

 private:
  std::shared_ptr<EKRecurrenceEnd> m_end;
};

/// Tells the days of a rule apart: those meant every week, and the n-th of their month.
class RecurrenceRuleFace final : public CalRecurrenceRule {
 public:
  explicit RecurrenceRuleFace(std::shared_ptr<EKRecurrenceRule> rule) : m_rule(std::move(rule)) {}
  int recurrenceType() const override { return m_rule->frequency(); }
  int recurrenceInterval() const override { return m_rule->interval(); }
  int firstDayOfTheWeek() const override { return m_rule->firstDayOfTheWeek(); }
  std::shared_ptr<CalRecurrenceEnd> recurrenceEnd() const override;
  std::vector<long> daysOfTheWeek() const override;
  std::vector<long> daysOfTheMonth() const override { return m_rule->daysOfTheMonth(); }
  std::vector<std::shared_ptr<CalNthWeekDay>> nthWeekDaysOfTheMonth() const override;
  std::vector<long> monthsOfTheYear() const override { return m_rule->monthsOfTheYear(); }

  const std::shared_ptr<EKRecurrenceRule>& object() const { return m_rule; }

 private:
  std::shared_ptr<EKRecurrenceRule> m_rule;
};

}  // namespace orlocal
