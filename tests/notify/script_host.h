#pragma once

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "backend/error_codes.h"
#include "bridge/state.h"
#include "fakes/fake_platform.h"
#include "notify/calendar_change_listener.h"
#include "notify/register_update_script.h"
#include "platform/linux/notification_center.h"
#include "platform/linux/run_loop.h"

namespace orlocal::test {

/// A script that the plug-in asked the host to start.
struct Started {
  std::string file, script, parameter;
  int control = -1;
  std::thread::id thread;
};

/// A host that records script starts, and a platform with this thread's real run loop and a real notification centre.
class ScriptHost {
 public:
  ScriptHost();
  ~ScriptHost();
  ScriptHost(const ScriptHost&) = delete;
  ScriptHost& operator=(const ScriptHost&) = delete;

  std::vector<Started> started;
  fmx::ErrorCode answer = 0;
  /// Runs inside each script start.
  std::function<void()> duringStart;
  /// What the centre was told of other processes.
  std::vector<bool> listening;

  fakes::FakePlatform& platform() { return *m_platform; }
  NotificationCenter& center() { return *m_platform->m_notificationCenter; }
  RunLoop& loop() { return *m_platform->m_runLoop; }

  /// Turns the loop until `count` scripts have started, for a bounded time.
  void waitForStarts(std::size_t count);
  /// The parameters of all starts.
  std::vector<std::string> parameters() const;

 private:
  static fmx::ErrorCode startScript(const fmx::Text* file, const fmx::Text* script, std::uint8_t control,
                                    const fmx::Data* parameter);

  fmx::ExternCall m_record{};
  std::shared_ptr<fakes::FakePlatform> m_platform;
};

std::shared_ptr<const Notification> changed(std::vector<std::string> inserted, std::vector<std::string> updated = {},
                                            std::vector<std::string> deleted = {});

/// A call of Orlo_RegisterUpdateScript and what it left.
struct Registration {
  fmx::ErrorCode status = -1;
  std::string result;
};
Registration registerScript(const std::vector<std::string>& arguments);

}  // namespace orlocal::test
