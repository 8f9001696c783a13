#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace orlocal::host {

/// The folder of zone files that came with the program (`share/zoneinfo` beside its folder), where this system has
/// none: as it is with one that consists of little more than its C library. The system's own are newer.
std::optional<std::filesystem::path> carriedZones(const std::string& programFile,
                                                  const std::filesystem::path& ofSystem = "/usr/share/zoneinfo");

}  // namespace orlocal::host
