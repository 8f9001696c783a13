#include "accounts/transport/authorities.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

namespace orlocal::accounts {
namespace {

class Authorities : public testing::Test {
 protected:
  Authorities() {
    std::string name = testing::TempDir() + "orlocal-authorities-XXXXXX";
    folder = ::mkdtemp(name.data());
    std::ofstream(folder / "first.pem") << "certificates";
    std::ofstream(folder / "second.pem") << "certificates";
    std::filesystem::create_directory(folder / "empty");
  }
  ~Authorities() override { std::filesystem::remove_all(folder); }
  std::string in(const char* name) const { return folder / name; }

  std::filesystem::path folder;
};

TEST_F(Authorities, OfTheLibraryAreLeftWhereTheyAre) {
  const std::string own = in("second.pem");
  const std::string other = in("first.pem");
  const char* const built[] = {nullptr, own.c_str()};
  const char* const places[] = {other.c_str()};
  EXPECT_EQ(otherAuthorities(built, places), std::nullopt);
}

TEST_F(Authorities, OfAnotherDistributionAreTheFirstThatAreThere) {
  const std::string missing = in("none.pem");
  const std::string empty = in("empty");
  const std::string first = in("first.pem");
  const std::string second = in("second.pem");
  const char* const built[] = {missing.c_str(), empty.c_str()};
  const char* const places[] = {missing.c_str(), first.c_str(), second.c_str()};
  EXPECT_EQ(otherAuthorities(built, places), first);
}

TEST_F(Authorities, AreNoneWhereNothingIsThere) {
  const std::string missing = in("none.pem");
  const char* const built[] = {missing.c_str()};
  EXPECT_EQ(otherAuthorities(built, built), std::nullopt);
}

}  // namespace
}  // namespace orlocal::accounts
