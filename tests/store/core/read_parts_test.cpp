#include "store/core/read_parts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orlocal::store {
namespace {

using Part = ReadParts::Part;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(ReadParts, MissWhatNobodyRead) {
  ReadParts parts;
  EXPECT_THAT(parts.missing({10, 20}), ElementsAre(Part{10, 20}));
  EXPECT_THAT(parts.missing({20, 20}), IsEmpty());
}

TEST(ReadParts, MissWhatLiesBetween) {
  ReadParts parts;
  parts.add({10, 20});
  parts.add({30, 40});
  EXPECT_THAT(parts.missing({0, 50}), ElementsAre(Part{0, 10}, Part{20, 30}, Part{40, 50}));
  EXPECT_THAT(parts.missing({12, 35}), ElementsAre(Part{20, 30}));
  EXPECT_THAT(parts.missing({20, 30}), ElementsAre(Part{20, 30}));
  EXPECT_THAT(parts.missing({10, 20}), IsEmpty());
  EXPECT_THAT(parts.missing({19, 21}), ElementsAre(Part{20, 21}));
}

TEST(ReadParts, JoinWhatTouches) {
  ReadParts parts;
  parts.add({10, 20});
  parts.add({30, 40});
  parts.add({20, 30});
  EXPECT_THAT(parts.missing({5, 45}), ElementsAre(Part{5, 10}, Part{40, 45}));
  parts.add({0, 100});
  parts.add({50, 60});
  EXPECT_THAT(parts.missing({0, 100}), IsEmpty());
  parts.add({7, 7});
  EXPECT_THAT(parts.missing({-1, 1}), ElementsAre(Part{-1, 0}));
}

TEST(ReadParts, ReachToTheEndsOfTheLine) {
  ReadParts parts;
  parts.add({INT64_MIN, 0});
  EXPECT_THAT(parts.missing({INT64_MIN, INT64_MAX}), ElementsAre(Part{0, INT64_MAX}));
}

}  // namespace
}  // namespace orlocal::store
