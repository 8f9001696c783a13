#pragma once

#include <chrono>
#include <optional>
#include <span>

#include "base/result.h"
#include "store/file/change_signal.h"

namespace orlocal::host {

/// What ended a wait.
enum class Woken {
  kByChange,        ///< something may have changed
  kByTime,          ///< nothing did for as long as was asked
  kByInterruption,  ///< the person at the terminal has had enough
};

/// Sleeps in the kernel until the signal wakes us, `patience` is over (never, without one) or an `Interruption`, which
/// must be there, has been asked for; one that came before counts, too.
Result<Woken> waitForChange(store::ChangeSignal& signal,
                            std::optional<std::chrono::milliseconds> patience = std::nullopt);

/// The same until one of these descriptors can be read, which stays to be done.
Result<Woken> waitForAnyOf(std::span<const int> descriptors,
                           std::optional<std::chrono::milliseconds> patience = std::nullopt);

}  // namespace orlocal::host
