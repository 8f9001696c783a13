#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/notification_center.h"

namespace orlocal {

/// The notification centre of this process.
class LinuxNotificationCenter final : public NotificationCenter {
 public:
  /// Told on the calling thread when notifications of other processes are to come (true) or to wait (false).
  using ListenToOthers = std::function<void(bool listen)>;

  explicit LinuxNotificationCenter(ListenToOthers listenToOthers) : m_listenToOthers(std::move(listenToOthers)) {}

  void addObserver(std::string_view name, Observer observer) override;
  void post(const std::shared_ptr<const Notification>& notification) override;
  void setSuspended(bool suspended) override;

 private:
  ListenToOthers m_listenToOthers;
  std::mutex m_lock;  ///< guards the observers; never held while one is called
  std::vector<std::pair<std::string, std::shared_ptr<const Observer>>> m_observers;
};

}  // namespace orlocal
