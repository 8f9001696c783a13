#include "platform/linux/store_access.h"

#include <algorithm>
#include <string>

#include "platform/linux/zone.h"
#include "store/location.h"

namespace orlocal {

namespace {

/// Whether a failure is the store's and its limits', and not the caller's, who would be refused by any store.
bool isTrouble(ErrorCode code) {
  switch (code) {
    case ErrorCode::kNotFound:
    case ErrorCode::kInvalid:
    case ErrorCode::kReadOnly:
    case ErrorCode::kRefused:
    case ErrorCode::kInterrupted:
      return false;
    default:
      return true;
  }
}

Result<std::unique_ptr<store::CalendarStore>> openUserStore(const store::Zone& viewer) {
  auto options = store::userStoreOptions(viewer);
  StoreTroubles::ofThisProcess().setFile(options ? options->file.string() : std::string());
  if (!options) { return failure(std::move(options.error())); }
  return store::CalendarStore::open(*std::move(options));
}

}  // namespace

void tellFailure(const Failure& failure, std::optional<Error>& error, const char* call) {
  if (isTrouble(failure.code)) { StoreTroubles::ofThisProcess().failed(call, failure); }
  error = Error{.localizedDescription = failure.message, .localizedFailureReason = std::nullopt};
}

StoreAccess::StoreAccess()
    : m_viewer(store::Zone::ofUser()),
      m_defaultTimeZone(makeTimeZone(m_viewer)),
      m_events(none()),
      m_reminders(none()) {}

StoreAccess::Calendars StoreAccess::none() { return std::make_shared<const std::vector<store::Calendar>>(); }

store::CalendarStore& StoreAccess::store() {
  if (m_store) { return *m_store; }
  constexpr const char* kOpening = "open";
  auto opened = openUserStore(m_viewer);
  if (opened) {
    StoreTroubles::ofThisProcess().worked(kOpening);
    m_store = *std::move(opened);
    m_unopened.reset();
    return *m_store;
  }
  StoreTroubles::ofThisProcess().failed(kOpening, opened.error());
  m_unopened = store::CalendarStore::unopened(std::move(opened.error()));
  return *m_unopened;
}

void StoreAccess::close() {
  if (m_store) { m_store->close(); }
}

void StoreAccess::refresh() {
  store::CalendarStore& store = this->store();
  const std::uint64_t generation = store.generation();
  if (m_readAt == generation) { return; }
  // Most commits change events alone.
  const auto ofCalendars = orNone(store.calendarsGeneration());
  if (m_readAt && ofCalendars && *ofCalendars == m_calendarsReadAt) {
    m_readAt = generation;
    return;
  }
  auto events = orNone(store.calendars(store::CalendarKind::kEvents), "calendars");
  auto reminders = orNone(store.calendars(store::CalendarKind::kReminders), "reminder lists");
  auto sources = orNone(store.sources(), "sources");
  const bool read = m_store && events && reminders && sources;
  m_events = events ? std::make_shared<const std::vector<store::Calendar>>(*std::move(events)) : none();
  m_reminders = reminders ? std::make_shared<const std::vector<store::Calendar>>(*std::move(reminders)) : none();
  m_sources = std::move(sources).value_or(std::vector<store::Source>());
  m_readAt = read && ofCalendars ? std::optional(generation) : std::nullopt;
  m_calendarsReadAt = ofCalendars.value_or(0);
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
    if (found != list->end()) { return *found; }
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
