#include "backend/error_codes.h"
#include "backend/keyword_table.h"
#include "backend/keywords.h"
#include "backend/legacy/ical_functions.h"
#include "backend/legacy/recurrence_choice.h"
#include "backend/property_tables.h"
#include "backend/value_texts.h"
#include "platform/platform.h"

namespace orlocal {
namespace {

OptionalText firstDayOfTheWeek(const CalRecurrenceRule* rule) {
  return std::to_string(rule != nullptr ? rule->firstDayOfTheWeek() : 0);
}

OptionalText hasEnd(const CalRecurrenceRule* rule) { return booleanText(rule != nullptr && rule->recurrenceEnd()); }

OptionalText recurrenceType(const CalRecurrenceRule* rule) {
  return rule != nullptr ? recurrenceTypeWord(rule->recurrenceType()) : "";
}

OptionalText recurrenceInterval(const CalRecurrenceRule* rule) {
  return std::to_string(rule != nullptr ? rule->recurrenceInterval() : 0);
}

OptionalText daysOfTheWeek(const CalRecurrenceRule* rule) {
  return rule != nullptr ? listText(rule->daysOfTheWeek()) : "";
}

OptionalText daysOfTheMonth(const CalRecurrenceRule* rule) {
  return rule != nullptr ? listText(rule->daysOfTheMonth()) : "";
}

OptionalText monthsOfTheYear(const CalRecurrenceRule* rule) {
  return rule != nullptr ? listText(rule->monthsOfTheYear()) : "";
}

OptionalText nthWeekdaysOfTheMonth(const CalRecurrenceRule* rule) {
  if (rule == nullptr) { return ""; }
  std::vector<std::string> items;
  for (const auto& day : rule->nthWeekDaysOfTheMonth()) {
    items.push_back(pairText(day->weekNumber(), day->dayOfTheWeek()));
  }
  return listText(items);
}

/// The rule is null for an event that has none; numbers then read as 0, texts as "".
constexpr PropertyGetter<const CalRecurrenceRule*> kRuleGetters[] = {
    {"firstdayoftheweek", firstDayOfTheWeek},
    {"hasend", hasEnd},
    {"recurrencetype", recurrenceType},
    {"recurrenceinterval", recurrenceInterval},
    {"daysoftheweek", daysOfTheWeek},
    {"daysofthemonth", daysOfTheMonth},
    {"nthweekdaysofthemonth", nthWeekdaysOfTheMonth},
    {"monthsoftheyear", monthsOfTheYear},
};

constexpr PropertyGetter<const CalRecurrenceEnd&> kEndGetters[] = {
    {"usesenddate", [](const CalRecurrenceEnd& end) { return booleanText(end.usesEndDate()); }},
    {"occurrencecount",
     [](const CalRecurrenceEnd& end) { return OptionalText(std::to_string(end.occurrenceCount())); }},
    {"enddate", [](const CalRecurrenceEnd& end) { return dateText(end.endDate()); }},
};

OptionalText endAttribute(const CalRecurrenceRule* rule, const OptionalText& property) {
  const auto end = rule != nullptr ? rule->recurrenceEnd() : nullptr;
  if (!end) { return "never"; }
  if (!property) { return noneWith(kMissingArgument); }
  const auto* getter = rowForAnyCase(kEndGetters, *property);
  return getter != nullptr ? getter->read(*end) : noneWith(kInvalidArgument);
}

}  // namespace

std::int32_t iCalFunctions::addRecurrence(const OptionalText& frequency, std::int32_t interval,
                                          const std::optional<DaysOfTheWeek>& dotw, const std::optional<Numbers>& dotm,
                                          std::int32_t dow, std::int32_t weekOfTheMonth,
                                          const std::optional<Numbers>& monthsOfTheYear,
                                          std::optional<Date> endWithDate, std::int32_t endWithCount) {
  if (!recurrenceFrequencyNamed(frequency)) { return failWith(kInvalidArgument); }
  if (!m_event) { return failWith(kInvalidCallOrder); }
  auto& framework = platform().calFramework();
  RecurrenceWishes wishes{interval, std::nullopt, dotm, dow, weekOfTheMonth, monthsOfTheYear, nullptr};
  if (dotw) {
    wishes.daysOfTheWeek.emplace();
    for (const auto& day : *dotw) { wishes.daysOfTheWeek->push_back(day->dayOfTheWeek()); }
  }
  if (endWithDate || endWithCount >= 1) {
    wishes.end = endWithDate ? framework.recurrenceEndWithEndDate(*endWithDate)
                             : framework.recurrenceEndWithOccurrenceCount(endWithCount);
    if (!wishes.end) { return failWith(kRecurrenceEndNotCreated); }
  }
  // The kind is empty and not the frequency word, so every rule is a daily one: events that solutions saved with this
  // back end repeat by days, and the lists have no effect.
  const auto rule = makeRecurrenceRule(framework, "", wishes);
  if (!rule) { return failWith(kRecurrenceRuleNotCreated); }
  m_event->setRecurrenceRule(rule);
  return 0;
}

std::int32_t iCalFunctions::removeRecurrence() {
  if (!m_event) {
    return failWith(kNoAlarms);  // callers expect this code here, not the one for a wrong order of calls
  }
  m_event->setRecurrenceRule(nullptr);
  return 0;
}

OptionalText iCalFunctions::getEventRecurrenceRuleAttribute(const OptionalText& property,
                                                            const OptionalText& recurrenceEnd) {
  if (!m_event) { return noneWith(kInvalidCallOrder); }
  if (!property) { return noneWith(kMissingArgument); }
  // A rule once read stays the current one while the event is open, even when the event gets another.
  if (!m_recurrencerule) { m_recurrencerule = m_event->recurrenceRule(); }
  const auto word = lowercase(*property);
  if (word == "recurrenceend") { return endAttribute(m_recurrencerule.get(), recurrenceEnd); }
  const auto* getter = rowFor(kRuleGetters, word);
  // No code for an unknown property: callers see an empty one.
  return getter != nullptr ? getter->read(m_recurrencerule.get()) : std::nullopt;
}

}  // namespace orlocal
