#pragma once

#include <memory>

#include "platform/eventkit.h"
#include "store/model/model.h"
#include "store/time/zone.h"

namespace orlocal {

class DayOfWeekObject final : public EKRecurrenceDayOfWeek {
 public:
  DayOfWeekObject(long day, long week) : m_day(day), m_week(week) {}
  long dayOfTheWeek() const override { return m_day; }
  long weekNumber() const override { return m_week; }

 private:
  long m_day;
  long m_week;
};

class RecurrenceEndObject final : public EKRecurrenceEnd {
 public:
  explicit RecurrenceEndObject(Date date) : m_date(date) {}
  explicit RecurrenceEndObject(int count) : m_count(count) {}
  std::optional<Date> endDate() const override { return m_date; }
  int occurrenceCount() const override { return m_count; }

 private:
  std::optional<Date> m_date;
  int m_count = 0;
};

/// A rule of the store. Parts that the platform has no name for are kept and come back with the rule.
class RecurrenceRuleObject final : public EKRecurrenceRule {
 public:
  /// `viewer` reads an end that is a date or floats.
  RecurrenceRuleObject(store::RecurrenceRule rule, store::Zone viewer) : m_rule(std::move(rule)), m_viewer(viewer) {}

  int frequency() const override;
  int interval() const override { return m_rule.interval; }
  int firstDayOfTheWeek() const override { return m_rule.weekStart ? *m_rule.weekStart + 1 : 0; }
  std::vector<std::shared_ptr<EKRecurrenceDayOfWeek>> daysOfTheWeek() const override;
  std::vector<long> daysOfTheMonth() const override;
  std::vector<long> monthsOfTheYear() const override;
  std::shared_ptr<EKRecurrenceEnd> recurrenceEnd() const override;

  const store::RecurrenceRule& stored() const { return m_rule; }

 private:
  store::RecurrenceRule m_rule;
  store::Zone m_viewer;
};

/// The rule, or the first reason why RFC 5545, 3.3.10 forbids it.
EKRecurrenceRuleMade makeRecurrenceRule(const EKRecurrenceRuleParts& parts, const store::Zone& viewer);

}  // namespace orlocal
