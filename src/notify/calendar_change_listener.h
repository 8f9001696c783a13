#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "platform/host/data.h"
#include "platform/notification_center.h"
#include "platform/run_loop.h"

namespace orlocal {

/// Starts the user's script for each calendar change made outside the host.
///
/// Notifications may arrive on any thread; the host is only called on the thread that ran `setUpThreadingSupport`. A
/// notification from elsewhere is queued, and the port wakes that thread's run loop. One listener serves the plug-in as
/// long as it is loaded.
class NAXiCalNotificationListener {
 public:
  NAXiCalNotificationListener() = default;
  NAXiCalNotificationListener(const NAXiCalNotificationListener&) = delete;
  NAXiCalNotificationListener& operator=(const NAXiCalNotificationListener&) = delete;

  /// Creates queue, lock, thread reference and port on the calling thread. Only the first call acts.
  void setUpThreadingSupport();

  /// Whose calculation registered last; kept, and not used when a script is started.
  void setEnvironment(const fmx::ExprEnv* environment) { m_environment = environment; }
  const fmx::ExprEnv* environment() const { return m_environment; }
  /// The locale of the registering call's result, in which the parameter is handed over.
  void setLocale(const fmx::Locale* locale) { m_locale.assign(locale); }
  // File and script, each copied whole; not looked at before the host is asked to start it.
  void setDatabase(const fmx::Text* database) { m_theDB.assign(database); }
  void setScript(const fmx::Text* script) { m_theScript.assign(script); }

  /// On the listener's thread: starts the script. On any other: queues, wakes and returns.
  void processNotification(const std::shared_ptr<const Notification>& notification);

  /// The port's message: handles what is queued, first in, first out, and what comes in meanwhile.
  void handleMachMessage();

  /// What the host answered to the last script start.
  fmx::ErrorCode lastStartError() const { return m_err; }

 private:
  void startScript(const std::string& parameter);

  // Ends in reverse order: data, locale, parameter, script, database. The host's objects are made with the listener,
  // what serves threads by the set-up.
  std::optional<std::deque<std::shared_ptr<const Notification>>> m_notifications;
  std::thread::id m_notificationThread;
  std::mutex m_notificationLock;  ///< guards the queue; never held while a script is started
  std::unique_ptr<RunLoopPort> m_notificationPort;
  const fmx::ExprEnv* m_environment = nullptr;
  HostText m_theDB;
  HostText m_theScript;
  HostText m_theParam;  ///< never filled
  HostLocale m_locale{fmx::kLocaleSystem};
  HostData m_data;
  fmx::ErrorCode m_err = 0;
};

}  // namespace orlocal
