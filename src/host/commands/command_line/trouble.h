#pragma once

#include <exception>
#include <ostream>
#include <string_view>

#include "base/result.h"
#include "host/calc/rendering.h"

namespace orlocal::host {

/// Writes what went wrong, after the place that it is about, as a line of its own. Both may quote anything (paths,
/// names of calendars, what a plug-in said): it cannot steer the terminal.
inline void tellTrouble(std::ostream& err, std::string_view sentence, std::string_view place = "orlocal") {
  err << calc::harmless(place) << ": " << calc::harmlessLines(sentence) << std::endl;
}

/// What `work` gives. An exception of the standard library (memory has run out, a folder cannot be read) is a failure
/// with its text: none of ours are thrown.
template <class Work>
auto withoutThrowing(Work work) -> decltype(work()) {
  try {
    return work();
  } catch (const std::exception& exception) { return failure(ErrorCode::kIo, exception.what()); }
}

}  // namespace orlocal::host
