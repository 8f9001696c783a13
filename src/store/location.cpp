#include "store/location.h"

#include <charconv>
#include <cstdlib>
#include <string_view>
#include <system_error>

#include <fmt/format.h>

#include "base/settings.h"
#include "base/translation.h"
#include "base/try.h"

namespace orlocal::store {
namespace {

/// An empty setting counts as none, as everywhere on the system.
std::filesystem::path setting(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::filesystem::path() : std::filesystem::path(value);
}

}  // namespace

Result<std::filesystem::path> userStoreFile() {
  if (const auto file = Settings::ofUser().value(Setting::kStoreFile)) { return file->text; }
  const std::filesystem::path below = std::filesystem::path("orlocal") / "calendar.db";
  // The desktop's rules for folders have relative ones ignored.
  if (const auto data = setting("XDG_DATA_HOME"); data.is_absolute()) { return data / below; }
  if (const auto home = setting("HOME"); home.is_absolute()) { return home / ".local" / "share" / below; }
  return failure(
      ErrorCode::kInvalid,
      tr("nothing says where the calendar store is: name its file in /etc/orlocal/orlocal.conf ([store] file = …) "
         "or in ORLOCAL_STORE, or set HOME to a folder"));
}

Result<StoreOptions> userStoreOptions(const Zone& viewer) {
  StoreOptions options;
  ORLOCAL_TRY(options.file, userStoreFile());
  options.viewer = viewer;
  const Settings settings = Settings::ofUser();
  if (const auto calendar = settings.value(Setting::kEventCalendar)) { options.eventCalendar = calendar->text; }
  if (const auto list = settings.value(Setting::kReminderList)) { options.reminderList = list->text; }
  const auto wait = settings.value(Setting::kStoreWait);
  if (!wait) { return options; }
  const std::string_view text = wait->text;
  constexpr int kMostSeconds = 3600;
  int seconds = -1;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  if (error != std::errc() || end != text.data() + text.size() || seconds < 0 || seconds > kMostSeconds) {
    return failure(ErrorCode::kInvalid,
                   tr("{} is \"{}\"; it is a number of seconds from 0 to {}.", wait->origin, text, kMostSeconds));
  }
  options.busyTimeout = std::chrono::seconds(seconds);
  return options;
}

}  // namespace orlocal::store
