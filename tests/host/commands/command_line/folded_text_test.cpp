#include "host/commands/command_line/folded_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orlocal::host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(FoldedText, BreaksAtBlanksWithinTheWidth) {
  EXPECT_THAT(folded("one two three", 7), ElementsAre("one two", "three"));
  EXPECT_THAT(folded("one two", 6), ElementsAre("one", "two"));
}

TEST(FoldedText, LeavesALongWordWhole) {
  EXPECT_THAT(folded("a wonderful day", 4), ElementsAre("a", "wonderful", "day"));
}

TEST(FoldedText, TakesLineBreaksAndSeveralBlanksForOne) {
  EXPECT_THAT(folded(" one\n  two ", 20), ElementsAre("one two"));
  EXPECT_THAT(folded(" \n", 20), IsEmpty());
}

TEST(FoldedText, CountsCellsAndNotBytes) { EXPECT_THAT(folded("äöü äöü", 7), ElementsAre("äöü äöü")); }

TEST(FoldedText, KeepsMeaningsUnderTheirColumn) {
  EXPECT_EQ(foldedTable({{"-o FILE", "The file to write"}, {"--all", "Everything"}}, 24),
            "  -o FILE  The file to\n"
            "           write\n"
            "  --all    Everything\n");
}

TEST(FoldedText, PutsANameThatIsTooLongOnALineOfItsOwn) {
  EXPECT_EQ(foldedTable({{"--a-name-that-is-very-long FILE", "Long"}, {"--all", "All"}}, 60),
            "  --a-name-that-is-very-long FILE\n"
            "         Long\n"
            "  --all  All\n");
}

}  // namespace
}  // namespace orlocal::host
