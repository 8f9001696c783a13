#include <mutex>

#include "backend/colors.h"
#include "backend/current_items.h"
#include "backend/eventkit/ical_ek_functions.h"
#include "backend/keywords.h"
#include "platform/platform.h"

namespace orlocal {
namespace {

/// Events and reminders.
constexpr unsigned kEverything = EventKit::kMaskEvent | EventKit::kMaskReminder;

std::recursive_mutex& classLock() {
  static std::recursive_mutex lock;
  return lock;
}

// Never freed: it lives as long as the process.
iCalEKFunctions* g_shared = nullptr;

}  // namespace

iCalEKFunctions* iCalEKFunctions::sharedICalFunctions() {
  const std::lock_guard guard(classLock());
  if (g_shared == nullptr) { allocWithZone()->init(); }
  return g_shared;
}

iCalEKFunctions* iCalEKFunctions::allocWithZone() {
  const std::lock_guard guard(classLock());
  if (g_shared != nullptr) { return nullptr; }
  g_shared = new iCalEKFunctions;
  return g_shared;
}

void iCalEKFunctions::init() {
  releaseItems();
  m_ekEventStore = platform().eventKit().eventStoreWithAccessToEntityTypes(kEverything);
  m_AddressBook = &platform().addressBook();
}

void iCalEKFunctions::releaseItems() {
  m_ekCalendar.reset();
  m_ekReminder.reset();
  m_ekEvent.reset();
  m_ekParticipant.reset();
  m_ekAlarm.reset();
  m_ekRecurrenceRule.reset();
  m_ekRecurrenceEnd.reset();
  m_ekReminderPredicate.reset();
  m_ekEventPredicate.reset();
}

std::int32_t iCalEKFunctions::resetLastErrorString() {
  lastErrorString.reset();
  return 0;
}

OptionalText iCalEKFunctions::getLastErrorString() const { return lastErrorString; }

OptionalText iCalEKFunctions::getCalendars() { return std::nullopt; }

std::optional<EKCalendarArray> iCalEKFunctions::calendarArrayFromString(const OptionalText& names,
                                                                        const OptionalText& type) {
  if (names) {
    return calendarsTitled<EKCalendar>(*names,
                                       [this](const std::string& title) { return getCalendarWithTitle(title); });
  }
  // An open calendar narrows the search, whatever its kind.
  if (m_ekCalendar) { return EKCalendarArray{m_ekCalendar}; }
  const auto kind = itemKindNamed(type);
  if (kind == ItemKind::kCalendar) { return m_ekEventStore->calendarsForEntityType(EKEntityType::kEvent); }
  if (kind == ItemKind::kReminderList) { return m_ekEventStore->calendarsForEntityType(EKEntityType::kReminder); }
  return std::nullopt;
}

std::optional<Color> iCalEKFunctions::colorFromString(const OptionalText& name) { return colorNamed(name); }

}  // namespace orlocal
