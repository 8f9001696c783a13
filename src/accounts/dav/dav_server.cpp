#include "accounts/dav/dav_server.h"

#include <algorithm>
#include <array>
#include <map>

#include "accounts/dav/names.h"
#include "accounts/dav/remote_properties.h"
#include "accounts/dav/requests.h"
#include "accounts/dav/trouble.h"
#include "accounts/transport/url.h"
#include "base/text.h"
#include "base/translation.h"
#include "base/try.h"

namespace orlocal::accounts {
namespace {

constexpr int kMultiStatusCode = 207;
constexpr int kTooMuch = 507;

Refusal nonsense(const std::string& url, const std::string& why, int status) {
  return refusal(Trouble::kNonsense, shownUrl(url) + ": " + why + ".", status);
}

bool isAbout(const DavResponse& response, const std::string& base, const std::string& url) {
  return std::any_of(response.hrefs.begin(), response.hrefs.end(), [&](const std::string& href) {
    return comparablePath(listedUrl(base, href)) == comparablePath(url);
  });
}

/// The address of a member; none for the collection's own entry and for collections in it, which hold no items of it.
std::optional<std::string> memberUrl(const DavResponse& response, const std::string& base, const std::string& href) {
  const XmlElement* type = response.property(dav::kResourceType);
  if (href.empty() || href.ends_with('/') || (type != nullptr && type->child(dav::kCollection) != nullptr)) {
    return std::nullopt;
  }
  std::string url = listedUrl(base, href);
  return comparablePath(url) == comparablePath(base) ? std::nullopt : std::optional(std::move(url));
}

std::string etagOf(const DavResponse& response) {
  const XmlElement* etag = response.property(dav::kGetEtag);
  return etag == nullptr ? std::string() : std::string(etag->word());
}

bool isGone(int status) { return status == 404 || status == 410; }

bool holdsCalendar(std::string_view text) {
  constexpr std::string_view kBegin = "BEGIN:VCALENDAR";
  const auto found = std::search(text.begin(), text.end(), kBegin.begin(), kBegin.end(),
                                 [](char left, char right) { return asciiUpper(left) == right; });
  return found != text.end();
}

/// A request names what it asks for as the server does: by its path, unless it lives elsewhere.
std::string hrefFor(const std::string& url, const std::string& calendar) {
  return originOf(url) == originOf(calendar) ? sendable(pathOf(url)) : url;
}

XmlName nameOf(CalendarProperty property) {
  switch (property) {
    case CalendarProperty::kDisplayName:
      return dav::kDisplayName;
    case CalendarProperty::kColor:
      return dav::kCalendarColor;
    case CalendarProperty::kOrder:
      return dav::kCalendarOrder;
    case CalendarProperty::kDescription:
      return dav::kCalendarDescription;
  }
  return dav::kDisplayName;
}

/// What was refused in an answer of many statuses; none in any other success.
Answer<std::optional<PropStat>> refusalWithin(const HttpResponse& response) {
  std::optional<PropStat> refused;
  if (response.status != kMultiStatusCode) { return refused; }
  const auto multistatus = readMultistatus(response.body);
  if (!multistatus) { return nonsense(response.url, tr("the answer cannot be read"), response.status); }
  for (const DavResponse& said : multistatus->responses) {
    if (!refused) { refused = said.refusal(); }
  }
  return refused;
}

}  // namespace

Answer<HttpResponse> DavServer::send(const char* method, const std::string& url, std::vector<HttpHeader> headers,
                                     std::string body) {
  ORLOCAL_TRY(auto response, m_transport.send({method, url, std::move(headers), std::move(body)}));
  if (!isSuccess(response.status)) { return Refusal(refusalIn(response, m_now())); }
  return response;
}

Answer<Multistatus> DavServer::ask(const char* method, const std::string& url, const char* depth, std::string body,
                                   std::string& answeredFrom) {
  Multistatus all;
  ORLOCAL_TRY(all.syncToken,
              askForEach(method, url, depth, std::move(body), answeredFrom,
                         [&all](DavResponse response) { all.responses.push_back(std::move(response)); }));
  return all;
}

Answer<std::string> DavServer::askForEach(const char* method, const std::string& url, const char* depth,
                                          std::string body, std::string& answeredFrom,
                                          const std::function<void(DavResponse)>& take) {
  ORLOCAL_TRY(auto response, send(method, url, {{"Depth", depth}, {"Content-Type", "application/xml; charset=utf-8"}},
                                  std::move(body)));
  answeredFrom = response.url;
  if (response.status != kMultiStatusCode) {
    return nonsense(response.url, tr("what answers there is no calendar server"), response.status);
  }
  std::optional<ServerFailure> closed;
  auto token = readMultistatus(response.body, [&](DavResponse said) {
    // Nothing to list, since what should be listed is not there or closed to us, is no empty list.
    if (!closed && said.status >= 400 && said.status != kTooMuch && isAbout(said, response.url, response.url)) {
      closed = refusalBy(response.url, said.status, said.errors);
    }
    take(std::move(said));
  });
  if (!token) { return nonsense(response.url, tr("the answer cannot be read"), response.status); }
  if (closed) { return Refusal(*std::move(closed)); }
  return *std::move(token);
}

Answer<HttpResponse> DavServer::write(const char* method, const std::string& url, std::vector<HttpHeader> headers,
                                      std::string body) {
  ORLOCAL_TRY(auto response, send(method, url, std::move(headers), std::move(body)));
  ORLOCAL_TRY(const auto refused, refusalWithin(response));
  if (refused) { return Refusal(refusalBy(response.url, refused->status, refused->errors)); }
  return response;
}

Answer<std::vector<RemoteCalendar>> DavServer::calendars(const std::string& home, Marks marks) {
  std::string base;
  ORLOCAL_TRY(const auto multistatus, ask("PROPFIND", home, "1", propFindBody(calendarProperties(marks)), base));
  std::vector<RemoteCalendar> found;
  for (const DavResponse& response : multistatus.responses) {
    if (response.status == kTooMuch) { return Refusal(refusalBy(base, kTooMuch, response.errors)); }
    if (response.hrefs.empty() || !isCalendar(response)) { continue; }
    found.push_back(calendarOf(response, listedUrl(base, response.hrefs.front())));
  }
  return found;
}

Answer<RemoteCalendar> DavServer::calendar(const std::string& url) {
  std::string base;
  ORLOCAL_TRY(const auto multistatus, ask("PROPFIND", url, "0", propFindBody(calendarProperties(Marks::kAll)), base));
  for (const DavResponse& response : multistatus.responses) {
    if (response.hrefs.empty() || !isCalendar(response)) { continue; }
    return calendarOf(response, listedUrl(base, response.hrefs.front()));
  }
  return refusal(Trouble::kNotFound, tr("{}: there is no calendar.", shownUrl(base)), kMultiStatusCode);
}

Answer<RemoteChanges> DavServer::changesSince(const std::string& calendar, const std::string& token) {
  std::string base;
  RemoteChanges changes;
  const auto next =
      askForEach("REPORT", calendar, "0", syncCollectionBody(token), base, [&](const DavResponse& response) {
        if (response.status == kTooMuch && isAbout(response, base, base)) { changes.more = true; }
        for (const std::string& href : response.hrefs) {
          auto url = memberUrl(response, base, href);
          if (!url) { continue; }
          if (isGone(response.status)) {
            changes.removed.push_back(std::move(*url));
          } else {
            changes.changed.push_back({std::move(*url), etagOf(response)});
          }
        }
      });
  if (!next) {
    ServerFailure failure = next.error();
    // Servers that have no words for a bad token. Without a token the same request will tell what is really wrong.
    const bool unexplained = failure.status == 400 || failure.status == 409 || failure.status == 500 ||
                             (failure.status == 403 && failure.trouble == Trouble::kForbidden);
    if (!token.empty() && unexplained) { failure.trouble = Trouble::kInvalidToken; }
    return Refusal(std::move(failure));
  }
  changes.token = usableToken(*next);
  if (changes.more && (changes.token.empty() || changes.token == token)) {
    return nonsense(base, tr("the server says that there is more, and never how to go on"), kMultiStatusCode);
  }
  return changes;
}

Answer<std::vector<RemoteEntry>> DavServer::entries(const std::string& calendar) {
  constexpr std::array kAsked{dav::kGetEtag, dav::kResourceType};
  std::string base;
  std::vector<RemoteEntry> found;
  std::optional<ServerFailure> cut;
  ORLOCAL_CHECK(askForEach("PROPFIND", calendar, "1", propFindBody(kAsked), base, [&](const DavResponse& response) {
    if (response.status == kTooMuch && !cut) { cut = refusalBy(base, kTooMuch, response.errors); }
    for (const std::string& href : response.hrefs) {
      if (auto url = memberUrl(response, base, href); url && !isGone(response.status)) {
        found.push_back({std::move(*url), etagOf(response)});
      }
    }
  }));
  // A list that was cut short must not pass for all.
  if (cut) { return Refusal(*std::move(cut)); }
  return found;
}

Answer<RemoteTexts> DavServer::texts(const std::string& calendar, std::span<const std::string> urls) {
  RemoteTexts texts;
  if (urls.empty()) { return texts; }
  std::vector<std::string> hrefs;
  for (const std::string& url : urls) { hrefs.push_back(hrefFor(url, calendar)); }
  std::string base;
  const auto multistatus = ask("REPORT", calendar, "1", multigetBody(hrefs), base);
  if (!multistatus) {
    // One that is missing makes some servers refuse all.
    if (!isGone(multistatus.error().status)) { return Refusal(multistatus.error()); }
    texts.unsaid.assign(urls.begin(), urls.end());
    return texts;
  }
  std::map<std::string, const DavResponse*> said;
  for (const DavResponse& response : multistatus->responses) {
    for (const std::string& href : response.hrefs) { said.emplace(comparablePath(listedUrl(base, href)), &response); }
  }
  for (const std::string& url : urls) {
    const auto found = said.find(comparablePath(url));
    const XmlElement* data = found == said.end() ? nullptr : found->second->property(dav::kCalendarData);
    if (data != nullptr && holdsCalendar(data->text)) {
      texts.found.push_back({url, etagOf(*found->second), data->text});
    } else if (found != said.end() && isGone(found->second->status)) {
      texts.missing.push_back(url);
    } else {
      texts.unsaid.push_back(url);
    }
  }
  return texts;
}

Answer<RemoteText> DavServer::text(const std::string& url) {
  ORLOCAL_TRY(auto response, send("GET", url, {{"Accept", "text/calendar"}}, ""));
  if (!holdsCalendar(response.body)) {
    return nonsense(response.url, tr("the answer is no calendar"), response.status);
  }
  return RemoteText{url, response.header("ETag").value_or(""), std::move(response.body)};
}

Answer<Written> DavServer::put(const std::string& url, const std::string& text, const Precondition& condition) {
  std::vector<HttpHeader> headers{{"Content-Type", "text/calendar; charset=utf-8"}};
  if (condition.kind == Precondition::Kind::kIsNew) {
    headers.push_back({"If-None-Match", "*"});
  } else if (condition.etag.empty()) {
    return refusal(Trouble::kPrecondition, tr("{}: nobody knows what it is like on the server.", shownUrl(url)));
  } else {
    headers.push_back({"If-Match", condition.etag});
  }
  ORLOCAL_TRY(const auto response, write("PUT", url, std::move(headers), text));
  Written written{url, response.header("ETag").value_or("")};
  const auto location = response.header("Location");
  std::string place = location ? listedUrl(response.url, *location) : response.url;
  if (comparablePath(place) != comparablePath(url)) { written.url = std::move(place); }
  return written;
}

Answer<void> DavServer::remove(const std::string& url, const std::string& etag) {
  std::vector<HttpHeader> headers;
  if (!etag.empty()) { headers.push_back({"If-Match", etag}); }
  ORLOCAL_CHECK(write("DELETE", url, std::move(headers), ""));
  return {};
}

Answer<RemoteCalendar> DavServer::makeCalendar(const std::string& url, const NewCalendar& wanted) {
  const auto made =
      write("MKCALENDAR", url, {{"Content-Type", "application/xml; charset=utf-8"}}, mkCalendarBody(wanted));
  if (!made && made.error().status == 0) { return Refusal(made.error()); }
  auto stands = calendar(url);
  if (!made) {
    // 403, 405 and 409 are what servers say of a name that is taken.
    return stands ? refusal(Trouble::kClash, tr("{}: a calendar is there already.", shownUrl(url)), made.error().status)
                  : Refusal(made.error());
  }
  if (!stands && stands.error().trouble == Trouble::kNotFound) {
    return refusal(Trouble::kUnsupported,
                   tr("{}: the server says that it made the calendar, and has none.", shownUrl(url)), made->status);
  }
  if (!stands || !setMissing(*stands, wanted)) { return stands; }
  auto again = calendar(stands->url);
  return again ? again : stands;
}

bool DavServer::setMissing(const RemoteCalendar& made, const NewCalendar& wanted) {
  bool tried = false;
  const auto set = [&](CalendarProperty property, const std::string& value) {
    // What the server does not take stays as it made it.
    static_cast<void>(setProperty(made.url, property, value));
    tried = true;
  };
  if (made.displayName != wanted.displayName) { set(CalendarProperty::kDisplayName, wanted.displayName); }
  if (wanted.color && (!made.color || made.color->bytes() != wanted.color->bytes())) {
    set(CalendarProperty::kColor, davColor(*wanted.color));
  }
  return tried;
}

Answer<void> DavServer::setProperty(const std::string& calendar, CalendarProperty property, const std::string& value) {
  ORLOCAL_TRY(const auto response, send("PROPPATCH", calendar, {{"Content-Type", "application/xml; charset=utf-8"}},
                                        propPatchBody(nameOf(property), value)));
  ORLOCAL_TRY(const auto refused, refusalWithin(response));
  if (!refused) { return {}; }
  ServerFailure failure = refusalBy(response.url, refused->status, refused->errors);
  // Of a property these mean that the server has no such one, and not what they mean of a resource.
  if (failure.trouble == Trouble::kNotFound || failure.trouble == Trouble::kClash) {
    failure = {
        Trouble::kUnsupported, tr("{}: the server does not keep that.", shownUrl(response.url)), refused->status, {}};
  }
  return Refusal(std::move(failure));
}

Answer<void> DavServer::removeCalendar(const std::string& url) {
  ORLOCAL_CHECK(write("DELETE", url, {}, ""));
  return {};
}

}  // namespace orlocal::accounts
