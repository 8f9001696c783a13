#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/result.h"
#include "store/model/model.h"
#include "store/recurrence/day_pattern.h"
#include "store/time/zone.h"

namespace orlocal::store {

/// What expanding may take, in steps of the rules (some 20 ns each) and in time. One budget may serve the many series
/// of one query, or of one file.
class ExpansionBudget {
 public:
  /// `stop` is asked now and then; when it is set, nothing is left.
  explicit ExpansionBudget(std::uint64_t steps = 20'000'000, std::chrono::milliseconds time = std::chrono::seconds(10),
                           const std::atomic<bool>* stop = nullptr)
      : m_steps(steps), m_deadline(std::chrono::steady_clock::now() + time), m_stop(stop) {}

  /// Takes one step, or many at once for what costs as much; false when steps or time have run out, and ever after.
  bool step(std::uint64_t count = 1) {
    if (m_steps < count) { return m_steps = 0, false; }
    const std::uint64_t before = m_steps;
    m_steps -= count;
    return before >> 12U == m_steps >> 12U || checkTime();
  }
  std::uint64_t left() const { return m_steps; }

 private:
  bool checkTime();

  std::uint64_t m_steps;
  std::chrono::steady_clock::time_point m_deadline;
  const std::atomic<bool>* m_stop;
};

/// A series that comes once a day at most, on days that can be told one by one: all that its occurrences are, so that
/// many of them are found together. Those in a zone whose clock once skipped a whole day are none of these.
struct PlainSeries {
  Zone zone;
  bool allDay = false;
  DayPattern days;
  DayNumber firstDay = 0, lastDay = 0;  ///< of the rule; none of it when the last lies before the first
  LocalSeconds timeOfDay = 0;           ///< seconds after midnight
  LocalSeconds length = 0;              ///< seconds; of whole days on the wall clock
  std::optional<LocalSeconds> start;    ///< the series' own, where the rule does not make it
  std::vector<DayNumber> excluded;      ///< days of the rule that do not count; sorted
};

/// A repeating item made ready for expansion: small, immutable, cheap to keep by the ten thousand. A single item is a
/// series with one occurrence. Any thread.
///
/// Rules run on the wall clock of the item's zone and each occurrence is converted afterwards. The start is always the
/// first occurrence and counts as the first of COUNT, also when the rule itself would not make it (RFC 5545, 3.8.5.3).
/// The exact length of the first occurrence applies to all; whole days keep their number of days. Occurrences that fall
/// on one moment are one. There are none after the year 9999.
class Series {
 public:
  struct Instance {
    LocalTime local;  ///< wall clock in the series' zone, as the rule made it (a skipped time stays as it is)
    Moment start;
    Moment end;  ///< exclusive; equal to `start` when the item has no length

    friend bool operator==(const Instance&, const Instance&) = default;
  };
  /// Returns false to stop.
  using Visitor = std::function<bool(const Instance&)>;

  /// `changed` are the recurrence ids of the changed occurrences, left out like exceptions. A reminder without a start
  /// repeats from its due moment. Fails, naming the item, when it has no start, when a rule cannot be followed, or when
  /// finding the end of a counted rule takes too long; `budget` is what that may take, where the caller shares one.
  static Result<Series> compile(const Item& item, const Zone& viewer, const std::vector<CalendarTime>& changed = {},
                                ExpansionBudget* budget = nullptr);

  Series(Series&&) noexcept;
  Series& operator=(Series&&) noexcept;
  ~Series();

  /// Visits the occurrences that overlap [from, to), by start. One without length overlaps where it stands. Fails,
  /// naming the item, when the budget runs out; what was visited before is then incomplete.
  Status expand(Moment from, Moment to, ExpansionBudget& budget, const Visitor& visit) const;

  /// Whether few enough of its occurrences lie within one month for ranges to be read; fails with the reason, as an
  /// estimate from above that takes no expanding.
  Status checkDensity() const;
  /// The estimate: at most so many lie within one month.
  std::int64_t mostInMonth() const;

  /// The occurrence that starts at `start`; none when none does.
  Result<std::optional<Instance>> at(Moment start, ExpansionBudget& budget) const;

  /// None when exceptions leave no occurrence.
  Result<std::optional<Instance>> first(ExpansionBudget& budget) const;

  /// The same series, told without rules; none when it is not of that kind.
  std::optional<PlainSeries> plain() const;

  /// The first start and the last end; exceptions are not looked at. No end: it goes on for ever (or past the year
  /// 9999).
  struct Bounds {
    Moment start;
    std::optional<Moment> end;
  };
  Bounds bounds() const;
  /// Whether `bounds` and all occurrences move with the viewer's zone (whole days and floating times).
  bool followsViewer() const;

  /// How many occurrences of the rule with this index, exceptions included, start before `start`: what a split takes
  /// off COUNT.
  Result<std::int64_t> countBefore(Moment start, std::size_t rule, ExpansionBudget& budget) const;

  /// The original start that a recurrence id (or exception) means here: an instant, or a date for whole days.
  Moment originalStart(const CalendarTime& recurrenceId) const;
  /// The recurrence id of the occurrence with that original start: of the series' own kind and zone.
  CalendarTime recurrenceId(Moment originalStart) const;

 private:
  struct Data;
  explicit Series(std::unique_ptr<const Data> data);
  std::unique_ptr<const Data> m_data;
};

}  // namespace orlocal::store
