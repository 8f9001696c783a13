#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "base/result.h"
#include "store/icalendar/icalendar_reader.h"
#include "store/import.h"

namespace orlocal::store {

/// What a file brings, read and worked out before the store is asked for its turn to write: others go on saving
/// meanwhile.
struct PreparedFile {
  std::vector<CalendarHead> calendars;
  /// All that something is left of, in the order of the file; in pieces, each of which can go when it was written.
  std::vector<std::vector<ItemGroup>> pieces;
  std::map<std::string, std::string> zones;
  ReadProblems problems;
  bool endsEarly = false;
};

/// With more than one worker in `options` threads read beside this one. None is left when this returns or throws; what
/// one of them throws is thrown here.
Result<PreparedFile> prepareFile(CalendarReader reader, const ImportOptions& options);

/// How an import ends that `options.stop` stopped.
Failed importWasStopped();
bool isStopped(const ImportOptions& options);

}  // namespace orlocal::store
