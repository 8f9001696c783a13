#include "platform/linux/plugin_settings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/languages.h"
#include "base/settings_files.h"
#include "platform/linux/system_version.h"
#include "store/location.h"
#include "store/time/zone.h"

namespace orlocal {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class PluginSettingsTest : public test::SettingsFiles {
 protected:
  /// What reading the settings tells the log.
  static std::string logged() {
    testing::internal::CaptureStderr();
    readPluginSettings();
    return testing::internal::GetCapturedStderr();
  }

  test::KeptVariable m_start{"ORLOCAL_UPDATE_SCRIPT"}, m_language{"LANGUAGE"}, m_all{"LC_ALL"},
      m_messages{"LC_MESSAGES"}, m_lang{"LANG"};
};

TEST_F(PluginSettingsTest, AreThoseOfEveryVersionWhereNothingIsSet) {
  use("");
  EXPECT_FALSE(readPluginSettings().updateScript);
  EXPECT_FALSE(readPluginSettings().datesInPartHourZones);
}

TEST_F(PluginSettingsTest, NameAScriptAndItsFile) {
  use("[update-script]\nfile = Bookings\nscript = Calendar changed\n");
  const auto script = readPluginSettings().updateScript;
  ASSERT_TRUE(script);
  EXPECT_EQ(script->file, "Bookings");
  EXPECT_EQ(script->script, "Calendar changed");
  m_start.set("no");
  EXPECT_FALSE(readPluginSettings().updateScript) << "the environment wins";
}

TEST_F(PluginSettingsTest, HalfAScriptIsSaidAndIsNone) {
  const auto path = use("[update-script]\nscript = Calendar changed\n");
  EXPECT_FALSE(readPluginSettings().updateScript);
  EXPECT_THAT(logged(), HasSubstr(path.string() + ":2: [update-script] needs both a file and a script"));
}

TEST_F(PluginSettingsTest, LetDatesArriveInPartHourZones) {
  use("[plug-in]\ndates-in-part-hour-zones = yes\n");
  EXPECT_TRUE(readPluginSettings().datesInPartHourZones);
}

TEST_F(PluginSettingsTest, WhatIsNotUnderstoodGoesToTheSystemsLog) {
  const auto path = use("[plug-in]\ndates-in-part-hour-zones = maybe\n");
  EXPECT_FALSE(readPluginSettings().datesInPartHourZones);
  EXPECT_THAT(logged(), HasSubstr(path.string() + ":2: dates-in-part-hour-zones = \"maybe\": this is yes or no"));
}

TEST_F(PluginSettingsTest, TheSystemsVersionIsTheEnvironmentsBeforeTheFiles) {
  use("[plug-in]\nsystem-minor = 7\n");
  EXPECT_EQ(makeSystemVersion()->minorVersion(), 7);
  m_minor.set("15");
  EXPECT_EQ(makeSystemVersion()->minorVersion(), 15);
  m_minor.set("");
  EXPECT_EQ(makeSystemVersion()->minorVersion(), std::nullopt) << "an answer that is none stays one";
}

TEST_F(PluginSettingsTest, TheZoneIsTheEnvironmentsBeforeTheFiles) {
  use("[calendar]\nzone = Asia/Kolkata\n");
  EXPECT_EQ(store::Zone::ofUser().name(), "Asia/Kolkata");
  m_zone.set("America/New_York");
  EXPECT_EQ(store::Zone::ofUser().name(), "America/New_York");
}

TEST_F(PluginSettingsTest, TheLanguageCountsWhereTheEnvironmentHasNone) {
  use("[display]\nlanguage = de_CH:fr\n");
  for (const auto* variable : {&m_language, &m_all, &m_messages, &m_lang}) { variable->set(std::nullopt); }
  EXPECT_THAT(preferredLanguages(), ElementsAre("de_CH", "de", "fr", "en"));
  m_lang.set("C.UTF-8");
  EXPECT_THAT(preferredLanguages(), ElementsAre("de_CH", "de", "fr", "en"));
  m_lang.set("it_IT.UTF-8");
  EXPECT_THAT(preferredLanguages(), ElementsAre("it_IT", "it", "en"));
}

TEST_F(PluginSettingsTest, NewItemsGoWhereTheFilesSay) {
  use("[calendar]\nevents = Work\nreminders = Tasks\n");
  store::StoreOptions options = store::userStoreOptions(store::Zone()).value();
  EXPECT_EQ(options.eventCalendar, "Work");
  EXPECT_EQ(options.reminderList, "Tasks");
  options.file = m_folder / "calendar.db";
  const auto store = store::CalendarStore::open(options).value();
  const auto wanted = [&](store::CalendarKind kind) { return store->defaultCalendar(kind).value()->title; };
  EXPECT_EQ(wanted(store::CalendarKind::kEvents), "Calendar") << "there is no other";
  for (const auto kind : {store::CalendarKind::kEvents, store::CalendarKind::kReminders}) {
    store::Calendar calendar;
    calendar.kind = kind;
    calendar.title = kind == store::CalendarKind::kEvents ? "Work" : "Tasks";
    calendar.source = store->sources().value().front().id;
    ASSERT_TRUE(store->saveCalendar(calendar));
    EXPECT_EQ(wanted(kind), calendar.title);
  }
}

TEST_F(PluginSettingsTest, TheStoreAndItsPatienceAreTheEnvironmentsBeforeTheFiles) {
  use("[store]\nfile = /srv/calendars.db\nwait = 3\n");
  EXPECT_EQ(store::userStoreFile().value(), "/srv/calendars.db");
  EXPECT_EQ(store::userStoreOptions(store::Zone()).value().busyTimeout, std::chrono::seconds(3));
  EXPECT_EQ(store::userStoreOptions(store::Zone()).value().eventCalendar, "");
  m_store.set("/srv/other.db");
  m_wait.set("4");
  EXPECT_EQ(store::userStoreFile().value(), "/srv/other.db");
  EXPECT_EQ(store::userStoreOptions(store::Zone()).value().busyTimeout, std::chrono::seconds(4));
}

}  // namespace
}  // namespace orlocal
