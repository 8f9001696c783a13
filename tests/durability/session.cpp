#include "durability/session.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include <fmt/format.h>

#include "durability/disk_trace.h"
#include "store/edits/edited_items.h"
#include "store/export.h"
#include "store/file/sqlite.h"

namespace orlocal::test {
namespace {

using store::Calendar;
using store::CalendarKind;
using store::CalendarStore;
using store::Item;

/// "x" in place of each digit of identifiers.
std::string withoutIdentifiers(std::string text) {
  constexpr std::size_t kLength = 36;
  for (std::size_t at = 0; at + kLength <= text.size(); ++at) {
    bool is = true;
    for (std::size_t i = 0; i < kLength && is; ++i) {
      const auto c = static_cast<unsigned char>(text[at + i]);
      is = i == 8 || i == 13 || i == 18 || i == 23 ? c == '-' : std::isxdigit(c) != 0;
    }
    if (is) { text.replace(at, kLength, "x"); }
  }
  return text;
}

std::string replaced(std::string text, const std::string& what, const char* by) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos;) { text.replace(at, what.size(), by); }
  return text;
}

std::string lineOf(const Calendar& calendar) {
  const auto color = calendar.color.value_or(store::Rgb());
  return fmt::format("calendar {} kind {} type {} notes {} colour {} {} {} order {} {}{}{}\n", calendar.title,
                     static_cast<int>(calendar.kind), static_cast<int>(calendar.type), calendar.notes.value_or("none"),
                     color.red, color.green, color.blue, calendar.order, calendar.readOnly, calendar.subscribed,
                     calendar.immutable);
}

Result<std::string> readAll(CalendarStore& store) {
  std::string text;
  store::EventQuery query;
  for (const CalendarKind kind : {CalendarKind::kEvents, CalendarKind::kReminders}) {
    const auto calendars = store.calendars(kind);
    if (!calendars) { return tl::unexpected(calendars.error()); }
    for (const Calendar& calendar : *calendars) {
      text += lineOf(calendar);
      if (kind == CalendarKind::kEvents) { query.calendars.push_back(calendar.id); }
    }
    const auto written = store::exportCalendars(store, *calendars, [&](std::string_view piece) -> Status {
      text += piece;
      return {};
    });
    if (!written) { return tl::unexpected(written.error()); }
    for (const std::string& note : written->notes) { text += note + "\n"; }
  }
  const auto occurrences = store.occurrences(query);
  if (!occurrences) { return tl::unexpected(occurrences.error()); }
  std::vector<std::string> lines;
  for (const store::Occurrence& occurrence : *occurrences) {
    const auto item = store.item(occurrence.item);
    if (!item) { return tl::unexpected(item.error()); }
    lines.push_back(fmt::format("at {} {}\n", occurrence.start.time_since_epoch().count(),
                                *item ? (*item)->title.value_or("-") : "(gone)"));
  }
  // Of two at the same time the identifier decides, which is random.
  std::sort(lines.begin(), lines.end());
  for (const std::string& line : lines) { text += line; }
  const auto address = store.addressOf("noor@example.org");
  if (!address) { return tl::unexpected(address.error()); }
  return text + "address " + address->value_or("none") + "\n";
}

/// What the file says by itself of how it was made.
std::string headOf(const std::filesystem::path& file) {
  auto database = store::Database::open(file, std::chrono::seconds(1));
  if (!database) { return database.error().message; }
  auto version = database->integerOf("PRAGMA user_version");
  auto zones = database->prepare("SELECT value FROM properties WHERE name = 'zone_data'");
  const bool known = zones && zones->step().value_or(false);
  return fmt::format("format {} zones {}\n", version.value_or(-1), known ? std::string(zones->text(0)) : "none");
}

std::string contentOfStore(const std::filesystem::path& folder, const std::filesystem::path& file) {
  if (!std::filesystem::exists(file)) { return "none\n"; }
  store::StoreOptions options = Session(folder).options();
  options.file = file;
  const auto opened = CalendarStore::open(options);
  if (!opened) { return opened.error().message + "\n"; }
  std::string text = contentOf(**opened);
  (*opened)->close();
  return text + headOf(file);
}

/// A copy is read elsewhere, as it would be used: alone.
std::string contentOfCopy(const std::filesystem::path& copy) {
  const auto elsewhere = copy.parent_path() / "looked at";
  std::filesystem::create_directory(elsewhere);
  std::filesystem::copy_file(copy, elsewhere / "calendar.db");
  std::string text = contentOfStore(elsewhere, elsewhere / "calendar.db");
  std::filesystem::remove_all(elsewhere);
  return replaced(text, elsewhere.string(), "elsewhere");
}

}  // namespace

store::StoreOptions Session::options() const {
  store::StoreOptions options;
  options.file = file();
  options.viewer = store::Zone::ofUser();
  options.busyTimeout = std::chrono::milliseconds(50);
  return options;
}

Result<CalendarStore*> Session::store() {
  if (m_store == nullptr) {
    auto opened = CalendarStore::open(options());
    if (!opened) { return tl::unexpected(opened.error()); }
    m_store = *std::move(opened);
  }
  return m_store.get();
}

void Session::close() {
  if (m_store != nullptr) { m_store->close(); }
  m_store.reset();
}

std::string contentOf(CalendarStore& store) {
  auto text = readAll(store);
  return text ? withoutIdentifiers(*std::move(text)) : text.error().message + "\n";
}

std::string contentOf(const std::filesystem::path& folder) {
  std::string text = contentOfStore(folder, folder / "calendar.db");
  text += "in new folders:\n" + contentOfStore(folder, folder / "new" / "newer" / "calendar.db");
  const bool restored = text.find("calendar Restored") != std::string::npos;
  std::vector<std::filesystem::path> beside;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) { beside.push_back(entry.path()); }
  std::sort(beside.begin(), beside.end());
  for (const auto& path : beside) {
    const std::string name = path.filename().string();
    if (name == "copy.db" || name == "backup.db") { text += name + "\n" + contentOfCopy(path); }
    if (name == "export.ics" || name == "old.ics") { text += name + "\n" + withoutIdentifiers(contentOfFile(path)); }
  }
  if (restored) {
    // What a restore that was cut short kept lies there too: one of them has all that was there.
    std::string kept;
    for (const auto& path : beside) {
      const std::string name = path.filename().string();
      if (name.find(".before-restore-") == std::string::npos || name.ends_with("-wal")) { continue; }
      std::string one = contentOfCopy(path);
      if (kept.empty() || one < kept) { kept = std::move(one); }
    }
    text += "kept:\n" + kept;
  }
  return replaced(text, folder.string(), "folder");
}

std::shared_ptr<const Item> itemTitled(CalendarStore& store, std::string_view title) {
  std::shared_ptr<const Item> found;
  for (const CalendarKind kind : {CalendarKind::kEvents, CalendarKind::kReminders}) {
    for (const Calendar& calendar : store.calendars(kind).value_or(std::vector<Calendar>())) {
      (void)store.forEachItem(calendar.id, [&](const Item& main, const std::vector<Item>&) -> Status {
        if (main.title == title) { found = std::make_shared<const Item>(main); }
        return {};
      });
    }
  }
  return found;
}

Status saveNext(CalendarStore& store) {
  const auto calendar = store.defaultCalendar(CalendarKind::kEvents);
  if (!calendar) { return tl::unexpected(calendar.error()); }
  if (!*calendar) { return failure(ErrorCode::kNotFound, "There is no default calendar."); }
  Item event;
  event.calendar = (*calendar)->id;
  event.title = "next";
  event.start = event.end = store::CalendarTime{store::CalendarTime::Kind::kUtc, store::LocalTime(2026, 11, 6, 9), ""};
  return store::saveEvent(store, event, std::nullopt, store::Span::kThis);
}

}  // namespace orlocal::test
