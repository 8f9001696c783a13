#include "host/calc/line_joiner.h"

#include <gtest/gtest.h>

namespace orlocal::host::calc {
namespace {

TEST(LineJoinerTest, IsOpenWhileABracketATextOrACommentIs) {
  EXPECT_EQ(completenessOf("Let ( [ a = 1 ;"), Completeness::kOpen);
  EXPECT_EQ(completenessOf("\"abc"), Completeness::kOpen);
  EXPECT_EQ(completenessOf("1 /* two"), Completeness::kOpen);
}

TEST(LineJoinerTest, IsCompleteOnceTheyAreClosed) {
  EXPECT_EQ(completenessOf("Let ( [ a = 1 ] ; a )"), Completeness::kComplete);
  EXPECT_EQ(completenessOf("\"(\""), Completeness::kComplete);
  EXPECT_EQ(completenessOf("1 // ("), Completeness::kComplete);
}

TEST(LineJoinerTest, IsCompleteWhenMoreWouldNotHelp) {
  EXPECT_EQ(completenessOf("1 ) ("), Completeness::kComplete);
  EXPECT_EQ(completenessOf("( 1 # 2"), Completeness::kComplete);
}

}  // namespace
}  // namespace orlocal::host::calc
