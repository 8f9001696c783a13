#include "host/commands/watching/store_news.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/try.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/words/day_words.h"
#include "store/time/time_text.h"

namespace orlocal::host {
namespace {

constexpr std::string_view kCalendar = "calendar";
constexpr std::string_view kReminderList = "reminder list";
constexpr std::size_t kKindWidth = 23;
constexpr std::size_t kKnownTitles = 100'000;

struct ChangeWord {
  std::string_view change;
  std::string_view atLineStart;
  std::vector<std::string> store::ChangedRecords::*records;
};

constexpr ChangeWord kChangeWords[] = {
    {"new", "New", &store::ChangedRecords::inserted},
    {"updated", "Updated", &store::ChangedRecords::updated},
    {"deleted", "Deleted", &store::ChangedRecords::deleted},
};

/// The last day that an event touches.
store::LocalDay lastDayOf(const store::Occurrence& occurrence, const store::Zone& viewer) {
  const auto last = std::max(occurrence.start, occurrence.end - std::chrono::microseconds(1));
  return store::LocalDay(viewer.toLocal(last));
}

store::LocalDay firstDayOf(const store::Occurrence& occurrence, const store::Zone& viewer) {
  return store::LocalDay(viewer.toLocal(occurrence.start));
}

bool wholeDay(const store::CalendarTime& time) { return time.kind == store::CalendarTime::Kind::kDate; }

std::string timeText(store::LocalTime time) { return isoDay(store::LocalDay(time)) + " " + clockTime(time); }

std::string whenOf(const News& news, const store::Zone& viewer) {
  if (!news.item) { return ""; }
  if (news.item->kind == store::ItemKind::kReminder) {
    if (!news.item->due) { return ""; }
    const store::LocalTime due = viewer.toLocal(store::momentOf(*news.item->due, viewer));
    return "due " + (wholeDay(*news.item->due) ? isoDay(store::LocalDay(due)) : timeText(due));
  }
  if (!news.occurrence) { return ""; }
  const auto first = firstDayOf(*news.occurrence, viewer);
  const auto last = lastDayOf(*news.occurrence, viewer);
  if (news.item->allDay()) { return first == last ? isoDay(first) : isoDay(first) + " – " + isoDay(last); }
  const auto start = viewer.toLocal(news.occurrence->start);
  const auto end = viewer.toLocal(news.occurrence->end);
  if (store::LocalDay(end) == first) { return timeText(start) + "–" + clockTime(end); }
  return timeText(start) + " – " + timeText(end);
}

void addTimes(nlohmann::json& json, const News& news, const store::Zone& viewer) {
  if (!news.item) { return; }
  if (news.item->kind == store::ItemKind::kReminder) {
    json["completed"] = news.item->completed.has_value();
    if (!news.item->due) { return; }
    const auto due = store::momentOf(*news.item->due, viewer);
    json["due"] = wholeDay(*news.item->due) ? isoDay(store::LocalDay(viewer.toLocal(due))) : isoMoment(due, viewer);
    return;
  }
  json["repeats"] = !news.item->recurrence.empty();
  json["allDay"] = news.item->allDay();
  if (!news.occurrence) { return; }
  if (news.item->allDay()) {
    json["firstDay"] = isoDay(firstDayOf(*news.occurrence, viewer));
    json["lastDay"] = isoDay(lastDayOf(*news.occurrence, viewer));
  } else {
    json["start"] = isoMoment(news.occurrence->start, viewer);
    json["end"] = isoMoment(news.occurrence->end, viewer);
  }
}

}  // namespace

Result<StoreNews> StoreNews::fromNowOn(store::CalendarStore& store) {
  ORLOCAL_TRY(const store::LogPosition position, store.newestChange());
  return StoreNews(store, position);
}

Status StoreNews::tell(const std::function<void(const News&)>& listener) {
  const std::uint64_t generation = m_store.generation();
  if (std::exchange(m_generation, generation) == generation) { return {}; }
  ORLOCAL_TRY(const auto commits, m_store.outsideCommits(m_position));
  for (const store::OutsideCommit& commit : commits) {
    ORLOCAL_CHECK(tellAll(kCalendar, commit.calendars, listener));
    ORLOCAL_CHECK(tellAll(kReminderList, commit.reminderLists, listener));
    ORLOCAL_CHECK(tellAll("event", commit.events, listener));
    ORLOCAL_CHECK(tellAll("reminder", commit.reminders, listener));
  }
  return {};
}

Status StoreNews::tellAll(std::string_view kind, const store::ChangedRecords& records,
                          const std::function<void(const News&)>& listener) {
  for (const ChangeWord& word : kChangeWords) {
    for (const std::string& identifier : records.*word.records) {
      ORLOCAL_TRY(const News news, newsOf(word.change, kind, identifier));
      listener(news);
    }
  }
  return {};
}

Result<News> StoreNews::newsOf(std::string_view change, std::string_view kind, const std::string& identifier) {
  News news;
  news.change = change;
  news.kind = kind;
  news.identifier = identifier;
  if (kind == kCalendar || kind == kReminderList) {
    ORLOCAL_TRY(const auto calendar, m_store.calendar(identifier));
    if (calendar) { news.title = calendar->title; }
  } else {
    ORLOCAL_TRY(news.item, m_store.itemWithIdentifier(identifier));
    if (news.item) {
      news.title = news.item->title.value_or("");
      ORLOCAL_TRY(news.calendar, titleOfCalendar(news.item->calendar));
      if (news.item->kind == store::ItemKind::kEvent) {
        ORLOCAL_TRY(news.occurrence, m_store.firstOccurrence(*news.item));
      }
    }
  }
  if (news.title) {
    if (m_titles.size() >= kKnownTitles) { m_titles.clear(); }
    m_titles.insert_or_assign(identifier, *news.title);
  } else if (const auto known = m_titles.find(identifier); known != m_titles.end()) {
    news.title = known->second;
  }
  return news;
}

Result<std::optional<std::string>> StoreNews::titleOfCalendar(store::CalendarId id) {
  ORLOCAL_TRY(const auto calendars, allCalendars(m_store));
  for (const auto& calendar : calendars) {
    if (calendar.id == id) { return calendar.title; }
  }
  return std::nullopt;
}

std::string lineOf(const News& news, const store::Zone& viewer) {
  const auto* word = std::ranges::find(kChangeWords, news.change, &ChangeWord::change);
  std::string line = padded(fmt::format("{} {}", word->atLineStart, news.kind), kKindWidth);
  const auto add = [&line](const std::string& part) {
    if (!part.empty()) { line += part + "  "; }
  };
  add(whenOf(news, viewer));
  if (news.title) { add(news.title->empty() ? "(no title)" : printable(*news.title)); }
  if (news.calendar) { add(printable(*news.calendar)); }
  return line + news.identifier;
}

std::string jsonLineOf(const News& news, const store::Zone& viewer) {
  nlohmann::json json = {{"change", news.change},
                         {"kind", news.kind},
                         {"identifier", news.identifier},
                         {"title", jsonText(news.title)},
                         {"calendar", jsonText(news.calendar)}};
  addTimes(json, news, viewer);
  return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace orlocal::host
