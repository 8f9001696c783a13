#include <cstdlib>
#include <iostream>

#include <fmt/format.h>

#include "accounts/dav/dav_server.h"
#include "accounts/discovery/discovery.h"
#include "accounts/transport/curl_transport.h"
#include "accounts/transport/url.h"

// dav_probe ADDRESS USER PASSWORD [CA-FILE]: finds the account, makes a calendar in its first home, does each thing
// with it that can be asked of a server, shows what came, and removes it. Ends with 1 when the account is not found.
namespace orlocal::accounts {
namespace {

constexpr const char* kTroubles[] = {"unreachable",  "answer lost", "untrusted",    "unauthorized",  "forbidden",
                                     "not found",    "clash",       "precondition", "locked",        "too large",
                                     "refused",      "later",       "full",         "invalid token", "unsupported",
                                     "server error", "nonsense",    "interrupted",  "no secret"};

std::string eventText(const std::string& uid, const std::string& summary) {
  return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//probe//EN\r\nBEGIN:VEVENT\r\nUID:" + uid +
         "\r\nDTSTAMP:20261102T080000Z\r\nDTSTART:20261102T090000Z\r\nDTEND:20261102T100000Z\r\nSUMMARY:" + summary +
         "\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n";
}

std::string shown(const RemoteCalendar& one) {
  const auto color = one.color ? one.color->bytes() : std::array<int, 3>{-1, -1, -1};
  return fmt::format(
      "{} \"{}\" color {},{},{} order {} description {} {}{} writable {} ctag {} token {} reports {} most {}", one.url,
      one.displayName, color[0], color[1], color[2], one.order.value_or(-1), one.description.value_or("(none)"),
      one.events ? "events " : "", one.reminders ? "reminders" : "",
      one.writable ? (*one.writable ? "yes" : "no") : "unknown", one.ctag, one.syncToken, one.reportsChanges,
      one.mostBytes.value_or(-1));
}
std::string shown(const std::vector<RemoteCalendar>& all) {
  std::string text;
  for (const RemoteCalendar& one : all) { text += "\n    " + shown(one); }
  return text;
}
std::string shown(const RemoteChanges& changes) {
  std::string text = fmt::format("token {}{}", changes.token, changes.more ? ", more" : "");
  for (const RemoteEntry& one : changes.changed) { text += fmt::format("\n    changed {} {}", one.url, one.etag); }
  for (const std::string& one : changes.removed) { text += "\n    removed " + one; }
  return text;
}
std::string shown(const std::vector<RemoteEntry>& entries) {
  std::string text;
  for (const RemoteEntry& one : entries) { text += fmt::format("\n    {} {}", one.url, one.etag); }
  return text;
}
std::string shown(const RemoteText& text) {
  return fmt::format("{} {} {} bytes", text.url, text.etag, text.text.size());
}
std::string shown(const RemoteTexts& texts) {
  std::string text;
  for (const RemoteText& one : texts.found) { text += "\n    found " + shown(one); }
  for (const std::string& one : texts.missing) { text += "\n    missing " + one; }
  for (const std::string& one : texts.unsaid) { text += "\n    unsaid " + one; }
  return text;
}
std::string shown(const Written& written) { return fmt::format("{} {}", written.url, written.etag); }

template <class T>
void tell(const std::string& what, const Answer<T>& answer) {
  std::cout << what << ": ";
  if (!answer) {
    std::cout << "! " << kTroubles[static_cast<std::size_t>(answer.error().trouble)] << ": " << answer.error().message
              << '\n';
  } else if constexpr (std::is_void_v<T>) {
    std::cout << "done\n";
  } else {
    std::cout << shown(*answer) << '\n';
  }
}

void probe(CalendarServer& server, const std::string& home, const std::string& number) {
  tell("calendars", server.calendars(home, Marks::kAll));
  tell("calendars of a home that is none", server.calendars(home + "none-" + number + "/"));
  const std::string url = home + "probe-" + number + "/";
  const NewCalendar wanted{"Probe & more", true, false, store::Rgb{1, 0, 0}};
  const auto made = server.makeCalendar(url, wanted);
  tell("makeCalendar", made);
  tell("makeCalendar again", server.makeCalendar(url, wanted));
  const std::string calendar = made ? made->url : url;
  tell("rename", server.setProperty(calendar, CalendarProperty::kDisplayName, "Renamed <&>"));
  tell("recolour", server.setProperty(calendar, CalendarProperty::kColor, "#00FF0080"));
  tell("order", server.setProperty(calendar, CalendarProperty::kOrder, "5"));
  tell("describe", server.setProperty(calendar, CalendarProperty::kDescription, "What it is for"));
  tell("calendar", server.calendar(calendar));
  tell("changes of an empty calendar", server.changesSince(calendar, ""));

  const std::string a = calendar + "a-" + number + ".ics";
  const std::string b = calendar + "b-" + number + ".ics";
  const auto written = server.put(a, eventText("a-" + number, "One"), Precondition::isNew());
  tell("put new", written);
  tell("put new again", server.put(a, eventText("a-" + number, "Other"), Precondition::isNew()));
  tell("put a UID twice",
       server.put(calendar + "c-" + number + ".ics", eventText("a-" + number, "One"), Precondition::isNew()));
  tell("put garbage", server.put(calendar + "d-" + number + ".ics", "garbage", Precondition::isNew()));
  const auto text = server.text(a);
  tell("text", text);
  const auto first = server.changesSince(calendar, "");
  tell("changes since nothing", first);
  tell("put stale", server.put(a, eventText("a-" + number, "Stale"), Precondition::isAsKnown("\"stale\"")));
  tell("put as known",
       server.put(a, eventText("a-" + number, "Two"), Precondition::isAsKnown(text ? text->etag : "\"none\"")));
  tell("put another", server.put(b, eventText("b-" + number, "B"), Precondition::isNew()));
  if (first) { tell("changes since then", server.changesSince(calendar, first->token)); }
  tell("changes since a bad token", server.changesSince(calendar, "http://bad.example/token"));
  tell("entries", server.entries(calendar));
  tell("texts", server.texts(calendar, std::vector<std::string>{a, b, calendar + "none.ics"}));
  tell("text that is not there", server.text(calendar + "none.ics"));
  tell("remove stale", server.remove(b, "\"stale\""));
  const auto last = server.text(a);
  tell("remove as known", server.remove(a, last ? last->etag : ""));
  tell("remove again", server.remove(a, last ? last->etag : ""));
  if (first) { tell("changes since then", server.changesSince(calendar, first->token)); }
  tell("removeCalendar", server.removeCalendar(calendar));
  tell("calendar that is gone", server.calendar(calendar));
  tell("changes of what is gone", server.changesSince(calendar, first ? first->token : ""));
  tell("removeCalendar again", server.removeCalendar(calendar));
}

int run(const std::vector<std::string>& words) {
  TransportOptions options;
  options.user = words[1];
  options.secret = [&](bool) -> Result<Secret> { return Secret{words[2], false}; };
  if (words.size() > 3) { options.caFile = words[3]; }
  CurlTransport finding(options);
  const auto found = findAccount(finding, words[0], systemServiceLookup);
  if (!found) {
    tell("findAccount", Answer<RemoteText>(Refusal(found.error())));
    return 1;
  }
  std::cout << fmt::format("findAccount: principal {} home {} \"{}\" schedules {}", found->principal,
                           found->homes.front(), found->displayName, found->schedules);
  for (const std::string& address : found->addresses) { std::cout << "\n    address " << address; }
  std::cout << '\n';
  options.origin = originOf(found->homes.front()).value_or("");
  CurlTransport transport(options);
  DavServer server(transport);
  std::string home = found->homes.front();
  if (!home.ends_with('/')) { home += '/'; }
  probe(server, home, std::to_string(store::now().time_since_epoch().count()));
  return 0;
}

}  // namespace
}  // namespace orlocal::accounts

int main(int count, char** words) {
  if (count < 4) {
    std::cerr << "usage: dav_probe ADDRESS USER PASSWORD [CA-FILE]\n";
    return 2;
  }
  return orlocal::accounts::run({words + 1, words + count});
}
