#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "store/icalendar/calendar_layout.h"
#include "store/icalendar/content_line.h"
#include "store/icalendar/tzid_table.h"
#include "store/model/model.h"
#include "store/recurrence/recurrence.h"

namespace orlocal::store {

/// What the rules of one file may take together: a file made to hurt costs no more than this, and each item of it has
/// enough for any usual rule, whatever came before it.
class RuleBudget {
 public:
  /// `stop` as in `ExpansionBudget`.
  explicit RuleBudget(const std::atomic<bool>* stop = nullptr) : m_stop(stop) {}
  /// What each item has whatever came before it, and nothing that all have together.
  static RuleBudget ofOwnParts(const std::atomic<bool>* stop);

  /// Whether an item wanted more than there was.
  bool ranShort() const { return m_ranShort; }

  /// For one item; what it takes beyond an item's own part is taken from what all have together.
  ExpansionBudget forItem(const Recurrence& recurrence) const;
  void settle(const Recurrence& recurrence, const ExpansionBudget& left);
  /// False when items have come that are, together, too many in a month.
  bool takesOccurrences(std::int64_t inMonth);
  /// False when as many have come as there may be in the calendars that have no arithmetic (RSCALE).
  bool takesScaled(const Recurrence& recurrence);

 private:
  std::uint64_t given(const Recurrence& recurrence) const;

  const std::atomic<bool>* m_stop;
  std::uint64_t m_steps = 4'000'000;
  std::int64_t m_occurrences = 400'000;
  std::chrono::steady_clock::duration m_scaledTime = std::chrono::milliseconds(500);
  int m_scaled = 40;
  bool m_ranShort = false;
  mutable std::chrono::steady_clock::time_point m_begun;
};

/// An item read from its component.
struct ReadItem {
  Item item;
  /// Added occurrences with a length of their own (RDATE of periods): as changed occurrences.
  std::vector<Item> periods;
  std::shared_ptr<const Series> series;  ///< `item` compiled for UTC, when it repeats
  bool andFuture = false;                ///< changes the later occurrences, too (RANGE=THISANDFUTURE)
};

/// Reads a VEVENT or VTODO. None when it is refused; that and everything else worth telling goes to `problems`.
std::optional<ReadItem> readItem(std::string_view bytes, const ItemSpan& span, Tzids& zones, RuleBudget& rules,
                                 ReadProblems& problems);

/// Reads the lines of a VALARM, without its BEGIN and END. None when the alarm cannot be understood.
std::optional<Alarm> readAlarm(std::span<const std::string> lines);

/// Reads ATTENDEE or ORGANIZER.
Attendee readAttendee(const ContentLine& line);

}  // namespace orlocal::store
