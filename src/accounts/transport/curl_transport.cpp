#include "accounts/transport/curl_transport.h"

#include <algorithm>
#include <array>

#include <curl/curl.h>
#include <fmt/format.h>

#include "accounts/transport/challenge.h"
#include "accounts/transport/curl_exchange.h"
#include "accounts/transport/redirect.h"
#include "accounts/transport/url.h"
#include "base/translation.h"
#include "base/try.h"

namespace orlocal::accounts {
namespace {

constexpr int kMostRedirects = 8;
constexpr int kUnauthorizedStatus = 401;

bool isPrivate(std::string_view origin) { return origin.starts_with("https://") || isLoopback(origin); }

bool isField(const HttpHeader& header) {
  const auto breaks = [](char c) { return c == '\r' || c == '\n' || c == '\0'; };
  return !header.name.empty() && header.name.find_first_of(": \t") == std::string::npos &&
         std::none_of(header.name.begin(), header.name.end(), breaks) &&
         std::none_of(header.value.begin(), header.value.end(), breaks);
}

Refusal unsendable(const std::string& url) {
  return refusal(Trouble::kNonsense, tr("{}: this is no request that can be sent.", shownUrl(url)));
}

}  // namespace

struct CurlTransport::State {
  explicit State(TransportOptions given) : options(std::move(given)), exchange(options) {}

  Answer<HttpResponse> follow(const HttpRequest& request);
  Answer<HttpResponse> signedIn(const HttpRequest& request, const std::string& origin);
  /// With the secret that there is, in each way that the server offers; the last refusal when it takes none.
  Answer<HttpResponse> tryWays(const HttpRequest& request, const std::string& origin);
  SignIn firstWay(const std::string& origin) const;
  Answer<Secret> askSecret(bool again);
  /// How to sign in next, after a 401 to what was tried; none when there is nothing left to try.
  std::optional<SignIn> otherWay(const HttpResponse& refused, SignIn tried, const std::string& origin) const;

  TransportOptions options;
  CurlExchange exchange;
  std::optional<Secret> secret;
  SignIn way = SignIn::kNot;  ///< the last that was taken
  std::string wayOrigin;      ///< by whom
  bool accepted = false;      ///< the secret was, once
  bool askedAgain = false;
};

Answer<Secret> CurlTransport::State::askSecret(bool again) {
  auto given = options.secret ? options.secret(again) : Result<Secret>(Secret{});
  if (given) { return std::move(*given); }
  const Trouble trouble = given.error().code == ErrorCode::kInterrupted ? Trouble::kInterrupted : Trouble::kNoSecret;
  return refusal(trouble, std::move(given.error().message));
}

std::optional<SignIn> CurlTransport::State::otherWay(const HttpResponse& refused, SignIn tried,
                                                     const std::string& origin) const {
  if (secret && secret->isToken) {
    // Whoever reads a token on its way can use it.
    return tried != SignIn::kBearer && isPrivate(origin) ? std::optional(SignIn::kBearer) : std::nullopt;
  }
  const bool digest = offers(refused, "Digest");
  const bool basic = offers(refused, "Basic");
  if (tried != SignIn::kDigest && digest) { return SignIn::kDigest; }
  // Some offer Digest and cannot do it; others know what is right of a name only as it is, not by its digest.
  if (tried == SignIn::kDigest && basic && isPrivate(origin)) { return SignIn::kBasic; }
  if (tried == SignIn::kNot && basic) { return SignIn::kBasic; }
  return std::nullopt;
}

SignIn CurlTransport::State::firstWay(const std::string& origin) const {
  if (way != SignIn::kNot || !isPrivate(origin)) { return way; }
  return secret->isToken ? SignIn::kBearer : SignIn::kBasic;
}

Answer<HttpResponse> CurlTransport::State::tryWays(const HttpRequest& request, const std::string& origin) {
  std::array<bool, 4> tried{};
  std::optional<SignIn> next = firstWay(origin);
  std::optional<HttpResponse> last;
  while (next && !tried.at(static_cast<std::size_t>(*next))) {
    const SignIn now = *next;
    tried.at(static_cast<std::size_t>(now)) = true;
    ORLOCAL_TRY(auto response, exchange.perform(request, {now, options.user, secret ? secret->value : std::string()}));
    if (response.status != kUnauthorizedStatus) {
      way = now;
      accepted = accepted || now != SignIn::kNot;
      return response;
    }
    if (!secret) { ORLOCAL_TRY(secret, askSecret(false)); }
    next = otherWay(response, now, origin);
    last = std::move(response);
  }
  way = SignIn::kNot;
  return std::move(*last);
}

Answer<HttpResponse> CurlTransport::State::signedIn(const HttpRequest& request, const std::string& origin) {
  if (wayOrigin != origin) {
    way = SignIn::kNot;
    wayOrigin = origin;
  }
  if (!secret && isPrivate(origin)) { ORLOCAL_TRY(secret, askSecret(false)); }
  ORLOCAL_TRY(auto response, tryWays(request, origin));
  // A password that was taken before is refused for what it asks; a token runs out.
  if (response.status != kUnauthorizedStatus || !secret || (!secret->isToken && (accepted || askedAgain))) {
    return response;
  }
  askedAgain = true;
  ORLOCAL_TRY(auto other, askSecret(true));
  if (other.value == secret->value) { return response; }
  secret = std::move(other);
  return tryWays(request, origin);
}

Answer<HttpResponse> CurlTransport::State::follow(const HttpRequest& request) {
  HttpRequest sent = request;
  const std::string trusted = options.origin.empty() ? *originOf(request.url) : options.origin;
  for (int redirects = 0; redirects <= kMostRedirects; ++redirects) {
    const std::string origin = *originOf(sent.url);
    auto response = !options.user.empty() && origin == trusted ? signedIn(sent, origin) : exchange.perform(sent, {});
    if (!response) { return response; }
    ORLOCAL_TRY(auto target, redirectOf(sent.url, sent.method, *response));
    if (!target) { return response; }
    sent.url = std::move(*target);
  }
  return refusal(Trouble::kUntrusted,
                 tr("{} leads from one address to the next without an end.", shownUrl(request.url)));
}

CurlTransport::CurlTransport(TransportOptions options) : m_state(std::make_unique<State>(std::move(options))) {
  if (!m_state->options.origin.empty()) {
    // What is no origin is nobody's: the password then goes nowhere.
    m_state->options.origin = originOf(m_state->options.origin).value_or("none");
  }
}
CurlTransport::~CurlTransport() = default;

Answer<HttpResponse> CurlTransport::send(const HttpRequest& request) {
  if (!originOf(request.url) || !std::all_of(request.headers.begin(), request.headers.end(), isField)) {
    return unsendable(request.url);
  }
  return m_state->follow(request);
}

}  // namespace orlocal::accounts
