#pragma once

#include <compare>
#include <optional>

#include "store/model/model.h"

namespace orlocal::store {

/// Names one ring of an alarm, the same as long as neither its item nor its alarm is moved.
struct AlarmKey {
  ItemId item = 0;  ///< the event, series or reminder
  Moment original;  ///< the original start of the occurrence; 1970 of a reminder
  Moment moment;    ///< when it rings, unless it is put off
  int number = 0;   ///< among those of one occurrence that ring at one moment

  friend auto operator<=>(const AlarmKey&, const AlarmKey&) = default;
};

/// What became of a ring.
struct AlarmRecord {
  AlarmKey key;
  std::optional<Moment> rung;          ///< when it was told last
  std::optional<Moment> snoozed;       ///< until when it is put off; it rings again then
  std::optional<Moment> acknowledged;  ///< it rings no more

  friend bool operator==(const AlarmRecord&, const AlarmRecord&) = default;
};

}  // namespace orlocal::store
