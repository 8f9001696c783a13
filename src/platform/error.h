#pragma once

#include <optional>
#include <string>

namespace orlocal {

/// Why the platform refused something, in words for people.
struct Error {
  std::string localizedDescription;
  std::optional<std::string> localizedFailureReason;
};

}  // namespace orlocal
