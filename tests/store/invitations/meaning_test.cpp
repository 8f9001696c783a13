#include "store/invitations/meaning.h"

#include <gtest/gtest.h>

namespace orlocal::store {
namespace {

struct MeaningCase {
  const char* method;
  std::array<Meaning, 4> meanings;  ///< not stored, older, the same, newer
};

using enum Meaning;

class MeaningOf : public testing::TestWithParam<MeaningCase> {};

TEST_P(MeaningOf, HangsOnTheMethodAndOnWhatIsStored) {
  const Method method = methodOf(GetParam().method);
  for (const Beside beside : {Beside::kNotStored, Beside::kOlder, Beside::kSame, Beside::kNewer}) {
    EXPECT_EQ(meaningOf(method, beside), GetParam().meanings[static_cast<std::size_t>(beside)])
        << GetParam().method << ' ' << static_cast<int>(beside);
  }
}

INSTANTIATE_TEST_SUITE_P(Methods, MeaningOf,
                         testing::Values(MeaningCase{"", {kImport, kImport, kImport, kImport}},
                                         MeaningCase{"PUBLISH", {kImport, kImport, kImport, kImport}},
                                         MeaningCase{"X-UNKNOWN", {kImport, kImport, kImport, kImport}},
                                         MeaningCase{"request", {kImport, kStale, kKnown, kReplace}},
                                         MeaningCase{"REPLY", {kNotHere, kStale, kAnswer, kAnswer}},
                                         MeaningCase{"ADD", {kNotHere, kStale, kAdd, kAdd}},
                                         MeaningCase{"CANCEL", {kNotHere, kStale, kCancel, kCancel}},
                                         MeaningCase{"REFRESH", {kNotHere, kTellWish, kTellWish, kTellWish}},
                                         MeaningCase{"COUNTER", {kNotHere, kStale, kTellChange, kTellChange}},
                                         MeaningCase{"DECLINECOUNTER", {kNotHere, kTellNo, kTellNo, kTellNo}}));

TEST(BesideStored, LooksAtTheSequenceFirst) {
  Item stored, given;
  stored.sequence = 2;
  given.sequence = 1;
  given.stamped = Moment(std::chrono::hours(2));
  stored.stamped = Moment(std::chrono::hours(1));
  EXPECT_EQ(besideStored(given, stored), Beside::kOlder);
  EXPECT_EQ(besideStored(stored, given), Beside::kNewer);
}

TEST(BesideStored, LooksAtTheStampsThen) {
  Item stored, given;
  stored.stamped = Moment(std::chrono::hours(1));
  given.modified = Moment(std::chrono::hours(2));
  EXPECT_EQ(besideStored(given, stored), Beside::kNewer);
  EXPECT_EQ(besideStored(stored, given), Beside::kOlder);
  EXPECT_EQ(besideStored(given, given), Beside::kSame);
}

TEST(BesideStored, CallsTheSameWhatTellsNothing) {
  Item stored;
  stored.stamped = Moment(std::chrono::hours(1));
  EXPECT_EQ(besideStored(Item(), stored), Beside::kSame);
}

}  // namespace
}  // namespace orlocal::store
