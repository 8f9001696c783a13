#include "platform/linux/notification_center.h"

#include <exception>

namespace orlocal {

void LinuxNotificationCenter::addObserver(std::string_view name, Observer observer) {
  const std::lock_guard guard(m_lock);
  m_observers.emplace_back(name, std::make_shared<const Observer>(std::move(observer)));
}

void LinuxNotificationCenter::post(const std::shared_ptr<const Notification>& notification) {
  std::vector<std::shared_ptr<const Observer>> called;
  {
    const std::lock_guard guard(m_lock);
    for (const auto& [name, observer] : m_observers) {
      if (name == notification->name) { called.push_back(observer); }
    }
  }
  std::exception_ptr thrown;
  for (const auto& observer : called) {
    try {
      (*observer)(notification);
    } catch (...) {
      if (!thrown) { thrown = std::current_exception(); }
    }
  }
  if (thrown) { std::rethrow_exception(thrown); }
}

void LinuxNotificationCenter::setSuspended(bool suspended) {
  if (m_listenToOthers) { m_listenToOthers(!suspended); }
}

}  // namespace orlocal
