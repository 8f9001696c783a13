#pragma once

#include "store/time/time.h"

namespace orlocal::accounts {

/// What time it is.
class Clock {
 public:
  virtual ~Clock() = default;
  virtual store::Moment now() const = 0;
};

}  // namespace orlocal::accounts
