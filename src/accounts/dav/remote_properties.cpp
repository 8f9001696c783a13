#include "accounts/dav/remote_properties.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>

#include "accounts/dav/names.h"
#include "base/text.h"
#include "store/icalendar/calendar_color.h"

namespace orlocal::accounts {
namespace {

constexpr std::array kCalendarProperties{
    dav::kResourceType,
    dav::kDisplayName,
    dav::kCalendarColor,
    dav::kCalendarOrder,
    dav::kCalendarDescription,
    dav::kSupportedComponents,
    dav::kCurrentUserPrivilegeSet,
    dav::kSyncToken,
    dav::kSupportedReportSet,
    dav::kMaxResourceSize,
    dav::kGetCtag,
};

std::string_view wordOf(const DavResponse& response, XmlName name) {
  const XmlElement* property = response.property(name);
  return property == nullptr ? std::string_view() : property->word();
}

std::optional<std::int64_t> numberOf(std::string_view word) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  return error == std::errc() && end == word.data() + word.size() ? std::optional(number) : std::nullopt;
}

void readComponents(const XmlElement& set, RemoteCalendar& calendar) {
  calendar.events = calendar.reminders = false;
  for (const XmlElement& component : set.children) {
    const std::string_view name = component.attribute("name").value_or("");
    calendar.events = calendar.events || equalsNoCase(name, "VEVENT");
    calendar.reminders = calendar.reminders || equalsNoCase(name, "VTODO");
  }
}

/// None for an empty set too: nobody sees a calendar that they may not even read.
std::optional<bool> mayWrite(const XmlElement& privileges) {
  bool any = false;
  for (const XmlElement& privilege : privileges.children) {
    for (const XmlElement& right : privilege.children) {
      any = true;
      for (const std::string_view local : {"all", "write", "write-content"}) {
        if (right.is({XmlSpace::kDav, local})) { return true; }
      }
    }
  }
  return any ? std::optional(false) : std::nullopt;
}

/// Some leave out the element between.
bool hasSyncCollection(const XmlElement& reports) {
  return std::any_of(reports.children.begin(), reports.children.end(), [](const XmlElement& supported) {
    const XmlElement* report = supported.child(dav::kReport);
    return (report == nullptr ? supported : *report).child(dav::kSyncCollection) != nullptr;
  });
}

/// Some escape their texts before they write them as XML, which escapes them again. Then no "&" stands by itself.
std::string unescapedOnce(std::string_view text) {
  constexpr std::pair<std::string_view, char> kEntities[] = {{"&amp;", '&'},  {"&lt;", '<'},    {"&gt;", '>'},
                                                             {"&quot;", '"'}, {"&apos;", '\''}, {"&#39;", '\''},
                                                             {"&#039;", '\''}};
  std::string plain;
  for (std::size_t at = 0; at < text.size();) {
    if (text[at] != '&') {
      plain += text[at++];
      continue;
    }
    const auto* known = std::find_if(std::begin(kEntities), std::end(kEntities),
                                     [&](const auto& entity) { return text.substr(at).starts_with(entity.first); });
    if (known == std::end(kEntities)) { return std::string(text); }
    plain += known->second;
    at += known->first.size();
  }
  return plain;
}

}  // namespace

std::span<const XmlName> calendarProperties(Marks marks) {
  // The ctag is the last.
  return std::span(kCalendarProperties).first(kCalendarProperties.size() - (marks == Marks::kTokens ? 1 : 0));
}

bool isCalendar(const DavResponse& response) {
  const XmlElement* type = response.property(dav::kResourceType);
  return type != nullptr && type->child(dav::kCalendar) != nullptr;
}

RemoteCalendar calendarOf(const DavResponse& response, std::string url) {
  RemoteCalendar calendar;
  calendar.url = std::move(url);
  calendar.displayName = unescapedOnce(wordOf(response, dav::kDisplayName));
  calendar.color = store::parseColor(wordOf(response, dav::kCalendarColor));
  calendar.order = numberOf(wordOf(response, dav::kCalendarOrder));
  if (const auto words = wordOf(response, dav::kCalendarDescription); !words.empty()) {
    calendar.description = unescapedOnce(words);
  }
  calendar.events = calendar.reminders = true;
  if (const XmlElement* set = response.property(dav::kSupportedComponents); set != nullptr && !set->children.empty()) {
    readComponents(*set, calendar);
  }
  if (const XmlElement* set = response.property(dav::kCurrentUserPrivilegeSet)) { calendar.writable = mayWrite(*set); }
  calendar.ctag = wordOf(response, dav::kGetCtag);
  calendar.syncToken = usableToken(wordOf(response, dav::kSyncToken));
  const XmlElement* reports = response.property(dav::kSupportedReportSet);
  calendar.reportsChanges = reports == nullptr ? !calendar.syncToken.empty() : hasSyncCollection(*reports);
  calendar.mostBytes = numberOf(wordOf(response, dav::kMaxResourceSize));
  return calendar;
}

std::string usableToken(std::string_view token) { return token == "-1" ? std::string() : std::string(token); }

}  // namespace orlocal::accounts
