#include "host/commands/command_line/zone_files.h"

#include <system_error>

namespace orlocal::host {

std::optional<std::filesystem::path> carriedZones(const std::string& programFile,
                                                  const std::filesystem::path& ofSystem) {
  std::error_code error;
  const auto folder = (std::filesystem::path(programFile).parent_path() / "../share/zoneinfo").lexically_normal();
  if (std::filesystem::is_directory(ofSystem, error) || !std::filesystem::is_directory(folder, error)) {
    return std::nullopt;
  }
  return folder;
}

}  // namespace orlocal::host
