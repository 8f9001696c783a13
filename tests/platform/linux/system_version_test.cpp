#include "platform/linux/system_version.h"

#include <cstdlib>

#include <gtest/gtest.h>

namespace orlocal {
namespace {

class SystemVersionSetting : public testing::Test {
 protected:
  void TearDown() override { ::unsetenv("ORLOCAL_SYSTEM_MINOR"); }

  static std::optional<long> minorVersionFor(const char* setting) {
    ::setenv("ORLOCAL_SYSTEM_MINOR", setting, 1);
    return makeSystemVersion()->minorVersion();
  }
};

TEST_F(SystemVersionSetting, IsFifteenWhenNothingIsSet) {
  ::unsetenv("ORLOCAL_SYSTEM_MINOR");
  EXPECT_EQ(makeSystemVersion()->minorVersion(), 15);
}

TEST_F(SystemVersionSetting, IsTheNumberThatIsSet) {
  EXPECT_EQ(minorVersionFor("7"), 7);
  EXPECT_EQ(minorVersionFor("8"), 8);
  EXPECT_EQ(minorVersionFor("-1"), -1);
}

TEST_F(SystemVersionSetting, GivesNoAnswerForATextThatIsNoNumber) {
  EXPECT_EQ(minorVersionFor("unknown"), std::nullopt);
  EXPECT_EQ(minorVersionFor(""), std::nullopt);
  EXPECT_EQ(minorVersionFor("7.5"), std::nullopt);
  EXPECT_EQ(minorVersionFor("99999999999999999999"), std::nullopt);
}

}  // namespace
}  // namespace orlocal
