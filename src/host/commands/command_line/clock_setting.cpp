#include "host/commands/command_line/clock_setting.h"

#include <cstdlib>
#include <ostream>

#include "host/commands/command_line/trouble.h"
#include "host/fmwrapper/date_time.h"
#include "store/time/clock.h"

namespace orlocal::host {

void putClockInForce(std::ostream& err) {
  const auto pinned = store::momentPinnedByUser();
  if (!pinned) {
    tellTrouble(err, pinned.error().message);
    ::unsetenv("ORLOCAL_NOW");
  }
  const auto moment = pinned.value_or(std::nullopt);
  store::pinClock(moment);
  DateTime::pinClock(moment ? std::optional(moment->time_since_epoch()) : std::nullopt);
}

}  // namespace orlocal::host
