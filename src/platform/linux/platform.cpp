#include "platform/linux/platform.h"

#include <optional>

#include "platform/address_book.h"
#include "platform/bundle_strings.h"
#include "platform/cal_framework.h"
#include "platform/eventkit.h"
#include "platform/legacy/cal_framework_face.h"
#include "platform/linux/bundle_strings.h"
#include "platform/linux/external_changes.h"
#include "platform/linux/notification_center.h"
#include "platform/linux/plugin_settings.h"
#include "platform/linux/run_loop.h"
#include "platform/linux/store_access.h"
#include "platform/linux/system_log.h"
#include "platform/linux/system_version.h"
#include "platform/platform.h"
#include "store/time/clock.h"

namespace orlocal {
namespace {

/// Its parts are made when they are first asked for: a host that only wants the plug-in's strings opens no store.
class LinuxPlatform final : public Platform {
 public:
  EventKit& eventKit() override {
    return lazily(m_eventKit, [this] { return makeEventKit(access()); });
  }
  CalFramework& calFramework() override {
    return lazily(m_calFramework, [this] { return makeCalFramework(*this, store::now); });
  }
  AddressBook& addressBook() override {
    return lazily(m_addressBook, [this] { return makeAddressBook(access()); });
  }
  const TimeZone& defaultTimeZone() override { return *access()->defaultTimeZone(); }
  RunLoop& currentRunLoop() override { return currentThreadRunLoop(); }
  NotificationCenter& notificationCenter() override { return m_notificationCenter; }
  BundleStrings& bundleStrings() override {
    return lazily(m_bundleStrings, [] { return makeBundleStrings(); });
  }
  SystemVersion& systemVersion() override { return lazily(m_systemVersion, makeSystemVersion); }

  const PluginSettings& settings() override {
    if (!m_settings) { m_settings = readPluginSettings(); }
    return *m_settings;
  }

  void closeStores() override {
    if (m_access) { m_access->close(); }
  }

  void log(std::string_view line) override { writeToSystemLog(line); }

 private:
  template <class T, class Make>
  static T& lazily(std::unique_ptr<T>& part, Make make) {
    if (!part) { part = make(); }
    return *part;
  }

  const std::shared_ptr<StoreAccess>& access() {
    if (!m_access) { m_access = std::make_shared<StoreAccess>(); }
    return m_access;
  }

  void listenToOthers(bool listen) {
    lazily(m_externalChanges, [this] { return std::make_unique<ExternalChanges>(*access(), m_notificationCenter); });
    if (listen) {
      m_externalChanges->listen();
    } else {
      m_externalChanges->pause();
    }
  }

  LinuxNotificationCenter m_notificationCenter{[this](bool listen) { listenToOthers(listen); }};
  std::shared_ptr<StoreAccess> m_access;
  std::unique_ptr<ExternalChanges> m_externalChanges;
  std::unique_ptr<EventKit> m_eventKit;
  std::unique_ptr<CalFramework> m_calFramework;
  std::unique_ptr<AddressBook> m_addressBook;
  std::unique_ptr<SystemVersion> m_systemVersion;
  std::unique_ptr<BundleStrings> m_bundleStrings;
  std::optional<PluginSettings> m_settings;
};

}  // namespace

std::shared_ptr<Platform> makeSystemPlatform() { return std::make_shared<LinuxPlatform>(); }

}  // namespace orlocal
