#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "store/alarms/alarm_times.h"
#include "store/calendar_store.h"
#include "store/model/alarm_key.h"

namespace orlocal::store {

/// One ring of an alarm, and what it is about.
struct AlarmRing {
  AlarmKey key;
  ItemId row = 0;               ///< whose alarm it is: the event, series, changed occurrence or reminder
  std::size_t alarm = 0;        ///< its place in the row's `alarms`
  std::optional<Moment> start;  ///< of the occurrence, or of the reminder
  std::optional<Moment> end;    ///< the same; of a reminder its due
};

/// Tells when alarms ring: of every occurrence of every event, and of every open reminder as it is due now.
///
/// Keeps in memory who has alarms, and what rings within a day. What others commit is followed by the log of changes,
/// so that a change costs what the changed items have, whatever else the store holds; what the store that is given here
/// itself saves is not noticed.
class AlarmTimetable {
 public:
  /// The store is borrowed.
  AlarmTimetable(CalendarStore& store, Zone viewer) : m_store(store), m_viewer(viewer) {}

  /// What rings in [from, to), by its moment.
  Result<std::vector<AlarmRing>> between(Moment from, Moment to);
  /// When something rings at or after `moment`; when to ask again where nothing does within a day or so.
  Result<Moment> nextFrom(Moment moment);
  /// None when it would not ring any more: its item was moved, cancelled, completed or removed, or the alarm was.
  Result<std::optional<AlarmRing>> ringOf(const AlarmKey& key);

  /// Why alarms of some items cannot be told: a sentence for each that cannot be followed.
  const std::map<ItemId, std::string>& troubles() const { return m_troubles; }

 private:
  /// Of an event, series or reminder with alarms.
  struct Known {
    bool inParts = false;  ///< it repeats, or changed occurrences have alarms
    AlarmReach reach;      ///< of one in parts
    Moment first, last;    ///< of any other: its first ring and its last
  };

  Status follow();
  Status readAll();
  Status readAgain(ItemId main);
  Status learn(const Item& row);
  Status load(Moment from, Moment to);
  void forget(ItemId main);
  Result<std::vector<AlarmRing>> ringsOf(ItemId main, const AlarmRange& range);
  Status addRings(ItemId main);
  Result<std::vector<AlarmRing>> ringsInParts(const Item& main, const AlarmRange& range);

  CalendarStore& m_store;
  Zone m_viewer;
  std::optional<LogPosition> m_position;  ///< none: nothing was read yet
  std::uint64_t m_generation = 0;
  std::map<ItemId, Known> m_known;
  AlarmRange m_loaded{Moment(), Moment()};
  std::vector<AlarmRing> m_rings;  ///< of that range, by moment
  std::map<ItemId, std::string> m_troubles;
};

}  // namespace orlocal::store
