#include "accounts/dav/multistatus.h"

#include <gtest/gtest.h>

#include "accounts/dav/names.h"

namespace orlocal::accounts {
namespace {

TEST(StatusLine, HasThreeDigits) {
  EXPECT_EQ(statusOf("HTTP/1.1 404 Not Found"), 404);
  EXPECT_EQ(statusOf("HTTP/2 200"), 200);
  for (const char* line : {"", "200", "HTTP/1.1", "HTTP/1.1 ", "HTTP/1.1 20", "HTTP/1.1 ok", "ICY 200 OK"}) {
    EXPECT_EQ(statusOf(line), 0) << line;
  }
}

TEST(ReadingMultistatus, GivesWhatIsSaidOfEachResource) {
  const auto read = readMultistatus(R"(<multistatus xmlns="DAV:">
    <response><href> /a%20b </href><href>/c</href><status>HTTP/1.1 404 Not Found</status><error><need-privileges/></error></response>
    <response><href>/d</href><propstat><prop><getetag>"1"</getetag></prop><status>HTTP/1.1 200 OK</status></propstat>
      <propstat><prop><displayname/></prop><status>HTTP/1.1 404 Not Found</status></propstat></response>
    <sync-token> data:,1 </sync-token></multistatus>)");
  ASSERT_TRUE(read);
  ASSERT_EQ(read->responses.size(), 2U);
  EXPECT_EQ(read->responses[0].hrefs, (std::vector<std::string>{"/a%20b", "/c"}));
  EXPECT_EQ(read->responses[0].status, 404);
  ASSERT_EQ(read->responses[0].errors.size(), 1U);
  EXPECT_EQ(read->responses[0].errors[0].local, "need-privileges");
  ASSERT_NE(read->responses[1].property(dav::kGetEtag), nullptr);
  EXPECT_EQ(read->responses[1].property(dav::kDisplayName), nullptr) << "it is named as missing only";
  EXPECT_EQ(read->syncToken, "data:,1");
}

TEST(ReadingMultistatus, GivesEachResponseOnByItself) {
  std::vector<std::string> hrefs;
  const auto take = [&](const DavResponse& response) { hrefs.push_back(response.hrefs.front()); };
  const auto token = readMultistatus(R"(<multistatus xmlns="DAV:"><response><href>/a</href></response>
    <sync-token>data:,1</sync-token><response><href>/b</href></response></multistatus>)",
                                     take);
  EXPECT_EQ(token, "data:,1");
  EXPECT_EQ(hrefs, (std::vector<std::string>{"/a", "/b"}));
  EXPECT_FALSE(readMultistatus("<multistatus xmlns='DAV:'><response><href>/c</href></response>", take))
      << "what was given does not count where the end is missing";
}

TEST(ReadingMultistatus, GivesNoneForAnythingElse) {
  for (const char* document : {"", "<html/>", "<multistatus/>", "<error xmlns='DAV:'/>", "BEGIN:VCALENDAR",
                               "<multistatus xmlns='DAV:'><response></multistatus>"}) {
    EXPECT_FALSE(readMultistatus(document)) << document;
  }
  EXPECT_TRUE(readMultistatus("<multistatus xmlns='DAV:'/>")) << "nothing is an answer, too";
}

TEST(Refusal, IsTheReasonRatherThanItsConsequence) {
  const auto read = readMultistatus(R"(<multistatus xmlns="DAV:"><response><href>/a</href>
    <propstat><prop><displayname/></prop><status>HTTP/1.1 424 Failed Dependency</status></propstat>
    <propstat><prop><getetag/></prop><status>HTTP/1.1 403 Forbidden</status>
      <error><cannot-modify-protected-property/></error></propstat></response></multistatus>)");
  ASSERT_TRUE(read);
  const auto refused = read->responses[0].refusal();
  ASSERT_TRUE(refused);
  EXPECT_EQ(refused->status, 403);
  ASSERT_EQ(refused->errors.size(), 1U);
  EXPECT_EQ(refused->errors[0].local, "cannot-modify-protected-property");
}

TEST(ErrorConditions, AreNoneInBodiesThatAreNotOurs) {
  EXPECT_TRUE(readErrorConditions("<html><body>Forbidden</body></html>").empty());
  EXPECT_TRUE(readErrorConditions("plain words").empty());
  EXPECT_EQ(readErrorConditions("<D:error xmlns:D='DAV:'><D:valid-sync-token/></D:error>").size(), 1U);
}

}  // namespace
}  // namespace orlocal::accounts
