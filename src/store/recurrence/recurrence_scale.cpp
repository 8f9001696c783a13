#include "store/recurrence/recurrence_scale.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <libical/ical.h>

#include "base/translation.h"
#include "store/recurrence/recurrence.h"
#include "store/recurrence/rule_text.h"

namespace orlocal::store {

namespace {

using Frequency = RecurrenceRule::Frequency;

/// Finding one time takes as long as so many steps of the other rules.
constexpr std::uint64_t kStepsOfOne = 2'000;

struct FreeIterator {
  void operator()(icalrecur_iterator* iterator) const { icalrecur_iterator_free(iterator); }
};
using Iterator = std::unique_ptr<icalrecur_iterator, FreeIterator>;

icaltimetype libicalTime(LocalSeconds at, bool allDay) {
  const LocalTime local = localTime(at);
  icaltimetype time = icaltime_null_time();
  time.year = static_cast<int>(local.year());
  time.month = local.month();
  time.day = local.day();
  time.hour = local.hour();
  time.minute = local.minute();
  time.second = local.second();
  time.is_date = allDay ? 1 : 0;
  return time;
}

LocalSeconds secondsOf(const icaltimetype& time) {
  return dayNumber(time.year, time.month, time.day) * kSecondsPerDay + time.hour * 3600 + time.minute * 60 +
         time.second;
}

icalrecurrencetype_skip skipOf(RecurrenceRule::Skip skip) {
  switch (skip) {
    case RecurrenceRule::Skip::kBackward:
      return ICAL_SKIP_BACKWARD;
    case RecurrenceRule::Skip::kForward:
      return ICAL_SKIP_FORWARD;
    case RecurrenceRule::Skip::kOmit:
      break;
  }
  return ICAL_SKIP_OMIT;
}

/// Without its end: libical would walk to it from the start. Null when libical makes nothing of the rule. `scale` is
/// borrowed by the iterator.
Iterator iteratorOf(RecurrenceRule rule, std::string& scale, LocalSeconds start, bool allDay) {
  rule.count.reset();
  rule.until.reset();
  if (allDay) { rule.byHour = rule.byMinute = rule.bySecond = {}; }
  for (int& second : rule.bySecond) {
    second = std::min(second, 59);  // a leap second shows as the one before it
  }
  const icalrecurrencetype_skip skip = skipOf(rule.skip);
  // Of a scale in the text libical keeps a copy that nobody releases.
  rule.scale.clear();
  rule.skip = RecurrenceRule::Skip::kOmit;
  icalrecurrencetype read = icalrecurrencetype_from_string(ruleText(rule).c_str());
  read.rscale = scale.data();
  read.skip = skip;
  return Iterator(icalrecur_iterator_new(read, libicalTime(start, allDay)));
}

/// libical looks for a time that never comes up to the year 2582, in some calendars for minutes, and cannot be stopped.
/// So it is asked only for what surely comes.
bool mayNeverMeet(const RecurrenceRule& rule) {
  if (!rule.bySetPosition.empty() || !rule.byYearDay.empty() || !rule.byWeekNumber.empty()) { return true; }
  const bool months = !rule.byMonth.empty() || !rule.byLeapMonth.empty();
  if (months && rule.frequency == Frequency::kMonthly && rule.interval != 1) { return true; }
  if (!rule.byDay.empty()) {
    const bool shortMonth = std::find(rule.byMonth.begin(), rule.byMonth.end(), 13) != rule.byMonth.end();
    if (!rule.byMonthDay.empty() || shortMonth) { return true; }
    const int most = months || rule.frequency == Frequency::kMonthly ? 4 : 50;
    for (const auto& day : rule.byDay) {
      if (std::abs(day.ordinal) > most) { return true; }
    }
  }
  // Adar I comes seven times in nineteen years, other leap months hardly ever; moved ones come each year.
  const bool leapsAreLeftOut = !rule.byLeapMonth.empty() && rule.skip == RecurrenceRule::Skip::kOmit;
  return leapsAreLeftOut && (rule.scale != "HEBREW" || rule.byLeapMonth != std::vector<int>{5} || rule.interval != 1);
}

/// Whether libical makes anything of the rule. Asking takes as long as finding a time, and a file asks for each of its
/// items; what they have in common is remembered.
bool isKnown(RecurrenceRule rule) {
  constexpr std::size_t kRemembered = 256;
  static std::mutex mutex;
  static std::map<std::string, bool> known;
  rule.count.reset();
  rule.until.reset();
  const std::string text = ruleText(rule);
  const std::lock_guard lock(mutex);
  if (const auto found = known.find(text); found != known.end()) { return found->second; }
  if (known.size() >= kRemembered) { known.clear(); }
  std::string scale = rule.scale;
  constexpr LocalSeconds kAnyStart = 0;
  return known[text] = iteratorOf(rule, scale, kAnyStart, true) != nullptr;
}

}  // namespace

struct ScaledRule::Found {
  RecurrenceRule rule;
  bool allDay = false;
  std::string scale;
  bool begun = false;  ///< making the iterator takes as long as finding a time, so that waits until one is wanted
  Iterator iterator;   ///< null when there is nothing more
  std::vector<LocalSeconds> times;
  std::mutex mutex;
};

bool ScaledRule::isNeededFor(const RecurrenceRule& rule) {
  return !rule.scale.empty() &&
         (rule.frequency >= Frequency::kMonthly || !rule.byMonth.empty() || !rule.byLeapMonth.empty() ||
          !rule.byMonthDay.empty() || !rule.byYearDay.empty() || !rule.byWeekNumber.empty());
}

Status ScaledRule::check(const RecurrenceRule& rule) {
  if (rule.frequency < Frequency::kMonthly) {
    return failure(ErrorCode::kUnsupported,
                   tr("rules by days or shorter are not followed where they name months of RSCALE={}", rule.scale));
  }
  if (mayNeverMeet(rule)) {
    return failure(ErrorCode::kUnsupported,
                   tr("days of RSCALE={} are not followed when they are chosen in more than one way, or may "
                      "never come",
                      rule.scale));
  }
  if (rule.interval > std::numeric_limits<short>::max() || !isKnown(rule)) {
    return failure(ErrorCode::kUnsupported,
                   tr("RSCALE={} is no calendar that is known here, or has no such days", rule.scale));
  }
  return {};
}

ScaledRule::ScaledRule(const RecurrenceRule& rule, LocalSeconds start, bool allDay)
    : m_start(start), m_found(std::make_unique<Found>()) {
  m_found->rule = rule;
  m_found->allDay = allDay;
  m_found->scale = rule.scale;
}

ScaledRule::~ScaledRule() = default;

bool ScaledRule::walk(LocalSeconds from, LocalSeconds to, ExpansionBudget& budget,
                      const std::function<bool(LocalSeconds)>& visit) const {
  from = std::max(from, m_start);
  std::optional<std::size_t> at;
  for (;;) {
    LocalSeconds time = 0;
    {
      const std::lock_guard lock(m_found->mutex);
      auto& times = m_found->times;
      if (!std::exchange(m_found->begun, true)) {
        if (!budget.step(kStepsOfOne)) { return m_found->begun = false; }
        m_found->iterator = iteratorOf(m_found->rule, m_found->scale, m_start, m_found->allDay);
      }
      while (m_found->iterator && (times.empty() || times.back() < from || (at && *at >= times.size()))) {
        if (!budget.step(kStepsOfOne)) { return false; }
        const icaltimetype next = icalrecur_iterator_next(m_found->iterator.get());
        if (icaltime_is_null_time(next) != 0) {
          m_found->iterator.reset();
        } else if (const LocalSeconds found = secondsOf(next); times.empty() || found > times.back()) {
          times.push_back(found);
        }
      }
      if (!at) { at = static_cast<std::size_t>(std::lower_bound(times.begin(), times.end(), from) - times.begin()); }
      if (*at >= times.size()) { return true; }
      time = times[(*at)++];
    }
    if (time >= to || !budget.step()) { return time >= to; }
    if (!visit(time)) { return true; }
  }
}

}  // namespace orlocal::store
