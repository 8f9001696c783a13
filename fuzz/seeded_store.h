#pragma once

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <thread>

#include "same_again.h"
#include "temporary_folder.h"

namespace orlocal::fuzz {

inline constexpr const char* kSeed = R"(BEGIN:VCALENDAR
VERSION:2.0
PRODID:-//Orlocal//Seed//EN
X-WR-CALNAME:Choir
BEGIN:VEVENT
UID:series@example.org
DTSTAMP:20261001T080000Z
DTSTART;TZID=Europe/Berlin:20261102T190000
DTEND;TZID=Europe/Berlin:20261102T210000
RRULE:FREQ=WEEKLY;COUNT=30
EXDATE;TZID=Europe/Berlin:20261109T190000
SUMMARY:Rehearsal
BEGIN:VALARM
ACTION:DISPLAY
TRIGGER:-PT15M
DESCRIPTION:Soon
END:VALARM
END:VEVENT
BEGIN:VEVENT
UID:series@example.org
DTSTAMP:20261001T080000Z
RECURRENCE-ID;TZID=Europe/Berlin:20261116T190000
DTSTART;TZID=Europe/Berlin:20261117T200000
DTEND;TZID=Europe/Berlin:20261117T210000
SUMMARY:Moved
END:VEVENT
BEGIN:VEVENT
UID:day@example.org
DTSTAMP:20261001T080000Z
DTSTART;VALUE=DATE:20261105
RRULE:FREQ=MONTHLY
SUMMARY:Whole day
END:VEVENT
BEGIN:VEVENT
UID:meeting@example.org
DTSTAMP:20261001T080000Z
DTSTART:20261103T090000Z
DURATION:PT1H
SUMMARY:Meeting
ORGANIZER:mailto:ann@example.org
ATTENDEE;CN=Cem:mailto:cem@example.org
END:VEVENT
BEGIN:VTODO
UID:plants@example.org
DTSTAMP:20261001T080000Z
DTSTART;TZID=Europe/Berlin:20261101T180000
DUE;TZID=Europe/Berlin:20261101T180000
RRULE:FREQ=DAILY;INTERVAL=2;COUNT=9
SUMMARY:Water the plants
END:VTODO
BEGIN:VTODO
UID:stamps@example.org
DTSTAMP:20261001T080000Z
SUMMARY:Buy stamps
END:VTODO
END:VCALENDAR
)";

/// What others write: an event that is new, and changes of those that the seed has.
inline constexpr const char* kOutside[] = {R"(BEGIN:VCALENDAR
VERSION:2.0
PRODID:-//Orlocal//Seed//EN
X-WR-CALNAME:Choir
BEGIN:VEVENT
UID:new@example.org
DTSTAMP:20261001T080000Z
DTSTART:20261104T090000Z
RRULE:FREQ=DAILY;COUNT=3
SUMMARY:New
END:VEVENT
END:VCALENDAR
)",
                                           R"(BEGIN:VCALENDAR
VERSION:2.0
PRODID:-//Orlocal//Seed//EN
X-WR-CALNAME:Choir
BEGIN:VEVENT
UID:series@example.org
DTSTAMP:20261002T080000Z
SEQUENCE:3
DTSTART;TZID=Europe/Berlin:20261103T180000
RRULE:FREQ=DAILY;COUNT=4
SUMMARY:Other rule
END:VEVENT
END:VCALENDAR
)",
                                           R"(BEGIN:VCALENDAR
VERSION:2.0
PRODID:-//Orlocal//Seed//EN
X-WR-CALNAME:Other
BEGIN:VTODO
UID:stamps@example.org
DTSTAMP:20261002T080000Z
SUMMARY:Stamps
STATUS:COMPLETED
COMPLETED:20261101T080000Z
END:VTODO
END:VCALENDAR
)"};

/// The store of one input, and what others do to it.
class SeededStore {
 public:
  SeededStore() {
    std::error_code ignored;
    std::filesystem::copy_file(seed(), file(), ignored);
    if (ignored) { std::abort(); }
    ::setenv("ORLOCAL_STORE", file().c_str(), 1);
    ::setenv("ORLOCAL_WAIT", "0", 1);
  }

  std::filesystem::path file() const { return m_folder.file("calendar.db"); }
  std::filesystem::path other() const { return m_folder.file("other.db"); }

  void takeAway() const {
    std::error_code ignored;
    for (const char* end : {"", "-wal", "-shm"}) { std::filesystem::remove(file().string() + end, ignored); }
    // So that who has it open looks whether it is still there.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  void write(const char* text) const {
    store::StoreOptions options;
    options.file = file();
    options.busyTimeout = {};
    if (const auto store = store::CalendarStore::open(std::move(options))) {
      (void)store::importCalendarText(**store, text, "outside.ics");
    }
  }

 private:
  static const std::filesystem::path& seed() {
    static const TemporaryFolder folder;
    static const std::filesystem::path made = [] {
      const auto store = opened(folder.file("seed.db"));
      if (!store::importCalendarText(*store, kSeed, "seed.ics")) { std::abort(); }
      store->close();
      return folder.file("seed.db");
    }();
    return made;
  }

  TemporaryFolder m_folder;
};

}  // namespace orlocal::fuzz
