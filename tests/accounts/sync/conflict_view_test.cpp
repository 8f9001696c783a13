#include "accounts/sync/conflict_view.h"

#include <gmock/gmock.h>

namespace orlocal::accounts {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string versionOf(const std::string& lines) {
  return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VEVENT\r\nUID:u\r\nSEQUENCE:1\r\n" + lines +
         "END:VEVENT\r\nEND:VCALENDAR\r\n";
}

store::Conflict between(std::optional<std::string> mine, std::optional<std::string> theirs,
                        const std::string& fields = "title\nlocation") {
  store::Conflict conflict;
  conflict.fields = fields;
  conflict.mine = std::move(mine);
  conflict.theirs = std::move(theirs);
  return conflict;
}

TEST(VersionsOfAConflict, AreShownWhereTheyDiffer) {
  const auto shown = differencesOf(between(versionOf("SUMMARY:A\\, B\r\nLOCATION:Here\r\nDTSTART:20261104T090000Z\r\n"),
                                           versionOf("SUMMARY:C\r\nDTSTART:20261104T090000Z\r\nLOCATION:Here\r\n")));
  ASSERT_EQ(shown.size(), 1U);
  EXPECT_EQ(shown[0].field, "title");
  EXPECT_THAT(shown[0].mine, ElementsAre("A, B"));
  EXPECT_THAT(shown[0].theirs, ElementsAre("C"));
}

TEST(VersionsOfAConflict, LeaveOutWhatTheConflictIsNotAbout) {
  const auto mine = versionOf("SUMMARY:A\r\nURL:http://a\r\n"), theirs = versionOf("SUMMARY:C\r\nURL:http://b\r\n");
  EXPECT_EQ(differencesOf(between(mine, theirs)).size(), 1U);
  EXPECT_EQ(differencesOf(between(mine, theirs, "not allowed")).size(), 2U);
}

TEST(VersionsOfAConflict, NameTheOccurrenceThatWasChanged) {
  const std::string changed = "END:VEVENT\r\nBEGIN:VEVENT\r\nUID:u\r\nRECURRENCE-ID:20261105T090000Z\r\nSUMMARY:";
  const auto shown =
      differencesOf(between(versionOf("SUMMARY:A\r\n" + changed + "B\r\n"),
                            versionOf("SUMMARY:A\r\n" + changed + "C\r\n"), "title of 20261105T090000Z"));
  ASSERT_EQ(shown.size(), 1U);
  EXPECT_EQ(shown[0].field, "title of 20261105T090000Z");
}

TEST(VersionsOfAConflict, MayLackOneSide) {
  const auto shown = differencesOf(between(std::nullopt, versionOf("SUMMARY:A\r\n")));
  ASSERT_EQ(shown.size(), 1U);
  EXPECT_THAT(shown[0].mine, IsEmpty());
  EXPECT_THAT(shown[0].theirs, ElementsAre("A"));
}

TEST(VersionsOfAConflict, CountAlarmsAsOneThing) {
  const auto shown = differencesOf(
      between(versionOf("BEGIN:VALARM\r\nTRIGGER:-PT5M\r\nEND:VALARM\r\n"), versionOf("SEQUENCE:2\r\n"), "alarms"));
  ASSERT_EQ(shown.size(), 1U);
  EXPECT_EQ(shown[0].field, "alarms");
}

TEST(FieldsOfAConflict, AreOneALine) {
  EXPECT_THAT(fieldsOf(between(std::nullopt, std::nullopt)), ElementsAre("title", "location"));
}

}  // namespace
}  // namespace orlocal::accounts
