#pragma once

#include <memory>

#include "platform/eventkit.h"

namespace orlocal {

/// A store for a platform that could make none: it holds nothing and refuses everything with an error.
std::shared_ptr<EKEventStore> makeNoEventStore();

}  // namespace orlocal
