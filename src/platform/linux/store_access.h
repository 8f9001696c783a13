#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/error.h"
#include "platform/zone.h"
#include "store/calendar_store.h"
#include "store/zone.h"

namespace orlocal {

/// The name of the exceptions that say why the store cannot be used.
inline constexpr std::string_view kStoreException = "CalendarStoreException";

/// Throws `Exception` with the store's sentence.
[[noreturn]] void throwStoreException(const store::Error& error);

/// What the store answered, or `Exception`.
template <class T>
T orThrow(store::Result<T> result) {
  if (!result) throwStoreException(result.error());
  return *std::move(result);
}

/// True when the store did as it was told; else `error` carries its sentence.
template <class T>
bool succeeded(const store::Result<T>& done, std::optional<Error>& error) {
  if (!done) error = Error{.localizedDescription = done.error().message, .localizedFailureReason = std::nullopt};
  return done.has_value();
}

/// The user's store, opened when it is first asked for and shared by everything of this platform, with the zone that
/// everything is seen in. Main thread only.
class StoreAccess {
 public:
  StoreAccess();

  /// Throws `Exception` when the store cannot be opened; the next call tries again.
  store::CalendarStore& store();

  /// The default zone, as the store and as the platform know it.
  const store::Zone& viewer() const { return m_viewer; }
  const std::shared_ptr<const TimeZone>& defaultTimeZone() const { return m_defaultTimeZone; }

  using Calendars = std::shared_ptr<const std::vector<store::Calendar>>;
  /// In their order. Costs little until the store changes.
  Calendars calendars(store::CalendarKind kind);
  /// The calendar with this row number; none when there is none.
  std::optional<store::Calendar> calendar(store::CalendarId id);
  std::optional<store::Source> source(store::SourceId id);

 private:
  void refresh();

  store::Zone m_viewer;
  std::shared_ptr<const TimeZone> m_defaultTimeZone;
  std::unique_ptr<store::CalendarStore> m_store;
  std::optional<std::uint64_t> m_readAt;  ///< generation of what follows
  Calendars m_events, m_reminders;
  std::vector<store::Source> m_sources;
};

}  // namespace orlocal
