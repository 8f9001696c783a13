#include "accounts/connection.h"

#include <gtest/gtest.h>

#include "accounts/face_fixture.h"
#include "accounts/transport/loopback_server.h"

namespace orlocal::accounts {
namespace {

const std::string kNoWord = "(none)";

/// An account whose address is on one host and whose calendars are on others. Ports stand for hosts: a password belongs
/// to scheme, host and port together.
class ConnectionOfAnAccount : public store::StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    SecretsFile secrets(folder / "secrets");
    ASSERT_TRUE(secrets.keep("an account", "pAssw0rd"));
    account = accountNamed("Work");
    account.identifier = "an account";
    account.settings.secret = "kept";
    account.settings.address = given.url("/");
  }
  std::unique_ptr<Transport> connection() const {
    return connectionFor(account, SecretsFile(folder / "secrets"), nullptr);
  }
  static LoopbackServer::Handler answering() {
    return [](const SeenRequest&) { return LoopbackServer::reply(200); };
  }
  /// The word by which the last request was signed.
  static std::string wordIn(const LoopbackServer& server) { return server.seen().back().header("authorization"); }

  LoopbackServer given{answering()};
  LoopbackServer first{answering()};
  LoopbackServer second{answering()};
  LoopbackServer leading{
      [this](const SeenRequest&) { return LoopbackServer::reply(302, "", "Location: " + given.url("/") + "\r\n"); }};
  Account account;
};

TEST_F(ConnectionOfAnAccount, GivesThePasswordToTheHostOfTheFirstHome) {
  account.state.homes = {first.url("/home/"), second.url("/home/")};
  const auto transport = connection();
  for (const LoopbackServer* each : {&first, &second, &given}) {
    ASSERT_TRUE(transport->send({"PROPFIND", each->url("/x/"), {}, ""}));
  }
  EXPECT_EQ(wordIn(first), "Basic YW5uOnBBc3N3MHJk");  // "ann:pAssw0rd"
  EXPECT_EQ(wordIn(second), kNoWord);
  EXPECT_EQ(wordIn(given), kNoWord);
}

TEST_F(ConnectionOfAnAccount, GivesThePasswordToNobodyElseWhomThatHostNames) {
  account.state.homes = {leading.url("/home/")};
  ASSERT_TRUE(connection()->send({"PROPFIND", leading.url("/home/"), {}, ""}));
  EXPECT_NE(wordIn(leading), kNoWord);
  EXPECT_EQ(wordIn(given), kNoWord);
}

TEST_F(ConnectionOfAnAccount, GivesThePasswordToWhomeverFindingTheAccountAsks) {
  const auto transport = connection();
  for (const LoopbackServer* each : {&given, &leading}) {
    ASSERT_TRUE(transport->send({"PROPFIND", each->url("/x/"), {}, ""}));
    EXPECT_NE(each->seen().front().header("authorization"), kNoWord);
  }
  EXPECT_EQ(wordIn(given), kNoWord) << "a redirect is followed without it";
}

TEST_F(ConnectionOfAnAccount, GivesThePasswordToNobodyWhenItsHomeIsNoAddress) {
  account.state.homes = {"no address"};
  ASSERT_TRUE(connection()->send({"PROPFIND", given.url("/"), {}, ""}));
  EXPECT_EQ(wordIn(given), kNoWord);
}

}  // namespace
}  // namespace orlocal::accounts
