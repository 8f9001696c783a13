#include "host/commands/transfer/calendar_files.h"

#include <system_error>

#include <fmt/format.h>

#include "base/text.h"
#include "base/try.h"
#include "host/commands/command_line/terminal_text.h"

namespace orlocal::host {
namespace {

/// Bytes; file systems take 255, and a number and an ending come behind it.
constexpr std::size_t kLongestName = 180;

std::string safeName(const std::string& title) {
  std::string name = printable(title);
  for (char& c : name) {
    if (std::string_view("/\\:*?\"<>|").find(c) != std::string_view::npos) { c = '-'; }
  }
  name = trimmed(std::string_view(name), " .");
  if (name.size() > kLongestName) {
    name.resize(kLongestName);
    while (!isUtf8(name)) { name.pop_back(); }
  }
  return name.empty() ? "calendar" : name;
}

std::optional<store::Moment> midnightOf(std::optional<store::LocalDay> day, const store::Zone& viewer) {
  return day ? std::optional(viewer.toMoment(store::LocalTime(*day))) : std::nullopt;
}

}  // namespace

std::string FileNames::take(const std::string& title, const std::string& ending) {
  const std::string name = safeName(title);
  for (int number = 1;; ++number) {
    std::string made = (number == 1 ? name : fmt::format("{} ({})", name, number)) + ending;
    if (m_taken.insert(caseFolded(made)).second) { return made; }
  }
}

bool namesFolder(const std::string& path) {
  std::error_code ignored;
  return path.ends_with('/') || std::filesystem::is_directory(path, ignored);
}

Result<std::unordered_set<store::ItemId>> itemsWithin(store::CalendarStore& store,
                                                      const std::vector<store::Calendar>& calendars,
                                                      const store::Zone& viewer, std::optional<store::LocalDay> first,
                                                      std::optional<store::LocalDay> last) {
  const auto from = midnightOf(first, viewer);
  const auto to = midnightOf(last ? std::optional(*last + 1) : std::nullopt, viewer);
  store::EventQuery events{from, to, {}};
  store::ReminderQuery reminders{store::ReminderQuery::Status::kAny, from, to, {}};
  for (const store::Calendar& calendar : calendars) {
    if (calendar.holds(store::CalendarKind::kEvents)) { events.calendars.push_back(calendar.id); }
    if (calendar.holds(store::CalendarKind::kReminders)) { reminders.calendars.push_back(calendar.id); }
  }
  std::unordered_set<store::ItemId> ids;
  ORLOCAL_TRY(const store::OccurrenceList occurrences, store.occurrences(events));
  for (const store::Occurrence& occurrence : occurrences) { ids.insert(occurrence.event); }
  for (const auto status : {store::ReminderQuery::Status::kOpen, store::ReminderQuery::Status::kCompleted}) {
    reminders.status = status;
    ORLOCAL_TRY(const auto found, store.reminders(reminders));
    for (const store::ItemId id : found) {
      ORLOCAL_TRY(const auto item, store.item(id));
      if (item != nullptr) { ids.insert(item->series.value_or(id)); }
    }
  }
  return ids;
}

}  // namespace orlocal::host
