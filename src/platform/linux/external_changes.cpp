#include "platform/linux/external_changes.h"

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/exception.h"
#include "platform/linux/run_loop.h"
#include "platform/linux/store_access.h"
#include "platform/notification_center.h"

namespace orlocal {
namespace {

std::shared_ptr<const Notification> notificationOf(store::ChangedRecords records) {
  auto notification = std::make_shared<Notification>();
  notification->name = kCalEventsChangedExternallyNotification;
  const auto tell = [&](std::string_view key, std::vector<std::string>& identifiers) {
    if (!identifiers.empty()) { notification->userInfo.emplace(key, std::move(identifiers)); }
  };
  tell(kCalInsertedRecordsKey, records.inserted);
  tell(kCalUpdatedRecordsKey, records.updated);
  tell(kCalDeletedRecordsKey, records.deleted);
  return notification;
}

}  // namespace

struct ExternalChanges::Watch {
  store::LogPosition position;
  std::uint64_t generation = 0;
  std::deque<store::ChangedRecords> untold;  ///< events of a commit each
  std::shared_ptr<const TurnLook> looking;   ///< null while paused
};

ExternalChanges::ExternalChanges(StoreAccess& access, NotificationCenter& center)
    : m_access(access), m_center(center) {}
ExternalChanges::~ExternalChanges() = default;

void ExternalChanges::listen() {
  if (!m_watch) {
    auto watch = std::make_unique<Watch>();
    const auto newest = m_access.store().newestChange();
    if (!newest) { throw Exception("CalendarStoreException", newest.error().message); }
    watch->position = *newest;
    m_watch = std::move(watch);
  }
  if (!m_watch->looking) {
    m_watch->looking = lookAtEachTurn([this] { look(); });
  }
}

void ExternalChanges::pause() {
  if (m_watch) { m_watch->looking.reset(); }
}

void ExternalChanges::look() {
  store::CalendarStore& store = m_access.store();
  const std::uint64_t generation = store.generation();
  if (generation == std::exchange(m_watch->generation, generation) && m_watch->untold.empty()) { return; }
  if (auto commits = orNone(store.outsideCommits(m_watch->position))) {
    for (auto& commit : *commits) {
      if (!commit.events.empty()) { m_watch->untold.push_back(std::move(commit.events)); }
    }
  } else {
    // The next turn looks again, from the same place.
    m_watch->generation = 0;
  }
  // An observer may pause us, or let the loop turn and with it this function.
  while (m_watch->looking && !m_watch->untold.empty()) {
    // Out of the queue before anybody is told: an observer that throws is not told twice, and the rest is told when the
    // loop turns again.
    const auto notification = notificationOf(std::move(m_watch->untold.front()));
    m_watch->untold.pop_front();
    m_center.post(notification);
  }
}

}  // namespace orlocal
