#include "host/language/message_catalogue.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/commands/command_line/child_process.h"

namespace orlocal::host {
namespace {

using testing::HasSubstr;

class LanguageOfTheProgram : public testing::Test {
 protected:
  LanguageOfTheProgram() {
    std::string pattern = (std::filesystem::temp_directory_path() / "orlocal-XXXXXX").string();
    m_folder = ::mkdtemp(pattern.data());
  }
  ~LanguageOfTheProgram() override { std::filesystem::remove_all(m_folder); }

  /// What the program prints with nothing in its environment but `variables`, and no calendar store.
  std::string printed(const std::vector<std::string>& variables, const std::vector<std::string>& words) const {
    std::vector<std::string> all{"/usr/bin/env", "-i", "HOME=" + m_folder.string(), "ORLOCAL_NOW=2026-11-02T08:00:00Z"};
    all.insert(all.end(), variables.begin(), variables.end());
    all.emplace_back(ORLOCAL_PROGRAM);
    all.insert(all.end(), words.begin(), words.end());
    const auto result = runProgram(all);
    return result ? result->output : result.error().message;
  }
  /// What it says of a command that is none.
  std::string said(const std::vector<std::string>& variables) const { return printed(variables, {"xyzzy"}); }

  std::filesystem::path m_folder;
};

constexpr const char* kGerman = "Kein Befehl \"xyzzy\".";
constexpr const char* kEnglish = "There is no command \"xyzzy\".";

TEST_F(LanguageOfTheProgram, NeedsNoLocaleThatWasGenerated) {
  // None of these is there on a machine with only the base system.
  EXPECT_THAT(said({"LC_ALL=de_DE.UTF-8"}), HasSubstr(kGerman));
  EXPECT_THAT(said({"LANG=de_AT.UTF-8"}), HasSubstr(kGerman));
  EXPECT_THAT(said({"LC_MESSAGES=de_CH.UTF-8"}), HasSubstr(kGerman));
  EXPECT_THAT(said({"LANG=de_DE.ISO-8859-1"}), HasSubstr(kGerman));
}

TEST_F(LanguageOfTheProgram, IsThatOfTheFirstVariableThatCounts) {
  EXPECT_THAT(said({"LANG=C.UTF-8", "LANGUAGE=de"}), HasSubstr(kGerman));
  EXPECT_THAT(said({"LANG=de_DE.UTF-8", "LC_ALL=en_US.UTF-8"}), HasSubstr(kEnglish));
  EXPECT_THAT(said({"LC_ALL=C", "LANGUAGE=de"}), HasSubstr(kEnglish));
  EXPECT_THAT(said({}), HasSubstr(kEnglish));
}

TEST_F(LanguageOfTheProgram, PassesOverLanguagesWithoutACatalogue) {
  EXPECT_THAT(said({"LANG=C.UTF-8", "LANGUAGE=tlh:de"}), HasSubstr(kGerman));
  EXPECT_THAT(said({"LANG=tlh_XX.UTF-8"}), HasSubstr(kEnglish));
}

TEST_F(LanguageOfTheProgram, IsEnglishWhereThatIsWantedMore) {
  EXPECT_THAT(said({"LANG=C.UTF-8", "LANGUAGE=en_GB:de"}), HasSubstr(kEnglish));
}

TEST_F(LanguageOfTheProgram, IsThatOfTheSettingsWhereTheEnvironmentNamesNone) {
  const auto file = m_folder / "orlocal.conf";
  std::ofstream(file) << "[display]\nlanguage = de\n";
  EXPECT_THAT(said({"LANG=C", "ORLOCAL_SETTINGS=" + file.string()}), HasSubstr(kGerman));
  EXPECT_THAT(said({"LANG=en_US.UTF-8", "ORLOCAL_SETTINGS=" + file.string()}), HasSubstr(kEnglish));
}

TEST_F(LanguageOfTheProgram, ChangesNoNumbersAndNothingForPrograms) {
  const std::vector<std::string> german{"LC_ALL=de_DE.UTF-8"}, english{"LC_ALL=C.UTF-8"};
  EXPECT_EQ(printed(german, {"--plugin", "none", "eval", "3 / 2"}),
            printed(english, {"--plugin", "none", "eval", "3 / 2"}));
  EXPECT_THAT(printed(german, {"calendars", "new", "Arbeit"}), testing::IsEmpty());
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{"--json", "calendars"}, {"--json", "agenda"}, {"export"}, {"report", "--csv", "-"}}) {
    EXPECT_EQ(printed(german, words), printed(english, words)) << words.front();
  }
}

TEST_F(LanguageOfTheProgram, ReachesHelpAndItsHeadings) {
  const std::string help = printed({"LC_ALL=de_DE.UTF-8"}, {"agenda", "--help"});
  EXPECT_THAT(help, HasSubstr("\nAufruf\n  orlocal agenda [OPTIONEN] [DAYS]\n"));
  EXPECT_THAT(help, HasSubstr("Letzter Tag, eingeschlossen"));
  EXPECT_THAT(help, HasSubstr("  orlocal agenda --from tomorrow --to +14 --calendar Work\n"));
}

}  // namespace
}  // namespace orlocal::host
