#pragma once

#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "base/result.h"
#include "host/commands/availability/taken_time.h"
#include "host/commands/availability/time_spans.h"
#include "host/commands/command_line/command.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/words/day_range.h"

namespace CLI {
class App;
}

namespace orlocal::host {

/// What the options of `free` and `busy` say of the time that is asked about.
struct TimeWords {
  std::vector<std::string> days;
  std::string from, to, zone, hours, weekDays;
  bool onWeekdays = false, ignoresAllDay = false;
  CalendarChoice calendars;
};
void addTimeOptions(CLI::App& command, TimeWords& words);

/// The same, understood.
struct AskedTime {
  DayRange days;
  WantedHours wanted;
  store::Zone viewer;
  TimeOwner owner;

  std::vector<TimeSpan> spans() const { return wantedSpans(days.first, days.last, wanted, viewer); }
};
/// None where a usage error was told already.
std::optional<AskedTime> readTimeWords(const TimeWords& words, CommandContext& context);

/// What takes time in these spans, merged.
Result<std::vector<store::BusyTime>> busyTimesOf(store::CalendarStore& store, const AskedTime& asked,
                                                 const std::vector<TimeSpan>& spans, const CalendarChoice& calendars);

/// "Mon 2 Nov 2026 to Sun 8 Nov 2026, 09:00–17:00 on Mon–Fri, in Europe/Berlin": for people, what was asked.
std::string askedInWords(const AskedTime& asked, bool tellsZone);
/// The same for programs: "from", "to", "timeZone", "hours", "weekDays".
nlohmann::json askedJson(const AskedTime& asked);

}  // namespace orlocal::host
