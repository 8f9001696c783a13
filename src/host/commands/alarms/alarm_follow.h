#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/result.h"
#include "host/commands/alarms/alarm_list.h"
#include "host/commands/command_line/change_wait.h"
#include "store/alarm_book.h"
#include "store/alarm_timetable.h"

namespace orlocal::host {

/// Alarms that nobody was there to tell, too old to be told one by one.
struct MissedAlarms {
  std::size_t count = 0;
  store::Moment from, to;  ///< between which they should have rung
};

/// What is done with alarms that ring.
class AlarmTeller {
 public:
  virtual ~AlarmTeller() = default;
  /// How many can be told now; what rings beyond waits for its turn.
  virtual std::size_t room() = 0;
  virtual void tell(const AlarmNews& news) = 0;
  virtual void tellMissed(const MissedAlarms& missed) = 0;
  /// True when nothing can be told any more.
  virtual bool isOver() const { return false; }
  /// Why something cannot be told.
  virtual void tellTrouble(const std::string& sentence) = 0;
};

/// Waits until something may be to be done.
class AlarmClock {
 public:
  virtual ~AlarmClock() = default;
  /// Until the store may have changed, the system's clock reads `moment` or is set, the teller may have room again, or
  /// the person has had enough.
  virtual Result<Woken> sleepUntil(store::Moment moment) = 0;
};

/// Tells each alarm at its moment, once, whoever else follows the same store.
///
/// The store keeps up to when alarms were told. What should have rung since is told late, up to a day after its moment;
/// of what is older than that, up to 31 days, only the number is told. A clock that is set back makes nothing ring
/// again. Before anybody followed alarms nothing was missed.
class AlarmFollower {
 public:
  static constexpr std::chrono::hours kTellsLate{24};
  static constexpr std::chrono::days kCountsMissed{31};

  /// All are borrowed.
  AlarmFollower(store::CalendarStore& store, const store::Zone& viewer, AlarmTeller& teller)
      : m_store(store), m_book(store), m_timetable(store, viewer), m_teller(teller) {}

  /// Finds out where the telling begins.
  Status begin();
  /// Tells what is due, as far as there is room; when to come again.
  Result<store::Moment> turn();
  /// Notes how far it came, so that who follows later begins there.
  Status end();

  /// `begin`, then turns until the person has had enough or the teller is over, then `end`.
  Status follow(AlarmClock& clock);

 private:
  struct Due {
    AlarmNews news;
    bool putOff = false;
  };

  Result<std::vector<Due>> dueUpTo(store::Moment now);
  /// What rings after `after` and up to `upTo`, and was neither told nor dismissed.
  Result<std::vector<store::AlarmRing>> ringsNotTold(store::Moment after, store::Moment upTo);
  Result<std::optional<AlarmNews>> putOffNews(const store::AlarmRecord& record);
  Status countMissed(store::Moment now);
  Status claimAndTell(const std::vector<Due>& due, store::Moment now, store::Moment upTo);
  Status readSnoozed();
  void tellTroubles();

  store::CalendarStore& m_store;
  store::AlarmBook m_book;
  store::AlarmTimetable m_timetable;
  AlarmTeller& m_teller;
  store::Moment m_toldUpTo;   ///< what rings up to here was told, by us or by others
  store::Moment m_notedUpTo;  ///< the same as the store has it
  std::uint64_t m_generation = 0;
  std::vector<store::AlarmRecord> m_snoozed;
  std::shared_ptr<const CalendarNames> m_calendars;
  std::set<std::string> m_toldTroubles;
};

}  // namespace orlocal::host
