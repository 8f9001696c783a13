#include "notify/calendar_change_listener.h"

#include <array>
#include <string_view>

#include "bridge/state.h"
#include "platform/platform.h"
#include "platform/text.h"

namespace orlocal {
namespace {

struct RecordList {
  std::string_view key;
  std::string_view word;
};

/// In the order in which they are looked at; the first that is there decides alone.
constexpr std::array kRecordLists = {
    RecordList{kCalInsertedRecordsKey, "New "},
    RecordList{kCalUpdatedRecordsKey, "Updated "},
    RecordList{kCalDeletedRecordsKey, "Deleted "},
};

constexpr std::uint8_t kScriptControlPause = 3;

}  // namespace

void NAXiCalNotificationListener::setUpThreadingSupport() {
  if (m_notifications) { return; }
  // The port first: a system that has none to give is asked again at the next call.
  m_notificationPort = platform().currentRunLoop().addPort([this] { handleMachMessage(); });
  m_notificationThread = std::this_thread::get_id();
  m_notifications.emplace();
}

void NAXiCalNotificationListener::processNotification(const std::shared_ptr<const Notification>& notification) {
  if (std::this_thread::get_id() != m_notificationThread) {
    {
      const std::lock_guard guard(m_notificationLock);
      m_notifications->push_back(notification);
    }
    m_notificationPort->send();
    return;
  }
  for (const auto& [key, word] : kRecordLists) {
    const auto* records = notification->valueForKey(key);
    if (records == nullptr) { continue; }
    // One notification starts the script once, so only its first record is told.
    startScript(std::string(word) + (records->empty() ? std::string() : records->front()));
    return;
  }
}

void NAXiCalNotificationListener::startScript(const std::string& parameter) {
  const std::u16string units = utf16FromUtf8(parameter);
  const HostText text;
  hostCall<fmx::FM_Text_AssignUnicodeWithLength>(text.get(), units.data(), static_cast<std::uint32_t>(units.size()));
  setText(m_data.get(), text, m_locale.get());
  // The record is packed: its members are copied, never pointed at.
  const fmx::StartScript start = gFMX_ExternCallPtr->cStartScript;
  m_err = start(m_theDB.get(), m_theScript.get(), kScriptControlPause, m_data.get());
}

void NAXiCalNotificationListener::handleMachMessage() {
  std::unique_lock guard(m_notificationLock);
  while (!m_notifications->empty()) {
    const std::shared_ptr<const Notification> next = std::move(m_notifications->front());
    m_notifications->pop_front();
    guard.unlock();
    try {
      processNotification(next);
    } catch (...) {
      // What is left is handled at the next message.
      m_notificationPort->send();
      throw;
    }
    guard.lock();
  }
}

}  // namespace orlocal
