#pragma once

#include <optional>

namespace orlocal {

/// What the system says of itself.
class SystemVersion {
 public:
  virtual ~SystemVersion() = default;

  /// The minor version (15 of 10.15); absent when the system does not answer.
  virtual std::optional<long> minorVersion() const = 0;
};

}  // namespace orlocal
