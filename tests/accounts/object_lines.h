#pragma once

#include <set>
#include <string>
#include <string_view>

namespace orlocal::accounts {

/// What a server looks at in a calendar object: read here anew, so that our own reader does not judge itself.
struct ObjectLines {
  bool isCalendar = false;  ///< one VCALENDAR, all components closed
  bool hasMethod = false;
  std::set<std::string> uids;        ///< of the events and tasks
  std::set<std::string> components;  ///< "VEVENT", "VTODO"; no time zones
};

ObjectLines readObjectLines(std::string_view text);

/// Another text of the same meaning: unfolded, with another PRODID, and a CLASS where there was none.
std::string rewritten(std::string_view text);

}  // namespace orlocal::accounts
