#include "store/recurrence/recurrence.h"

#include <algorithm>
#include <limits>
#include <utility>

#include <fmt/format.h>

#include "base/try.h"
#include "store/recurrence/recurrence_rule.h"
#include "store/time/steady_clock.h"

namespace orlocal::store {

bool ExpansionBudget::checkTime() {
  const bool stopped = m_stop != nullptr && m_stop->load(std::memory_order_relaxed);
  if (stopped || std::chrono::steady_clock::now() > m_deadline) { m_steps = 0; }
  return m_steps != 0;
}

namespace {

using std::chrono::microseconds;
using std::chrono::seconds;

/// Occurrences are sorted in pieces of about this many.
constexpr std::int64_t kSortedPiece = 20'000;
/// The first piece is this small: most who ask for the first occurrence need no other.
constexpr std::int64_t kFirstPiece = 32;
/// What one month may hold of a series.
constexpr std::int64_t kMostInMonth = 50'000;
constexpr LocalSeconds kMonth = 31 * kSecondsPerDay;
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

struct Series::Data {
  struct Rule {
    CompiledRule rule;
    LocalSeconds last = kLastLocalSecond;  ///< nothing starts after it
    std::optional<Moment> until;
    bool endless = true;
    bool makesStart = false;
    std::int64_t most = std::numeric_limits<std::int64_t>::max();  ///< COUNT
  };

  std::string name;
  Zone zone;
  CalendarTime start;
  LocalSeconds first = 0;
  Moment firstMoment;
  microseconds length{0};     ///< of timed items
  std::int64_t dayCount = 0;  ///< of whole days
  std::vector<Rule> rules;
  std::vector<Rule> exceptionRules;
  std::vector<LocalSeconds> added;      ///< sorted
  std::vector<Moment> excluded;         ///< sorted
  std::vector<DayNumber> excludedDays;  ///< sorted
  bool sorted = true;                   ///< one source that never goes back in time

  bool allDay() const { return start.kind == CalendarTime::Kind::kDate; }
  Moment momentAt(LocalSeconds local) const { return zone.toMoment(localTime(local)); }

  Instance instance(LocalSeconds local, Moment at) const {
    if (allDay()) { return {localTime(local), at, momentAt(local + dayCount * kSecondsPerDay)}; }
    return {localTime(local), at, at + length};
  }
  /// None when the budget ran out.
  std::optional<bool> isExcluded(LocalSeconds local, Moment at, ExpansionBudget& budget) const {
    if (!excludedDays.empty() && std::binary_search(excludedDays.begin(), excludedDays.end(), dayOf(local))) {
      return true;
    }
    bool found = !excluded.empty() && std::binary_search(excluded.begin(), excluded.end(), at);
    for (const Rule& rule : exceptionRules) {
      if (found) { break; }
      const auto take = [&](LocalSeconds, Moment) { return !(found = true); };
      if (!walk(rule, local, local + 1, budget, take)) { return std::nullopt; }
    }
    return found;
  }
  Failed overBudget() const {
    return failure(ErrorCode::kBudget,
                   name + " repeats in a way that takes too long to follow; give it a simpler rule or remove it");
  }

  LocalSeconds dateOf(const CalendarTime& time) const { return dayOf(localSeconds(time.local)) * kSecondsPerDay; }
  /// Where on the series' wall clock a time of another kind or zone lies.
  LocalSeconds localOf(const CalendarTime& time) const {
    if (allDay()) { return dateOf(time); }
    if (time.kind == start.kind && time.zone == start.zone) { return localSeconds(time.local); }
    if (time.kind == CalendarTime::Kind::kFloating) { return localSeconds(time.local); }
    // A date among date-times means the series' hour on that day.
    if (time.kind == CalendarTime::Kind::kDate) { return dateOf(time) + first - dayOf(first) * kSecondsPerDay; }
    return localSeconds(zone.toLocal(momentOf(time, zone)));
  }

  /// `begin` is from when the rule runs; `ofSeries` that it is the series' start, which counts also where no rule makes
  /// it.
  Result<Rule> ruleOf(const RecurrenceRule& from, LocalSeconds begin, bool ofSeries, ExpansionBudget& budget) const;
  void exclude(const CalendarTime& time);
  bool walk(const Rule& rule, LocalSeconds from, LocalSeconds to, ExpansionBudget& budget,
            const std::function<bool(LocalSeconds, Moment)>& visit) const;
  bool stream(Moment from, Moment to, ExpansionBudget& budget,
              const std::function<bool(LocalSeconds, Moment)>& visit) const;
  bool gather(Moment from, Moment to, ExpansionBudget& budget,
              const std::function<bool(LocalSeconds, Moment)>& visit) const;
  Moment latestUpTo(LocalSeconds local) const;
  Moment end() const;
};

/// Walks a rule's own starts within its UNTIL and COUNT. False when the budget ran out.
bool Series::Data::walk(const Rule& rule, LocalSeconds from, LocalSeconds to, ExpansionBudget& budget,
                        const std::function<bool(LocalSeconds, Moment)>& visit) const {
  const LocalSeconds end = std::min(to, rule.last == kLastLocalSecond ? rule.last : rule.last + 1);
  return rule.rule.walk(from, end, budget, [&](LocalSeconds local) {
    const Moment at = momentAt(local);
    return (rule.until && at > *rule.until) || visit(local, at);
  });
}

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
  if (!start) { return failure(ErrorCode::kInvalid, data->name + " has no start"); }
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

Series::Series(std::unique_ptr<const Data> data) : m_data(std::move(data)) {}
Series::Series(Series&&) noexcept = default;
Series& Series::operator=(Series&&) noexcept = default;
Series::~Series() = default;

/// Starts in [from, to) of at most one rule, in order by themselves.
bool Series::Data::stream(Moment from, Moment to, ExpansionBudget& budget,
                          const std::function<bool(LocalSeconds, Moment)>& visit) const {
  const bool startFirst = rules.empty() || !rules.front().makesStart;
  if (startFirst && firstMoment >= from && firstMoment < to && !visit(first, firstMoment)) { return true; }
  if (rules.empty()) { return true; }
  // Two dates can be one moment where the clock skips a day: the later one is left out.
  std::optional<Moment> previous;
  const LocalSeconds low = clampedLocal(zone, from) - kClockSlack;
  const LocalSeconds high = clampedLocal(zone, to) + kClockSlack;
  return walk(rules.front(), low, high, budget, [&](LocalSeconds local, Moment at) {
    if (at >= to) { return false; }
    const bool again = previous == at;
    previous = at;
    return again || at < from || visit(local, at);
  });
}

/// Starts in [from, to) of several sources, or of one that goes back where the clock does. Pieces are bounded by
/// moments and the sources walked a little past them on the wall clock, so each start is met in just one piece,
/// whatever the clock does at its edges; within it sorting puts sources in order and starts at one moment beside each
/// other.
bool Series::Data::gather(Moment from, Moment to, ExpansionBudget& budget,
                          const std::function<bool(LocalSeconds, Moment)>& visit) const {
  std::int64_t perDay = 1;
  for (const Rule& rule : rules) { perDay += rule.rule.perDay(); }
  const auto timeOf = [&](std::int64_t occurrences) {
    return seconds(std::clamp<std::int64_t>(occurrences * kSecondsPerDay / perDay, 60, 3660 * kSecondsPerDay));
  };
  seconds piece = timeOf(kFirstPiece);
  std::vector<std::pair<Moment, LocalSeconds>> found;
  for (Moment low = from, high = from; low < to; low = high, piece = std::min(piece * 2, timeOf(kSortedPiece))) {
    // Pieces without a start cost, too: a long range may have any number of them.
    if (!budget.step()) { return false; }
    high = std::min(to, low + piece);
    found.clear();
    const auto take = [&](LocalSeconds local, Moment at) {
      if (at >= low && at < high) { found.emplace_back(at, local); }
      return true;
    };
    take(first, firstMoment);
    const LocalSeconds lowLocal = earliestLocal(zone, low);
    const LocalSeconds highLocal = latestLocal(zone, high);
    const auto begin = std::lower_bound(added.begin(), added.end(), lowLocal);
    for (auto it = begin; it != added.end() && *it < highLocal; ++it) { take(*it, momentAt(*it)); }
    for (const Rule& rule : rules) {
      if (!walk(rule, lowLocal, highLocal, budget, take)) { return false; }
    }
    std::sort(found.begin(), found.end());
    for (std::size_t i = 0; i < found.size(); ++i) {
      if ((i == 0 || found[i].first != found[i - 1].first) && !visit(found[i].second, found[i].first)) { return true; }
    }
  }
  return true;
}

/// No wall-clock time up to `local` is a later moment: one that the clock has just skipped may be later than `local`.
Moment Series::Data::latestUpTo(LocalSeconds local) const {
  const Moment at = momentAt(local);
  if (local == kLastLocalSecond) { return at; }
  Moment latest = at;
  for (auto change = zone.changeAfter(at - seconds(kClockSlack)); change && change->at <= at;
       change = zone.changeAfter(change->at)) {
    latest = std::max(latest, change->at + seconds(change->offsetAfter - change->offsetBefore - 1));
  }
  return latest;
}

/// No start lies at or after it.
Moment Series::Data::end() const {
  Moment last = firstMoment;
  for (const Rule& rule : rules) {
    // What comes once a day always comes at the same time of day, and no later for a skip.
    const Moment ofRule = rule.rule.severalADay() ? latestUpTo(rule.last) : momentAt(rule.last);
    last = std::max(last, rule.until ? std::min(*rule.until, ofRule) : ofRule);
  }
  for (LocalSeconds local : added) { last = std::max(last, momentAt(local)); }
  return last + microseconds(1);
}

Status Series::expand(Moment from, Moment to, ExpansionBudget& budget, const Visitor& visit) const {
  const Data& data = *m_data;
  const microseconds reach = data.allDay() ? std::chrono::days(data.dayCount + 2) : data.length;
  const Moment earliest =
      std::min(data.firstMoment, data.added.empty() ? data.firstMoment : data.momentAt(data.added.front()));
  const Moment low = from <= earliest ? earliest : std::max(earliest, from - std::min(reach, from - earliest));
  const Moment high = std::min(to, data.end());
  bool decided = true;
  const auto show = [&](LocalSeconds local, Moment at) {
    const Instance instance = data.instance(local, at);
    if (instance.end <= from && !(instance.start == instance.end && instance.start == from)) { return true; }
    const auto excluded = data.isExcluded(local, at, budget);
    decided = excluded.has_value();
    return decided && (*excluded || visit(instance));
  };
  if (low >= high) { return {}; }
  const bool done = data.sorted ? data.stream(low, high, budget, show) : data.gather(low, high, budget, show);
  return done && decided ? Status() : Status(data.overBudget());
}

std::int64_t Series::mostInMonth() const {
  const Data& data = *m_data;
  std::int64_t most = 0;
  for (const Data::Rule& rule : data.rules) {
    // Without the room that is left for clock changes around an end that is a moment.
    const LocalSeconds last = rule.until ? std::min(rule.last, clampedLocal(data.zone, *rule.until) + 3600) : rule.last;
    most += std::min(rule.most, rule.rule.mostInMonth(last));
  }
  // Added ones: the most that come within a month of one of them.
  std::int64_t added = 0;
  for (std::size_t begin = 0, end = 0; end < data.added.size(); ++end) {
    while (data.added[end] - data.added[begin] >= kMonth) { ++begin; }
    added = std::max(added, static_cast<std::int64_t>(end - begin + 1));
  }
  // Long ones reach into the months after theirs.
  const LocalSeconds length =
      data.allDay() ? data.dayCount * kSecondsPerDay : std::chrono::floor<seconds>(data.length).count();
  return most * (length / kMonth + 1) + added;
}

Status Series::checkDensity() const {
  if (mostInMonth() <= kMostInMonth) { return {}; }
  return failure(ErrorCode::kTooLarge,
                 fmt::format("{} has more than 50,000 occurrences in a month, too many to be shown; give its rule a "
                             "longer interval or an earlier end",
                             m_data->name));
}

Result<std::optional<Series::Instance>> Series::at(Moment start, ExpansionBudget& budget) const {
  std::optional<Instance> found;
  ORLOCAL_CHECK(expand(start, start + microseconds(1), budget, [&](const Instance& instance) {
    if (instance.start == start) { found = instance; }
    return !found;
  }));
  return found;
}

Result<std::optional<Series::Instance>> Series::first(ExpansionBudget& budget) const {
  const Data& data = *m_data;
  // Nothing but an added time comes before the start.
  if (data.added.empty() || data.added.front() >= data.first) {
    const auto excluded = data.isExcluded(data.first, data.firstMoment, budget);
    if (!excluded) { return data.overBudget(); }
    if (!*excluded) { return data.instance(data.first, data.firstMoment); }
  }
  std::optional<Instance> found;
  ORLOCAL_CHECK(expand(Moment::min(), Moment::max(), budget, [&](const Instance& instance) {
    found = instance;
    return false;
  }));
  return found;
}

Series::Bounds Series::bounds() const {
  const Data& data = *m_data;
  Bounds bounds{data.firstMoment, std::nullopt};
  if (!data.added.empty()) { bounds.start = std::min(bounds.start, data.momentAt(data.added.front())); }
  const auto goesOn = [](const Data::Rule& rule) { return rule.endless || rule.last == kLastLocalSecond; };
  if (std::any_of(data.rules.begin(), data.rules.end(), goesOn)) { return bounds; }
  const Moment last = data.end() - microseconds(1);
  bounds.end = data.allDay() ? data.momentAt(localSeconds(data.zone.toLocal(last)) + data.dayCount * kSecondsPerDay)
                             : last + data.length;
  return bounds;
}

std::optional<PlainSeries> Series::plain() const {
  const Data& data = *m_data;
  if (data.rules.size() != 1 || !data.exceptionRules.empty() || !data.added.empty()) { return std::nullopt; }
  const Data::Rule& rule = data.rules.front();
  const auto days = rule.rule.dayPattern();
  if (!days || data.zone.skipsDay()) { return std::nullopt; }
  PlainSeries plain;
  plain.zone = data.zone;
  plain.allDay = data.allDay();
  plain.days = *days;
  plain.timeOfDay = data.allDay() ? 0 : rule.rule.timeOfDay();
  plain.length = data.allDay() ? data.dayCount * kSecondsPerDay : std::chrono::floor<seconds>(data.length).count();
  const auto isExcluded = [&](DayNumber day, Moment at) {
    return std::binary_search(data.excludedDays.begin(), data.excludedDays.end(), day) ||
           std::binary_search(data.excluded.begin(), data.excluded.end(), at);
  };
  if (!rule.makesStart && !isExcluded(dayOf(data.first), data.firstMoment)) { plain.start = data.first; }

  const auto momentOn = [&](DayNumber day) { return data.momentAt(day * kSecondsPerDay + plain.timeOfDay); };
  plain.firstDay = dayOf(data.first + kSecondsPerDay - 1 - plain.timeOfDay);
  // The very last second there is belongs to no rule that goes on.
  const LocalSeconds last = rule.last == kLastLocalSecond ? rule.last - 1 : rule.last;
  plain.lastDay = dayOf(last - plain.timeOfDay);
  while (rule.until && plain.lastDay >= plain.firstDay && momentOn(plain.lastDay) > *rule.until) { --plain.lastDay; }

  plain.excluded = data.excludedDays;
  for (const Moment at : data.excluded) {
    // Where the clock changes at midnight the day on it may be the one before.
    const DayNumber near = dayOf(clampedLocal(data.zone, at));
    for (const DayNumber day : {near - 1, near}) {
      if (momentOn(day) == at) { plain.excluded.push_back(day); }
    }
  }
  sortUnique(plain.excluded);
  return plain;
}

bool Series::followsViewer() const {
  return m_data->start.kind == CalendarTime::Kind::kDate || m_data->start.kind == CalendarTime::Kind::kFloating;
}

Result<std::int64_t> Series::countBefore(Moment start, std::size_t index, ExpansionBudget& budget) const {
  const Data& data = *m_data;
  if (index >= data.rules.size()) { return failure(ErrorCode::kInvalid, data.name + " has no such rule"); }
  const Data::Rule& rule = data.rules[index];
  if (start <= data.firstMoment) { return 0; }
  const LocalSeconds around = clampedLocal(data.zone, start);
  const LocalSeconds sure = std::min(around - kClockSlack, rule.last + 1);
  const auto counted = rule.rule.count(sure, budget);
  if (!counted) { return data.overBudget(); }
  const bool makesStart = rule.rule.isScaled() ? rule.rule.makes(data.first, budget) : rule.makesStart;
  std::int64_t total = *counted + (makesStart ? 0 : 1);
  const bool done =
      data.walk(rule, std::max(sure, data.first), around + kClockSlack, budget, [&](LocalSeconds, Moment at) {
        if (at < start) { ++total; }
        return true;
      });
  if (!done) { return data.overBudget(); }
  return total;
}

Moment Series::originalStart(const CalendarTime& recurrenceId) const {
  return m_data->momentAt(m_data->localOf(recurrenceId));
}

CalendarTime Series::recurrenceId(Moment originalStart) const {
  CalendarTime time = m_data->start;
  time.local = m_data->zone.toLocal(originalStart);
  if (m_data->allDay()) { time.local = LocalTime(LocalDay(time.local)); }
  return time;
}

}  // namespace orlocal::store
