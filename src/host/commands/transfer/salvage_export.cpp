#include "host/commands/transfer/salvage_export.h"

#include <ostream>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/command_line/terminal_text.h"
#include "store/location.h"
#include "store/salvage.h"

namespace orlocal::host {

Result<ExitStatus> salvageInto(const store::TextSink& sink, const std::vector<std::string>& calendars,
                               std::ostream& err) {
  ORLOCAL_TRY(const store::StoreOptions user, store::userStoreOptions(store::Zone::ofUser()));
  ORLOCAL_TRY(const auto report, store::salvage(user.file, calendars, user.busyTimeout, sink));
  for (const std::string& line : report.notes) { err << "orlocal: " << printable(line) << '\n'; }
  if (report.complete()) {
    err << tr("orlocal: {} items were written; everything could be read\n", report.items);
    return ExitStatus::kDone;
  }
  err << tr(
      "orlocal: {} items were written; not read: {} items, {} calendars, {} zones; without their calendar: {} items\n",
      report.items, report.unreadable, report.calendars, report.zones, report.withoutPlace);
  return ExitStatus::kFailed;
}

}  // namespace orlocal::host
