#include "host/commands/command_line/nearest_word.h"

#include <gtest/gtest.h>

namespace orlocal::host {
namespace {

TEST(NearestWord, CountsLettersPutInLeftOutExchangedAndSwapped) {
  EXPECT_EQ(editDistance("agenda", "agenda"), 0U);
  EXPECT_EQ(editDistance("agendda", "agenda"), 1U);
  EXPECT_EQ(editDistance("aenda", "agenda"), 1U);
  EXPECT_EQ(editDistance("agemda", "agenda"), 1U);
  EXPECT_EQ(editDistance("agneda", "agenda"), 1U);
  EXPECT_EQ(editDistance("", "agenda"), 6U);
  EXPECT_EQ(editDistance("import", "export"), 2U);
  EXPECT_EQ(editDistance("Agenda", "agenda"), 0U);
}

TEST(NearestWord, IsTheOneWithTheFewestSlips) {
  EXPECT_EQ(nearestWord("inport", {"export", "import"}), "import");
  EXPECT_EQ(nearestWord("AGENDA", {"export", "agenda"}), "agenda");
}

TEST(NearestWord, IsNoneWhenNothingIsNear) {
  EXPECT_EQ(nearestWord("cook", {"export", "import"}), std::nullopt);
  EXPECT_EQ(nearestWord("", {"a"}), std::nullopt);
  EXPECT_EQ(nearestWord("-x", {"-h"}), std::nullopt);
  EXPECT_EQ(nearestWord(std::string(100'000, 'a'), {std::string(100'000, 'a')}), std::nullopt);
}

TEST(NearestWord, IsWhatWasBegun) { EXPECT_EQ(nearestWord("cal", {"agenda", "calendars"}), "calendars"); }

}  // namespace
}  // namespace orlocal::host
