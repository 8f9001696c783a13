#include "base/settings_text.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orlocal {
namespace {

using testing::ElementsAre;
using testing::Pair;

std::vector<std::string> told(const SettingsText& parsed) {
  std::vector<std::string> lines;
  for (const auto& line : parsed.lines) {
    lines.push_back(line.section + "/" + line.name + "=" + line.value + "@" + std::to_string(line.line));
  }
  return lines;
}

TEST(SettingsTextTest, SectionsNamesAndValuesAreRead) {
  const auto parsed = parseSettings("early = 1\n[store]\nfile = /var/a.db\n\n[ calendar ]\n  zone=Asia/Tokyo\n");
  EXPECT_THAT(told(parsed), ElementsAre("/early=1@1", "store/file=/var/a.db@3", "calendar/zone=Asia/Tokyo@6"));
  EXPECT_TRUE(parsed.complaints.empty());
}

TEST(SettingsTextTest, RemarksStandAtTheBeginningOfALineOnly) {
  const auto parsed = parseSettings("# one\n  ; two\n[a]\nb = c # no remark\n");
  EXPECT_THAT(told(parsed), ElementsAre("a/b=c # no remark@4"));
}

TEST(SettingsTextTest, QuotesKeepBlanksAndEqualsSignsBelongToTheValue) {
  const auto parsed = parseSettings("[a]\nb = \"  c \"\nd = e = f\ng = \"\nh =\n");
  EXPECT_THAT(told(parsed), ElementsAre("a/b=  c @2", "a/d=e = f@3", "a/g=\"@4", "a/h=@5"));
}

TEST(SettingsTextTest, EndsOfLinesAndAByteOrderMarkMakeNoDifference) {
  const auto parsed = parseSettings("\xEF\xBB\xBF[a]\r\nb = c\r\nd = e");
  EXPECT_THAT(told(parsed), ElementsAre("a/b=c@2", "a/d=e@3"));
}

TEST(SettingsTextTest, WhatIsNoneOfTheseIsSaidWithItsLine) {
  const auto parsed = parseSettings("[a\nhello\n= 3\n[b]\nc = d\n");
  EXPECT_THAT(told(parsed), ElementsAre("b/c=d@5"));
  EXPECT_THAT(parsed.complaints,
              ElementsAre(Pair(1, "a section ends with \"]\""), Pair(2, "a setting is written \"name = value\""),
                          Pair(3, "a setting is written \"name = value\"")));
}

}  // namespace
}  // namespace orlocal
