#include "host/commands/watching/store_news.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/text.h"
#include "base/translation.h"
#include "base/try.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/words/day_words.h"
#include "store/time/time_text.h"

namespace orlocal::host {
namespace {

constexpr std::string_view kCalendar = "calendar";
constexpr std::string_view kReminderList = "reminder list";
constexpr std::size_t kKindWidth = 23, kWhenWidth = 16;
constexpr std::size_t kKnownTitles = 100'000;

struct ChangeWord {
  std::string_view change;
  std::vector<std::string> store::ChangedRecords::*records;
};

constexpr ChangeWord kChangeWords[] = {
    {"new", &store::ChangedRecords::inserted},
    {"updated", &store::ChangedRecords::updated},
    {"deleted", &store::ChangedRecords::deleted},
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
    return tr("due {}", wholeDay(*news.item->due) ? isoDay(store::LocalDay(due)) : timeText(due));
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

}  // namespace

Result<StoreNews> StoreNews::fromNowOn(store::CalendarStore& store) {
  ORLOCAL_TRY(const store::LogPosition position, store.newestChange());
  return StoreNews(store, position);
}

Result<StoreNews> StoreNews::since(store::CalendarStore& store, const Since& since) {
  if (const auto* row = std::get_if<std::int64_t>(&since)) {
    ORLOCAL_TRY(const store::LogPosition position, store.changesAfter(*row));
    return StoreNews(store, position);
  }
  ORLOCAL_TRY(const store::LogPosition position, store.changesSince(std::get<store::Moment>(since)));
  return StoreNews(store, position);
}

Status StoreNews::tell(const std::function<void(const News&)>& listener) {
  const std::uint64_t generation = m_store.generation();
  if (std::exchange(m_generation, generation) == generation) { return {}; }
  ORLOCAL_TRY(const auto commits, m_store.outsideCommits(m_position));
  for (const store::OutsideCommit& commit : commits) {
    ORLOCAL_CHECK(tellAll(kCalendar, commit.calendars, commit, listener));
    ORLOCAL_CHECK(tellAll(kReminderList, commit.reminderLists, commit, listener));
    ORLOCAL_CHECK(tellAll("event", commit.events, commit, listener));
    ORLOCAL_CHECK(tellAll("reminder", commit.reminders, commit, listener));
  }
  return {};
}

Status StoreNews::tellAll(std::string_view kind, const store::ChangedRecords& records,
                          const store::OutsideCommit& commit, const Listener& listener) {
  for (const ChangeWord& word : kChangeWords) {
    const auto& identifiers = records.*word.records;
    for (std::size_t i = 0; i < identifiers.size(); ++i) {
      ORLOCAL_TRY(News news, newsOf(word.change, kind, identifiers[i]));
      news.made = commit.made;
      news.position = commit.upTo;
      if (word.records == &store::ChangedRecords::deleted && !news.item) {
        // What the log says of its end counts before what was heard earlier.
        const store::Departed& departed = records.departed[i];
        if (departed.title) { news.title = departed.title; }
        ORLOCAL_TRY(const auto names, CalendarNames::of(m_store));
        const store::Calendar* calendar = names.calendar(departed.calendar);
        if (calendar != nullptr) { news.calendar = calendar->title; }
      }
      listener(news);
    }
  }
  return {};
}

Status StoreNews::describeItem(News& news) {
  ORLOCAL_TRY(news.item, m_store.itemWithIdentifier(news.identifier));
  if (!news.item) { return {}; }
  news.title = news.item->title.value_or("");
  ORLOCAL_TRY(const auto names, CalendarNames::of(m_store));
  const store::Calendar* calendar = names.calendar(news.item->calendar);
  if (calendar != nullptr) { news.calendar = calendar->title; }
  if (news.item->kind == store::ItemKind::kEvent) { ORLOCAL_TRY(news.occurrence, m_store.firstOccurrence(*news.item)); }
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
    ORLOCAL_CHECK(describeItem(news));
  }
  if (news.title) {
    if (m_titles.size() >= kKnownTitles) { m_titles.clear(); }
    m_titles.insert_or_assign(identifier, *news.title);
  } else if (const auto known = m_titles.find(identifier); known != m_titles.end()) {
    news.title = known->second;
  }
  return news;
}

namespace {

/// How a line about it begins, one text for each kind and change: languages bend their words differently.
std::string headOf(const News& news) {
  constexpr const char* kHeads[] = {
      translatable("New calendar"),      translatable("Updated calendar"),      translatable("Deleted calendar"),
      translatable("New reminder list"), translatable("Updated reminder list"), translatable("Deleted reminder list"),
      translatable("New event"),         translatable("Updated event"),         translatable("Deleted event"),
      translatable("New reminder"),      translatable("Updated reminder"),      translatable("Deleted reminder")};
  const auto meant = fmt::format("{} {}", news.change, news.kind);
  const auto* const found = std::ranges::find_if(kHeads, [&](const char* head) { return equalsNoCase(head, meant); });
  return found != std::end(kHeads) ? translated(*found) : meant;
}

}  // namespace

std::string lineOf(const News& news, const store::Zone& viewer) {
  std::string line = padded(headOf(news), kKindWidth);
  const auto add = [&line](const std::string& part) {
    if (!part.empty()) { line += part + "  "; }
  };
  add(whenOf(news, viewer));
  if (news.title) { add(news.title->empty() ? tr("(no title)") : printable(*news.title)); }
  if (news.calendar) { add(printable(*news.calendar)); }
  return line + news.identifier;
}

std::string pastLineOf(const News& news, const store::Zone& viewer) {
  const std::string when = news.made ? timeText(viewer.toLocal(*news.made)) : tr("earlier");
  return padded(when, kWhenWidth) + "  " + lineOf(news, viewer);
}

std::string jsonLineOf(const News& news, const CalendarNames& names, const store::Zone& viewer) {
  nlohmann::json json = news.item ? itemJson(*news.item, news.occurrence, names, viewer) : nlohmann::json::object();
  json["change"] = news.change;
  json["kind"] = news.kind;
  json["identifier"] = news.identifier;
  json["title"] = jsonText(news.title);
  json["calendar"] = jsonText(news.calendar);
  json["position"] = news.position;
  json["made"] = news.made ? nlohmann::json(isoMoment(*news.made, viewer)) : nlohmann::json(nullptr);
  return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace orlocal::host
