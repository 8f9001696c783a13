#include <algorithm>
#include <utility>

#include "base/try.h"
#include "store/recurrence/series_data.h"
#include "store/time/steady_clock.h"

// How a series goes to a range: the sources of its starts, walked and put in order.
namespace orlocal::store {

namespace {

using std::chrono::microseconds;
using std::chrono::seconds;

/// Occurrences are sorted in pieces of about this many.
constexpr std::int64_t kSortedPiece = 20'000;
/// The first piece is this small: most who ask for the first occurrence need no other.
constexpr std::int64_t kFirstPiece = 32;

}  // namespace

/// Walks a rule's own starts within its UNTIL and COUNT. False when the budget ran out.
bool Series::Data::walk(const Rule& rule, LocalSeconds from, LocalSeconds to, ExpansionBudget& budget,
                        const std::function<bool(LocalSeconds, Moment)>& visit) const {
  const LocalSeconds end = std::min(to, rule.last == kLastLocalSecond ? rule.last : rule.last + 1);
  return rule.rule.walk(from, end, budget, [&](LocalSeconds local) {
    const Moment at = momentAt(local);
    return (rule.until && at > *rule.until) || visit(local, at);
  });
}

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

}  // namespace orlocal::store
