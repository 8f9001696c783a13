#include "store/edits/list_merge.h"

#include <string>

#include <gmock/gmock.h>

namespace orlocal::store {
namespace {

/// A letter an element: what both sides made of "base".
struct MergeCase {
  const char* name;
  std::string base, mine, theirs, merged;
};

class MergedLists : public testing::TestWithParam<MergeCase> {};

std::vector<char> letters(const std::string& text) { return {text.begin(), text.end()}; }

TEST_P(MergedLists, KeepWhatBothSidesDid) {
  const MergeCase& given = GetParam();
  const auto merged = mergedLists(letters(given.base), letters(given.mine), letters(given.theirs));
  EXPECT_EQ(std::string(merged.begin(), merged.end()), given.merged);
}

INSTANTIATE_TEST_SUITE_P(Cases, MergedLists,
                         testing::Values(MergeCase{"Untouched", "abc", "abc", "abc", "abc"},
                                         MergeCase{"MineAlone", "abc", "axcd", "abc", "axcd"},
                                         MergeCase{"TheirsAlone", "abc", "abc", "xbcd", "xbcd"},
                                         MergeCase{"BothAdded", "ab", "abx", "aby", "abyx"},
                                         MergeCase{"BothAddedTheSame", "ab", "abx", "abx", "abx"},
                                         MergeCase{"BothAddedToNothing", "", "x", "y", "yx"},
                                         MergeCase{"BothChangedAnother", "ab", "xb", "ay", "xy"},
                                         MergeCase{"BothChangedTheSame", "ab", "xb", "yb", "xb"},
                                         MergeCase{"BothRemovedAnother", "abc", "bc", "ab", "b"},
                                         MergeCase{"BothRemovedTheSame", "abc", "bc", "bc", "bc"},
                                         MergeCase{"MineChangedWhatTheyRemoved", "ab", "xb", "b", "bx"},
                                         MergeCase{"MineRemovedWhatTheyChanged", "ab", "b", "yb", "b"},
                                         MergeCase{"MineRemovedAllAndTheyAdded", "ab", "", "aby", "y"},
                                         MergeCase{"TheyRemovedAllAndMineAdded", "ab", "abx", "", "x"},
                                         MergeCase{"OneOfTwoEqualOnes", "aa", "xa", "aay", "xay"}),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace orlocal::store
