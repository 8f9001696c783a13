#pragma once

#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "fakes/fake_time_zone.h"
#include "platform/bundle_strings.h"
#include "platform/platform.h"
#include "platform/plugin_settings.h"
#include "platform/system_version.h"

namespace orlocal::fakes {

class FakeBundleStrings : public BundleStrings {
 public:
  /// What is built in, by table and key.
  std::map<std::pair<std::string, std::string>, std::u16string> m_strings;
  /// The user's languages, the most wanted first, and tables by language and name.
  std::vector<std::string> m_languages;
  std::map<std::pair<std::string, std::string>, std::map<std::string, std::u16string>> m_translations;

  std::optional<std::u16string> localizedString(std::uintptr_t, std::string_view key, std::string_view table) override {
    for (const auto& language : m_languages) {
      const auto translation = m_translations.find({language, std::string(table)});
      if (translation == m_translations.end()) { continue; }
      if (const auto own = translation->second.find(std::string(key)); own != translation->second.end()) {
        return own->second;
      }
      break;
    }
    const auto found = m_strings.find({std::string(table), std::string(key)});
    return found == m_strings.end() ? std::nullopt : std::optional(found->second);
  }
};

class FakeSystemVersion : public SystemVersion {
 public:
  std::optional<long> m_minor = 15;

  std::optional<long> minorVersion() const override { return m_minor; }
};

/// Hands out what a test puts in. What it did not put in fails the test that asks for it.
class FakePlatform : public Platform {
 public:
  std::shared_ptr<EventKit> m_eventKit;
  std::shared_ptr<CalFramework> m_calFramework;
  std::shared_ptr<AddressBook> m_addressBook;
  std::shared_ptr<const TimeZone> m_defaultTimeZone = std::make_shared<FakeTimeZone>(3600);
  std::shared_ptr<RunLoop> m_runLoop;
  std::shared_ptr<NotificationCenter> m_notificationCenter;
  std::shared_ptr<FakeBundleStrings> m_bundleStrings = std::make_shared<FakeBundleStrings>();
  std::shared_ptr<FakeSystemVersion> m_systemVersion = std::make_shared<FakeSystemVersion>();
  PluginSettings m_settings;
  std::vector<std::string> m_log;
  int m_storesClosed = 0;

  EventKit& eventKit() override { return given(m_eventKit, "EventKit"); }
  CalFramework& calFramework() override { return given(m_calFramework, "older calendar framework"); }
  AddressBook& addressBook() override { return given(m_addressBook, "address book"); }
  const TimeZone& defaultTimeZone() override { return given(m_defaultTimeZone, "time zone"); }
  RunLoop& currentRunLoop() override { return given(m_runLoop, "run loop"); }
  NotificationCenter& notificationCenter() override { return given(m_notificationCenter, "notification centre"); }
  BundleStrings& bundleStrings() override { return given(m_bundleStrings, "bundle strings"); }
  SystemVersion& systemVersion() override { return given(m_systemVersion, "system version"); }
  const PluginSettings& settings() override { return m_settings; }
  void closeStores() override { ++m_storesClosed; }
  void log(std::string_view line) override { m_log.emplace_back(line); }

 private:
  template <class T>
  static T& given(const std::shared_ptr<T>& part, const char* what) {
    if (!part) { throw std::logic_error(std::string("the test gave the platform no ") + what); }
    return *part;
  }
};

}  // namespace orlocal::fakes
