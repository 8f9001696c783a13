#include "notify/register_update_script.h"

#include "bridge/call_frame.h"
#include "bridge/plugin_error.h"
#include "bridge/state.h"
#include "notify/calendar_change_listener.h"
#include "platform/exception.h"
#include "platform/platform.h"

namespace orlocal {

NAXiCalNotificationListener* listener = nullptr;

namespace {

void subscribe(const fmx::ExprEnv* environment, const HostArguments& arguments, fmx::Data* result) {
  if (listener == nullptr) { listener = new NAXiCalNotificationListener; }
  listener->setEnvironment(environment);
  listener->setUpThreadingSupport();
  NotificationCenter& center = platform().notificationCenter();
  // Once more at each call, also for a listener that observes already: solutions count on one run per registration.
  center.addObserver(kCalEventsChangedExternallyNotification,
                     [](const auto& notification) { listener->processNotification(notification); });
  center.setSuspended(false);
  listener->setLocale(hostCall<fmx::FM_Data_GetLocale>(result));
  // One after the other: a script that cannot be read does not undo the file.
  listener->setDatabase(arguments.textAt(0));
  listener->setScript(arguments.textAt(1));
}

}  // namespace

fmx::ErrorCode Orlo_RegisterUpdateScript(std::int16_t, const fmx::ExprEnv* environment, const fmx::DataVect* arguments,
                                         fmx::Data* result) {
  CallFrame frame(arguments, result);
  return frame.run([&] {
    try {
      subscribe(environment, HostArguments(arguments), result);
    } catch (const Exception& exception) {
      // Told through the last error alone: the result stays empty, as if nothing had failed.
      if (error != nullptr) { error->setError(static_cast<std::int32_t>(kSystemError), 0, exception.name()); }
      g_llasterror = 0;
    }
    return kNothing;
  });
}

}  // namespace orlocal
