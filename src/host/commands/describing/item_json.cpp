#include "host/commands/describing/item_json.h"

#include <algorithm>
#include <variant>

#include <fmt/format.h>

#include "base/try.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/words/day_words.h"
#include "host/commands/words/item_words.h"
#include "store/recurrence/rule_text.h"

namespace orlocal::host {
namespace {

using Json = nlohmann::json;
using store::CalendarTime;
using store::Item;
using store::LocalDay;
using store::Moment;
using store::Zone;

// By the values of their enums.
constexpr const char* kActions[] = {"display", "audio", "procedure", "email"};
constexpr const char* kAnswers[] = {nullptr,     "needs-action", "accepted",  "declined",
                                    "tentative", "delegated",    "completed", "in-process"};
constexpr const char* kRoles[] = {nullptr, "required", "optional", "chair", "non-participant"};
constexpr const char* kTypes[] = {nullptr, "person", "room", "resource", "group"};

template <std::size_t size, class Enum>
Json word(const char* const (&words)[size], Enum value) {
  const char* found = words[static_cast<std::size_t>(value)];
  return found == nullptr ? Json(nullptr) : Json(found);
}

Json textOrNull(const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); }

Json momentJson(const std::optional<Moment>& moment, const Zone& viewer) {
  return moment ? Json(isoMoment(*moment, viewer)) : Json(nullptr);
}

/// A whole day as a date, everything else as a moment.
Json timeJson(const std::optional<CalendarTime>& time, const Zone& viewer) {
  if (!time) { return nullptr; }
  if (time->kind == CalendarTime::Kind::kDate) { return isoDay(LocalDay(time->local)); }
  return isoMoment(store::momentOf(*time, viewer), viewer);
}

Json zoneOf(const Item& item) {
  const auto& anchor = item.anchor();
  if (!anchor) { return nullptr; }
  switch (anchor->kind) {
    case CalendarTime::Kind::kUtc:
      return "UTC";
    case CalendarTime::Kind::kZoned:
      return anchor->zone;
    default:
      return nullptr;
  }
}

Json timesJson(const std::vector<CalendarTime>& times, const Zone& viewer) {
  Json all = Json::array();
  for (const CalendarTime& time : times) { all.push_back(timeJson(time, viewer)); }
  return all;
}

Json alarmsJson(const Item& item, const Zone& viewer) {
  Json all = Json::array();
  for (const store::Alarm& alarm : item.alarms) {
    Json json = {{"action", kActions[static_cast<std::size_t>(alarm.action)]},
                 {"email", jsonText(alarm.emailAddress)},
                 {"sound", jsonText(alarm.soundName)},
                 {"url", jsonText(alarm.url)}};
    if (const auto* moment = std::get_if<Moment>(&alarm.trigger)) {
      json["at"] = isoMoment(*moment, viewer);
    } else {
      const auto& relative = std::get<store::AlarmOffset>(alarm.trigger);
      json["offsetSeconds"] = relative.offset.count();
      json["from"] = relative.fromEnd ? "end" : "start";
    }
    all.push_back(std::move(json));
  }
  return all;
}

Json personJson(const store::Attendee& attendee) {
  return {{"name", jsonText(attendee.name)},
          {"address", plainAddress(attendee.address)},
          {"answer", word(kAnswers, attendee.status)},
          {"role", word(kRoles, attendee.role)},
          {"type", word(kTypes, attendee.type)}};
}

void addPeople(Json& json, const Item& item) {
  json["attendees"] = Json::array();
  json["organizer"] = nullptr;
  for (const store::Attendee& attendee : item.attendees) {
    if (attendee.organizer) {
      json["organizer"] = personJson(attendee);
    } else {
      json["attendees"].push_back(personJson(attendee));
    }
  }
}

void addTimes(Json& json, const Item& item, const std::optional<store::Occurrence>& occurrence, const Zone& viewer) {
  json["zone"] = zoneOf(item);
  json["due"] = timeJson(item.due, viewer);
  const bool ofSeries = item.series || !item.recurrence.empty();
  json["originalStart"] = timeJson(item.recurrenceId, viewer);
  if (occurrence && ofSeries) {
    json["originalStart"] = item.allDay() ? Json(isoDay(LocalDay(viewer.toLocal(occurrence->originalStart))))
                                          : Json(isoMoment(occurrence->originalStart, viewer));
  }
  json["allDay"] = item.allDay();
  if (!item.start) { return; }
  const Moment start = occurrence ? occurrence->start : store::momentOf(*item.start, viewer);
  const Moment end = occurrence ? occurrence->end : item.end ? store::momentOf(*item.end, viewer) : start;
  if (item.allDay()) {
    json["firstDay"] = isoDay(LocalDay(viewer.toLocal(start)));
    json["lastDay"] = isoDay(LocalDay(viewer.toLocal(std::max(start, end - std::chrono::microseconds(1)))));
  } else {
    json["start"] = isoMoment(start, viewer);
    if (item.kind == store::ItemKind::kEvent) { json["end"] = isoMoment(end, viewer); }
  }
}

void addRecurrence(Json& json, const Item& item, const Zone& viewer) {
  json["repeats"] = !item.recurrence.empty();
  json["rules"] = Json::array();
  for (const auto& rule : item.recurrence.rules) { json["rules"].push_back(store::ruleText(rule)); }
  json["exceptionRules"] = Json::array();
  for (const auto& each : item.recurrence.exceptionRules) {
    json["exceptionRules"].push_back(store::ruleText(each.rule));
  }
  json["added"] = timesJson(item.recurrence.added, viewer);
  json["excluded"] = timesJson(item.recurrence.excluded, viewer);
}

}  // namespace

Result<CalendarNames> CalendarNames::of(store::CalendarStore& store) {
  CalendarNames names;
  ORLOCAL_TRY(auto calendars, allCalendars(store));
  for (store::Calendar& each : calendars) { names.m_calendars.emplace(each.id, std::move(each)); }
  ORLOCAL_TRY(auto sources, store.sources());
  for (store::Source& each : sources) { names.m_sources.emplace(each.id, std::move(each)); }
  return names;
}

const store::Calendar* CalendarNames::calendar(store::CalendarId id) const {
  const auto found = m_calendars.find(id);
  return found == m_calendars.end() ? nullptr : &found->second;
}

std::optional<std::string> CalendarNames::account(const store::Calendar& calendar) const {
  const auto source = m_sources.find(calendar.source);
  if (source == m_sources.end() || source->second.type == store::Source::Type::kLocal) { return std::nullopt; }
  return source->second.title;
}

std::string CalendarNames::name(const store::Calendar& calendar) const {
  bool shared = false, sameAccount = false;
  for (const auto& [id, other] : m_calendars) {
    // A calendar and a reminder list of one title are told apart by what they hold.
    const bool alike = (other.holds(store::ItemKind::kEvent) && calendar.holds(store::ItemKind::kEvent)) ||
                       (other.holds(store::ItemKind::kReminder) && calendar.holds(store::ItemKind::kReminder));
    if (id == calendar.id || other.title != calendar.title || !alike) { continue; }
    shared = true;
    sameAccount = sameAccount || account(other) == account(calendar);
  }
  if (!shared) { return calendar.title; }
  const auto of = account(calendar);
  if (of && !sameAccount) { return fmt::format("{} ({})", calendar.title, *of); }
  // The last characters: the first ones tell only when it was made.
  constexpr std::size_t kTold = 8;
  const std::string& whole = calendar.identifier;
  return fmt::format("{} ({})", calendar.title, whole.substr(whole.size() - std::min(kTold, whole.size())));
}

nlohmann::json itemJson(const Item& item, const std::optional<store::Occurrence>& occurrence,
                        const CalendarNames& names, const Zone& viewer) {
  const bool event = item.kind == store::ItemKind::kEvent;
  const store::Calendar* calendar = names.calendar(item.calendar);
  Json json = {{"kind", event ? "event" : "reminder"},
               {"identifier", event ? item.identifier : item.itemIdentifier},
               {"itemIdentifier", item.itemIdentifier},
               {"uid", item.uid},
               {"title", jsonText(item.title)},
               {"location", jsonText(item.location)},
               {"notes", jsonText(item.notes)},
               {"url", jsonText(item.url)},
               {"calendar", calendar != nullptr ? Json(calendar->title) : Json(nullptr)},
               {"calendarIdentifier", calendar != nullptr ? Json(calendar->identifier) : Json(nullptr)},
               {"account", calendar != nullptr ? jsonText(names.account(*calendar)) : Json(nullptr)},
               {"status", textOrNull(statusOf(item))},
               {"categories", categoriesOf(item)},
               {"priority", item.priority},
               {"completed", item.completed.has_value()},
               {"completedAt", momentJson(item.completed, viewer)},
               {"created", momentJson(item.created, viewer)},
               {"modified", momentJson(item.modified, viewer)},
               {"alarms", alarmsJson(item, viewer)}};
  if (!event && calendar != nullptr) { json["list"] = calendar->title; }
  addTimes(json, item, occurrence, viewer);
  addRecurrence(json, item, viewer);
  addPeople(json, item);
  return json;
}

}  // namespace orlocal::host
