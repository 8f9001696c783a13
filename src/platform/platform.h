#pragma once

#include <memory>
#include <string_view>

namespace orlocal {

class AddressBook;
class BundleStrings;
class CalFramework;
class EventKit;
class NotificationCenter;
struct PluginSettings;
class RunLoop;
class SystemVersion;
class TimeZone;

/// Hands out everything that the plug-in asks of the system it runs on. What it returns lives as long as it does.
class Platform {
 public:
  virtual ~Platform() = default;

  virtual EventKit& eventKit() = 0;
  /// The older calendar framework, for systems before the current one.
  virtual CalFramework& calFramework() = 0;
  virtual AddressBook& addressBook() = 0;
  /// The user's default time zone.
  virtual const TimeZone& defaultTimeZone() = 0;
  /// The run loop of the calling thread.
  virtual RunLoop& currentRunLoop() = 0;
  virtual NotificationCenter& notificationCenter() = 0;
  virtual BundleStrings& bundleStrings() = 0;
  virtual SystemVersion& systemVersion() = 0;
  virtual const PluginSettings& settings() = 0;
  /// Lets go of the calendar store, so that its file is whole by itself. What was handed out stays good; what is asked
  /// for next opens it again.
  virtual void closeStores() = 0;
  /// One line for the system's console log.
  virtual void log(std::string_view line) = 0;
};

/// The platform in use: the one that was set, else the system's own, made on first use. Its stores are closed when the
/// process ends in good order, or this program is unloaded; it itself stays, as a host may still call.
Platform& platform();

/// Puts another platform in place, or (null) the system's own again. Tests call it before anything else runs.
void setPlatform(std::shared_ptr<Platform> replacement);

/// Makes the platform of the system that this program was built for.
std::shared_ptr<Platform> makeSystemPlatform();

}  // namespace orlocal
