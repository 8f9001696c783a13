#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/result.h"
#include "host/commands/describing/item_json.h"
#include "store/alarm_timetable.h"
#include "store/calendar_store.h"

namespace orlocal::host {

enum class AlarmState {
  kComing,   ///< rings yet
  kRung,     ///< was told, and nobody has dismissed it
  kSnoozed,  ///< rings again
};

/// A ring of an alarm with all that can be said of it.
struct AlarmNews {
  store::AlarmRing ring;
  store::Moment rings;  ///< when it rings or rang: its own moment, or the one to which it is put off
  AlarmState state = AlarmState::kComing;
  std::optional<store::Moment> rung;        ///< when it was told last
  std::shared_ptr<const store::Item> item;  ///< whose alarm it is; a changed occurrence where that has its own
  std::shared_ptr<const CalendarNames> calendars;

  const store::Alarm& alarm() const { return item->alarms[ring.alarm]; }
  /// Opens the event or series, or the reminder.
  const std::string& identifier() const;
  /// What its calendar is called among the others.
  std::string calendar() const;
};

/// None when the item is gone meanwhile.
Result<std::optional<AlarmNews>> newsOf(store::CalendarStore& store, const store::AlarmRing& ring,
                                        const std::shared_ptr<const CalendarNames>& calendars);

/// What rings in [now, until), what is snoozed, and what has rung and was not dismissed, for a day and as long as what
/// it is about is not over; of `calendars` alone, in the order in which they ring.
Result<std::vector<AlarmNews>> listAlarms(store::CalendarStore& store, store::AlarmTimetable& timetable,
                                          const std::vector<store::Calendar>& calendars, store::Moment now,
                                          store::Moment until);

}  // namespace orlocal::host
