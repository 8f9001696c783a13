#pragma once

#include <string>

#include "host/commands/command_line/store_session.h"

namespace CLI {
class App;
}

// Options that several commands have.
namespace orlocal::host {

/// "--calendar" and "--without".
void addCalendarOptions(CLI::App& command, CalendarChoice& choice);
/// "--zone", of which `zoneAskedFor` makes a zone; a name of none is refused.
void addZoneOption(CLI::App& command, std::string& zone);

}  // namespace orlocal::host
