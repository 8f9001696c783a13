#include <chrono>

#include "host/fmwrapper/date_time.h"

namespace orlocal::host {
namespace {

/// Monday, 2 November 2026, 08:00:00 UTC: the clock of every test of a program that this source belongs to.
[[maybe_unused]] const bool kPinned = [] {
  DateTime::pinClock(std::chrono::seconds(1'793'606'400));
  return true;
}();

}  // namespace
}  // namespace orlocal::host
