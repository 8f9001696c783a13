#pragma once

#include <string>

namespace orlocal::store {

/// The version of the system's zone data, such as "2026a"; empty when the system does not say.
std::string zoneDataVersion();

}  // namespace orlocal::store
