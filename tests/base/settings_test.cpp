#include "base/settings.h"

#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "base/settings_files.h"

namespace orlocal {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class SettingsTest : public test::SettingsFiles {
 protected:
  static std::string textOf(const Settings& settings, Setting setting) {
    const auto value = settings.value(setting);
    return value ? value->text : "none";
  }
};

TEST_F(SettingsTest, NothingIsSetWithoutFiles) {
  const auto settings = Settings::ofFiles({m_folder / "none.conf"});
  EXPECT_THAT(settings.complaints(), IsEmpty());
  for (const SettingRow& row : settingRows()) { EXPECT_FALSE(settings.value(row.setting)) << row.name; }
}

TEST_F(SettingsTest, TheLaterFileCountsMore) {
  const auto machine = file("machine.conf", "[store]\nfile = /srv/all.db\nwait = 3\n");
  const auto user = file("user.conf", "[store]\n\nfile = /home/ann/own.db\n");
  const auto settings = Settings::ofFiles({machine, user});
  EXPECT_EQ(settings.value(Setting::kStoreFile)->text, "/home/ann/own.db");
  EXPECT_EQ(settings.value(Setting::kStoreFile)->origin, user.string() + ":3");
  EXPECT_EQ(settings.value(Setting::kStoreWait)->text, "3");
  EXPECT_EQ(settings.value(Setting::kStoreWait)->origin, machine.string() + ":3");
}

TEST_F(SettingsTest, TheEnvironmentWinsUnlessItIsEmpty) {
  const auto settings = Settings::ofFiles({file("a.conf", "[store]\nfile = /srv/all.db\n")});
  m_store.set("/tmp/other.db");
  EXPECT_EQ(settings.value(Setting::kStoreFile)->text, "/tmp/other.db");
  EXPECT_EQ(settings.value(Setting::kStoreFile)->origin, "ORLOCAL_STORE");
  EXPECT_EQ(settings.fileValue(Setting::kStoreFile)->text, "/srv/all.db");
  m_store.set("");
  EXPECT_EQ(textOf(settings, Setting::kStoreFile), "/srv/all.db");
}

TEST_F(SettingsTest, AFileBelowHomeIsFoundThere) {
  m_home.set("/home/ann");
  const auto settings = Settings::ofFiles({file("a.conf", "[store]\nfile = ~/calendars/a.db\n")});
  EXPECT_EQ(textOf(settings, Setting::kStoreFile), "/home/ann/calendars/a.db");
}

TEST_F(SettingsTest, WhatCannotBeUnderstoodIsSaidAndPassedOver) {
  const auto path = file("a.conf",
                         "[store]\nfile = here.db\nwait = soon\n[calendar]\nzone = Mars/North\n[display]\ncolor = red\n"
                         "[plug-in]\nsystem-minor = x\ndates-in-part-hour-zones = perhaps\n[store]\nfil = /a\nhello\n");
  const auto settings = Settings::ofFiles({path});
  std::vector<std::string> expected;
  for (const int line : {13, 2, 3, 5, 7, 9, 10, 12}) {
    expected.push_back(path.string() + ":" + std::to_string(line) + ": ");
  }
  ASSERT_EQ(settings.complaints().size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_THAT(settings.complaints()[i], testing::StartsWith(expected[i]));
  }
  for (const SettingRow& row : settingRows()) { EXPECT_FALSE(settings.value(row.setting)) << row.name; }
}

TEST_F(SettingsTest, EachSettingHasAValueThatIsUnderstood) {
  const std::pair<Setting, const char*> values[] = {
      {Setting::kStoreFile, "/srv/a.db"}, {Setting::kStoreWait, "0"},
      {Setting::kZone, "Asia/Kolkata"},   {Setting::kEventCalendar, "Work"},
      {Setting::kReminderList, "Tasks"},  {Setting::kOwnAddresses, "ann@example.org, a@example.com"},
      {Setting::kLanguage, "de"},         {Setting::kColor, "never"},
      {Setting::kScriptFile, "Bookings"}, {Setting::kScriptName, "Calendar changed"},
      {Setting::kScriptAtStart, "no"},    {Setting::kSystemMinor, "7"},
      {Setting::kPartHourZones, "Yes"},
  };
  ASSERT_EQ(std::size(values), settingRows().size());
  for (const auto& [setting, value] : values) {
    const SettingRow& row = rowOf(setting);
    EXPECT_EQ(rowOf(row.section, row.name), &row);
    const auto settings = Settings::ofFiles(
        {file("one.conf", "[" + std::string(row.section) + "]\n" + std::string(row.name) + " = " + value + "\n")});
    EXPECT_THAT(settings.complaints(), IsEmpty()) << row.name;
    EXPECT_EQ(textOf(settings, setting), value) << row.name;
  }
}

TEST_F(SettingsTest, FilesThatOthersMayWriteAreNotUsed) {
  const auto path = file("a.conf", "[store]\nfile = /srv/all.db\n", 0666);
  const auto settings = Settings::ofFiles({path});
  EXPECT_EQ(textOf(settings, Setting::kStoreFile), "none");
  EXPECT_THAT(settings.complaints(), ElementsAre(HasSubstr("can be written by others")));
}

TEST_F(SettingsTest, PipesFoldersAndHugeFilesAreNotRead) {
  const auto pipe = m_folder / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const auto huge = file("huge.conf", std::string(70'000, '#'));
  const auto settings = Settings::ofFiles({pipe, m_folder, huge});
  EXPECT_THAT(settings.complaints(),
              ElementsAre(HasSubstr("no regular file"), HasSubstr("no regular file"), HasSubstr("longer than 64 KiB")));
}

TEST_F(SettingsTest, TheFilesAreTheMachinesAndThenTheUsers) {
  m_home.set("/home/ann");
  m_config.set("/config");
  EXPECT_THAT(Settings::filesOfUser(), ElementsAre("/etc/orlocal/orlocal.conf", "/config/orlocal/orlocal.conf"));
  m_config.set("relative");
  EXPECT_THAT(Settings::filesOfUser(),
              ElementsAre("/etc/orlocal/orlocal.conf", "/home/ann/.config/orlocal/orlocal.conf"));
  m_config.set(std::nullopt);
  m_home.set(std::nullopt);
  EXPECT_THAT(Settings::filesOfUser(), ElementsAre("/etc/orlocal/orlocal.conf"));
  m_settings.set("/only.conf");
  EXPECT_THAT(Settings::filesOfUser(), ElementsAre("/only.conf"));
  m_settings.set("");
  EXPECT_THAT(Settings::filesOfUser(), IsEmpty());
}

}  // namespace
}  // namespace orlocal
