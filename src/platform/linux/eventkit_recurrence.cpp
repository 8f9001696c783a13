#include "platform/linux/eventkit_recurrence.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <string>

namespace orlocal {
namespace {

using Frequency = store::RecurrenceRule::Frequency;

/// What callers see for frequencies that the platform has no name for.
constexpr int kUnnamedFrequency = 4;

using Lists = unsigned;
constexpr Lists kDaily = 1, kWeekly = 2, kMonthly = 4, kYearly = 8, kEvery = kDaily | kWeekly | kMonthly | kYearly;

/// A list of numbers in a rule: how far they may go (to both sides, or from 1 on) and with which frequencies.
struct NumbersRule {
  std::optional<std::vector<long>> EKRecurrenceRuleParts::*given;
  std::vector<int> store::RecurrenceRule::*kept;
  const char* name;
  long furthest;
  bool fromTheEndToo;
  Lists frequencies;
};
constexpr NumbersRule kNumbers[] = {
    {&EKRecurrenceRuleParts::daysOfTheMonth, &store::RecurrenceRule::byMonthDay, "day of the month", 31, true,
     kDaily | kMonthly | kYearly},
    {&EKRecurrenceRuleParts::monthsOfTheYear, &store::RecurrenceRule::byMonth, "month", 12, false, kEvery},
    {&EKRecurrenceRuleParts::weeksOfTheYear, &store::RecurrenceRule::byWeekNumber, "week of the year", 53, true,
     kYearly},
    {&EKRecurrenceRuleParts::daysOfTheYear, &store::RecurrenceRule::byYearDay, "day of the year", 366, true, kYearly},
    {&EKRecurrenceRuleParts::setPositions, &store::RecurrenceRule::bySetPosition, "set position", 366, true, kEvery},
};

struct FrequencyRow {
  EKRecurrenceFrequency named;
  Frequency stored;
  Lists bit;
  const char* word;
};
constexpr FrequencyRow kFrequencies[] = {
    {EKRecurrenceFrequency::kDaily, Frequency::kDaily, kDaily, "daily"},
    {EKRecurrenceFrequency::kWeekly, Frequency::kWeekly, kWeekly, "weekly"},
    {EKRecurrenceFrequency::kMonthly, Frequency::kMonthly, kMonthly, "monthly"},
    {EKRecurrenceFrequency::kYearly, Frequency::kYearly, kYearly, "yearly"},
};

EKRecurrenceRuleMade refused(std::string why) {
  return {nullptr, Error{.localizedDescription = std::move(why), .localizedFailureReason = std::nullopt}};
}

/// Why `numbers` cannot stand in a rule of this frequency; empty when they can.
std::string objection(const NumbersRule& list, const std::vector<long>& numbers, const FrequencyRow& frequency) {
  if (numbers.empty()) { return {}; }
  if ((list.frequencies & frequency.bit) == 0) {
    return "A " + std::string(frequency.word) + " rule cannot have a " + list.name + ".";
  }
  const auto wrong = std::find_if(numbers.begin(), numbers.end(), [&list](long number) {
    return number == 0 || number > list.furthest || number < (list.fromTheEndToo ? -list.furthest : 1);
  });
  if (wrong == numbers.end()) { return {}; }
  return std::to_string(*wrong) + " is no " + list.name + ": it must be from 1 to " + std::to_string(list.furthest) +
         (list.fromTheEndToo ? ", or negative to count from the end." : ".");
}

std::string weekDays(const EKRecurrenceRuleParts& parts, const FrequencyRow& frequency, store::RecurrenceRule& rule) {
  if (!parts.daysOfTheWeek) { return {}; }
  for (const auto& day : *parts.daysOfTheWeek) {
    if (!day) { continue; }
    const long week = day->weekNumber();
    if (week != 0 && (frequency.bit & (kMonthly | kYearly)) == 0) {
      return "A " + std::string(frequency.word) + " rule cannot name the n-th weekday of a month or year.";
    }
    if (week != 0 && rule.byWeekNumber.empty() == false) {
      return "A rule with weeks of the year cannot name the n-th weekday of a year.";
    }
    rule.byDay.push_back({static_cast<int>(week), static_cast<int>(day->dayOfTheWeek()) - 1});
  }
  return {};
}

std::vector<long> asLongs(const std::vector<int>& numbers) { return {numbers.begin(), numbers.end()}; }

}  // namespace

int RecurrenceRuleObject::frequency() const {
  const auto* row = std::find_if(std::begin(kFrequencies), std::end(kFrequencies),
                                 [this](const FrequencyRow& each) { return each.stored == m_rule.frequency; });
  return row != std::end(kFrequencies) ? static_cast<int>(row->named) : kUnnamedFrequency;
}

std::vector<std::shared_ptr<EKRecurrenceDayOfWeek>> RecurrenceRuleObject::daysOfTheWeek() const {
  std::vector<std::shared_ptr<EKRecurrenceDayOfWeek>> days;
  days.reserve(m_rule.byDay.size());
  for (const auto& day : m_rule.byDay) { days.push_back(std::make_shared<DayOfWeekObject>(day.day + 1, day.ordinal)); }
  return days;
}

std::vector<long> RecurrenceRuleObject::daysOfTheMonth() const { return asLongs(m_rule.byMonthDay); }

std::vector<long> RecurrenceRuleObject::monthsOfTheYear() const { return asLongs(m_rule.byMonth); }

std::shared_ptr<EKRecurrenceEnd> RecurrenceRuleObject::recurrenceEnd() const {
  if (m_rule.until) { return std::make_shared<RecurrenceEndObject>(store::momentOf(*m_rule.until, m_viewer)); }
  if (!m_rule.count) { return nullptr; }
  constexpr std::int64_t kMost = std::numeric_limits<int>::max();
  return std::make_shared<RecurrenceEndObject>(static_cast<int>(std::min(*m_rule.count, kMost)));
}

EKRecurrenceRuleMade makeRecurrenceRule(const EKRecurrenceRuleParts& parts, const store::Zone& viewer) {
  const auto* frequency = std::find_if(std::begin(kFrequencies), std::end(kFrequencies),
                                       [&parts](const FrequencyRow& each) { return each.named == parts.frequency; });
  if (frequency == std::end(kFrequencies)) { return refused("A rule repeats daily, weekly, monthly or yearly."); }
  if (parts.interval < 1) { return refused("The interval of a rule must be at least 1."); }

  store::RecurrenceRule rule;
  rule.frequency = frequency->stored;
  rule.interval = parts.interval;
  for (const NumbersRule& list : kNumbers) {
    const auto& numbers = parts.*list.given;
    if (!numbers) { continue; }
    if (auto why = objection(list, *numbers, *frequency); !why.empty()) { return refused(std::move(why)); }
    std::transform(numbers->begin(), numbers->end(), std::back_inserter(rule.*list.kept),
                   [](long number) { return static_cast<int>(number); });
  }
  if (auto why = weekDays(parts, *frequency, rule); !why.empty()) { return refused(std::move(why)); }
  if (!rule.bySetPosition.empty() && rule.byDay.empty() && rule.byMonthDay.empty() && rule.byMonth.empty() &&
      rule.byWeekNumber.empty() && rule.byYearDay.empty()) {
    return refused("A set position needs a list of days, weeks or months to count in.");
  }
  if (parts.end) {
    if (const auto date = parts.end->endDate()) {
      rule.until = store::CalendarTime{store::CalendarTime::Kind::kUtc, store::Zone().toLocal(*date), {}};
    } else {
      rule.count = parts.end->occurrenceCount();
    }
  }
  return {std::make_shared<RecurrenceRuleObject>(std::move(rule), viewer), std::nullopt};
}

}  // namespace orlocal
