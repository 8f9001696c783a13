#include "accounts/subscription.h"

#include <algorithm>
#include <optional>
#include <unordered_set>
#include <utility>

#include <fmt/format.h>

#include "accounts/dav/trouble.h"
#include "accounts/sync/sync_context.h"
#include "accounts/transport/url.h"
#include "base/translation.h"
#include "base/try.h"
#include "base/whole_input.h"
#include "store/edits/item_writer.h"
#include "store/icalendar/content_line.h"
#include "store/icalendar/icalendar_reader.h"
#include "store/time/time_text.h"

namespace orlocal::accounts {
namespace {

using store::Calendar;
using store::CalendarKind;
using store::ItemId;
using store::ItemWriter;

constexpr std::chrono::seconds kShortestInterval = std::chrono::minutes(5);
constexpr std::chrono::seconds kLongestInterval = std::chrono::hours(24 * 7);

/// What an address has, as far as it is another than the last time.
struct Content {
  std::optional<std::string> text;  ///< none: nothing has changed
  std::string etag, lastModified;
};

bool isHere(const std::string& address) { return !originOf(address); }

/// "webcal" says that it is a calendar, and nothing of how it is fetched.
std::vector<std::string> addressesOf(const std::string& address) {
  for (const std::string_view scheme : {"webcal://", "webcals://"}) {
    if (!address.starts_with(scheme)) { continue; }
    const std::string rest = address.substr(scheme.size());
    if (scheme == "webcals://") { return {"https://" + rest}; }
    return {"https://" + rest, "http://" + rest};
  }
  return {address};
}

Answer<Content> fetchedFrom(Transport& transport, const std::string& url, const AccountState& state,
                            store::Moment now) {
  HttpRequest request{"GET", url, {{"Accept", "text/calendar, */*;q=0.5"}}, ""};
  if (!state.etag.empty()) { request.headers.push_back({"If-None-Match", state.etag}); }
  if (!state.lastModified.empty()) { request.headers.push_back({"If-Modified-Since", state.lastModified}); }
  ORLOCAL_TRY(HttpResponse response, transport.send(request));
  if (response.status == 304) { return Content{std::nullopt, state.etag, state.lastModified}; }
  if (response.status != 200) { return Refusal(refusalIn(response, now)); }
  if (response.body.find("BEGIN:VCALENDAR") == std::string::npos) {
    return refusal(Trouble::kNonsense, tr("What {} gives is no calendar.", shownUrl(url)), 200);
  }
  return Content{std::move(response.body), response.header("ETag").value_or(""),
                 response.header("Last-Modified").value_or("")};
}

Answer<Content> fetched(Transport& transport, const std::string& address, const AccountState& state,
                        store::Moment now) {
  if (isHere(address) && !address.starts_with("webcal")) {
    auto text = readWholeFile(address);
    if (!text) { return refusal(Trouble::kNotFound, text.error().message); }
    return Content{*std::move(text), "", ""};
  }
  const auto addresses = addressesOf(address);
  auto content = fetchedFrom(transport, addresses.front(), state, now);
  const bool tryNext = !content && addresses.size() > 1 && content.error().trouble == Trouble::kUnreachable;
  return tryNext ? fetchedFrom(transport, addresses.back(), state, now) : std::move(content);
}

/// How often the text wishes to be fetched (RFC 7986, 5.7; X-PUBLISHED-TTL is older and common).
std::optional<std::chrono::seconds> wishedInterval(const std::string& text) {
  store::ContentLines lines(text);
  bool begun = false;
  for (store::ContentLine line; lines.next(line);) {
    if (line.is("BEGIN") && std::exchange(begun, true)) { break; }
    if (!line.is("REFRESH-INTERVAL") && !line.is("X-PUBLISHED-TTL")) { continue; }
    if (const auto length = store::parseDuration(line.value)) {
      return std::clamp(std::chrono::seconds(length->days * 86'400 + length->seconds), kShortestInterval,
                        kLongestInterval);
    }
  }
  return std::nullopt;
}

/// What a text holds, read before the store is asked for its turn to write.
struct Items {
  std::vector<store::ItemGroup> groups;
  std::map<std::string, std::string> zones;
  std::optional<store::Rgb> color;
  std::string title;  ///< empty when the text has none
  bool hasReminders = false;
  store::ReadProblems problems;
};

Result<Items> itemsOf(std::string text, const std::string& name, const std::atomic<bool>* stop) {
  ORLOCAL_TRY(auto reader, store::CalendarReader::ofText(std::move(text), name));
  reader.stopWhen(stop);
  Items items;
  items.problems = reader.problems();
  for (std::size_t i = 0; i < reader.size(); ++i) {
    if (stop != nullptr && stop->load()) { return failure(ErrorCode::kInterrupted, tr("The refresh was stopped.")); }
    store::ItemGroup group = reader.read(i, items.problems);
    if (!group.main && group.changed.empty()) { continue; }
    const store::ItemKind kind = group.main ? group.main->kind : group.changed.front().kind;
    items.hasReminders = items.hasReminders || kind == store::ItemKind::kReminder;
    items.groups.push_back(std::move(group));
  }
  if (!reader.calendars().empty()) {
    items.color = reader.calendars().front().color;
    items.title = reader.calendars().front().name;
  }
  items.zones = reader.privateZones();
  return items;
}

class Refresh {
 public:
  Refresh(store::CalendarStore& store, const Account& account, Items items, SyncReport& report)
      : m_store(store), m_account(account), m_items(std::move(items)), m_report(report) {}

  Status run() {
    ORLOCAL_TRY(const auto writer, m_store.startWriting());
    ORLOCAL_TRY(const Calendar calendar, calendarIn(*writer));
    for (const auto& [name, text] : m_items.zones) { ORLOCAL_CHECK(writer->putZone(name, text)); }
    for (store::ItemGroup& group : m_items.groups) {
      if (group.main) {
        ORLOCAL_CHECK(put(*writer, calendar.id, *group.main, group.changed));
        for (store::ItemGroup& later : group.later) {
          ORLOCAL_CHECK(put(*writer, calendar.id, *later.main, later.changed));
        }
        continue;
      }
      for (store::Item& stray : group.changed) {
        std::vector<store::Item> none;
        ORLOCAL_CHECK(put(*writer, calendar.id, stray, none));
      }
    }
    // What is there and cannot be read is not gone.
    for (const store::Problem& problem : m_items.problems.refused) {
      m_refused.insert(problem.uid);
      m_report.troubles.push_back({m_account.name, problem.uid, problem.message});
    }
    ORLOCAL_CHECK(removeOthers(*writer, calendar.id));
    const bool changed = m_report.received + m_report.removedHere + m_report.calendars > 0;
    return changed ? writer->commit() : Status();
  }

 private:
  Result<Calendar> calendarIn(ItemWriter& writer) {
    const CalendarKind kind = m_items.hasReminders ? CalendarKind::kBoth : CalendarKind::kEvents;
    for (const CalendarKind each : {CalendarKind::kEvents, CalendarKind::kReminders}) {
      ORLOCAL_TRY(const auto calendars, writer.calendars(each));
      for (Calendar calendar : calendars) {
        if (calendar.source != m_account.source) { continue; }
        if (m_items.hasReminders && calendar.kind == CalendarKind::kEvents) {
          calendar.kind = kind;
          ORLOCAL_CHECK(writer.updateCalendar(calendar));
          ++m_report.calendars;
        }
        return calendar;
      }
    }
    Calendar calendar;
    calendar.kind = kind;
    calendar.title = m_account.name;
    calendar.source = m_account.source;
    calendar.color = m_items.color;
    calendar.readOnly = calendar.subscribed = true;
    ORLOCAL_CHECK(writer.makeCalendar(calendar));
    ++m_report.calendars;
    return calendar;
  }

  Status put(ItemWriter& writer, store::CalendarId calendar, store::Item& main, std::vector<store::Item>& changed) {
    const std::string uid = main.uid;
    const auto outcome = writer.put(calendar, main, changed);
    if (outcome) {
      m_there.insert(main.id);
      if (*outcome != store::PutOutcome::kUnchanged) { ++m_report.received; }
      return {};
    }
    const auto code = outcome.error().code;
    const bool ofTheItem = code == ErrorCode::kInvalid || code == ErrorCode::kRefused || code == ErrorCode::kTooLarge;
    if (!ofTheItem) { return failure(outcome.error()); }
    m_items.problems.refuse(0, uid, outcome.error().message);
    return {};
  }

  Status removeOthers(ItemWriter& writer, store::CalendarId calendar) {
    std::vector<ItemId> gone;
    ORLOCAL_CHECK(m_store.forEachItem(calendar, [&](const store::Item& main, const std::vector<store::Item>&) {
      if (!m_there.contains(main.id) && !m_refused.contains(main.uid)) { gone.push_back(main.id); }
      return Status();
    }));
    for (const ItemId item : gone) { ORLOCAL_CHECK(writer.remove(item)); }
    m_report.removedHere += gone.size();
    return {};
  }

  store::CalendarStore& m_store;
  const Account& m_account;
  Items m_items;
  SyncReport& m_report;
  std::unordered_set<ItemId> m_there;
  std::unordered_set<std::string> m_refused;
};

/// Of an address that tells nothing of its content: its last part, without what says that it is a calendar.
std::string nameFor(const std::string& address) {
  std::string path = isHere(address) ? address : std::string(pathOf(address));
  path = path.substr(0, path.find('?'));
  std::string name = decoded(path.substr(path.find_last_of('/') + 1));
  if (name.ends_with(".ics")) { name.resize(name.size() - 4); }
  return name.empty() ? hostOf(addressesOf(address).front()) : name;
}

Answer<void> refresh(store::CalendarStore& store, Transport& transport, const Clock& clock, Account& account,
                     SyncReport& report, const SyncOptions& options) {
  ORLOCAL_TRY(Content content, fetched(transport, account.settings.address, account.state, clock.now()));
  if (content.text) {
    const auto wish = wishedInterval(*content.text);
    ORLOCAL_STORE_TRY(Items items, itemsOf(*std::move(content.text), account.name, options.stop));
    ORLOCAL_STORE_CHECK(Refresh(store, account, std::move(items), report).run());
    account.state.wishedInterval = wish;
  }
  account.state.etag = content.etag;
  account.state.lastModified = content.lastModified;
  return {};
}

Answer<SyncReport> added(store::CalendarStore& store, Account& account, Items items, const Clock& clock) {
  account.state.lastTry = account.state.lastSuccess = clock.now();
  AccountBook book(store);
  ORLOCAL_STORE_CHECK(book.add(account));
  SyncReport report;
  const Status written = Refresh(store, account, std::move(items), report).run();
  if (written) { return report; }
  ORLOCAL_STORE_CHECK(book.remove(account));
  return refusedByStore(written.error());
}

}  // namespace

Answer<SyncReport> subscribe(store::CalendarStore& store, Transport& transport, const Clock& clock, Account& account,
                             const SyncOptions& options) {
  ORLOCAL_TRY(Content content, fetched(transport, account.settings.address, {}, clock.now()));
  const std::string text = std::move(content.text).value_or("");
  account.state.wishedInterval = wishedInterval(text);
  account.state.etag = std::move(content.etag);
  account.state.lastModified = std::move(content.lastModified);
  const std::string shown = shownUrl(account.settings.address);
  ORLOCAL_STORE_TRY(Items items, itemsOf(text, account.name.empty() ? shown : account.name, options.stop));
  if (account.name.empty()) { account.name = items.title.empty() ? nameFor(account.settings.address) : items.title; }
  return added(store, account, std::move(items), clock);
}

SyncReport refreshSubscription(store::CalendarStore& store, Transport& transport, const Clock& clock, Account& account,
                               const SyncOptions& options) {
  SyncReport report;
  if (auto outcome = refresh(store, transport, clock, account, report, options); !outcome) {
    report.failure = std::move(outcome.error());
  }
  return report;
}

}  // namespace orlocal::accounts
