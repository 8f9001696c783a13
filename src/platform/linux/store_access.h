#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "platform/error.h"
#include "platform/linux/system_log.h"
#include "platform/zone.h"
#include "store/calendar_store.h"
#include "store/time/zone.h"

namespace orlocal {

/// What the store answered; none when it failed, and the reason is in the system's log. `call` names who asked.
template <class T>
std::optional<T> orNone(Result<T> result, const char* call = __builtin_FUNCTION()) {
  if (!result) {
    StoreTroubles::ofThisProcess().failed(call, result.error());
    return std::nullopt;
  }
  StoreTroubles::ofThisProcess().worked(call);
  return *std::move(result);
}

/// Tells the system's log of a failure that no caller could have prevented, and `error` of any.
void tellFailure(const Failure& failure, std::optional<Error>& error, const char* call);

/// True when the store did as it was told; else `error` carries its sentence. What no caller could have done better is
/// in the system's log, too.
template <class T>
bool succeeded(const Result<T>& done, std::optional<Error>& error, const char* call = __builtin_FUNCTION()) {
  if (done) {
    StoreTroubles::ofThisProcess().worked(call);
  } else {
    tellFailure(done.error(), error, call);
  }
  return done.has_value();
}

/// The user's store, opened when it is first asked for and shared by everything of this platform, with the zone that
/// everything is seen in. Main thread only.
class StoreAccess {
 public:
  StoreAccess();

  /// Valid until the next call of any kind. When the store cannot be opened the reason is in the system's log, every
  /// call of what is returned fails with it, and the next one tries again.
  store::CalendarStore& store();
  /// Lets go of the file; the next call opens it again.
  void close();

  /// The default zone, as the store and as the platform know it.
  const store::Zone& viewer() const { return m_viewer; }
  const std::shared_ptr<const TimeZone>& defaultTimeZone() const { return m_defaultTimeZone; }

  using Calendars = std::shared_ptr<const std::vector<store::Calendar>>;
  /// In their order; empty when the store cannot be read. Costs little until the store changes.
  Calendars calendars(store::CalendarKind kind);
  /// The calendar with this row number; none when there is none or the store cannot be read.
  std::optional<store::Calendar> calendar(store::CalendarId id);
  std::optional<store::Source> source(store::SourceId id);

 private:
  static Calendars none();
  void refresh();

  store::Zone m_viewer;
  std::shared_ptr<const TimeZone> m_defaultTimeZone;
  std::unique_ptr<store::CalendarStore> m_store;
  std::unique_ptr<store::CalendarStore> m_unopened;  ///< in the place of a store that could not be opened
  std::optional<std::uint64_t> m_readAt;             ///< generation of what follows
  std::uint64_t m_calendarsReadAt = 0;               ///< the same of calendars alone
  Calendars m_events, m_reminders;
  std::vector<store::Source> m_sources;
};

}  // namespace orlocal
