#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "accounts/transport/answer.h"

namespace orlocal::accounts {

/// Something that could not be carried over, and what to do. The rest was.
struct SyncTrouble {
  std::string calendar;  ///< title; empty for the account itself
  std::string item;      ///< title; empty for the calendar itself
  std::string message;
};

/// What one sync of one account did.
struct SyncReport {
  std::size_t received = 0;      ///< items that came or changed here
  std::size_t removedHere = 0;   ///< items that went here
  std::size_t sent = 0;          ///< items that came or changed there
  std::size_t removedThere = 0;  ///< items that went there
  std::size_t calendars = 0;     ///< calendars that came, changed or went on either side
  std::size_t conflicts = 0;     ///< new ones
  std::vector<SyncTrouble> troubles;
  /// Why the account was not done: the rest of it was not tried.
  std::optional<ServerFailure> failure;
};

}  // namespace orlocal::accounts
