#pragma once

#include <atomic>
#include <cstdint>

#include "host/fmwrapper/export.h"

namespace orlocal::host {

/// For trials: makes a function of the interface fail as a host's own may, so that plug-ins show what they do then.
///
/// From now on the functions count their calls; the `nth` one (from 1) does nothing and gives that code in its
/// exception record (1 out of memory, 2 anything else). One thread.
ORLOCAL_HOST_API void failHostCall(std::uint64_t nth, std::int32_t code);
/// All calls do their work again; gives how many were counted.
ORLOCAL_HOST_API std::uint64_t endFailingHostCalls();

/// Whether calls are counted at all: the rest is left to `failureOfThisCall`.
extern std::atomic<bool> hostCallsAreCounted;
std::int32_t failureOfThisCall();

/// The code that this call is to fail with; 0 for one that does its work.
inline std::int32_t plannedFailure() {
  return hostCallsAreCounted.load(std::memory_order_relaxed) ? failureOfThisCall() : 0;
}

}  // namespace orlocal::host
