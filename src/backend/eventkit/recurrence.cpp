#include "backend/current_items.h"
#include "backend/eventkit/ical_ek_functions.h"
#include "backend/keyword_table.h"
#include "backend/keywords.h"
#include "backend/property_tables.h"
#include "backend/value_texts.h"
#include "platform/platform.h"

namespace orlocal {
namespace {

OptionalText firstDayOfTheWeek(const EKRecurrenceRule* rule) {
  return std::to_string(rule != nullptr ? rule->firstDayOfTheWeek() : 0);
}

OptionalText hasEnd(const EKRecurrenceRule* rule) {
  return booleanText(rule != nullptr && rule->recurrenceEnd() != nullptr);
}

OptionalText recurrenceType(const EKRecurrenceRule* rule) {
  return rule != nullptr ? recurrenceTypeWord(rule->frequency()) : "";
}

OptionalText recurrenceInterval(const EKRecurrenceRule* rule) {
  return std::to_string(rule != nullptr ? rule->interval() : 0);
}

OptionalText daysOfTheWeek(const EKRecurrenceRule* rule) {
  if (rule == nullptr) { return std::nullopt; }
  std::vector<long> days;
  for (const auto& day : rule->daysOfTheWeek()) { days.push_back(day ? day->dayOfTheWeek() : 0); }
  return days.empty() ? std::nullopt : OptionalText(listText(days));
}

OptionalText daysOfTheMonth(const EKRecurrenceRule* rule) {
  if (rule == nullptr) { return std::nullopt; }
  const auto days = rule->daysOfTheMonth();
  return days.empty() ? std::nullopt : OptionalText(listText(days));
}

OptionalText nthWeekdaysOfTheMonth(const EKRecurrenceRule* rule) {
  if (rule == nullptr) { return std::nullopt; }
  const auto days = rule->daysOfTheWeek();
  if (days.empty()) { return std::nullopt; }
  // Separators go by the days of the month, without sign: a rule that has none ends with a separator too, and
  // solutions split on it.
  const std::size_t separators = rule->daysOfTheMonth().size() - 1;
  std::string text;
  for (std::size_t i = 0; i < days.size(); ++i) {
    text += days[i] ? pairText(days[i]->weekNumber(), days[i]->dayOfTheWeek()) : pairText(0, 0);
    if (i < separators) { text += '\r'; }
  }
  return text;
}

OptionalText monthsOfTheYear(const EKRecurrenceRule* rule) {
  return listText(rule != nullptr ? rule->monthsOfTheYear() : std::vector<long>());
}

OptionalText weeksOfTheYear(const EKRecurrenceRule*) { return noneWith(kWeeksOfTheYearNotSupported); }

/// The rule is null for an event that has none, and reads as empty or 0.
constexpr PropertyGetter<const EKRecurrenceRule*> kRuleGetters[] = {
    {"firstdayoftheweek", firstDayOfTheWeek},
    {"hasend", hasEnd},
    {"recurrencetype", recurrenceType},
    {"recurrenceinterval", recurrenceInterval},
    {"daysoftheweek", daysOfTheWeek},
    {"daysofthemonth", daysOfTheMonth},
    {"nthweekdaysofthemonth", nthWeekdaysOfTheMonth},
    {"monthsoftheyear", monthsOfTheYear},
    {"weeksoftheyear", weeksOfTheYear},
};

constexpr PropertyGetter<const EKRecurrenceEnd&> kEndGetters[] = {
    {"usesenddate", [](const EKRecurrenceEnd& end) { return booleanText(end.endDate().has_value()); }},
    {"occurrencecount", [](const EKRecurrenceEnd& end) { return OptionalText(std::to_string(end.occurrenceCount())); }},
    {"enddate", [](const EKRecurrenceEnd& end) { return dateText(end.endDate()); }},
};

OptionalText endAttribute(const EKRecurrenceRule* rule, const OptionalText& property) {
  if (rule == nullptr) { return std::nullopt; }
  const auto end = rule->recurrenceEnd();
  if (!end) { return "never"; }
  if (!property) { return noneWith(kMissingArgument); }
  const auto* getter = rowForAnyCase(kEndGetters, *property);
  return getter != nullptr ? getter->read(*end) : noneWith(kInvalidArgument);
}

}  // namespace

std::int32_t iCalEKFunctions::addRecurrence(const OptionalText& type, std::int32_t interval,
                                            const std::optional<DaysOfTheWeek>& dotw,
                                            const std::optional<std::vector<long>>& dotm, std::int32_t,
                                            const std::optional<std::vector<long>>& monthsOfTheYear,
                                            std::optional<Date> endWithDate, std::int32_t endWithCount) {
  const auto frequency = recurrenceFrequencyNamed(type);
  if (!frequency) { return failWith(kInvalidRecurrenceType); }
  if (interval < 1) { return failWith(kRecurrenceIntervalRequired); }
  if (!m_ekEvent) { return failWith(kNoEventToAddRecurrence); }

  auto& eventKit = platform().eventKit();
  EKRecurrenceRuleParts parts;
  parts.frequency = static_cast<EKRecurrenceFrequency>(*frequency);
  parts.interval = interval;
  parts.daysOfTheWeek = dotw;
  parts.daysOfTheMonth = dotm;
  parts.monthsOfTheYear = monthsOfTheYear;
  if (endWithDate || endWithCount >= 1) {
    parts.end = endWithDate ? eventKit.recurrenceEndWithEndDate(*endWithDate)
                            : eventKit.recurrenceEndWithOccurrenceCount(endWithCount);
    if (!parts.end) { return failWith(kRecurrenceEndNotCreated); }
  }
  const auto made = eventKit.recurrenceRule(parts);
  if (made.refusal) { return failWith(kInvalidRecurrenceParameters); }
  if (!made.rule) { return failWith(kRecurrenceRuleNotCreated); }
  m_ekEvent->addRecurrenceRule(made.rule);
  return 0;
}

std::int32_t iCalEKFunctions::removeRecurrence() {
  if (!m_ekEvent) { return failWith(kNoEventToRemoveRecurrence); }
  if (const auto rules = m_ekEvent->recurrenceRules(); rules && !rules->empty()) {
    m_ekEvent->removeRecurrenceRule(rules->front());
  }
  m_ekEvent->setRecurrenceRules(std::nullopt);
  return 0;
}

OptionalText iCalEKFunctions::getEventRecurrenceRuleAttribute(const OptionalText& property,
                                                              const OptionalText& recurrenceEnd) {
  if (!m_ekEvent) { return noneWith(kNoEventToGetRecurrenceProperty); }
  if (!property) { return noneWith(kPropertyRequired); }
  if (!m_ekRecurrenceRule) {
    if (const auto rules = m_ekEvent->recurrenceRules(); rules && !rules->empty()) {
      m_ekRecurrenceRule = rules->front();
    }
  }
  const auto word = lowercase(*property);
  if (word == "recurrenceend") { return endAttribute(m_ekRecurrenceRule.get(), recurrenceEnd); }
  const auto* getter = rowFor(kRuleGetters, word);
  return getter != nullptr ? getter->read(m_ekRecurrenceRule.get()) : noneWith(kInvalidProperty);
}

}  // namespace orlocal
