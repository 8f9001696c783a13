#include "platform/linux/store_access.h"

#include <algorithm>
#include <string>

#include "platform/exception.h"
#include "platform/linux/zone_linux.h"
#include "store/location.h"

namespace orlocal {

void throwStoreException(const store::Error& error) { throw Exception(std::string(kStoreException), error.message); }

StoreAccess::StoreAccess() : m_viewer(store::Zone::ofUser()), m_defaultTimeZone(makeTimeZone(m_viewer)) {}

store::CalendarStore& StoreAccess::store() {
  if (!m_store) {
    store::StoreOptions options;
    options.file = orThrow(store::userStoreFile());
    options.viewer = m_viewer;
    m_store = orThrow(store::CalendarStore::open(std::move(options)));
  }
  return *m_store;
}

void StoreAccess::refresh() {
  const std::uint64_t generation = store().generation();
  if (m_readAt == generation) return;
  m_events =
      std::make_shared<const std::vector<store::Calendar>>(orThrow(store().calendars(store::CalendarKind::kEvents)));
  m_reminders =
      std::make_shared<const std::vector<store::Calendar>>(orThrow(store().calendars(store::CalendarKind::kReminders)));
  m_sources = orThrow(store().sources());
  m_readAt = generation;
}

StoreAccess::Calendars StoreAccess::calendars(store::CalendarKind kind) {
  refresh();
  return kind == store::CalendarKind::kEvents ? m_events : m_reminders;
}

std::optional<store::Calendar> StoreAccess::calendar(store::CalendarId id) {
  refresh();
  for (const Calendars& list : {m_events, m_reminders}) {
    const auto found =
        std::find_if(list->begin(), list->end(), [id](const auto& calendar) { return calendar.id == id; });
    if (found != list->end()) return *found;
  }
  return std::nullopt;
}

std::optional<store::Source> StoreAccess::source(store::SourceId id) {
  refresh();
  const auto found =
      std::find_if(m_sources.begin(), m_sources.end(), [id](const auto& source) { return source.id == id; });
  return found != m_sources.end() ? std::optional(*found) : std::nullopt;
}

}  // namespace orlocal
