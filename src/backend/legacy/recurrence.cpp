#include "backend/error_codes.h"
#include "backend/keyword_table.h"
#include "backend/keywords.h"
#include "backend/legacy/attributes.h"
#include "backend/legacy/ical_functions.h"
#include "backend/legacy/recurrence_choice.h"
#include "backend/value_texts.h"
#include "platform/platform.h"

namespace orlocal {
namespace {

/// The text of one property of a rule. Null `rule`: the event does not repeat, and numbers read as 0, texts as "".
struct RuleAttribute {
  std::string_view word;
  std::string (*read)(const CalRecurrenceRule* rule);
};

std::string nthWeekDaysText(const CalRecurrenceRule& rule) {
  std::vector<std::string> items;
  for (const auto& day : rule.nthWeekDaysOfTheMonth()) {
    items.push_back(pairText(day->weekNumber(), day->dayOfTheWeek()));
  }
  return listText(items);
}

constexpr RuleAttribute kAttributes[] = {
    {"firstdayoftheweek",
     [](const CalRecurrenceRule* rule) { return std::to_string(rule ? rule->firstDayOfTheWeek() : 0); }},
    {"hasend", [](const CalRecurrenceRule* rule) { return booleanText(rule && rule->recurrenceEnd()); }},
    {"recurrencetype",
     [](const CalRecurrenceRule* rule) { return rule ? recurrenceTypeWord(rule->recurrenceType()) : std::string(); }},
    {"recurrenceinterval",
     [](const CalRecurrenceRule* rule) { return std::to_string(rule ? rule->recurrenceInterval() : 0); }},
    {"daysoftheweek",
     [](const CalRecurrenceRule* rule) { return rule ? listText(rule->daysOfTheWeek()) : std::string(); }},
    {"daysofthemonth",
     [](const CalRecurrenceRule* rule) { return rule ? listText(rule->daysOfTheMonth()) : std::string(); }},
    {"monthsoftheyear",
     [](const CalRecurrenceRule* rule) { return rule ? listText(rule->monthsOfTheYear()) : std::string(); }},
    {"nthweekdaysofthemonth",
     [](const CalRecurrenceRule* rule) { return rule ? nthWeekDaysText(*rule) : std::string(); }},
};

/// None with the code set when `property` is absent or unknown.
OptionalText endText(const CalRecurrenceEnd* end, const OptionalText& property) {
  if (!end) { return "never"; }
  if (!property) { return noText(kMissingArgument); }
  const std::string name = lowercase(*property);
  if (name == "usesenddate") { return booleanText(end->usesEndDate()); }
  if (name == "occurrencecount") { return std::to_string(end->occurrenceCount()); }
  if (name == "enddate") { return dateText(end->endDate()); }
  return noText(kInvalidArgument);
}

}  // namespace

std::int32_t iCalFunctions::addRecurrence(const OptionalText& frequency, std::int32_t interval,
                                          const std::optional<DaysOfTheWeek>& dotw, const std::optional<Numbers>& dotm,
                                          std::int32_t dow, std::int32_t weekOfTheMonth,
                                          const std::optional<Numbers>& monthsOfTheYear,
                                          std::optional<Date> endWithDate, std::int32_t endWithCount) {
  if (!recurrenceFrequencyNamed(frequency)) { return failWith(kInvalidArgument); }
  if (!m_event) { return failWith(kInvalidCallOrder); }
  auto& framework = platform().calendarStore();
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
  if (!m_event) { return noText(kInvalidCallOrder); }
  if (!property) { return noText(kMissingArgument); }
  // A rule once read stays the current one while the event is open, even when the event gets another.
  if (!m_recurrencerule) { m_recurrencerule = m_event->recurrenceRule(); }
  const std::string name = lowercase(*property);
  if (name == "recurrenceend") {
    return endText(m_recurrencerule ? m_recurrencerule->recurrenceEnd().get() : nullptr, recurrenceEnd);
  }
  const auto* row = rowFor(kAttributes, name);
  // No code for an unknown property: callers see an empty one.
  return row ? OptionalText(row->read(m_recurrencerule.get())) : std::nullopt;
}

}  // namespace orlocal
