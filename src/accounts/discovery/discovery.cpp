#include "accounts/discovery/discovery.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <utility>

#include <fmt/format.h>

#include "accounts/dav/multistatus.h"
#include "accounts/dav/names.h"
#include "accounts/dav/requests.h"
#include "accounts/dav/trouble.h"
#include "accounts/transport/url.h"
#include "base/text.h"
#include "base/translation.h"
#include "base/try.h"

namespace orlocal::accounts {
namespace {

constexpr int kMultiStatusCode = 207;
constexpr int kUnauthorizedCode = 401;
constexpr std::string_view kWellKnown = "/.well-known/caldav";

/// What somebody gave as an account's address.
struct GivenAddress {
  std::optional<std::string> url;  ///< none of a mail address, which names a domain only
  std::string origin;
};

std::optional<GivenAddress> readAddress(const std::string& address) {
  GivenAddress given;
  const std::size_t at = address.rfind('@');
  if (address.find("://") != address.npos) {
    given.url = withoutUser(address);
  } else if (at != address.npos && address.find('/') == address.npos) {
    given.origin = "https://" + address.substr(at + 1);
  } else {
    given.url = "https://" + address;
  }
  const auto origin = originOf(given.url ? *given.url : given.origin);
  if (!origin) { return std::nullopt; }
  given.origin = *origin;
  return given;
}

/// An answer to PROPFIND, and where it came from.
struct Page {
  Multistatus content;
  std::string url;
};

class Finder {
 public:
  Finder(Transport& transport, GivenAddress given) : m_transport(transport), m_given(std::move(given)) {}

  Answer<FoundAccount> find(const std::string& address, const ServiceLookup& lookup);

 private:
  /// The account that an address leads to.
  Answer<FoundAccount> accountAt(const std::string& url);
  Answer<FoundAccount> accountOf(const std::string& principal);
  Answer<Page> look(const std::string& url, std::span<const XmlName> properties);
  Answer<HttpResponse> ask(const std::string& url, const std::string& body);
  /// By the domain's records; what they name and may not be asked is noted.
  std::vector<std::string> namedByRecords(const ServiceLookup& lookup);
  bool mayHavePassword(const std::string& url) const;
  bool sends(const std::string& home);
  ServerFailure failureFor(const std::string& address) const;

  Transport& m_transport;
  GivenAddress m_given;
  std::vector<ServerFailure> m_failures;
};

/// What leads away from the address that was given is followed, but gets the password only below the same domain and
/// over TLS: a record or a redirect may be anybody's.
bool Finder::mayHavePassword(const std::string& url) const {
  const auto origin = originOf(url);
  if (origin == m_given.origin) { return true; }
  const std::string host = hostOf(url);
  const std::string domain = hostOf(m_given.origin);
  return origin && origin->starts_with("https://") && (host == domain || host.ends_with("." + domain));
}

Refusal notUnasked(const std::string& from, const std::string& to) {
  return refusal(Trouble::kUnauthorized,
                 tr("{} leads to {}, which gets no password unless it is named: if that is your server, add the "
                    "account with that address.",
                    shownUrl(from), shownUrl(to)));
}

Answer<HttpResponse> Finder::ask(const std::string& url, const std::string& body) {
  return m_transport.send(
      {"PROPFIND", url, {{"Depth", "0"}, {"Content-Type", "application/xml; charset=utf-8"}}, body});
}

Answer<Page> Finder::look(const std::string& url, std::span<const XmlName> properties) {
  const std::string body = propFindBody(properties);
  ORLOCAL_TRY(auto response, ask(url, body));
  if (response.status == kUnauthorizedCode && originOf(response.url) != originOf(url)) {
    if (!mayHavePassword(response.url)) { return notUnasked(url, response.url); }
    ORLOCAL_TRY(response, ask(response.url, body));
  }
  if (!isSuccess(response.status)) {
    return Refusal(refusalBy(response.url, response.status, readErrorConditions(response.body)));
  }
  auto content = response.status == kMultiStatusCode ? readMultistatus(response.body) : std::nullopt;
  if (!content) {
    return refusal(Trouble::kNonsense, tr("{}: what answers there is no calendar server.", shownUrl(response.url)),
                   response.status);
  }
  return Page{std::move(*content), std::move(response.url)};
}

/// The addresses in a property, as they were written.
std::vector<std::string> hrefsIn(const DavResponse& response, XmlName name) {
  std::vector<std::string> hrefs;
  if (const XmlElement* property = response.property(name)) {
    for (const XmlElement& child : property->children) {
      if (child.is(dav::kHref) && !child.word().empty()) { hrefs.emplace_back(child.word()); }
    }
  }
  return hrefs;
}

/// The principal that a page names, or is.
std::optional<std::string> principalIn(const Page& page) {
  for (const DavResponse& response : page.content.responses) {
    const auto named = hrefsIn(response, dav::kCurrentUserPrincipal);
    if (!named.empty()) { return listedUrl(page.url, named.front()); }
  }
  for (const DavResponse& response : page.content.responses) {
    const XmlElement* type = response.property(dav::kResourceType);
    const bool isPrincipal = type != nullptr && type->child(dav::kPrincipal) != nullptr;
    if (isPrincipal || !hrefsIn(response, dav::kCalendarHomeSet).empty()) { return page.url; }
  }
  return std::nullopt;
}

Answer<FoundAccount> Finder::accountAt(const std::string& url) {
  constexpr std::array kAsked{dav::kCurrentUserPrincipal, dav::kResourceType, dav::kCalendarHomeSet};
  ORLOCAL_TRY(const Page page, look(url, kAsked));
  const auto principal = principalIn(page);
  if (!principal) {
    return refusal(Trouble::kNotFound, tr("{}: the server does not say who the user is.", shownUrl(page.url)),
                   kMultiStatusCode);
  }
  if (originOf(*principal) != originOf(page.url) && !mayHavePassword(*principal)) {
    return notUnasked(url, *principal);
  }
  return accountOf(*principal);
}

Answer<FoundAccount> Finder::accountOf(const std::string& principal) {
  constexpr std::array kAsked{dav::kCalendarHomeSet};
  ORLOCAL_TRY(const Page page, look(principal, kAsked));
  FoundAccount found;
  found.principal = page.url;
  for (const DavResponse& response : page.content.responses) {
    for (const std::string& href : hrefsIn(response, dav::kCalendarHomeSet)) {
      found.homes.push_back(listedUrl(page.url, href));
    }
  }
  if (found.homes.empty()) {
    return refusal(Trouble::kNotFound, tr("{}: this user has no calendars.", shownUrl(page.url)), kMultiStatusCode);
  }
  for (const std::string& home : found.homes) {
    if (originOf(home) != originOf(page.url) && !mayHavePassword(home)) { return notUnasked(page.url, home); }
  }
  found.schedules = sends(found.homes.front());
  return found;
}

bool Finder::sends(const std::string& home) {
  const auto response = m_transport.send({"OPTIONS", home, {}, ""});
  const std::string classes = response ? response->header("DAV").value_or("") : "";
  for (std::size_t at = 0; at < classes.size();) {
    const std::size_t comma = std::min(classes.find(',', at), classes.size());
    if (equalsNoCase(trimmed(std::string_view(classes).substr(at, comma - at)), "calendar-auto-schedule")) {
      return true;
    }
    at = comma + 1;
  }
  return false;
}

std::vector<std::string> Finder::namedByRecords(const ServiceLookup& lookup) {
  std::vector<std::string> urls;
  // A port that was named is the one that is meant, and machines of one's own have no records.
  const std::string host = hostOf(m_given.origin);
  if (!lookup || isLoopback(m_given.origin) || !m_given.origin.ends_with("://" + host)) { return urls; }
  // Records may be forged. Over TLS a wrong server shows; without it the password would be in the clear, so that takes
  // somebody who asks for it.
  const bool plain = m_given.origin.starts_with("http://");
  for (const auto& [service, scheme] : {std::pair("_caldavs._tcp", "https://"), std::pair("_caldav._tcp", "http://")}) {
    for (const ServiceRecord& record : lookup(service, host)) {
      std::string url =
          fmt::format("{}{}:{}{}", scheme, record.host, record.port, record.path.empty() ? kWellKnown : record.path);
      if (mayHavePassword(url) || (plain && hostOf(url).ends_with("." + host))) {
        urls.push_back(std::move(url));
      } else {
        m_failures.push_back(notUnasked("https://" + host + "/", url).value());
      }
    }
  }
  return urls;
}

Answer<FoundAccount> Finder::find(const std::string& address, const ServiceLookup& lookup) {
  std::set<std::string> tried;
  std::set<std::string> refusing;
  std::optional<ServerFailure> end;
  const auto attempt = [&](const std::string& url) -> std::optional<FoundAccount> {
    // A server that does not take the password is not asked until it locks the user out.
    if (end || !tried.insert(url).second || refusing.contains(originOf(url).value_or(""))) { return std::nullopt; }
    auto found = accountAt(url);
    if (found) { return std::move(*found); }
    const Trouble trouble = found.error().trouble;
    if (trouble == Trouble::kInterrupted || trouble == Trouble::kNoSecret) { end = found.error(); }
    if (trouble == Trouble::kUnauthorized) { refusing.insert(originOf(url).value_or("")); }
    m_failures.push_back(std::move(found.error()));
    return std::nullopt;
  };
  if (m_given.url) {
    if (auto found = attempt(*m_given.url)) { return std::move(*found); }
  }
  if (auto found = attempt(m_given.origin + std::string(kWellKnown))) { return std::move(*found); }
  if (!end) {
    for (const std::string& url : namedByRecords(lookup)) {
      if (auto found = attempt(url)) { return std::move(*found); }
    }
  }
  if (auto found = attempt(m_given.origin + "/")) { return std::move(*found); }
  return Refusal(end ? std::move(*end) : failureFor(address));
}

ServerFailure Finder::failureFor(const std::string& address) const {
  // What somebody can do something about comes first.
  constexpr std::array kTelling{Trouble::kUnauthorized, Trouble::kUntrusted, Trouble::kForbidden, Trouble::kLater};
  ServerFailure failure{Trouble::kNotFound, tr("No calendars were found at {}.", shownUrl(address)), 0, std::nullopt};
  for (const ServerFailure& one : m_failures) { failure.message += " " + one.message; }
  const auto is = [](Trouble trouble) {
    return [trouble](const ServerFailure& one) { return one.trouble == trouble; };
  };
  for (const Trouble trouble : kTelling) {
    const auto first = std::find_if(m_failures.begin(), m_failures.end(), is(trouble));
    if (first == m_failures.end()) { continue; }
    failure.trouble = trouble;
    failure.status = first->status;
    failure.retryAfter = first->retryAfter;
    return failure;
  }
  if (std::all_of(m_failures.begin(), m_failures.end(), is(Trouble::kUnreachable))) {
    failure.trouble = Trouble::kUnreachable;
  }
  return failure;
}

}  // namespace

Answer<FoundAccount> findAccount(Transport& transport, const std::string& address, const ServiceLookup& lookup) {
  auto given = readAddress(address);
  if (!given) {
    return refusal(Trouble::kNotFound, tr("\"{}\" is no address of a server: https://dav.example.org, or "
                                          "ann@example.org.",
                                          shownUrl(address)));
  }
  return Finder(transport, std::move(*given)).find(address, lookup);
}

}  // namespace orlocal::accounts
