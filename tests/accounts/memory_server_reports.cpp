#include <algorithm>
#include <charconv>

#include "accounts/dav/names.h"
#include "accounts/memory_server.h"
#include "accounts/transport/url.h"

// What the server in memory tells of what it holds: PROPFIND and the two reports.
namespace orlocal::accounts {
namespace {

HttpResponse multistatus(XmlWriter& writer) {
  return {207, {{"Content-Type", "application/xml; charset=utf-8"}}, writer.take(), ""};
}

HttpResponse conditionFailed(int status, std::string_view condition) {
  return {status, {}, XmlWriter(dav::kError).empty({XmlSpace::kDav, condition}).take(), ""};
}

std::string depthOf(const HttpRequest& request) {
  return HttpResponse{0, request.headers, "", ""}.header("Depth").value_or("infinity");
}

/// What happened to each name last, in that order, after a revision.
std::vector<MemoryServer::Change> lastChanges(const MemoryServer::Calendar& calendar, std::uint64_t after) {
  std::map<std::string, MemoryServer::Change> last;
  for (const auto& change : calendar.changes) { last[change.name] = change; }
  std::vector<MemoryServer::Change> found;
  for (auto& [name, change] : last) {
    if (change.revision > after) { found.push_back(std::move(change)); }
  }
  std::sort(found.begin(), found.end(),
            [](const auto& left, const auto& right) { return left.revision < right.revision; });
  return found;
}

std::uint64_t lastRevision(const MemoryServer::Calendar& calendar) {
  return calendar.changes.empty() ? calendar.number : calendar.changes.back().revision;
}

/// As an XML parser reads the line ends of most servers.
std::string withLineFeeds(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
  return text;
}

constexpr std::string_view kTokenStart = "https://memory.example/sync/";

}  // namespace

std::string MemoryServer::hrefOf(const Place& place, bool inSync) const {
  const auto segment = [&](const std::string& name) {
    return inSync && quirks.unescapedSyncHrefs ? name : encodedSegment(name);
  };
  switch (place.kind) {
    case Place::Kind::kPrincipal:
      return "/principals/ann/";
    case Place::Kind::kHome:
      return "/calendars/ann/";
    case Place::Kind::kCalendar:
      return "/calendars/ann/" + segment(place.calendar) + "/";
    case Place::Kind::kItem:
      return (quirks.relativeHrefs ? "" : "/calendars/ann/" + segment(place.calendar) + "/") + segment(place.item);
    case Place::Kind::kRoot:
    case Place::Kind::kNowhere:
      break;
  }
  return "/";
}

std::string MemoryServer::tokenOf(const Calendar& calendar, std::uint64_t revision) const {
  if (!quirks.countsTokensInSeconds) {
    return std::string(kTokenStart) + std::to_string(calendar.number) + "-" + std::to_string(revision);
  }
  std::int64_t last = -1;
  for (const Change& change : calendar.changes) {
    if (change.revision <= revision) { last = change.second; }
  }
  return std::to_string(last);
}

std::optional<std::uint64_t> MemoryServer::revisionOf(const Calendar& calendar, std::string_view token) const {
  const auto number = [](std::string_view text) -> std::optional<std::uint64_t> {
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
  };
  if (quirks.countsTokensInSeconds) {
    const auto since = number(token);
    if (!since) { return std::nullopt; }
    // What happened in that very second is told once more.
    std::uint64_t revision = calendar.number;
    for (const Change& change : calendar.changes) {
      if (change.second < static_cast<std::int64_t>(*since)) { revision = change.revision; }
    }
    return revision;
  }
  const std::size_t dash = token.rfind('-');
  if (!token.starts_with(kTokenStart) || dash == token.npos) { return std::nullopt; }
  const auto whose = number(token.substr(kTokenStart.size(), dash - kTokenStart.size()));
  const auto revision = number(token.substr(dash + 1));
  const bool ours = whose == calendar.number && revision && *revision <= lastRevision(calendar);
  return ours ? revision : std::nullopt;
}

HttpResponse MemoryServer::handlePropFind(const HttpRequest& request, const Place& place) {
  const std::string depth = depthOf(request);
  if (depth != "0" && depth != "1") { return conditionFailed(403, "propfind-finite-depth"); }
  const auto body = readXml(request.body);
  const XmlElement* asked = body && body->is(dav::kPropFind) ? body->child(dav::kProp) : nullptr;
  if (asked == nullptr) { return {400, {}, "", ""}; }
  XmlWriter writer(dav::kMultistatus);
  writeResource(writer, place, *asked);
  if (depth == "1" && place.kind == Place::Kind::kHome) {
    for (const auto& [name, calendar] : m_state.calendars) {
      writeResource(writer, {Place::Kind::kCalendar, name, ""}, *asked);
    }
  }
  if (depth == "1" && place.kind == Place::Kind::kCalendar) {
    for (const auto& [name, item] : findCalendar(place)->items) {
      writeResource(writer, {Place::Kind::kItem, place.calendar, name}, *asked);
    }
  }
  return multistatus(writer);
}

HttpResponse MemoryServer::handleReport(const HttpRequest& request, const Place& place) {
  const auto report = readXml(request.body);
  if (!report) { return {400, {}, "", ""}; }
  if (place.kind == Place::Kind::kCalendar && report->is(dav::kCalendarMultiget)) { return reportTexts(*report); }
  if (place.kind != Place::Kind::kCalendar || !report->is(dav::kSyncCollection) || quirks.hasNoSync) {
    return conditionFailed(403, "supported-report");
  }
  const XmlElement* level = report->child(dav::kSyncLevel);
  // RFC 6578, 3.2: the depth is that of the request, 0, whatever the level says.
  if (depthOf(request) != "0" || level == nullptr || level->word() != "1") { return {400, {}, "", ""}; }
  return reportChanges(*report, place);
}

HttpResponse MemoryServer::reportChanges(const XmlElement& report, const Place& place) {
  const Calendar& calendar = *findCalendar(place);
  const XmlElement* asked = report.child(dav::kProp);
  const XmlElement* token = report.child(dav::kSyncToken);
  if (asked == nullptr || token == nullptr) { return {400, {}, "", ""}; }
  bool all = token->word().empty() || (quirks.countsTokensInSeconds && token->word() == "-1");
  const auto known = all ? std::optional(calendar.number) : revisionOf(calendar, token->word());
  if (!known) {
    switch (quirks.badToken) {
      case Quirks::BadToken::kSays403:
        return conditionFailed(403, "valid-sync-token");
      case Quirks::BadToken::kSays409:
        return conditionFailed(409, "valid-sync-token");
      case Quirks::BadToken::kFails500:
        return {500, {}, "", ""};
      case Quirks::BadToken::kSaysBare403:
        return {403, {}, "", ""};
      case Quirks::BadToken::kListsAll:
        all = true;
    }
  }
  std::vector<Change> changes = lastChanges(calendar, known.value_or(calendar.number));
  if (all) {
    std::erase_if(changes, [&](const Change& change) { return !calendar.items.contains(change.name); });
  }
  if (quirks.hidesWhatCameAndWent) {
    const auto isOld = [&](const std::string& name) {
      return std::any_of(calendar.changes.begin(), calendar.changes.end(), [&](const Change& change) {
        return change.name == name && change.revision <= known.value_or(calendar.number);
      });
    };
    std::erase_if(changes,
                  [&](const Change& change) { return !calendar.items.contains(change.name) && !isOld(change.name); });
  }
  XmlWriter writer(dav::kMultistatus);
  std::uint64_t reached = lastRevision(calendar);
  if (quirks.syncPage != 0 && changes.size() > quirks.syncPage) {
    changes.resize(quirks.syncPage);
    reached = changes.back().revision;
    writer.begin(dav::kResponse).element(dav::kHref, hrefOf(place));
    writer.element(dav::kStatus, "HTTP/1.1 507 Insufficient Storage");
    writer.begin(dav::kError).empty({XmlSpace::kDav, "number-of-matches-within-limits"}).end().end();
  }
  for (const Change& change : changes) {
    const Place item{Place::Kind::kItem, place.calendar, change.name};
    if (calendar.items.contains(change.name)) {
      writeResource(writer, item, *asked, true);
    } else {
      writer.begin(dav::kResponse).element(dav::kHref, hrefOf(item, true));
      writer.element(dav::kStatus, "HTTP/1.1 404 Not Found").end();
    }
  }
  writer.element(dav::kSyncToken, tokenOf(calendar, reached));
  return multistatus(writer);
}

HttpResponse MemoryServer::reportTexts(const XmlElement& report) {
  const XmlElement* asked = report.child(dav::kProp);
  if (asked == nullptr) { return {400, {}, "", ""}; }
  XmlWriter writer(dav::kMultistatus);
  for (const XmlElement& href : report.children) {
    if (!href.is(dav::kHref)) { continue; }
    const Place place = placeOf(resolved(home(), href.word()));
    if (place.kind == Place::Kind::kItem && findItem(place) != nullptr) {
      writeResource(writer, place, *asked);
    } else if (quirks.missingItem == Quirks::MissingItem::kFailsAll) {
      return {404, {}, "", ""};
    } else if (quirks.missingItem == Quirks::MissingItem::kIsSaid) {
      writer.begin(dav::kResponse).element(dav::kHref, href.word());
      writer.element(dav::kStatus, "HTTP/1.1 404 Not Found").end();
    }
  }
  return multistatus(writer);
}

void MemoryServer::writeResource(XmlWriter& writer, const Place& place, const XmlElement& asked, bool inSync) {
  std::vector<const XmlElement*> missing;
  writer.begin(dav::kResponse).element(dav::kHref, hrefOf(place, inSync));
  writer.begin(dav::kPropStat).begin(dav::kProp);
  for (const XmlElement& name : asked.children) {
    if (!writeProperty(writer, place, name)) { missing.push_back(&name); }
  }
  writer.end().element(dav::kStatus, "HTTP/1.1 200 OK").end();
  if (!missing.empty()) {
    writer.begin(dav::kPropStat).begin(dav::kProp);
    for (const XmlElement* name : missing) { writer.empty({name->space, name->local}); }
    writer.end().element(dav::kStatus, "HTTP/1.1 404 Not Found").end();
  }
  writer.end();
}

bool MemoryServer::writeProperty(XmlWriter& writer, const Place& place, const XmlElement& asked) {
  const auto reference = [&](XmlName name, const Place& target) {
    writer.begin(name).element(dav::kHref, hrefOf(target)).end();
    return true;
  };
  if (asked.is(dav::kCurrentUserPrincipal)) {
    return reference(dav::kCurrentUserPrincipal, {Place::Kind::kPrincipal, "", ""});
  }
  if (asked.is(dav::kResourceType)) {
    writer.begin(dav::kResourceType);
    if (place.kind != Place::Kind::kItem) { writer.empty(dav::kCollection); }
    if (place.kind == Place::Kind::kPrincipal) { writer.empty(dav::kPrincipal); }
    if (place.kind == Place::Kind::kCalendar) { writer.empty(dav::kCalendar); }
    writer.end();
    return true;
  }
  if (place.kind == Place::Kind::kPrincipal) {
    if (asked.is(dav::kCalendarHomeSet)) { return reference(dav::kCalendarHomeSet, {Place::Kind::kHome, "", ""}); }
    if (asked.is(dav::kDisplayName)) {
      writer.element(dav::kDisplayName, "Ann");
      return true;
    }
  }
  if (place.kind == Place::Kind::kCalendar) { return writeCalendarProperty(writer, *findCalendar(place), asked); }
  const Item* item = place.kind == Place::Kind::kItem ? findItem(place) : nullptr;
  if (item != nullptr && asked.is(dav::kGetEtag)) {
    writer.element(dav::kGetEtag, item->etag);
    return true;
  }
  if (item != nullptr && asked.is(dav::kCalendarData)) {
    writer.element(dav::kCalendarData, withLineFeeds(item->text));
    return true;
  }
  return false;
}

bool MemoryServer::writeCalendarProperty(XmlWriter& writer, const Calendar& calendar, const XmlElement& asked) {
  const std::pair<XmlName, std::string> texts[] = {
      {dav::kDisplayName, calendar.displayName},
      {dav::kCalendarColor, calendar.color},
      {dav::kCalendarOrder, calendar.order},
      {dav::kCalendarDescription, calendar.description},
      {dav::kGetCtag, quirks.hasNoCtag ? "" : std::to_string(lastRevision(calendar))},
      {dav::kSyncToken, quirks.hasNoSync ? "" : tokenOf(calendar, lastRevision(calendar))},
      {dav::kMaxResourceSize, mostBytes ? std::to_string(*mostBytes) : ""},
  };
  for (const auto& [name, text] : texts) {
    if (!asked.is(name)) { continue; }
    if (!text.empty()) { writer.element(name, text); }
    return !text.empty();
  }
  if (asked.is(dav::kSupportedComponents)) {
    writer.begin(dav::kSupportedComponents);
    if (calendar.events) { writer.begin(dav::kComp, "name", "VEVENT").end(); }
    if (calendar.reminders) { writer.begin(dav::kComp, "name", "VTODO").end(); }
    writer.end();
    return true;
  }
  if (asked.is(dav::kCurrentUserPrivilegeSet) && !quirks.tellsNoPrivileges) {
    writer.begin(dav::kCurrentUserPrivilegeSet);
    writer.begin(dav::kPrivilege).empty({XmlSpace::kDav, "read"}).end();
    if (!calendar.readOnly) { writer.begin(dav::kPrivilege).empty({XmlSpace::kDav, "write"}).end(); }
    writer.end();
    return true;
  }
  if (asked.is(dav::kSupportedReportSet)) {
    writer.begin(dav::kSupportedReportSet);
    for (const XmlName report : {dav::kCalendarMultiget, dav::kSyncCollection}) {
      if (report == dav::kSyncCollection && quirks.hasNoSync) { continue; }
      writer.begin(dav::kSupportedReport).begin(dav::kReport).empty(report).end().end();
    }
    writer.end();
    return true;
  }
  return false;
}

}  // namespace orlocal::accounts
