#include "accounts/dav/dav_server.h"

#include <fstream>
#include <iterator>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "accounts/dav/names.h"
#include "accounts/scripted_transport.h"
#include "base/text.h"

namespace orlocal::accounts {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

const std::string kCal = "https://dav.example.org/cal/";

std::string dialect(const std::string& name) {
  std::ifstream file(std::string(ORLOCAL_TEST_DATA) + "/dav/data/" + name + ".xml");
  EXPECT_TRUE(file.good()) << name;
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string condition(const std::string& name) {
  return "<D:error xmlns:D='DAV:' xmlns:C='urn:ietf:params:xml:ns:caldav'><" + name + "/></D:error>";
}

std::string multistatusOf(const std::string& content) {
  return "<D:multistatus xmlns:D='DAV:' xmlns:C='urn:ietf:params:xml:ns:caldav'>" + content + "</D:multistatus>";
}

/// A server whose answers are written down.
class DavServerRequests : public testing::Test {
 protected:
  const HttpRequest& last() const { return transport.asked.back(); }
  std::string sentHeader(const std::string& name) const {
    return HttpResponse{0, last().headers, "", ""}.header(name).value_or("(none)");
  }

  ScriptedTransport transport;
  DavServer server{transport, [] { return *store::parseMoment("2026-11-02T08:00:00Z"); }};
};

// Calendars.

TEST_F(DavServerRequests, AskForCalendarsWithDepthOneAndAContentType) {
  transport.on("PROPFIND " + kCal, 207, multistatusOf(""));
  ASSERT_TRUE(server.calendars(kCal, Marks::kAll));
  EXPECT_EQ(sentHeader("Depth"), "1");
  EXPECT_EQ(sentHeader("Content-Type"), "application/xml; charset=utf-8");
  const auto body = readXml(last().body);
  ASSERT_TRUE(body);
  EXPECT_TRUE(body->is(dav::kPropFind));
  EXPECT_NE(body->child(dav::kProp)->child(dav::kGetCtag), nullptr);
}

TEST_F(DavServerRequests, AskForNoCtagWhereTokensWillDo) {
  transport.on("PROPFIND " + kCal, 207, multistatusOf(""));
  ASSERT_TRUE(server.calendars(kCal, Marks::kTokens));
  const auto body = readXml(last().body);
  ASSERT_TRUE(body);
  EXPECT_EQ(body->child(dav::kProp)->child(dav::kGetCtag), nullptr);
  EXPECT_NE(body->child(dav::kProp)->child(dav::kSyncToken), nullptr);
}

TEST_F(DavServerRequests, GiveCalendarsOfADefaultNamespace) {
  transport.on("PROPFIND https://h/ann/", 207, dialect("default_namespace_home"));
  const auto found = server.calendars("https://h/ann/", Marks::kAll);
  ASSERT_TRUE(found);
  ASSERT_EQ(found->size(), 1U) << "neither the home nor the address book is one";
  const RemoteCalendar& work = found->front();
  EXPECT_EQ(work.url, "https://h/ann/team/");
  EXPECT_EQ(work.displayName, "Work & more");
  ASSERT_TRUE(work.color);
  EXPECT_EQ(work.color->bytes(), (std::array<int, 3>{0x2E, 0x8B, 0x57}));
  EXPECT_EQ(work.order, 3);
  EXPECT_EQ(work.description, "All of it");
  EXPECT_TRUE(work.events);
  EXPECT_FALSE(work.reminders);
  EXPECT_EQ(work.writable, true);
  EXPECT_EQ(work.ctag, "\"d1a2\"");
  EXPECT_EQ(work.syncToken, "http://example.org/ns/sync/5f0a");
  EXPECT_TRUE(work.reportsChanges);
  EXPECT_EQ(work.mostBytes, std::nullopt);
}

TEST_F(DavServerRequests, GiveCalendarsOfNumberedPrefixes) {
  transport.on("PROPFIND https://h/ann/calendars/", 207, dialect("numbered_prefixes_home"));
  const auto found = server.calendars("https://h/ann/calendars/", Marks::kAll);
  ASSERT_TRUE(found);
  ASSERT_EQ(found->size(), 1U);
  EXPECT_TRUE(found->front().events && found->front().reminders);
  EXPECT_EQ(found->front().color, std::nullopt);
  EXPECT_EQ(found->front().writable, true);
  EXPECT_EQ(found->front().mostBytes, 10'485'760);
  EXPECT_TRUE(found->front().reportsChanges);
}

TEST_F(DavServerRequests, GiveCalendarsWhosePrefixIsDeclaredAnew) {
  transport.on("PROPFIND https://h/calendars/ann", 207, dialect("redeclared_prefix_home"));
  const auto found = server.calendars("https://h/calendars/ann", Marks::kAll);
  ASSERT_TRUE(found);
  ASSERT_EQ(found->size(), 1U);
  const RemoteCalendar& tasks = found->front();
  EXPECT_EQ(tasks.url, "https://h/calendars/ann/tasks");
  EXPECT_EQ(tasks.displayName, "Tasks");
  EXPECT_EQ(tasks.order, std::nullopt);
  EXPECT_EQ(tasks.writable, false);
  EXPECT_EQ(tasks.syncToken, "");
  EXPECT_FALSE(tasks.reportsChanges);
  EXPECT_FALSE(tasks.events);
  EXPECT_TRUE(tasks.reminders);
}

TEST_F(DavServerRequests, DoNotKnowWhatTheServerKeepsToItself) {
  transport.on("PROPFIND https://dav.example.org/dav.php/ann/", 207, dialect("double_escapes_home"));
  const auto found = server.calendars("https://dav.example.org/dav.php/ann/", Marks::kAll);
  ASSERT_TRUE(found);
  ASSERT_EQ(found->size(), 1U);
  EXPECT_EQ(found->front().url, "https://dav.example.org/dav.php/ann/shared/");
  EXPECT_EQ(found->front().displayName, "R&D") << "it was escaped twice";
  EXPECT_EQ(found->front().writable, std::nullopt);
  EXPECT_TRUE(found->front().events && found->front().reminders);
  EXPECT_TRUE(found->front().reportsChanges);
  EXPECT_EQ(found->front().mostBytes, std::nullopt);
}

TEST_F(DavServerRequests, UnescapeNoNameInWhichAnAmpersandStandsByItself) {
  int number = 0;
  for (const auto& [written, meant] :
       std::vector<std::pair<std::string, std::string>>{{"a &amp;lt; b &amp;#039;", "a < b '"},
                                                        {"R&amp;D &amp;lt;", "R&D &lt;"},
                                                        {"R&amp;D", "R&D"},
                                                        {"plain", "plain"}}) {
    const std::string url = "https://h/" + std::to_string(++number) + "/";
    transport.on(
        "PROPFIND " + url, 207,
        multistatusOf("<D:response><D:href>.</D:href><D:propstat><D:prop>"
                      "<D:resourcetype><C:calendar/></D:resourcetype><D:displayname>" +
                      written +
                      "</D:displayname></D:prop><D:status>HTTP/1.1 200 OK</D:status></D:propstat></D:response>"));
    EXPECT_EQ(server.calendar(url)->displayName, meant);
  }
}

TEST_F(DavServerRequests, TakeNoPrivilegesAtAllForUnknown) {
  transport.on("PROPFIND " + kCal, 207,
               multistatusOf("<D:response><D:href>/cal/</D:href><D:propstat><D:prop><D:resourcetype><C:calendar/>"
                             "</D:resourcetype><D:current-user-privilege-set/><D:sync-token>-1</D:sync-token></D:prop>"
                             "<D:status>HTTP/1.1 200 OK</D:status></D:propstat></D:response>"));
  const auto found = server.calendar(kCal);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->writable, std::nullopt);
  EXPECT_EQ(found->syncToken, "");
}

TEST_F(DavServerRequests, FollowTheAddressThatAnswered) {
  transport.on(
      "PROPFIND " + kCal,
      HttpResponse{
          207,
          {},
          multistatusOf(
              "<D:response><D:href>there/</D:href><D:propstat><D:prop>"
              "<D:resourcetype><C:calendar/></D:resourcetype></D:prop><D:status>HTTP/1.1 200 OK</D:status></D:propstat>"
              "</D:response>"),
          "https://other.example.org/moved/"});
  const auto found = server.calendars(kCal, Marks::kAll);
  ASSERT_TRUE(found);
  ASSERT_EQ(found->size(), 1U);
  EXPECT_EQ(found->front().url, "https://other.example.org/moved/there/");
}

TEST_F(DavServerRequests, TakeAPageForPeopleForNonsense) {
  transport.on("PROPFIND " + kCal, 200, "<html><body>Sign in</body></html>");
  EXPECT_EQ(server.calendars(kCal, Marks::kAll).error().trouble, Trouble::kNonsense);
  transport.on("PROPFIND https://h/2/", 207, "<html><body>Sign in</body></html>");
  EXPECT_EQ(server.calendars("https://h/2/", Marks::kAll).error().trouble, Trouble::kNonsense);
}

TEST_F(DavServerRequests, MissACalendarWhereThereIsAnotherThing) {
  transport.on(
      "PROPFIND " + kCal, 207,
      multistatusOf("<D:response><D:href>/cal/</D:href><D:propstat><D:prop><D:resourcetype><D:collection/>"
                    "</D:resourcetype></D:prop><D:status>HTTP/1.1 200 OK</D:status></D:propstat></D:response>"));
  EXPECT_EQ(server.calendar(kCal).error().trouble, Trouble::kNotFound);
}

TEST_F(DavServerRequests, SayWhatTheServerSaysOfTheCalendarItself) {
  transport.on(
      "PROPFIND " + kCal, 207,
      multistatusOf("<D:response><D:href>/cal/</D:href><D:status>HTTP/1.1 403 Forbidden</D:status></D:response>"));
  EXPECT_EQ(server.calendar(kCal).error().trouble, Trouble::kForbidden);
}

TEST_F(DavServerRequests, AreToldWhenToComeAgain) {
  transport.on("PROPFIND " + kCal, 503, "", {{"retry-after", "Mon, 02 Nov 2026 08:02:00 GMT"}});
  const auto found = server.calendars(kCal, Marks::kAll);
  ASSERT_FALSE(found);
  EXPECT_EQ(found.error().trouble, Trouble::kLater);
  EXPECT_EQ(found.error().retryAfter, std::chrono::seconds(120));
}

TEST_F(DavServerRequests, PassOnThatNoAnswerCame) {
  transport.on("PROPFIND " + kCal, refusal(Trouble::kAnswerLost, "it broke off"));
  EXPECT_EQ(server.calendars(kCal, Marks::kAll).error().trouble, Trouble::kAnswerLost);
}

TEST_F(DavServerRequests, TakeAHomeThatIsNotThereForNoEmptyOne) {
  const std::string gone = multistatusOf(
      "<D:response><D:href>https%3A//dav.example.org/cal/</D:href><D:status>HTTP/1.1 404 Not "
      "Found</D:status></D:response>");
  transport.on("PROPFIND " + kCal, 207, gone);
  transport.on("REPORT " + kCal, 207, gone);
  EXPECT_EQ(server.calendars(kCal, Marks::kAll).error().trouble, Trouble::kNotFound);
  EXPECT_EQ(server.entries(kCal).error().trouble, Trouble::kNotFound);
  EXPECT_EQ(server.changesSince(kCal, "token").error().trouble, Trouble::kNotFound);
}

// Changes.

TEST_F(DavServerRequests, AskForChangesWithDepthZeroAndTheTokenAsItCame) {
  transport.on("REPORT " + kCal, 207, multistatusOf("<D:sync-token>next</D:sync-token>"));
  const auto changes = server.changesSince(kCal, "a&b<c>");
  ASSERT_TRUE(changes);
  EXPECT_EQ(changes->token, "next");
  EXPECT_FALSE(changes->more);
  EXPECT_EQ(sentHeader("Depth"), "0");
  const auto body = readXml(last().body);
  ASSERT_TRUE(body && body->is(dav::kSyncCollection));
  EXPECT_EQ(body->child(dav::kSyncToken)->text, "a&b<c>");
  EXPECT_EQ(body->child(dav::kSyncLevel)->text, "1");
}

TEST_F(DavServerRequests, KnowItemsByNamesThatNobodyEscaped) {
  transport.on("REPORT https://h/dav/ann/Calendar/personal/", 207, dialect("raw_names_sync"));
  const auto changes = server.changesSince("https://h/dav/ann/Calendar/personal/", "1795215358");
  ASSERT_TRUE(changes);
  ASSERT_EQ(changes->changed.size(), 1U) << "the collection's own entry is none";
  EXPECT_EQ(changes->changed[0].url, "https://h/dav/ann/Calendar/personal/sp a@b+c&d.ics");
  EXPECT_EQ(changes->changed[0].etag, "\"gcs00000001\"");
  EXPECT_THAT(changes->removed, ElementsAre("https://h/dav/ann/Calendar/personal/gone.ics"));
  EXPECT_EQ(changes->token, "1795215359");
}

TEST_F(DavServerRequests, AreToldThatThereIsMore) {
  transport.on("REPORT https://h/dav/calendars/user/ann/Default/", 207, dialect("capital_prefixes_sync"));
  const auto changes = server.changesSince("https://h/dav/calendars/user/ann/Default/", "");
  ASSERT_TRUE(changes);
  EXPECT_TRUE(changes->more);
  EXPECT_EQ(changes->changed.size(), 1U);
  EXPECT_EQ(changes->removed.size(), 1U);
  EXPECT_EQ(changes->token, "data:,1795215359-27");
}

TEST_F(DavServerRequests, AreNotSentInACircle) {
  const std::string more = "<D:response><D:href>/cal/</D:href><D:status>HTTP/1.1 507 x</D:status></D:response>";
  transport.on("REPORT " + kCal, 207, multistatusOf(more + "<D:sync-token>same</D:sync-token>"));
  EXPECT_TRUE(server.changesSince(kCal, "other"));
  EXPECT_EQ(server.changesSince(kCal, "same").error().trouble, Trouble::kNonsense);
  transport.on("REPORT https://h/cal/", 207, multistatusOf(more));
  EXPECT_EQ(server.changesSince("https://h/cal/", "").error().trouble, Trouble::kNonsense);
}

TEST_F(DavServerRequests, ResolveNamesRelativeToTheCalendar) {
  transport.on("REPORT https://h/ann/calendar/", 207, dialect("numbered_prefixes_sync"));
  const auto changes = server.changesSince("https://h/ann/calendar/", "");
  ASSERT_TRUE(changes);
  ASSERT_EQ(changes->changed.size(), 1U);
  EXPECT_EQ(changes->changed[0].url, "https://h/ann/calendar/UP%3Alow.ics");
}

TEST_F(DavServerRequests, KnowABadTokenHoweverTheServerSaysIt) {
  int number = 0;
  for (const auto& [status, body] : std::vector<std::pair<int, std::string>>{
           {403, condition("D:valid-sync-token")}, {409, condition("D:valid-sync-token")}, {403, ""}, {500, "oops"}}) {
    const std::string url = "https://h/" + std::to_string(++number) + "/";
    transport.on("REPORT " + url, status, body);
    EXPECT_EQ(server.changesSince(url, "old").error().trouble, Trouble::kInvalidToken) << status;
  }
}

TEST_F(DavServerRequests, DoNotBlameATokenThatTheyDidNotSend) {
  transport.on("REPORT https://h/1/", 403);
  EXPECT_EQ(server.changesSince("https://h/1/", "").error().trouble, Trouble::kForbidden);
  transport.on("REPORT https://h/2/", 500);
  EXPECT_EQ(server.changesSince("https://h/2/", "").error().trouble, Trouble::kServerError);
}

TEST_F(DavServerRequests, DoNotBlameTheTokenForWhatIsNotItsFault) {
  for (const auto& [status, trouble] : std::vector<std::pair<int, Trouble>>{{401, Trouble::kUnauthorized},
                                                                            {404, Trouble::kNotFound},
                                                                            {503, Trouble::kLater},
                                                                            {502, Trouble::kServerError}}) {
    const std::string url = "https://h/" + std::to_string(status) + "/";
    transport.on("REPORT " + url, status);
    EXPECT_EQ(server.changesSince(url, "old").error().trouble, trouble);
  }
  transport.on("REPORT " + kCal, 403, condition("D:supported-report"));
  EXPECT_EQ(server.changesSince(kCal, "old").error().trouble, Trouble::kUnsupported);
}

// Entries and texts.

TEST_F(DavServerRequests, ListWhatIsInACalendarWithoutTheCalendar) {
  transport.on("PROPFIND " + kCal, 207, multistatusOf(R"(
    <D:response><D:href>/cal</D:href><D:propstat><D:prop><D:resourcetype><D:collection/></D:resourcetype></D:prop><D:status>HTTP/1.1 200 OK</D:status></D:propstat></D:response>
    <D:response><D:href>/cal/sub</D:href><D:propstat><D:prop><D:resourcetype><D:collection/></D:resourcetype></D:prop><D:status>HTTP/1.1 200 OK</D:status></D:propstat></D:response>
    <D:response><D:href>/cal/a%40b.ics</D:href><D:propstat><D:prop><D:getetag>W/"1"</D:getetag><D:resourcetype/></D:prop><D:status>HTTP/1.1 200 OK</D:status></D:propstat></D:response>)"));
  const auto found = server.entries(kCal);
  ASSERT_TRUE(found);
  ASSERT_EQ(found->size(), 1U);
  EXPECT_EQ(found->front().url, "https://dav.example.org/cal/a%40b.ics");
  EXPECT_EQ(found->front().etag, "W/\"1\"");
}

TEST_F(DavServerRequests, NeverTakeAListThatWasCutShortForAll) {
  transport.on("PROPFIND " + kCal, 207,
               multistatusOf("<D:response><D:href>/cal/</D:href><D:status>HTTP/1.1 507 x</D:status></D:response>"));
  EXPECT_FALSE(server.entries(kCal));
  EXPECT_FALSE(server.calendars(kCal, Marks::kAll));
}

TEST_F(DavServerRequests, SortTextsIntoFoundMissingAndUnsaid) {
  const std::string tasks = "https://h/calendars/ann/tasks/";
  transport.on("REPORT " + tasks, 207, dialect("redeclared_prefix_multiget"));
  const std::vector<std::string> asked{tasks + "a.ics", tasks + "b+c.ics", tasks + "gone.ics", tasks + "closed.ics",
                                       tasks + "unnamed.ics"};
  const auto texts = server.texts(tasks, asked);
  ASSERT_TRUE(texts);
  ASSERT_EQ(texts->found.size(), 2U);
  EXPECT_EQ(texts->found[0].url, asked[0]);
  EXPECT_EQ(texts->found[0].etag, "a-unquoted");
  EXPECT_EQ(texts->found[0].text, "begin:vcalendar\nEND:VCALENDAR\n");
  EXPECT_EQ(texts->found[1].url, asked[1]) << "as it was asked for, however the server writes it";
  EXPECT_THAT(texts->found[1].text, HasSubstr("SUMMARY:R&D <urgent>"));
  EXPECT_THAT(texts->missing, ElementsAre(asked[2]));
  EXPECT_THAT(texts->unsaid, ElementsAre(asked[3], asked[4]));
}

TEST_F(DavServerRequests, NameTextsByThePathThatTheServerGave) {
  transport.on("REPORT " + kCal, 207, multistatusOf(""));
  ASSERT_TRUE(
      server.texts(kCal, std::vector<std::string>{kCal + "a%40b&c.ics", kCal + "sp a.ics", "https://other/x.ics"}));
  const auto body = readXml(last().body);
  ASSERT_TRUE(body && body->is(dav::kCalendarMultiget));
  std::vector<std::string> hrefs;
  for (const XmlElement& child : body->children) {
    if (child.is(dav::kHref)) { hrefs.push_back(child.text); }
  }
  EXPECT_THAT(hrefs, ElementsAre("/cal/a%40b&c.ics", "/cal/sp%20a.ics", "https://other/x.ics"));
  EXPECT_EQ(sentHeader("Depth"), "1");
}

TEST_F(DavServerRequests, AskForEachTextWhenTheServerRefusesAllForOne) {
  const std::vector<std::string> asked{kCal + "a.ics", kCal + "b.ics"};
  transport.on("REPORT " + kCal, 404);
  const auto texts = server.texts(kCal, asked);
  ASSERT_TRUE(texts);
  EXPECT_EQ(texts->unsaid, asked);
  EXPECT_THAT(texts->missing, IsEmpty());
}

TEST_F(DavServerRequests, AskNobodyForNoTexts) {
  ASSERT_TRUE(server.texts(kCal, {}));
  EXPECT_THAT(transport.asked, IsEmpty());
}

TEST_F(DavServerRequests, GiveATextAsTheServerStoredIt) {
  transport.on("GET " + kCal + "a.ics", 200, "BEGIN:VCALENDAR\r\nEND:VCALENDAR\r\n", {{"etag", "\"1\""}});
  const auto text = server.text(kCal + "a.ics");
  ASSERT_TRUE(text);
  EXPECT_EQ(text->etag, "\"1\"");
  EXPECT_EQ(text->text, "BEGIN:VCALENDAR\r\nEND:VCALENDAR\r\n");
}

TEST_F(DavServerRequests, TakeNoPageForPeopleForAText) {
  transport.on("GET " + kCal + "a.ics", 200, "<html>Sign in</html>");
  EXPECT_EQ(server.text(kCal + "a.ics").error().trouble, Trouble::kNonsense);
}

// Writes.

TEST_F(DavServerRequests, WriteWhatIsNewOnlyWhereNothingIs) {
  transport.on("PUT " + kCal + "n.ics", 201, "", {{"ETag", "\"1\""}});
  const auto written = server.put(kCal + "n.ics", "text", Precondition::isNew());
  ASSERT_TRUE(written);
  EXPECT_EQ(written->url, kCal + "n.ics");
  EXPECT_EQ(written->etag, "\"1\"");
  EXPECT_EQ(sentHeader("If-None-Match"), "*");
  EXPECT_EQ(sentHeader("If-Match"), "(none)");
  EXPECT_EQ(sentHeader("Content-Type"), "text/calendar; charset=utf-8");
  EXPECT_EQ(last().body, "text");
}

TEST_F(DavServerRequests, WriteWhatIsKnownWithItsEtagAsItCame) {
  for (const int status : {200, 201, 204}) {
    const std::string url = kCal + std::to_string(status);
    transport.on("PUT " + url, status);
    const auto written = server.put(url, "text", Precondition::isAsKnown("not-quoted"));
    ASSERT_TRUE(written) << status;
    EXPECT_EQ(written->etag, "");
    EXPECT_EQ(sentHeader("If-Match"), "not-quoted");
    EXPECT_EQ(sentHeader("If-None-Match"), "(none)");
  }
}

TEST_F(DavServerRequests, WriteNothingOverWhatNobodyKnows) {
  EXPECT_EQ(server.put(kCal + "a.ics", "text", Precondition::isAsKnown("")).error().trouble, Trouble::kPrecondition);
  EXPECT_THAT(transport.asked, IsEmpty());
}

TEST_F(DavServerRequests, AreToldWhereTheServerPutTheItem) {
  transport.on("PUT " + kCal + "n.ics", 201, "", {{"Location", "/cal/uid-1.ics"}});
  EXPECT_EQ(server.put(kCal + "n.ics", "text", Precondition::isNew())->url, kCal + "uid-1.ics");
  transport.on("PUT " + kCal + "s@me.ics", 201, "", {{"Location", "/cal/s%40me.ics"}});
  EXPECT_EQ(server.put(kCal + "s@me.ics", "text", Precondition::isNew())->url, kCal + "s@me.ics");
}

TEST_F(DavServerRequests, AreNotLedAwayFromTlsByAServerThatDoesNotKnowOfIt) {
  transport.on("PUT " + kCal + "n.ics", 201, "", {{"Location", "http://dav.example.org:8080/cal/n.ics"}});
  EXPECT_EQ(server.put(kCal + "n.ics", "text", Precondition::isNew())->url, kCal + "n.ics");
  transport.on(
      "REPORT " + kCal, 207,
      multistatusOf("<D:response><D:href>http://dav.example.org/cal/a.ics</D:href><D:status>HTTP/1.1 404 x</D:status>"
                    "</D:response>"));
  EXPECT_THAT(server.changesSince(kCal, "t")->removed, ElementsAre(kCal + "a.ics"));
}

TEST_F(DavServerRequests, LookForTheRefusalInAnAnswerOfManyStatuses) {
  transport.on(
      "PUT " + kCal + "n.ics", 207,
      multistatusOf("<D:response><D:href>http%3A//h/cal/n.ics</D:href><D:status>HTTP/1.1 412 Precondition Failed"
                    "</D:status><D:error><C:no-uid-conflict/></D:error></D:response>"));
  EXPECT_EQ(server.put(kCal + "n.ics", "text", Precondition::isNew()).error().trouble, Trouble::kClash);
  transport.on(
      "DELETE " + kCal, 207,
      multistatusOf("<D:response><D:href>/cal/a.ics</D:href><D:status>HTTP/1.1 423 Locked</D:status></D:response>"));
  EXPECT_EQ(server.removeCalendar(kCal).error().trouble, Trouble::kLocked);
  transport.on("PUT " + kCal + "x.ics", 207, "no multistatus");
  EXPECT_EQ(server.put(kCal + "x.ics", "text", Precondition::isNew()).error().trouble, Trouble::kNonsense);
}

TEST_F(DavServerRequests, RemoveWhatIsAsKnown) {
  transport.on("DELETE " + kCal + "a.ics", 200);
  ASSERT_TRUE(server.remove(kCal + "a.ics", "\"1\""));
  EXPECT_EQ(sentHeader("If-Match"), "\"1\"");
  EXPECT_EQ(server.remove(kCal + "none.ics", "\"1\"").error().trouble, Trouble::kNotFound);
}

// Calendars that are made and changed.

TEST_F(DavServerRequests, SetOnePropertyAtATime) {
  transport.on(
      "PROPPATCH " + kCal, 207,
      multistatusOf("<D:response><D:href>/elsewhere</D:href><D:propstat><D:prop/><D:status>HTTP/1.1 200 OK</D:status>"
                    "</D:propstat></D:response>"));
  ASSERT_TRUE(server.setProperty(kCal, CalendarProperty::kColor, "#11223344"));
  const auto body = readXml(last().body);
  ASSERT_TRUE(body && body->is(dav::kPropertyUpdate));
  const XmlElement* prop = body->child(dav::kSet)->child(dav::kProp);
  ASSERT_EQ(prop->children.size(), 1U);
  EXPECT_TRUE(prop->children[0].is(dav::kCalendarColor));
  EXPECT_EQ(prop->children[0].text, "#11223344");
}

TEST_F(DavServerRequests, SayThatAPropertyWasRefusedInsideAnAnswerThatSucceeded) {
  transport.on(
      "PROPPATCH " + kCal, 207,
      multistatusOf("<D:response><D:href>/cal/</D:href><D:propstat><D:prop/><D:status>HTTP/1.1 403 Forbidden</D:status>"
                    "</D:propstat></D:response>"));
  EXPECT_EQ(server.setProperty(kCal, CalendarProperty::kOrder, "1").error().trouble, Trouble::kForbidden);
}

TEST_F(DavServerRequests, SayThatAServerDoesNotKeepAProperty) {
  for (const int status : {404, 409}) {
    transport.on("PROPPATCH https://h/" + std::to_string(status) + "/", 207,
                 multistatusOf("<D:response><D:href>/cal/</D:href><D:propstat><D:prop/><D:status>HTTP/1.1 " +
                               std::to_string(status) + " x</D:status></D:propstat></D:response>"));
    EXPECT_EQ(
        server.setProperty("https://h/" + std::to_string(status) + "/", CalendarProperty::kOrder, "1").error().trouble,
        Trouble::kUnsupported);
  }
  EXPECT_EQ(server.setProperty("https://h/gone/", CalendarProperty::kOrder, "1").error().trouble, Trouble::kNotFound);
}

std::string calendarAnswer(const std::string& properties) {
  return multistatusOf(
      "<D:response><D:href>/cal/</D:href><D:propstat><D:prop><D:resourcetype><C:calendar/></D:resourcetype>" +
      properties + "</D:prop><D:status>HTTP/1.1 200 OK</D:status></D:propstat></D:response>");
}

TEST_F(DavServerRequests, SetAfterwardsWhatAServerLeftOutOfANewCalendar) {
  const NewCalendar wanted{"R&D", true, false, store::Rgb{1, 0, 0}};
  transport.on("MKCALENDAR " + kCal, 201);
  transport.on("PROPFIND " + kCal, 207, calendarAnswer("<D:displayname>calendar</D:displayname>"));
  transport.on(
      "PROPFIND " + kCal, 207,
      calendarAnswer("<D:displayname>R&amp;D</D:displayname><A:calendar-color xmlns:A='http://apple.com/ns/ical/'>"
                     "#FF0000FF</A:calendar-color>"));
  transport.on("PROPPATCH " + kCal, 207, multistatusOf(""));
  const auto made = server.makeCalendar(kCal, wanted);
  ASSERT_TRUE(made);
  EXPECT_EQ(made->displayName, "R&D");
  EXPECT_TRUE(made->color);
  std::vector<std::string> methods;
  for (const HttpRequest& request : transport.asked) { methods.push_back(request.method); }
  EXPECT_THAT(methods, ElementsAre("MKCALENDAR", "PROPFIND", "PROPPATCH", "PROPPATCH", "PROPFIND"));
}

TEST_F(DavServerRequests, LeaveANewCalendarAloneThatIsAsItShould) {
  transport.on("MKCALENDAR " + kCal, 201);
  transport.on("PROPFIND " + kCal, 207, calendarAnswer("<D:displayname>Home</D:displayname>"));
  ASSERT_TRUE(server.makeCalendar(kCal, {"Home", true, true, std::nullopt}));
  EXPECT_EQ(transport.asked.size(), 2U);
}

TEST_F(DavServerRequests, KnowThatANameOfACalendarIsTaken) {
  transport.on("PROPFIND " + kCal, 207, calendarAnswer("<D:displayname>Home</D:displayname>"));
  for (const int status : {403, 405, 409}) {
    transport.on("MKCALENDAR " + kCal, status);
    EXPECT_EQ(server.makeCalendar(kCal, {"Home", true, true, std::nullopt}).error().trouble, Trouble::kClash) << status;
  }
}

TEST_F(DavServerRequests, DoNotBelieveThatACalendarWasMadeThatIsNotThere) {
  transport.on("MKCALENDAR " + kCal, 201);
  EXPECT_EQ(server.makeCalendar(kCal, {"Home", true, true, std::nullopt}).error().trouble, Trouble::kUnsupported);
  transport.on("MKCALENDAR https://h/2/", 405);
  EXPECT_EQ(server.makeCalendar("https://h/2/", {"Home", true, true, std::nullopt}).error().trouble,
            Trouble::kUnsupported);
}

}  // namespace
}  // namespace orlocal::accounts
