#pragma once

#include <optional>
#include <span>
#include <vector>

#include "store/calendar_store.h"
#include "store/model/alarm_key.h"

namespace orlocal::store {

/// What became of alarms: which rang, were put off, or were acknowledged. That is the store's own, beside the items: no
/// item changes by it, and the log of changes does not tell of it. Each call is a transaction of its own.
class AlarmBook {
 public:
  /// The store is borrowed.
  explicit AlarmBook(CalendarStore& store) : m_store(store) {}

  /// By the moments at which they ring, those put off as well.
  Result<std::vector<AlarmRecord>> records();
  Result<std::vector<AlarmRecord>> snoozed();
  /// Those of which nothing is known yet.
  Result<std::vector<AlarmKey>> unknown(std::span<const AlarmKey> keys);
  /// Up to when alarms were told; none before anybody did.
  Result<std::optional<Moment>> toldUpTo();

  /// Gives those that are the caller's to tell: whoever asks first has them, and nobody gets one twice. Those of
  /// `putOff` are told if that is over by `now`. Alarms are told up to `upTo` then.
  struct Wanted {
    std::vector<AlarmKey> due, putOff;
  };
  struct Claim {
    std::vector<AlarmKey> due, putOff;
    std::optional<Moment> toldUpTo;  ///< as it stood before
  };
  Result<Claim> claim(const Wanted& wanted, Moment now, Moment upTo);

  /// They ring at `until`, whether they rang before or not.
  Status snooze(std::span<const AlarmKey> keys, Moment until);
  /// They ring no more.
  Status acknowledge(std::span<const AlarmKey> keys, Moment now);

 private:
  CalendarStore& m_store;
};

}  // namespace orlocal::store
