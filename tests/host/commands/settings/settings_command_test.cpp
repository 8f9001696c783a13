#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "base/settings.h"
#include "base/settings_files.h"
#include "host/commands/all_commands.h"

namespace orlocal::host {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

class SettingsCommand : public test::SettingsFiles {
 protected:
  ExitStatus run(std::vector<std::string> words, bool onTerminal = false) {
    std::istringstream in;
    std::ostringstream outText, errText;
    CommandLine line(Streams{in, outText, errText, false, onTerminal, false});
    registerAllCommands(line);
    words.insert(words.begin(), "settings");
    const ExitStatus status = line.run("orlocal", words);
    out = outText.str();
    err = errText.str();
    return status;
  }

  std::string out, err;
  test::KeptVariable m_noColor{"NO_COLOR"}, m_terminal{"TERM"}, m_told{Settings::kToldVariable};
};

TEST_F(SettingsCommand, ShowsEachValueAndWhereItCameFrom) {
  const auto path = use("[calendar]\nzone = Asia/Tokyo\nevents = Work\n[store]\nfile = /srv/a.db\n");
  m_wait.set("5");
  EXPECT_EQ(run({}), ExitStatus::kDone);
  EXPECT_THAT(out, ContainsRegex("file +/srv/a.db +" + path.string() + ":5"));
  EXPECT_THAT(out, ContainsRegex("wait +5 +ORLOCAL_WAIT"));
  EXPECT_THAT(out, ContainsRegex("zone +Asia/Tokyo +" + path.string() + ":2"));
  EXPECT_THAT(out, ContainsRegex("events +Work +" + path.string() + ":3"));
  EXPECT_THAT(out, ContainsRegex("system-minor +15 +built in"));
  EXPECT_EQ(err, "");
}

TEST_F(SettingsCommand, TheEnvironmentsZoneIsNotTakenForTheFiles) {
  use("[calendar]\nzone = Asia/Tokyo\n");
  m_zone.set("Europe/Paris");
  EXPECT_EQ(run({}), ExitStatus::kDone);
  EXPECT_THAT(out, ContainsRegex("zone +Europe/Paris +TZ"));
}

TEST_F(SettingsCommand, OptionsWinOverAll) {
  use("[store]\nfile = /srv/a.db\n");
  EXPECT_EQ(run({"--store", "/srv/b.db", "--system-minor", "7", "--color", "never"}), ExitStatus::kDone);
  EXPECT_THAT(out, ContainsRegex("file +/srv/b.db +--store"));
  EXPECT_THAT(out, ContainsRegex("system-minor +7 +--system-minor"));
  EXPECT_THAT(out, ContainsRegex("color +never +--color"));
}

TEST_F(SettingsCommand, WhatWasNotUnderstoodIsSaidOnceAndIsAFailure) {
  const auto path = use("[store]\nfile = a.db\n");
  EXPECT_EQ(run({}), ExitStatus::kFailed);
  EXPECT_EQ(err, "orlocal: " + path.string() +
                     ":2: file = \"a.db\": a file is named by its whole path, from \"/\" or \"~/\" on; the line is "
                     "passed over\n");
}

TEST_F(SettingsCommand, JsonHasTheFilesTheSettingsAndTheProblems) {
  const auto path = use("[display]\ncolor = never\nbad\n");
  EXPECT_EQ(run({"--json"}), ExitStatus::kFailed);
  const auto json = nlohmann::json::parse(out);
  EXPECT_EQ(json["files"][0]["file"], path.string());
  EXPECT_EQ(json["files"][0]["exists"], true);
  EXPECT_EQ(json["settings"].size(), settingRows().size());
  EXPECT_EQ(json["problems"].size(), 1U);
}

TEST_F(SettingsCommand, ColoursAreWhereTheyAreWanted) {
  m_noColor.set(std::nullopt);
  m_terminal.set("xterm");
  use("");
  const auto colored = [&](const std::vector<std::string>& words, bool onTerminal) {
    run(words, onTerminal);
    return out.find('\x1b') != std::string::npos;
  };
  EXPECT_TRUE(colored({}, true));
  EXPECT_FALSE(colored({}, false));
  EXPECT_TRUE(colored({"--color", "always"}, false));
  EXPECT_FALSE(colored({"--color", "never"}, true));
  m_terminal.set("dumb");
  EXPECT_FALSE(colored({}, true));
  m_terminal.set("xterm");
  m_noColor.set("1");
  EXPECT_FALSE(colored({}, true));
  EXPECT_TRUE(colored({"--color", "always"}, true)) << "an option wins over the environment";
  use("[display]\ncolor = always\n");
  EXPECT_FALSE(colored({}, true)) << "the environment wins over a file";
  m_noColor.set(std::nullopt);
  EXPECT_TRUE(colored({}, false));
  use("[display]\ncolor = never\n");
  EXPECT_FALSE(colored({}, true));
}

/// The page that people read has each of them.
TEST(SettingsPage, DescribesEverySetting) {
  std::ifstream in(ORLOCAL_DOCS "/settings.md");
  std::stringstream page;
  page << in.rdbuf();
  ASSERT_THAT(page.str(), Not(testing::IsEmpty()));
  for (const SettingRow& row : settingRows()) {
    EXPECT_THAT(page.str(), HasSubstr("[" + std::string(row.section) + "]"));
    EXPECT_THAT(page.str(), HasSubstr("`" + std::string(row.name) + "`"));
    if (!row.variable.empty()) { EXPECT_THAT(page.str(), HasSubstr("`" + std::string(row.variable) + "`")); }
  }
}

}  // namespace
}  // namespace orlocal::host
