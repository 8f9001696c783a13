#include <mutex>
#include <utility>

#include "backend/colors.h"
#include "backend/error_codes.h"
#include "backend/legacy/ical_functions.h"
#include "platform/bundle_strings.h"
#include "platform/platform.h"

namespace orlocal {
namespace {

/// Guards the making of the one instance. Recursive, as making it on first use allocates under the same lock.
std::recursive_mutex& classLock() {
  static std::recursive_mutex lock;
  return lock;
}

iCalFunctions* g_sharedInstance = nullptr;

}  // namespace

iCalFunctions* iCalFunctions::sharedICalFunctions() {
  const std::lock_guard guard(classLock());
  if (!g_sharedInstance) { allocWithZone()->init(); }
  return g_sharedInstance;
}

iCalFunctions* iCalFunctions::allocWithZone() {
  const std::lock_guard guard(classLock());
  if (g_sharedInstance) { return nullptr; }
  g_sharedInstance = new iCalFunctions;
  return g_sharedInstance;
}

void iCalFunctions::init() {
  releaseItems();
  m_recurrenceend.reset();
}

void iCalFunctions::releaseItems() {
  m_calendar.reset();
  m_task.reset();
  m_event.reset();
  m_alarm.reset();
  m_attendee.reset();
  m_recurrencerule.reset();
  m_taskPredicate.reset();
  m_eventPredicate.reset();
  // The recurrence end stays: it outlives what it was read from, until an item is opened by index.
}

std::int32_t iCalFunctions::resetLastErrorString() {
  lastErrorString.reset();
  return 0;
}

OptionalText iCalFunctions::getLastErrorString() const { return lastErrorString; }

OptionalText iCalFunctions::getCalendars() { return std::nullopt; }

std::optional<Color> iCalFunctions::colorFromString(const OptionalText& name) { return colorNamed(name); }

std::shared_ptr<CalCalendarStore> iCalFunctions::store() { return platform().calFramework().defaultCalendarStore(); }

std::int32_t iCalFunctions::failWithRefusal(const std::optional<Error>& error) {
  const Error refusal = error.value_or(Error());
  OptionalText reason = refusal.localizedFailureReason;
  if (!reason) {
    // Callers then read the main bundle's text for the empty key, which is empty when the bundle has none.
    constexpr std::uintptr_t kMainBundle = 0;
    reason = utf8FromUtf16(platform().bundleStrings().localizedString(kMainBundle, "", "Localizable").value_or(u""));
  }
  lastErrorString = refusal.localizedDescription + ". " + *reason;
  return failWith(kStoreRefused);
}

}  // namespace orlocal
