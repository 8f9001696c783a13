#include "accounts/transport/curl_transport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include "accounts/transport/loopback_server.h"

namespace orlocal::accounts {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// "ann:se:cret"
const std::string kBasicOfAnn = "Basic YW5uOnNlOmNyZXQ=";
const std::string kPassword = "se:cret";

std::string zipped(const std::string& text) {
  z_stream stream{};
  deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
  std::string out(deflateBound(&stream, text.size()) + 64, '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
  stream.avail_in = static_cast<uInt>(text.size());
  stream.next_out = reinterpret_cast<Bytef*>(out.data());
  stream.avail_out = static_cast<uInt>(out.size());
  deflate(&stream, Z_FINISH);
  out.resize(stream.total_out);
  deflateEnd(&stream);
  return out;
}

/// A server that a test tells what to say, and a transport that signs in as ann there.
class OverHttp : public testing::Test {
 protected:
  void serve(LoopbackServer::Handler handler) { server = std::make_unique<LoopbackServer>(std::move(handler)); }
  void serve(SentReply reply) {
    serve([reply](const SeenRequest&) { return reply; });
  }
  TransportOptions asAnn() {
    TransportOptions signing;
    signing.user = "ann";
    signing.origin = server->url("");
    signing.secret = [this](bool again) -> Result<Secret> {
      ++(again ? askedAgain : asked);
      return Secret{again ? secondPassword : kPassword, isToken};
    };
    return signing;
  }
  Answer<HttpResponse> send(const std::string& method, const std::string& path, const std::string& body = "",
                            std::vector<HttpHeader> headers = {}) {
    if (!transport) { transport = std::make_unique<CurlTransport>(options ? *options : TransportOptions{}); }
    return transport->send({method, server->url(path), std::move(headers), body});
  }

  std::unique_ptr<LoopbackServer> server;
  std::optional<TransportOptions> options;
  std::unique_ptr<CurlTransport> transport;
  int asked = 0, askedAgain = 0;
  std::string secondPassword = kPassword;
  bool isToken = false;
};

// What goes out.

TEST_F(OverHttp, RequestsGoOutAsTheyAreWithALengthAndNoExpectation) {
  serve(LoopbackServer::reply(207, "answer", "ETag: \"1\"\r\nX-A: one\r\nx-a: two\r\n"));
  const std::string body(2'000'000, 'x');
  const auto response = send("PROPFIND", "/cal%40/a?b", body, {{"Depth", "1"}, {"Content-Type", "application/xml"}});
  ASSERT_TRUE(response) << response.error().message;
  EXPECT_EQ(response->status, 207);
  EXPECT_EQ(response->body, "answer");
  EXPECT_EQ(response->url, server->url("/cal%40/a?b"));
  EXPECT_EQ(response->header("etag"), "\"1\"");
  EXPECT_EQ(response->header("X-A"), "one, two");
  EXPECT_EQ(response->header("X-B"), std::nullopt);
  const SeenRequest seen = server->seen().at(0);
  EXPECT_EQ(seen.method + " " + seen.target, "PROPFIND /cal%40/a?b");
  EXPECT_EQ(seen.body, body);
  EXPECT_EQ(seen.header("content-length"), "2000000");
  EXPECT_EQ(seen.header("transfer-encoding"), "(none)");
  EXPECT_EQ(seen.header("expect"), "(none)");
  EXPECT_EQ(seen.header("depth"), "1");
  EXPECT_EQ(seen.header("content-type"), "application/xml");
  EXPECT_EQ(seen.header("authorization"), "(none)") << "nobody signs in";
}

TEST_F(OverHttp, RequestsWithoutABodyHaveALengthWhereOneIsExpected) {
  serve(LoopbackServer::reply(200));
  ASSERT_TRUE(send("DELETE", "/a"));
  ASSERT_TRUE(send("MKCALENDAR", "/a"));
  EXPECT_EQ(server->seen().at(0).header("content-length"), "(none)");
  EXPECT_EQ(server->seen().at(0).header("content-type"), "(none)");
  EXPECT_EQ(server->seen().at(1).header("content-length"), "0");
  EXPECT_EQ(server->seen().at(1).header("content-type"), "(none)");
}

TEST_F(OverHttp, NamesThatNobodyEscapedAreEscapedOnTheWay) {
  serve(LoopbackServer::reply(200));
  ASSERT_TRUE(send("GET", "/cal/sp a@b+c&\xC3\xBC.ics"));
  EXPECT_EQ(server->seen().at(0).target, "/cal/sp%20a@b+c&%C3%BC.ics");
}

TEST_F(OverHttp, ConnectionsAreUsedAgain) {
  serve(LoopbackServer::reply(200));
  for (int i = 0; i < 3; ++i) { ASSERT_TRUE(send("PUT", "/a", "text")); }
  EXPECT_EQ(server->seen().at(2).connection, 1);
}

TEST_F(OverHttp, CookiesAreNotKept) {
  serve(LoopbackServer::reply(200, "", "Set-Cookie: a=b\r\n"));
  ASSERT_TRUE(send("GET", "/a"));
  ASSERT_TRUE(send("GET", "/a"));
  EXPECT_EQ(server->seen().at(1).header("cookie"), "(none)");
}

TEST_F(OverHttp, NothingButHttpIsAsked) {
  CurlTransport plain{{}};
  for (const char* url : {"file:///etc/hostname", "ftp://127.0.0.1/", "gopher://127.0.0.1/", "127.0.0.1", ""}) {
    EXPECT_EQ(plain.send({"GET", url, {}, ""}).error().trouble, Trouble::kNonsense) << url;
  }
  EXPECT_EQ(plain.send({"GET", "http://127.0.0.1/", {{"If-Match", "a\r\nX: y"}}, ""}).error().trouble,
            Trouble::kNonsense);
}

// Who asks.

TEST_F(OverHttp, ThePasswordIsSentAtOnceOnTheLoopback) {
  serve(LoopbackServer::reply(200));
  options = asAnn();
  ASSERT_TRUE(send("GET", "/a"));
  ASSERT_TRUE(send("GET", "/a"));
  EXPECT_EQ(server->seen().at(0).header("authorization"), kBasicOfAnn);
  EXPECT_EQ(server->seen().size(), 2U);
  EXPECT_EQ(asked, 1);
}

TEST_F(OverHttp, DigestIsAnsweredWhereTheServerAsksForIt) {
  serve([](const SeenRequest& request) {
    if (request.header("authorization").starts_with("Digest ")) { return LoopbackServer::reply(207, "in"); }
    return LoopbackServer::reply(401, "",
                                 "WWW-Authenticate: dIGEST realm=\"r, Basic\", nonce=\"abc\", qop=\"auth\"\r\n");
  });
  options = asAnn();
  const auto response = send("PUT", "/a", "text");
  ASSERT_TRUE(response);
  EXPECT_EQ(response->status, 207);
  ASSERT_TRUE(send("PUT", "/b", "text"));
  const auto seen = server->seen();
  ASSERT_EQ(seen.size(), 3U) << "asked first, and then known";
  EXPECT_THAT(seen[1].header("authorization"), StartsWith("Digest username=\"ann\""));
  EXPECT_THAT(seen[1].header("authorization"), Not(HasSubstr(kPassword)));
  EXPECT_EQ(seen[1].body, "text");
  EXPECT_EQ(seen[2].body, "text");
}

TEST_F(OverHttp, ANonceThatRanOutIsReplaced) {
  serve([](const SeenRequest& request) {
    const std::string given = request.header("authorization");
    if (given.find("nonce=\"new\"") != given.npos) { return LoopbackServer::reply(200, "in"); }
    const char* stale = given.starts_with("Digest ") ? ", stale=true" : "";
    return LoopbackServer::reply(401, "",
                                 std::string("WWW-Authenticate: Digest realm=\"r\", nonce=\"") +
                                     (given.starts_with("Digest ") ? "new" : "old") + "\", qop=\"auth\"" + stale +
                                     "\r\n");
  });
  options = asAnn();
  const auto response = send("PUT", "/a", "text");
  ASSERT_TRUE(response);
  EXPECT_EQ(response->body, "in");
  EXPECT_EQ(server->seen().back().body, "text");
}

TEST_F(OverHttp, BasicIsTriedWhereDigestIsOfferedAndNotKnown) {
  bool basicWorks = false;
  serve([&](const SeenRequest& request) {
    if (basicWorks && request.header("authorization") == kBasicOfAnn) { return LoopbackServer::reply(200); }
    return LoopbackServer::reply(
        401, "", "WWW-Authenticate: Digest realm=\"r\", nonce=\"n\"\r\nWWW-Authenticate: basic realm=\"r\"\r\n");
  });
  options = asAnn();
  EXPECT_EQ(send("GET", "/a")->status, 401);
  EXPECT_EQ(server->seen().size(), 2U) << "each way once";
  basicWorks = true;
  EXPECT_EQ(send("GET", "/a")->status, 200);
}

TEST_F(OverHttp, ARefusedPasswordIsAskedForOnceMore) {
  serve([](const SeenRequest& request) {
    const bool right = request.header("authorization") == "Basic YW5uOnJpZ2h0";  // "ann:right"
    return right ? LoopbackServer::reply(200)
                 : LoopbackServer::reply(401, "", "WWW-Authenticate: Basic realm=\"r\"\r\n");
  });
  options = asAnn();
  secondPassword = "right";
  EXPECT_EQ(send("GET", "/a")->status, 200);
  EXPECT_EQ(asked, 1);
  EXPECT_EQ(askedAgain, 1);
}

TEST_F(OverHttp, NobodyIsAskedAgainAndAgain) {
  serve(LoopbackServer::reply(401, "", "WWW-Authenticate: Basic realm=\"r\"\r\n"));
  options = asAnn();
  secondPassword = "wrong, too";
  EXPECT_EQ(send("GET", "/a")->status, 401);
  EXPECT_EQ(send("GET", "/b")->status, 401);
  EXPECT_EQ(asked, 1);
  EXPECT_EQ(askedAgain, 1);
  EXPECT_EQ(server->seen().size(), 3U);
}

TEST_F(OverHttp, APasswordThatWasTakenIsNotAskedForWhenOneThingIsRefused) {
  serve([](const SeenRequest& request) { return LoopbackServer::reply(request.target == "/theirs" ? 401 : 200); });
  options = asAnn();
  EXPECT_EQ(send("GET", "/a")->status, 200);
  EXPECT_EQ(send("GET", "/theirs")->status, 401);
  EXPECT_EQ(askedAgain, 0);
}

TEST_F(OverHttp, ATokenIsAskedForWheneverItRanOut) {
  std::string valid = kPassword;
  serve([&](const SeenRequest& request) {
    return LoopbackServer::reply(request.header("authorization") == "Bearer " + valid ? 200 : 401);
  });
  options = asAnn();
  isToken = true;
  EXPECT_EQ(send("GET", "/a")->status, 200);
  valid = secondPassword = "second";
  EXPECT_EQ(send("GET", "/a")->status, 200);
  valid = secondPassword = "third";
  EXPECT_EQ(send("GET", "/a")->status, 200);
  EXPECT_EQ(askedAgain, 2);
}

TEST_F(OverHttp, WithoutAPasswordNoRequestIsMade) {
  serve(LoopbackServer::reply(200));
  options = asAnn();
  options->secret = [](bool) -> Result<Secret> { return failure(ErrorCode::kIo, "The command ended with status 1."); };
  const auto response = send("GET", "/a");
  ASSERT_FALSE(response);
  EXPECT_EQ(response.error().trouble, Trouble::kNoSecret);
  EXPECT_EQ(response.error().message, "The command ended with status 1.");
  EXPECT_TRUE(server->seen().empty());
}

// Redirects.

TEST_F(OverHttp, RedirectsKeepMethodBodyAndPassword) {
  for (const int status : {301, 302, 307, 308}) {
    serve([status](const SeenRequest& request) {
      return request.target == "/old" ? LoopbackServer::reply(status, "", "Location: /new/\r\n")
                                      : LoopbackServer::reply(207, "new");
    });
    options = asAnn();
    transport.reset();
    const auto response = send("PROPFIND", "/old", "body", {{"Depth", "0"}});
    ASSERT_TRUE(response);
    EXPECT_EQ(response->body, "new");
    EXPECT_EQ(response->url, server->url("/new/")) << "without user and password";
    const SeenRequest seen = server->seen().at(1);
    EXPECT_EQ(seen.method + " " + seen.target, "PROPFIND /new/");
    EXPECT_EQ(seen.body, "body");
    EXPECT_EQ(seen.header("depth"), "0");
    EXPECT_EQ(seen.header("authorization"), kBasicOfAnn);
  }
}

TEST_F(OverHttp, ThePasswordGoesToNoOtherPort) {
  LoopbackServer other([](const SeenRequest& request) {
    return LoopbackServer::reply(request.header("authorization") == "(none)" ? 401 : 200, "",
                                 "WWW-Authenticate: Basic realm=\"r\"\r\n");
  });
  serve(LoopbackServer::reply(301, "", "Location: " + other.url("/x") + "\r\n"));
  for (const bool finding : {false, true}) {
    options = asAnn();
    if (finding) { options->origin.clear(); }
    transport.reset();
    const auto response = send("PROPFIND", "/old");
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 401);
    EXPECT_EQ(response->url, other.url("/x"));
  }
  for (const SeenRequest& seen : other.seen()) { EXPECT_EQ(seen.header("authorization"), "(none)"); }
  EXPECT_EQ(server->seen().at(0).header("authorization"), kBasicOfAnn);
}

TEST_F(OverHttp, ThePasswordGoesToNobodyWhoIsNotMeant) {
  LoopbackServer other([](const SeenRequest&) {
    return LoopbackServer::reply(401, "", "WWW-Authenticate: Digest realm=\"r\", nonce=\"n\"\r\n");
  });
  serve(LoopbackServer::reply(200));
  options = asAnn();
  ASSERT_TRUE(send("GET", "/a"));
  EXPECT_EQ(transport->send({"GET", other.url("/"), {}, ""})->status, 401);
  EXPECT_EQ(other.seen().size(), 1U);
  EXPECT_EQ(other.seen().at(0).header("authorization"), "(none)");
}

TEST_F(OverHttp, WhileAnAccountIsFoundEachRequestNamesWhoGetsThePassword) {
  LoopbackServer other([](const SeenRequest&) { return LoopbackServer::reply(200); });
  serve(LoopbackServer::reply(200));
  options = asAnn();
  options->origin.clear();
  ASSERT_TRUE(send("GET", "/a"));
  ASSERT_TRUE(transport->send({"GET", other.url("/"), {}, ""}));
  EXPECT_EQ(other.seen().at(0).header("authorization"), kBasicOfAnn);
}

TEST_F(OverHttp, RedirectsEndSomewhere) {
  serve([](const SeenRequest& request) {
    return LoopbackServer::reply(302, "", "Location: " + request.target + "x\r\n");
  });
  EXPECT_EQ(send("GET", "/").error().trouble, Trouble::kUntrusted);
  EXPECT_EQ(server->seen().size(), 9U);
}

TEST_F(OverHttp, RedirectsLeadNowhereElseThanToHttp) {
  for (const char* target : {"file:///etc/passwd", "ftp://127.0.0.1/", "//"}) {
    serve(LoopbackServer::reply(301, "", "Location: " + std::string(target) + "\r\n"));
    const auto response = send("GET", "/");
    // A name with a colon may be one beside the first: then it is asked for, here, and leads on to the next.
    ASSERT_FALSE(response);
    EXPECT_EQ(response.error().trouble, Trouble::kUntrusted) << target;
    for (const SeenRequest& seen : server->seen()) { EXPECT_THAT(seen.target, StartsWith("/")); }
  }
}

TEST_F(OverHttp, OnlyAGetFollowsToAnotherMethod) {
  serve([](const SeenRequest& request) {
    return request.target == "/new" ? LoopbackServer::reply(200, "new")
                                    : LoopbackServer::reply(303, "", "Location: /new#part\r\n");
  });
  EXPECT_EQ(send("GET", "/a")->body, "new");
  EXPECT_EQ(send("PUT", "/a", "text")->status, 303);
}

// What comes in, or does not.

TEST_F(OverHttp, AnswersAreUnfolded) {
  const std::string text(100'000, 'x');
  serve(LoopbackServer::reply(200, zipped(text), "Content-Encoding: gzip\r\n"));
  EXPECT_EQ(send("GET", "/a")->body, text);
}

TEST_F(OverHttp, AnswersThatUnfoldToTooMuchAreNotTaken) {
  const std::string bomb = zipped(std::string(50'000'000, 'x'));
  ASSERT_LT(bomb.size(), 100'000U);
  serve(LoopbackServer::reply(200, bomb, "Content-Encoding: gzip\r\n"));
  options = TransportOptions{};
  options->mostBytes = 1'000'000;
  EXPECT_EQ(send("GET", "/a").error().trouble, Trouble::kTooLarge);
}

TEST_F(OverHttp, AnswersAreAsLargeAsAllowed) {
  serve([](const SeenRequest& request) {
    return LoopbackServer::reply(200, std::string(std::stoul(request.target.substr(1)), 'x'));
  });
  options = TransportOptions{};
  options->mostBytes = 1000;
  EXPECT_EQ(send("GET", "/1000")->body.size(), 1000U);
  EXPECT_EQ(send("GET", "/1001").error().trouble, Trouble::kTooLarge);
}

TEST_F(OverHttp, HeadersWithoutAnEndAreNotTaken) {
  std::string headers;
  for (int i = 0; i < 30; ++i) { headers += "X-A: " + std::string(60'000, 'x') + "\r\n"; }
  serve(LoopbackServer::reply(200, "", headers));
  EXPECT_FALSE(send("GET", "/a"));
}

TEST_F(OverHttp, WhereNobodyListensNothingWasDone) {
  serve(LoopbackServer::reply(200));
  const std::string url = server->url("/cal?token=geheim");
  server.reset();
  const auto response = CurlTransport({}).send({"PUT", url, {}, "text"});
  ASSERT_FALSE(response);
  EXPECT_EQ(response.error().trouble, Trouble::kUnreachable);
  EXPECT_EQ(response.error().status, 0);
  EXPECT_THAT(response.error().message, HasSubstr("/cal"));
  EXPECT_THAT(response.error().message, Not(HasSubstr("geheim")));
}

TEST_F(OverHttp, AConnectionCutBeforeOrWithinTheAnswerLosesIt) {
  const std::string whole = LoopbackServer::reply(201, "text").bytes;
  for (const std::size_t cut : {std::size_t{0}, std::size_t{5}, whole.size() / 2, whole.size() - 1}) {
    serve(SentReply{whole.substr(0, cut), true, false});
    transport.reset();
    const auto response = send("PUT", "/a", "text");
    ASSERT_FALSE(response) << cut;
    EXPECT_EQ(response.error().trouble, Trouble::kAnswerLost) << cut;
    EXPECT_EQ(server->seen().size(), 1U);
  }
}

TEST_F(OverHttp, AConnectionCutAfterTheAnswerIsOpenedAnew) {
  SentReply reply = LoopbackServer::reply(201, "text");
  reply.closes = true;
  serve(reply);
  EXPECT_EQ(send("PUT", "/a", "text")->status, 201);
  EXPECT_EQ(send("PUT", "/b", "text")->status, 201);
}

/// Answers once a connection, and swallows what comes after that.
LoopbackServer::Handler answersOnceAConnection(int status) {
  return [status, last = 0](const SeenRequest& request) mutable {
    const bool first = request.connection != last;
    last = request.connection;
    return first ? LoopbackServer::reply(request.connection == 1 ? 200 : status, "text") : SentReply{"", true, false};
  };
}

TEST_F(OverHttp, AKeptConnectionThatDiesIsReplaced) {
  serve(answersOnceAConnection(201));
  ASSERT_TRUE(send("GET", "/1"));
  const auto write = send("PUT", "/2", "text");
  ASSERT_TRUE(write);
  EXPECT_EQ(write->status, 201);
  EXPECT_EQ(server->seen().size(), 3U);
  EXPECT_EQ(server->seen().at(2).body, "text");
}

TEST_F(OverHttp, AWriteThatWentOutTwiceIsNotTakenForRefused) {
  for (const int status : {404, 405, 412, 503}) {
    serve(answersOnceAConnection(status));
    transport.reset();
    ASSERT_TRUE(send("GET", "/1"));
    const auto write = send("PUT", "/2", "text");
    ASSERT_FALSE(write) << status;
    EXPECT_EQ(write.error().trouble, Trouble::kAnswerLost);
    EXPECT_EQ(server->seen().size(), 3U);
  }
}

TEST_F(OverHttp, WritesGetAConnectionEachOnceAKeptOneDied) {
  serve(answersOnceAConnection(412));
  ASSERT_TRUE(send("GET", "/1"));
  EXPECT_FALSE(send("PUT", "/2", "text"));
  EXPECT_EQ(send("PUT", "/3", "text")->status, 412) << "went out once";
  EXPECT_EQ(server->seen().size(), 4U);
}

TEST_F(OverHttp, AReadingThatWentOutTwiceIsToldWhatTheServerSays) {
  serve(answersOnceAConnection(404));
  ASSERT_TRUE(send("GET", "/1"));
  EXPECT_EQ(send("PROPFIND", "/2")->status, 404);
  EXPECT_EQ(server->seen().size(), 3U);
}

TEST_F(OverHttp, WhatIsNoHttpIsALostAnswer) {
  serve(SentReply{"SSH-2.0-nothing\r\n", true, false});
  EXPECT_EQ(send("PUT", "/a", "text").error().trouble, Trouble::kAnswerLost);
}

TEST_F(OverHttp, SilenceIsNotWaitedForWithoutEnd) {
  serve(SentReply{"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc", false, true});
  options = TransportOptions{};
  options->silence = std::chrono::seconds(1);
  EXPECT_EQ(send("GET", "/a").error().trouble, Trouble::kAnswerLost);
}

TEST_F(OverHttp, AnAnswerThatTakesTooLongEnds) {
  serve(SentReply{"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc", false, true});
  options = TransportOptions{};
  options->longest = std::chrono::seconds(1);
  const auto answer = send("GET", "/a");
  EXPECT_EQ(answer.error().trouble, Trouble::kAnswerLost);
  EXPECT_THAT(answer.error().message, HasSubstr("timed out"));
}

TEST_F(OverHttp, WhoeverHasHadEnoughIsHeard) {
  std::atomic<bool> stop = false;
  serve([&](const SeenRequest&) {
    stop = true;
    return SentReply{"", false, true};
  });
  options = TransportOptions{};
  options->stop = &stop;
  EXPECT_EQ(send("GET", "/a").error().trouble, Trouble::kInterrupted);
}

TEST_F(OverHttp, ACertificateFileThatIsNoneIsNotTrusted) {
  TransportOptions untrusting;
  untrusting.caFile = "/nonexistent/ca.pem";
  serve(LoopbackServer::reply(200));
  const auto response =
      CurlTransport(untrusting).send({"GET", "https://127.0.0.1:" + std::to_string(server->port()) + "/", {}, ""});
  ASSERT_FALSE(response);
  EXPECT_EQ(response.error().trouble, Trouble::kUntrusted);
}

}  // namespace
}  // namespace orlocal::accounts
