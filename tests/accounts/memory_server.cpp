#include "accounts/memory_server.h"

#include <algorithm>
#include <stdexcept>

#include "accounts/dav/names.h"
#include "accounts/object_lines.h"
#include "accounts/transport/url.h"
#include "base/hash.h"

namespace orlocal::accounts {
namespace {

HttpResponse answer(int status, std::string body = "") { return {status, {}, std::move(body), ""}; }

/// A refusal that names the condition.
HttpResponse refused(int status, XmlName condition) {
  HttpResponse response = answer(status, XmlWriter(dav::kError).empty(condition).take());
  response.headers.push_back({"Content-Type", "application/xml; charset=utf-8"});
  return response;
}

std::optional<std::string> headerOf(const HttpRequest& request, std::string_view name) {
  return HttpResponse{0, request.headers, "", ""}.header(name);
}

constexpr XmlName kNeedPrivileges{XmlSpace::kDav, "need-privileges"};

/// Why a text is no calendar object resource that the calendar takes (RFC 4791, 4.1 and 5.3.2.1); none when it is one.
std::optional<XmlName> faultOf(const ObjectLines& object, const MemoryServer::Calendar& calendar) {
  if (!object.isCalendar) { return XmlName{XmlSpace::kCalDav, "valid-calendar-data"}; }
  if (object.hasMethod || object.uids.size() != 1 || object.components.size() != 1) {
    return XmlName{XmlSpace::kCalDav, "valid-calendar-object-resource"};
  }
  const std::string& component = *object.components.begin();
  const bool taken = (component == "VEVENT" && calendar.events) || (component == "VTODO" && calendar.reminders);
  return taken ? std::nullopt : std::optional(XmlName{XmlSpace::kCalDav, "supported-calendar-component"});
}

bool holds(const std::optional<std::string>& ifMatch, const MemoryServer::Item* item) {
  return !ifMatch || (item != nullptr && (*ifMatch == "*" || *ifMatch == item->etag));
}

}  // namespace

Answer<HttpResponse> MemoryServer::send(const HttpRequest& request) {
  if (beforeEach) { beforeEach(request); }
  LoggedRequest& logged = m_log.emplace_back(LoggedRequest{request.method, request.url, request.body, 0});
  Fault* met = nullptr;
  for (Fault& fault : m_faults) {
    if (!fault.method.empty() && fault.method != request.method) { continue; }
    if (fault.nth > 1) {
      --fault.nth;
    } else if (met == nullptr && fault.times > 0) {
      met = &fault;
      --fault.times;
    }
  }
  HttpResponse response;
  if (met == nullptr || met->when == Fault::When::kAfter) { response = handle(request); }
  if (met != nullptr && met->status == 0) {
    return met->when == Fault::When::kBefore ? refusal(Trouble::kUnreachable, "memory.example cannot be reached.")
                                             : refusal(Trouble::kAnswerLost, "memory.example broke off.");
  }
  if (met != nullptr) { response = answer(met->status); }
  response.url = address(placeOf(request.url).kind == Place::Kind::kRoot ? "/" : pathOf(request.url));
  logged.status = response.status;
  return response;
}

HttpResponse MemoryServer::handle(const HttpRequest& request) {
  const Place place = placeOf(request.url);
  if (request.method == "OPTIONS") {
    HttpResponse response = answer(200);
    response.headers.push_back({"DAV", "1, 3, calendar-access"});
    return response;
  }
  if (request.method == "MKCALENDAR") { return handleMkCalendar(request, place); }
  if (request.method == "PUT") { return handlePut(request, place); }
  if (quirks.missesPrecondition && request.method == "DELETE" && headerOf(request, "If-Match") && !findItem(place)) {
    return answer(412);
  }
  if (place.kind == Place::Kind::kNowhere || (place.kind == Place::Kind::kCalendar && findCalendar(place) == nullptr) ||
      (place.kind == Place::Kind::kItem && findItem(place) == nullptr)) {
    return answer(404);
  }
  if (request.method == "GET") { return handleGet(place); }
  if (request.method == "DELETE") { return handleDelete(request, place); }
  if (request.method == "PROPPATCH") { return handlePropPatch(request, place); }
  if (request.method == "PROPFIND") { return handlePropFind(request, place); }
  if (request.method == "REPORT") { return handleReport(request, place); }
  return answer(501);
}

HttpResponse MemoryServer::handleGet(const Place& place) {
  const Item* item = findItem(place);
  if (item == nullptr) { return answer(405); }
  HttpResponse response = answer(200, item->text);
  response.headers = {{"Content-Type", "text/calendar; charset=utf-8"}, {"ETag", item->etag}};
  return response;
}

HttpResponse MemoryServer::handlePut(const HttpRequest& request, const Place& place) {
  Calendar* calendar = findCalendar(place);
  if (place.kind != Place::Kind::kItem || calendar == nullptr) { return answer(409); }
  if (calendar->readOnly) { return refused(403, kNeedPrivileges); }
  const Item* there = findItem(place);
  if (headerOf(request, "If-None-Match") == "*" && there != nullptr && !quirks.overwritesNew) { return answer(412); }
  const bool unlooked = there == nullptr && quirks.createsMissing;
  if (!unlooked && !holds(headerOf(request, "If-Match"), there)) { return answer(412); }
  if (!headerOf(request, "Content-Type").value_or("").starts_with("text/calendar")) {
    return refused(403, {XmlSpace::kCalDav, "supported-calendar-data"});
  }
  if (mostBytes && request.body.size() > *mostBytes) { return refused(403, {XmlSpace::kCalDav, "max-resource-size"}); }
  const ObjectLines object = readObjectLines(request.body);
  if (const auto fault = faultOf(object, *calendar)) { return refused(403, *fault); }
  const std::string& uid = *object.uids.begin();
  if (!quirks.takesSameUid) {
    for (const auto& [name, item] : calendar->items) {
      // Another item with the same, or this item with another (RFC 4791, 5.3.2.1).
      if ((name == place.item) != (item.uid == uid)) { return refused(403, {XmlSpace::kCalDav, "no-uid-conflict"}); }
    }
  }
  Place stored = place;
  if (quirks.choosesHrefs && there == nullptr) { stored.item = uid + ".ics"; }
  HttpResponse response = answer(there == nullptr ? 201 : 204);
  const std::string etag = store(*calendar, stored.item, request.body);
  if (!quirks.givesNoEtagInPut) { response.headers.push_back({"ETag", etag}); }
  if (stored.item != place.item) { response.headers.push_back({"Location", hrefOf(stored)}); }
  return response;
}

HttpResponse MemoryServer::handleDelete(const HttpRequest& request, const Place& place) {
  Calendar* calendar = findCalendar(place);
  if (calendar == nullptr || calendar->readOnly) { return refused(403, kNeedPrivileges); }
  if (place.kind == Place::Kind::kCalendar) {
    m_state.calendars.erase(place.calendar);
    return answer(204);
  }
  if (!quirks.removesWhatChanged && !holds(headerOf(request, "If-Match"), findItem(place))) { return answer(412); }
  calendar->items.erase(place.item);
  note(*calendar, place.item);
  return answer(204);
}

HttpResponse MemoryServer::handleMkCalendar(const HttpRequest& request, const Place& place) {
  if (place.kind != Place::Kind::kCalendar) {
    return refused(403, {XmlSpace::kCalDav, "calendar-collection-location-ok"});
  }
  if (findCalendar(place) != nullptr) { return refused(403, {XmlSpace::kDav, "resource-must-be-null"}); }
  Calendar made;
  if (!request.body.empty()) {
    const auto body = readXml(request.body);
    const XmlElement* set = body && body->is(dav::kMkCalendar) ? body->child(dav::kSet) : nullptr;
    const XmlElement* properties = set == nullptr ? nullptr : set->child(dav::kProp);
    if (properties == nullptr) { return answer(400); }
    if (const auto* name = properties->child(dav::kDisplayName)) { made.displayName = name->text; }
    const auto* color = properties->child(dav::kCalendarColor);
    if (color != nullptr && !quirks.ignoresColorOfNew) { made.color = color->text; }
    const auto* components = properties->child(dav::kSupportedComponents);
    if (components != nullptr && !quirks.ignoresComponents) {
      made.events = made.reminders = false;
      for (const XmlElement& component : components->children) {
        made.events = made.events || component.attribute("name") == "VEVENT";
        made.reminders = made.reminders || component.attribute("name") == "VTODO";
      }
    }
  }
  addCalendar(place.calendar, made);
  return answer(201);
}

HttpResponse MemoryServer::handlePropPatch(const HttpRequest& request, const Place& place) {
  Calendar* calendar = findCalendar(place);
  if (place.kind != Place::Kind::kCalendar) { return refused(403, kNeedPrivileges); }
  if (calendar->readOnly) { return refused(403, kNeedPrivileges); }
  const auto body = readXml(request.body);
  if (!body || !body->is(dav::kPropertyUpdate)) { return answer(400); }
  // All or nothing (RFC 4918, 9.2).
  Calendar changed = *calendar;
  std::vector<const XmlElement*> set;
  const XmlElement* protectedOne = nullptr;
  for (const XmlElement& step : body->children) {
    const XmlElement* properties = step.child(dav::kProp);
    if (!step.is(dav::kSet) || properties == nullptr) { return answer(400); }
    for (const XmlElement& property : properties->children) {
      set.push_back(&property);
      if (property.is(dav::kDisplayName)) {
        changed.displayName = property.text;
      } else if (property.is(dav::kCalendarColor)) {
        changed.color = property.text;
      } else if (property.is(dav::kCalendarOrder)) {
        changed.order = property.text;
      } else if (property.is(dav::kCalendarDescription)) {
        changed.description = property.text;
      } else {
        protectedOne = &property;
      }
    }
  }
  XmlWriter writer(dav::kMultistatus);
  writer.begin(dav::kResponse).element(dav::kHref, hrefOf(place));
  for (const XmlElement* property : set) {
    const char* status = protectedOne == nullptr    ? "HTTP/1.1 200 OK"
                         : property == protectedOne ? "HTTP/1.1 403 Forbidden"
                                                    : "HTTP/1.1 424 Failed Dependency";
    writer.begin(dav::kPropStat).begin(dav::kProp).empty({property->space, property->local}).end();
    writer.element(dav::kStatus, status);
    if (property == protectedOne) {
      writer.begin(dav::kError).empty({XmlSpace::kDav, "cannot-modify-protected-property"}).end();
    }
    writer.end();
  }
  if (protectedOne == nullptr) { *calendar = std::move(changed); }
  return answer(207, writer.take());
}

std::string MemoryServer::addCalendar(const std::string& name, const Calendar& calendar) {
  Calendar& added = m_state.calendars[name] = calendar;
  added.number = ++m_state.revision;
  for (const auto& [item, ignored] : added.items) { note(added, item); }
  return home() + encodedSegment(name) + "/";
}

void MemoryServer::dropCalendar(const std::string& url) { m_state.calendars.erase(placeOf(url).calendar); }

MemoryServer::Calendar& MemoryServer::calendarAt(const std::string& url) {
  Calendar* calendar = findCalendar(placeOf(url));
  if (calendar == nullptr) { throw std::out_of_range("there is no calendar at " + url); }
  return *calendar;
}

std::string MemoryServer::putAs(const std::string& url, const std::string& text) {
  return store(calendarAt(url), placeOf(url).item, text);
}

void MemoryServer::removeAs(const std::string& url) {
  Calendar& calendar = calendarAt(url);
  if (calendar.items.erase(placeOf(url).item) == 0) { throw std::out_of_range("there is no item at " + url); }
  note(calendar, placeOf(url).item);
}

const MemoryServer::Item* MemoryServer::itemAt(const std::string& url) const { return findItem(placeOf(url)); }

std::size_t MemoryServer::count(std::string_view method) const {
  return static_cast<std::size_t>(
      std::count_if(m_log.begin(), m_log.end(), [&](const LoggedRequest& one) { return one.method == method; }));
}

std::string MemoryServer::store(Calendar& calendar, const std::string& name, const std::string& text) {
  Item item;
  item.text = quirks.rewritesTexts ? rewritten(text) : text;
  const ObjectLines object = readObjectLines(text);
  item.uid = object.uids.empty() ? "" : *object.uids.begin();
  const auto before = calendar.items.find(name);
  if (!quirks.recyclesEtags) {
    item.etag = "\"" + std::to_string(m_state.revision + 1) + "-" + std::to_string(contentHash(item.text)) + "\"";
  } else {
    const int version = before == calendar.items.end() ? 1 : std::stoi(before->second.etag.substr(2)) + 1;
    item.etag = "\"v" + std::to_string(version) + "\"";
  }
  const std::string etag = item.etag;
  calendar.items[name] = std::move(item);
  note(calendar, name);
  return etag;
}

void MemoryServer::note(Calendar& calendar, const std::string& name) {
  calendar.changes.push_back({++m_state.revision, second, name});
}

MemoryServer::Place MemoryServer::placeOf(const std::string& url) {
  std::vector<std::string> segments;
  const std::string path = comparablePath(pathOf(url));
  for (std::size_t at = 1; at < path.size();) {
    const std::size_t slash = std::min(path.find('/', at), path.size());
    segments.push_back(decoded(path.substr(at, slash - at)));
    at = slash + 1;
  }
  Place place;
  const bool ofAnn = segments.size() >= 2 && segments[1] == "ann";
  if (segments.empty() || path == "/.well-known/caldav") {
    place.kind = Place::Kind::kRoot;
  } else if (ofAnn && segments.size() == 2 && segments[0] == "principals") {
    place.kind = Place::Kind::kPrincipal;
  } else if (ofAnn && segments[0] == "calendars" && segments.size() <= 4) {
    constexpr Place::Kind kKinds[] = {Place::Kind::kHome, Place::Kind::kCalendar, Place::Kind::kItem};
    place.kind = kKinds[segments.size() - 2];
    if (segments.size() > 2) { place.calendar = segments[2]; }
    if (segments.size() > 3) { place.item = segments[3]; }
  }
  return place;
}

MemoryServer::Calendar* MemoryServer::findCalendar(const Place& place) {
  const auto found = m_state.calendars.find(place.calendar);
  return found == m_state.calendars.end() ? nullptr : &found->second;
}

const MemoryServer::Item* MemoryServer::findItem(const Place& place) const {
  const auto calendar = m_state.calendars.find(place.calendar);
  if (calendar == m_state.calendars.end()) { return nullptr; }
  const auto found = calendar->second.items.find(place.item);
  return found == calendar->second.items.end() ? nullptr : &found->second;
}

}  // namespace orlocal::accounts
