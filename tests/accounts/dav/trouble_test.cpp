#include "accounts/dav/trouble.h"

#include <gtest/gtest.h>

#include "accounts/dav/multistatus.h"
#include "store/time/clock.h"

namespace orlocal::accounts {
namespace {

Trouble troubleOfBody(int status, const std::string& condition) {
  return troubleOf(status, readErrorConditions("<e:error xmlns:e='DAV:' xmlns:c='urn:ietf:params:xml:ns:caldav'><" +
                                               condition + "/></e:error>"));
}

TEST(RefusalMeaning, IsThatOfTheConditionWhateverTheStatus) {
  EXPECT_EQ(troubleOfBody(403, "e:valid-sync-token"), Trouble::kInvalidToken);
  EXPECT_EQ(troubleOfBody(409, "e:valid-sync-token"), Trouble::kInvalidToken);
  EXPECT_EQ(troubleOfBody(403, "c:no-uid-conflict"), Trouble::kClash);
  EXPECT_EQ(troubleOfBody(412, "c:no-uid-conflict"), Trouble::kClash);
  EXPECT_EQ(troubleOfBody(403, "c:unique-scheduling-object-resource"), Trouble::kClash);
  EXPECT_EQ(troubleOfBody(403, "e:supported-report"), Trouble::kUnsupported);
  EXPECT_EQ(troubleOfBody(403, "e:need-privileges"), Trouble::kForbidden);
  EXPECT_EQ(troubleOfBody(403, "c:valid-calendar-data"), Trouble::kRefused);
  EXPECT_EQ(troubleOfBody(403, "c:supported-calendar-component"), Trouble::kRefused);
  EXPECT_EQ(troubleOfBody(403, "c:max-resource-size"), Trouble::kTooLarge);
  EXPECT_EQ(troubleOfBody(507, "e:number-of-matches-within-limits"), Trouble::kTooLarge);
  EXPECT_EQ(troubleOfBody(507, "e:quota-not-exceeded"), Trouble::kFull);
  EXPECT_EQ(troubleOfBody(403, "e:resource-must-be-null"), Trouble::kClash);
}

TEST(RefusalMeaning, IsThatOfTheStatusWhereNoConditionIsKnown) {
  EXPECT_EQ(troubleOfBody(403, "e:something-new"), Trouble::kForbidden);
  EXPECT_EQ(troubleOfBody(403, "c:valid-sync-token"), Trouble::kForbidden) << "of another namespace";
  constexpr std::pair<int, Trouble> kExpected[] = {
      {301, Trouble::kNonsense},     {400, Trouble::kRefused},     {401, Trouble::kUnauthorized},
      {402, Trouble::kRefused},      {403, Trouble::kForbidden},   {404, Trouble::kNotFound},
      {405, Trouble::kUnsupported},  {409, Trouble::kClash},       {410, Trouble::kNotFound},
      {412, Trouble::kPrecondition}, {413, Trouble::kTooLarge},    {415, Trouble::kRefused},
      {422, Trouble::kRefused},      {423, Trouble::kLocked},      {429, Trouble::kLater},
      {500, Trouble::kServerError},  {501, Trouble::kUnsupported}, {502, Trouble::kServerError},
      {503, Trouble::kLater},        {507, Trouble::kFull},
  };
  for (const auto& [status, trouble] : kExpected) { EXPECT_EQ(troubleOf(status, {}), trouble) << status; }
}

TEST(RefusalSentence, NamesPlaceAndReasonAndNoSecret) {
  const ServerFailure failure = refusalBy("https://ann:secret@h/cal/?token=secret", 403,
                                          readErrorConditions("<error xmlns='DAV:'><need-privileges/></error>"));
  EXPECT_EQ(failure.message, "https://h/cal/: the server forbids it (403, need-privileges).");
  EXPECT_EQ(failure.status, 403);
}

TEST(WaitAskedFor, IsInSecondsOrADate) {
  using std::chrono::seconds;
  const store::Moment now = *store::parseMoment("2026-11-02T08:00:00Z");
  EXPECT_EQ(waitAskedFor("120", now), seconds(120));
  EXPECT_EQ(waitAskedFor(" 0 ", now), seconds(0));
  EXPECT_EQ(waitAskedFor("Mon, 02 Nov 2026 08:01:30 GMT", now), seconds(90));
  EXPECT_EQ(waitAskedFor("Mon, 02 Nov 2026 07:00:00 GMT", now), seconds(0)) << "that is past";
}

TEST(WaitAskedFor, IsADayAtMost) {
  const store::Moment now = *store::parseMoment("2026-11-02T08:00:00Z");
  EXPECT_EQ(waitAskedFor("100000", now), std::chrono::hours(24));
  EXPECT_EQ(waitAskedFor("99999999999999999999999999", now), std::chrono::hours(24));
  EXPECT_EQ(waitAskedFor("Mon, 01 Jan 2029 00:00:00 GMT", now), std::chrono::hours(24));
}

TEST(WaitAskedFor, IsNoneForAnythingElse) {
  const store::Moment now = *store::parseMoment("2026-11-02T08:00:00Z");
  for (const char* text : {"", "soon", "-5", "1.5", "Mon, 32 Nov 2026 08:00:00 GMT", "Mon, 02 Foo 2026 08:00:00 GMT"}) {
    EXPECT_EQ(waitAskedFor(text, now), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace orlocal::accounts
