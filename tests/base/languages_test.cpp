#include "base/languages.h"

#include <cstdlib>
#include <map>

#include <gtest/gtest.h>

namespace orlocal {
namespace {

class Languages : public testing::Test {
 protected:
  static std::string preferred(const std::map<std::string, std::string>& variables) {
    for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
      const auto found = variables.find(name);
      if (found == variables.end()) {
        unsetenv(name);
      } else {
        setenv(name, found->second.c_str(), 1);
      }
    }
    std::string text;
    for (const auto& language : preferredLanguages()) { text += (text.empty() ? "" : " ") + language; }
    return text;
  }
};

TEST_F(Languages, AreEnglishWithoutAWish) {
  EXPECT_EQ(preferred({}), "en");
  EXPECT_EQ(preferred({{"LANG", "C"}}), "en");
  EXPECT_EQ(preferred({{"LC_ALL", "C.UTF-8"}}), "en");
  EXPECT_EQ(preferred({{"LC_ALL", "POSIX"}}), "en");
}

TEST_F(Languages, NameRegionThenLanguageThenEnglish) {
  EXPECT_EQ(preferred({{"LANG", "de_CH.UTF-8@euro"}}), "de_CH de en");
  EXPECT_EQ(preferred({{"LANG", "de"}}), "de en");
  EXPECT_EQ(preferred({{"LANG", "en_GB.UTF-8"}}), "en_GB en en");
}

TEST_F(Languages, ComeFromTheFirstVariableThatIsSet) {
  EXPECT_EQ(preferred({{"LC_ALL", "fr_FR"}, {"LC_MESSAGES", "it"}, {"LANG", "de"}}), "fr_FR fr en");
  EXPECT_EQ(preferred({{"LC_MESSAGES", "it"}, {"LANG", "de"}}), "it en");
  EXPECT_EQ(preferred({{"LC_ALL", ""}, {"LANG", "de"}}), "de en");
}

TEST_F(Languages, MayBeAList) {
  EXPECT_EQ(preferred({{"LANGUAGE", "sv:de_DE:en"}, {"LANG", "fr"}}), "sv de_DE de en en");
  EXPECT_EQ(preferred({{"LANGUAGE", ":de:"}}), "de en");
  EXPECT_EQ(preferred({{"LANGUAGE", "de"}, {"LC_ALL", "C.UTF-8"}}), "de en");
}

TEST_F(Languages, AreNoListInThePlainLocale) {
  EXPECT_EQ(preferred({{"LANGUAGE", "de"}, {"LC_ALL", "C"}}), "en");
  EXPECT_EQ(preferred({{"LANGUAGE", "de"}, {"LC_ALL", "POSIX"}}), "en");
}

TEST_F(Languages, AreNeverPaths) {
  EXPECT_EQ(preferred({{"LANG", "../../etc"}}), "en");
  EXPECT_EQ(preferred({{"LANGUAGE", "/tmp/x:de"}}), "de en");
}

}  // namespace
}  // namespace orlocal
