#include "accounts/memory_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "accounts/dav/dav_server.h"
#include "accounts/object_lines.h"

namespace orlocal::accounts {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string eventText(const std::string& uid, const std::string& summary = "Meeting") {
  return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//test//EN\r\nBEGIN:VEVENT\r\nUID:" + uid +
         "\r\nDTSTAMP:20261102T080000Z\r\nDTSTART:20261102T090000Z\r\nSUMMARY:" + summary +
         "\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n";
}

/// A client of ours at the server, and another client's hand.
class ServerInMemory : public testing::Test {
 protected:
  std::string item(const std::string& name) const { return work + name; }
  Answer<Written> putNew(const std::string& name, const std::string& text) {
    return client.put(item(name), text, Precondition::isNew());
  }
  std::vector<std::string> changedSince(const std::string& token) {
    std::vector<std::string> urls;
    const auto changes = client.changesSince(work, token);
    for (const RemoteEntry& entry : changes.value().changed) { urls.push_back(entry.url); }
    return urls;
  }

  MemoryServer server;
  std::string work = server.addCalendar("work", {.displayName = "Work", .color = "#FF0000FF"});
  DavServer client{server};
};

TEST_F(ServerInMemory, TellsOfItsCalendars) {
  server.addCalendar("to do", {.displayName = "To do", .events = false, .readOnly = true});
  const auto found = client.calendars(MemoryServer::home(), Marks::kAll);
  ASSERT_TRUE(found);
  ASSERT_EQ(found->size(), 2U);
  EXPECT_EQ(found->at(0).url, MemoryServer::home() + "to%20do/");
  EXPECT_FALSE(found->at(0).events);
  EXPECT_EQ(found->at(0).writable, false);
  EXPECT_EQ(found->at(1).displayName, "Work");
  EXPECT_EQ(found->at(1).writable, true);
  EXPECT_TRUE(found->at(1).reportsChanges);
}

TEST_F(ServerInMemory, KeepsWhatIsPutAndGivesItBack) {
  const auto written = putNew("a.ics", eventText("a"));
  ASSERT_TRUE(written);
  const auto text = client.text(item("a.ics"));
  ASSERT_TRUE(text);
  EXPECT_EQ(text->text, eventText("a"));
  EXPECT_EQ(text->etag, written->etag);
  const auto entries = client.entries(work);
  ASSERT_TRUE(entries);
  ASSERT_EQ(entries->size(), 1U);
  EXPECT_EQ(entries->front().url, item("a.ics"));
  EXPECT_EQ(entries->front().etag, written->etag);
  const auto texts = client.texts(work, std::vector<std::string>{item("a.ics"), item("none.ics")});
  ASSERT_TRUE(texts);
  EXPECT_EQ(texts->found.size(), 1U);
  EXPECT_THAT(texts->missing, ElementsAre(item("none.ics")));
}

TEST_F(ServerInMemory, LooksAtPreconditions) {
  ASSERT_TRUE(putNew("a.ics", eventText("a")));
  EXPECT_EQ(putNew("a.ics", eventText("a")).error().trouble, Trouble::kPrecondition);
  const std::string etag = server.putAs(item("a.ics"), eventText("a", "Changed"));
  EXPECT_EQ(client.put(item("a.ics"), eventText("a"), Precondition::isAsKnown("\"old\"")).error().status, 412);
  EXPECT_EQ(client.put(item("b.ics"), eventText("b"), Precondition::isAsKnown(etag)).error().status, 412);
  EXPECT_EQ(client.remove(item("a.ics"), "\"old\"").error().trouble, Trouble::kPrecondition);
  ASSERT_TRUE(client.put(item("a.ics"), eventText("a"), Precondition::isAsKnown(etag)));
  EXPECT_EQ(client.remove(item("a.ics"), etag).error().trouble, Trouble::kPrecondition) << "another ETag each time";
  ASSERT_TRUE(client.remove(item("a.ics"), server.itemAt(item("a.ics"))->etag));
  EXPECT_EQ(client.remove(item("a.ics"), "").error().trouble, Trouble::kNotFound);
}

TEST_F(ServerInMemory, TakesOnlyCalendarObjectsOfItsKind) {
  const auto refusedWith = [&](const std::string& text) {
    const auto put = putNew("x.ics", text);
    return put ? std::string("(taken)") : put.error().message;
  };
  EXPECT_THAT(refusedWith("garbage"), HasSubstr("valid-calendar-data"));
  EXPECT_THAT(refusedWith(eventText("a") + "more"), HasSubstr("valid-calendar-data"));
  EXPECT_THAT(refusedWith("BEGIN:VCALENDAR\r\nMETHOD:REQUEST\r\n" + eventText("a").substr(17)),
              HasSubstr("valid-calendar-object-resource"));
  std::string two = eventText("a");
  two.insert(two.find("END:VCALENDAR"), "BEGIN:VEVENT\r\nUID:b\r\nEND:VEVENT\r\n");
  EXPECT_THAT(refusedWith(two), HasSubstr("valid-calendar-object-resource"));
  server.calendarAt(work).events = false;
  EXPECT_THAT(refusedWith(eventText("a")), HasSubstr("supported-calendar-component"));
  EXPECT_EQ(server.itemCount(work), 0U);
}

TEST_F(ServerInMemory, HasEachUidOnce) {
  ASSERT_TRUE(putNew("a.ics", eventText("a")));
  EXPECT_EQ(putNew("b.ics", eventText("a")).error().trouble, Trouble::kClash);
  const std::string etag = server.itemAt(item("a.ics"))->etag;
  EXPECT_EQ(client.put(item("a.ics"), eventText("c"), Precondition::isAsKnown(etag)).error().trouble, Trouble::kClash);
}

TEST_F(ServerInMemory, RefusesWritesToWhatIsReadOnly) {
  server.putAs(item("a.ics"), eventText("a"));
  server.calendarAt(work).readOnly = true;
  EXPECT_EQ(putNew("b.ics", eventText("b")).error().trouble, Trouble::kForbidden);
  EXPECT_EQ(client.remove(item("a.ics"), "").error().trouble, Trouble::kForbidden);
  EXPECT_EQ(client.setProperty(work, CalendarProperty::kDisplayName, "x").error().trouble, Trouble::kForbidden);
  EXPECT_EQ(client.removeCalendar(work).error().trouble, Trouble::kForbidden);
}

TEST_F(ServerInMemory, RefusesMoreBytesThanItSaid) {
  server.mostBytes = 50;
  EXPECT_EQ(client.calendar(work)->mostBytes, 50);
  EXPECT_EQ(putNew("a.ics", eventText("a")).error().trouble, Trouble::kTooLarge);
}

TEST_F(ServerInMemory, TellsWhatChangedSinceAToken) {
  ASSERT_TRUE(putNew("a.ics", eventText("a")));
  ASSERT_TRUE(putNew("b.ics", eventText("b")));
  const auto first = client.changesSince(work, "");
  ASSERT_TRUE(first);
  EXPECT_EQ(first->changed.size(), 2U);
  EXPECT_EQ(first->token, client.calendar(work)->syncToken);
  EXPECT_THAT(changedSince(first->token), IsEmpty());

  server.putAs(item("a.ics"), eventText("a", "Changed"));
  server.removeAs(item("b.ics"));
  server.putAs(item("brief.ics"), eventText("brief"));
  server.removeAs(item("brief.ics"));
  const auto second = client.changesSince(work, first->token);
  ASSERT_TRUE(second);
  ASSERT_EQ(second->changed.size(), 1U);
  EXPECT_EQ(second->changed[0].etag, server.itemAt(item("a.ics"))->etag);
  EXPECT_THAT(second->removed, ElementsAre(item("b.ics"), item("brief.ics")));
  EXPECT_THAT(client.changesSince(work, "")->removed, IsEmpty()) << "whoever asks for all hears of nothing gone";
}

TEST_F(ServerInMemory, KnowsItsTokens) {
  const std::string token = client.calendar(work)->syncToken;
  EXPECT_EQ(client.changesSince(work, "nonsense").error().trouble, Trouble::kInvalidToken);
  server.dropCalendar(work);
  EXPECT_EQ(client.changesSince(work, token).error().trouble, Trouble::kNotFound);
  server.addCalendar("work");
  EXPECT_EQ(client.changesSince(work, token).error().trouble, Trouble::kInvalidToken) << "it is another calendar now";
}

TEST_F(ServerInMemory, IsStrictAboutRequests) {
  const auto statusOf = [&](const std::string& method, std::vector<HttpHeader> headers, const std::string& body) {
    return server.send({method, work, std::move(headers), body})->status;
  };
  const std::string sync =
      "<sync-collection xmlns='DAV:'><sync-token/><sync-level>1</sync-level><prop/></sync-collection>";
  EXPECT_EQ(statusOf("REPORT", {{"Depth", "0"}}, sync), 207);
  EXPECT_EQ(statusOf("REPORT", {{"Depth", "1"}}, sync), 400);
  EXPECT_EQ(
      statusOf("REPORT", {{"Depth", "0"}}, "<sync-collection xmlns='DAV:'><sync-token/><prop/></sync-collection>"),
      400);
  EXPECT_EQ(statusOf("REPORT", {{"Depth", "0"}}, "<other xmlns='DAV:'/>"), 403);
  EXPECT_EQ(statusOf("PROPFIND", {}, "<propfind xmlns='DAV:'><prop/></propfind>"), 403);
  EXPECT_EQ(statusOf("PROPFIND", {{"Depth", "0"}}, "no"), 400);
  EXPECT_EQ(statusOf("LOCK", {}, ""), 501);
}

TEST_F(ServerInMemory, MakesCalendarsAndForgetsThem) {
  const std::string url = MemoryServer::home() + "new/";
  const auto made = client.makeCalendar(url, {"R&D", false, true, store::Rgb{0, 1, 0}});
  ASSERT_TRUE(made);
  EXPECT_EQ(made->displayName, "R&D");
  EXPECT_FALSE(made->events);
  EXPECT_TRUE(made->reminders);
  ASSERT_TRUE(made->color);
  EXPECT_EQ(client.makeCalendar(url, {"R&D", false, true, std::nullopt}).error().trouble, Trouble::kClash);
  ASSERT_TRUE(client.removeCalendar(url));
  EXPECT_EQ(client.calendar(url).error().trouble, Trouble::kNotFound);
}

TEST_F(ServerInMemory, SetsPropertiesOfCalendars) {
  ASSERT_TRUE(client.setProperty(work, CalendarProperty::kDisplayName, "Other"));
  ASSERT_TRUE(client.setProperty(work, CalendarProperty::kOrder, "7"));
  ASSERT_TRUE(client.setProperty(work, CalendarProperty::kDescription, "<words>"));
  const auto now = client.calendar(work);
  ASSERT_TRUE(now);
  EXPECT_EQ(now->displayName, "Other");
  EXPECT_EQ(now->order, 7);
  EXPECT_EQ(now->description, "<words>");
}

TEST_F(ServerInMemory, StandsAgainAsABackupHeldIt) {
  ASSERT_TRUE(putNew("a.ics", eventText("a")));
  const auto backup = server.snapshot();
  const auto before = client.changesSince(work, "");
  server.removeAs(item("a.ics"));
  server.putAs(item("b.ics"), eventText("b"));
  const auto later = client.changesSince(work, "");
  server.restore(backup);
  EXPECT_NE(server.itemAt(item("a.ics")), nullptr);
  EXPECT_EQ(server.itemAt(item("b.ics")), nullptr);
  EXPECT_EQ(client.changesSince(work, later->token).error().trouble, Trouble::kInvalidToken) << "it never gave that";
  EXPECT_THAT(changedSince(before->token), IsEmpty());
}

// What goes wrong.

TEST_F(ServerInMemory, LosesAnswersBeforeWithinAndAfter) {
  using When = MemoryServer::Fault::When;
  server.failNext({.when = When::kBefore, .method = "PUT"});
  EXPECT_EQ(putNew("a.ics", eventText("a")).error().trouble, Trouble::kUnreachable);
  server.failNext({.when = When::kWithin, .method = "PUT"});
  EXPECT_EQ(putNew("a.ics", eventText("a")).error().trouble, Trouble::kAnswerLost);
  EXPECT_EQ(server.itemCount(work), 0U);
  server.failNext({.when = When::kAfter, .method = "PUT"});
  EXPECT_EQ(putNew("a.ics", eventText("a")).error().trouble, Trouble::kAnswerLost);
  EXPECT_EQ(server.itemCount(work), 1U);
}

TEST_F(ServerInMemory, AnswersWithFaultsInTheirTurn) {
  server.failNext({.status = 503, .method = "GET", .nth = 2, .times = 2});
  server.putAs(item("a.ics"), eventText("a"));
  EXPECT_TRUE(client.text(item("a.ics")));
  EXPECT_TRUE(client.entries(work)) << "another method";
  EXPECT_EQ(client.text(item("a.ics")).error().trouble, Trouble::kLater);
  EXPECT_EQ(client.text(item("a.ics")).error().trouble, Trouble::kLater);
  EXPECT_TRUE(client.text(item("a.ics")));
}

TEST_F(ServerInMemory, KnowsWhatItWasAsked) {
  ASSERT_TRUE(putNew("a.ics", eventText("a")));
  ASSERT_TRUE(client.entries(work));
  ASSERT_EQ(server.log().size(), 2U);
  EXPECT_EQ(server.log()[0].method, "PUT");
  EXPECT_EQ(server.log()[0].status, 201);
  EXPECT_EQ(server.count("PROPFIND"), 1U);
  server.forgetLog();
  EXPECT_THAT(server.log(), IsEmpty());
}

TEST_F(ServerInMemory, LetsAnotherClientInBetween) {
  server.beforeEach = [&](const HttpRequest& request) {
    if (request.method == "PUT") { server.putAs(item("a.ics"), eventText("a", "Theirs")); }
  };
  EXPECT_EQ(putNew("a.ics", eventText("a")).error().trouble, Trouble::kPrecondition);
}

// Quirks.

TEST_F(ServerInMemory, MayRewriteTexts) {
  server.quirks.rewritesTexts = true;
  ASSERT_TRUE(putNew("a.ics", eventText("a", "Long\r\n er")));
  const auto text = client.text(item("a.ics"));
  ASSERT_TRUE(text);
  EXPECT_THAT(text->text, HasSubstr("SUMMARY:Longer\r\nCLASS:PUBLIC\r\nEND:VEVENT"));
  EXPECT_TRUE(readObjectLines(text->text).isCalendar);
}

TEST_F(ServerInMemory, MayIgnorePreconditions) {
  server.quirks.overwritesNew = server.quirks.removesWhatChanged = server.quirks.createsMissing = true;
  server.putAs(item("a.ics"), eventText("a"));
  EXPECT_TRUE(putNew("a.ics", eventText("a", "Other")));
  EXPECT_TRUE(client.remove(item("a.ics"), "\"old\""));
  EXPECT_TRUE(client.put(item("a.ics"), eventText("a"), Precondition::isAsKnown("\"old\"")));
}

TEST_F(ServerInMemory, MayMissAPreconditionRatherThanAnItem) {
  EXPECT_EQ(client.remove(item("none.ics"), "\"1\"").error().trouble, Trouble::kNotFound);
  server.quirks.missesPrecondition = true;
  EXPECT_EQ(client.remove(item("none.ics"), "\"1\"").error().trouble, Trouble::kPrecondition);
}

TEST_F(ServerInMemory, MayGiveOldEtagsAgainOrNone) {
  server.quirks.recyclesEtags = true;
  const std::string first = server.putAs(item("a.ics"), eventText("a"));
  EXPECT_NE(server.putAs(item("a.ics"), eventText("a", "Other")), first);
  server.removeAs(item("a.ics"));
  EXPECT_EQ(server.putAs(item("a.ics"), eventText("a", "Third")), first);
  server.quirks.givesNoEtagInPut = true;
  EXPECT_EQ(putNew("b.ics", eventText("b"))->etag, "");
}

TEST_F(ServerInMemory, MayKnowNothingOfBadTokens) {
  using BadToken = Quirks::BadToken;
  server.putAs(item("a.ics"), eventText("a"));
  for (const BadToken kind : {BadToken::kSays403, BadToken::kSays409, BadToken::kFails500, BadToken::kSaysBare403}) {
    server.quirks.badToken = kind;
    EXPECT_EQ(client.changesSince(work, "bad").error().trouble, Trouble::kInvalidToken);
  }
  server.quirks.badToken = BadToken::kListsAll;
  EXPECT_THAT(changedSince("bad"), ElementsAre(item("a.ics")));
}

TEST_F(ServerInMemory, MayHaveNeitherSyncNorCtag) {
  server.quirks.hasNoSync = server.quirks.hasNoCtag = true;
  const auto calendar = client.calendar(work);
  ASSERT_TRUE(calendar);
  EXPECT_EQ(calendar->syncToken + calendar->ctag, "");
  EXPECT_FALSE(calendar->reportsChanges);
  EXPECT_EQ(client.changesSince(work, "").error().trouble, Trouble::kUnsupported);
}

TEST_F(ServerInMemory, MayCountTokensInSeconds) {
  server.quirks.countsTokensInSeconds = true;
  EXPECT_EQ(client.calendar(work)->syncToken, "") << "there is none of an empty calendar";
  server.putAs(item("a.ics"), eventText("a"));
  const std::string token = client.changesSince(work, "")->token;
  EXPECT_EQ(token, std::to_string(server.second));
  EXPECT_THAT(changedSince(token), ElementsAre(item("a.ics"))) << "once more";
  server.second += 5;
  server.putAs(item("b.ics"), eventText("b"));
  EXPECT_THAT(changedSince(std::to_string(server.second)), ElementsAre(item("b.ics")));
  EXPECT_THAT(changedSince(std::to_string(server.second + 1)), IsEmpty());
}

TEST_F(ServerInMemory, MayTellOfChangesByAndBy) {
  server.quirks.syncPage = 2;
  for (const char* name : {"a", "b", "c", "d", "e"}) { server.putAs(item(name), eventText(name)); }
  server.removeAs(item("b"));
  std::vector<std::string> seen;
  std::string token;
  int pages = 0;
  for (bool more = true; more; ++pages) {
    const auto page = client.changesSince(work, token);
    ASSERT_TRUE(page);
    for (const RemoteEntry& entry : page->changed) { seen.push_back(entry.url); }
    token = page->token;
    more = page->more;
    ASSERT_LT(pages, 5);
  }
  EXPECT_THAT(seen, ElementsAre(item("a"), item("c"), item("d"), item("e")));
  EXPECT_EQ(token, client.calendar(work)->syncToken);
}

TEST_F(ServerInMemory, MayWriteAddressesAsItLikes) {
  const std::string odd = item("sp%20a%40b%26c.ics");
  server.putAs(odd, eventText("a"));
  server.quirks.unescapedSyncHrefs = true;
  EXPECT_THAT(changedSince(""), ElementsAre(item("sp a@b&c.ics")));
  server.quirks = {.relativeHrefs = true};
  EXPECT_THAT(changedSince(""), ElementsAre(odd));
  EXPECT_EQ(client.texts(work, std::vector<std::string>{item("sp a@b&c.ics")})->found.size(), 1U);
}

TEST_F(ServerInMemory, MaySayLittleOfMissingItems) {
  server.putAs(item("a.ics"), eventText("a"));
  const std::vector<std::string> asked{item("a.ics"), item("none.ics")};
  server.quirks.missingItem = Quirks::MissingItem::kIsLeftOut;
  const auto texts = client.texts(work, asked);
  ASSERT_TRUE(texts);
  EXPECT_EQ(texts->found.size(), 1U);
  EXPECT_THAT(texts->unsaid, ElementsAre(asked[1]));
  server.quirks.missingItem = Quirks::MissingItem::kFailsAll;
  EXPECT_EQ(client.texts(work, asked)->unsaid, asked);
}

TEST_F(ServerInMemory, MayNameItemsByThemselves) {
  server.quirks.choosesHrefs = true;
  EXPECT_EQ(putNew("a.ics", eventText("uid-1"))->url, item("uid-1.ics"));
  EXPECT_NE(server.itemAt(item("uid-1.ics")), nullptr);
}

TEST_F(ServerInMemory, MayTakeAUidTwice) {
  server.quirks.takesSameUid = true;
  EXPECT_TRUE(putNew("a.ics", eventText("a")));
  EXPECT_TRUE(putNew("b.ics", eventText("a")));
}

TEST_F(ServerInMemory, MayIgnoreWhatANewCalendarShallBe) {
  server.quirks.ignoresComponents = server.quirks.ignoresColorOfNew = server.quirks.tellsNoPrivileges = true;
  const auto made = client.makeCalendar(MemoryServer::home() + "new/", {"New", false, true, store::Rgb{0, 0, 1}});
  ASSERT_TRUE(made);
  EXPECT_TRUE(made->events);
  EXPECT_TRUE(made->color) << "set afterwards";
  EXPECT_EQ(made->writable, std::nullopt);
}

}  // namespace
}  // namespace orlocal::accounts
