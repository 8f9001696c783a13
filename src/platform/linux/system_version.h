#pragma once

#include <memory>

#include "platform/system_version.h"

namespace orlocal {

/// Answers what `ORLOCAL_SYSTEM_MINOR` says; 15 when it is not set, nothing when it is not a number.
std::unique_ptr<SystemVersion> makeSystemVersion();

}  // namespace orlocal
