#include "host/commands/choosing/common_options.h"

#include <CLI/CLI.hpp>

#include "host/commands/words/zone_words.h"

namespace orlocal::host {

void addCalendarOptions(CLI::App& command, CalendarChoice& choice) {
  command.add_option("--calendar", choice.only, "Only this calendar or reminder list; may be repeated")
      ->type_name("TITLE")
      ->allow_extra_args(false);
  command.add_option("--without", choice.without, "All but this calendar or reminder list; may be repeated")
      ->type_name("TITLE")
      ->allow_extra_args(false);
}

void addZoneOption(CLI::App& command, std::string& zone) {
  command.add_option("--zone", zone, "On the clock of this zone: America/New_York")
      ->type_name("ZONE")
      ->check(objectionToZone);
}

}  // namespace orlocal::host
