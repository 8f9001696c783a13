#include "store/location.h"

#include <gmock/gmock.h>

namespace orlocal::store {
namespace {

class UserStoreOptions : public testing::Test {
 protected:
  void SetUp() override {
    m_file = valueOf("ORLOCAL_STORE");
    m_wait = valueOf("ORLOCAL_WAIT");
    setenv("ORLOCAL_STORE", "/somewhere/calendar.db", 1);
  }
  void TearDown() override {
    putBack("ORLOCAL_STORE", m_file);
    putBack("ORLOCAL_WAIT", m_wait);
  }

 private:
  static std::optional<std::string> valueOf(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
  }
  static void putBack(const char* name, const std::optional<std::string>& value) {
    value ? setenv(name, value->c_str(), 1) : unsetenv(name);
  }

  std::optional<std::string> m_file, m_wait;
};

TEST_F(UserStoreOptions, WaitTenSecondsUnlessSomebodySaysOtherwise) {
  unsetenv("ORLOCAL_WAIT");
  EXPECT_EQ(userStoreOptions(Zone())->busyTimeout, std::chrono::seconds(10));
  setenv("ORLOCAL_WAIT", "", 1);
  EXPECT_EQ(userStoreOptions(Zone())->busyTimeout, std::chrono::seconds(10));
  for (const char* seconds : {"0", "1", "3600"}) {
    setenv("ORLOCAL_WAIT", seconds, 1);
    EXPECT_EQ(userStoreOptions(Zone())->busyTimeout, std::chrono::seconds(std::stoi(seconds)));
  }
}

TEST_F(UserStoreOptions, NameASettingThatMakesNoSense) {
  for (const char* wrong : {"soon", "-1", "3601", "5s", "1.5", " 5", "99999999999"}) {
    setenv("ORLOCAL_WAIT", wrong, 1);
    const auto options = userStoreOptions(Zone());
    ASSERT_FALSE(options) << wrong;
    EXPECT_THAT(options.error().message, testing::HasSubstr(std::string("ORLOCAL_WAIT is \"") + wrong + "\""));
  }
}

}  // namespace
}  // namespace orlocal::store
