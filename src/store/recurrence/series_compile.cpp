#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "store/recurrence/series_data.h"
#include "store/time/steady_clock.h"

// How an item becomes a series.
namespace orlocal::store {

namespace {

using std::chrono::microseconds;

/// What finding the end of a counted rule may take.
constexpr std::uint64_t kCountingSteps = 4'000'000;

/// A series keeps its name, and a title may be of any length.
std::string shortened(std::string_view text) {
  constexpr std::size_t kLongest = 255;
  if (text.size() <= kLongest) { return std::string(text); }
  std::size_t end = kLongest;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) { --end; }
  return std::string(text.substr(0, end)) + "…";
}

std::string described(const Item& item) {
  const char* kind = item.kind == ItemKind::kEvent ? "event" : "reminder";
  return fmt::format("the {} \"{}\" (UID {})", kind, shortened(item.title.value_or("")), shortened(item.uid));
}

template <class T>
void sortUnique(std::vector<T>& values) {
  std::sort(values.begin(), values.end());
  values.erase(std::unique(values.begin(), values.end()), values.end());
}

}  // namespace

Result<Series::Data::Rule> Series::Data::ruleOf(const RecurrenceRule& from, LocalSeconds begin, bool ofSeries,
                                                ExpansionBudget& budget) const {
  auto compiled = CompiledRule::make(from, begin, allDay());
  if (!compiled) { return failure(compiled.error().code, fmt::format("{}: {}", name, compiled.error().message)); }
  Rule rule;
  rule.rule = std::move(*compiled);
  // Where there is no arithmetic nobody needs to know it before the series is split.
  if (!rule.rule.isScaled()) { rule.makesStart = rule.rule.makes(begin, budget); }
  if (from.until) {
    rule.endless = false;
    if (allDay()) {
      rule.last = dateOf(*from.until);
    } else if (from.until->kind == CalendarTime::Kind::kDate) {
      rule.last = dateOf(*from.until) + kSecondsPerDay - 1;  // the whole of that day
    } else {
      rule.until = momentOf(*from.until, zone);
      rule.last = clampedLocal(zone, *rule.until) + kClockSlack;
    }
  }
  if (from.count) {
    // The start counts as the first one, also where the rule does not make it.
    rule.makesStart = rule.rule.makes(begin, budget);
    const std::int64_t own = *from.count - (rule.makesStart || !ofSeries ? 0 : 1);
    const auto comes = own > 0 ? rule.rule.mayMeet(budget) : std::optional(false);
    if (!comes) { return overBudget(); }
    const auto last = *comes ? rule.rule.nth(own, budget) : std::optional(begin);
    if (!last) { return overBudget(); }
    rule.last = std::min(rule.last, *last);
    rule.endless = false;
    rule.most = *from.count;
  }
  rule.last = std::min(rule.last, kLastLocalSecond);
  // The start comes also where UNTIL lies before it; then it is not the rule that makes it.
  if (begin > rule.last || (rule.until && momentAt(begin) > *rule.until)) { rule.makesStart = false; }
  return rule;
}

void Series::Data::exclude(const CalendarTime& time) {
  if (allDay() || time.kind == CalendarTime::Kind::kDate) {
    excludedDays.push_back(dayOf(localSeconds(time.local)));
  } else {
    excluded.push_back(momentAt(localOf(time)));
  }
}

Result<Series> Series::compile(const Item& item, const Zone& viewer, const std::vector<CalendarTime>& changed,
                               ExpansionBudget* given) {
  auto data = std::make_unique<Data>();
  data->name = described(item);
  const std::optional<CalendarTime>& start = item.anchor();
  if (!start) { return failure(ErrorCode::kInvalid, tr("{} has no start", data->name)); }
  data->start = *start;
  data->first = localSeconds(start->local);
  switch (start->kind) {
    case CalendarTime::Kind::kUtc:
      break;
    case CalendarTime::Kind::kZoned:
      data->zone = Zone::named(start->zone).value_or(viewer);
      break;
    default:
      data->zone = viewer;
      break;
  }
  if (data->allDay()) { data->first = data->dateOf(*start); }
  data->firstMoment = data->momentAt(data->first);
  if (const auto& end = item.endOrDue(); item.start && end) {
    if (data->allDay()) {
      data->dayCount = std::max<std::int64_t>(0, dayOf(localSeconds(end->local)) - dayOf(data->first));
    } else {
      data->length = std::max(microseconds(0), momentOf(*end, data->zone) - data->firstMoment);
    }
  } else if (data->allDay()) {
    data->dayCount = 1;
  }
  ExpansionBudget own(given != nullptr ? 0 : kCountingSteps);
  ExpansionBudget& budget = given != nullptr ? *given : own;
  data->sorted = item.recurrence.rules.size() <= 1 && item.recurrence.added.empty();
  for (const RecurrenceRule& rule : item.recurrence.rules) {
    ORLOCAL_TRY(Data::Rule made, data->ruleOf(rule, data->first, true, budget));
    if (made.rule.severalADay() || made.rule.isScaled()) { data->sorted = false; }
    data->rules.push_back(std::move(made));
  }
  for (const ExceptionRule& exception : item.recurrence.exceptionRules) {
    LocalSeconds begin = exception.start ? localSeconds(*exception.start) : data->first;
    if (data->allDay()) { begin = dayOf(begin) * kSecondsPerDay; }
    ORLOCAL_TRY(Data::Rule made, data->ruleOf(exception.rule, begin, false, budget));
    data->exceptionRules.push_back(std::move(made));
  }
  for (const CalendarTime& time : item.recurrence.added) { data->added.push_back(data->localOf(time)); }
  for (const CalendarTime& time : item.recurrence.excluded) { data->exclude(time); }
  for (const CalendarTime& time : changed) { data->exclude(time); }
  sortUnique(data->added);
  sortUnique(data->excluded);
  sortUnique(data->excludedDays);
  return Series(std::move(data));
}

}  // namespace orlocal::store
