#pragma once

#include <cstdint>

#include "store/model/model.h"
#include "store/recurrence/recurrence.h"

namespace orlocal::store {

/// How the times that belong to a series (exceptions, ends of rules, original starts) follow when the series moves to
/// another hour, day, zone or kind: by as much as its start moves on the wall clock.
class SeriesShift {
 public:
  /// `series` is the series before, `from` an occurrence's original start in its own kind and zone, and `to` where that
  /// occurrence now starts. `viewer` is whom the series was compiled for. All outlive this.
  SeriesShift(const Series& series, const CalendarTime& from, const CalendarTime& to, const Zone& viewer);

  /// Whether everything stays where it is.
  bool none() const { return m_seconds == 0 && !m_otherClock; }

  /// A start, exception or recurrence id of the series.
  CalendarTime operator()(const CalendarTime& time) const;
  /// A rule with its UNTIL; when the series moves to another day, the one day that it names moves, too.
  RecurrenceRule operator()(const RecurrenceRule& rule) const;
  ExceptionRule operator()(const ExceptionRule& rule) const;
  /// Moves everything that is there, the rules as well when `rulesToo`.
  void move(Recurrence& recurrence, bool rulesToo) const;

 private:
  CalendarTime untilAt(LocalTime local) const;
  void followDay(RecurrenceRule& rule) const;

  const Series& m_series;
  CalendarTime m_from, m_to;
  const Zone& m_viewer;
  std::int64_t m_seconds;
  bool m_otherClock;
};

/// How a series repeats before one of its occurrences and from it on.
struct RecurrenceHalves {
  Recurrence left, right;
  bool ruleMakesStart = false;  ///< a rule makes the occurrence where the right half begins
};
/// `series` is `item` compiled for whoever the occurrence was shown to. Ends and counts of the rules are shared out,
/// the dates go to the half that they lie in, and rules of exceptions run on in both from where they began.
Result<RecurrenceHalves> halvesOf(const Item& item, const Series& series, Moment original);

/// The end of a rule that keeps its occurrences before `start` and none from it on.
CalendarTime untilBefore(const Series& series, Moment start);

}  // namespace orlocal::store
