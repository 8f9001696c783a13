#include "accounts/transport/challenge.h"

#include <gtest/gtest.h>

namespace orlocal::accounts {
namespace {

HttpResponse challengedBy(std::vector<std::string> values) {
  HttpResponse response;
  for (std::string& value : values) { response.headers.push_back({"www-authenticate", std::move(value)}); }
  return response;
}

TEST(Challenge, NamesItsSchemesInAnyCaseInOneFieldOrSeveral) {
  EXPECT_TRUE(offers(challengedBy({"basic realm=\"x\""}), "Basic"));
  EXPECT_TRUE(offers(challengedBy({"Digest realm=\"x\", nonce=\"y\"", "BASIC"}), "Basic"));
  EXPECT_TRUE(offers(challengedBy({"Digest realm=\"x\", nonce=\"y\", Basic realm=\"x\""}), "Basic"));
  EXPECT_TRUE(offers(challengedBy({"Negotiate, Basic"}), "Basic"));
}

TEST(Challenge, HasNoSchemeInItsParameters) {
  EXPECT_FALSE(offers(challengedBy({"Digest realm=\"a, Basic b\\\", Basic\", basic=1"}), "Basic"));
  EXPECT_FALSE(offers(challengedBy({"BasicPlus realm=x"}), "Basic"));
  EXPECT_FALSE(offers(challengedBy({}), "Basic"));
}

}  // namespace
}  // namespace orlocal::accounts
