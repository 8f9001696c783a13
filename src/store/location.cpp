#include "store/location.h"

#include <cstdlib>
#include <string_view>

namespace orlocal::store {
namespace {

/// An empty setting counts as none, as everywhere on the system.
std::filesystem::path setting(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::filesystem::path() : std::filesystem::path(value);
}

}  // namespace

Result<std::filesystem::path> userStoreFile() {
  if (auto file = setting("ORLOCAL_STORE"); !file.empty()) return file;
  const std::filesystem::path below = std::filesystem::path("orlocal") / "calendar.db";
  // The desktop's rules for folders have relative ones ignored.
  if (const auto data = setting("XDG_DATA_HOME"); data.is_absolute()) return data / below;
  if (const auto home = setting("HOME"); home.is_absolute()) return home / ".local" / "share" / below;
  return failure(ErrorCode::kInvalid,
                 "nothing says where the calendar store is: set ORLOCAL_STORE to its file, or HOME to a folder");
}

}  // namespace orlocal::store
