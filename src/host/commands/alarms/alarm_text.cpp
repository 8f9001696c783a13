#include "host/commands/alarms/alarm_text.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <optional>
#include <ostream>

#include <fmt/format.h>

#include "base/translation.h"
#include "host/commands/command_line/folded_text.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/describing/item_json.h"
#include "host/commands/words/day_words.h"

namespace orlocal::host {
namespace {

using store::LocalDay;
using store::Moment;

constexpr std::size_t kWidth = 80;
constexpr std::size_t kNarrowestTitle = 20;
constexpr std::size_t kBeforeState = 9;  ///< "  09:45  "
constexpr std::size_t kStateWidth = 9;
constexpr std::size_t kLongestVariable = 32'768;
constexpr std::chrono::minutes kLate{1};

constexpr const char* kActionWords[] = {"display", "audio", "procedure", "email"};
constexpr const char* kStateWords[] = {translatable("coming"), translatable("rung"), translatable("snoozed")};

bool isReminder(const AlarmNews& news) { return news.item->kind == store::ItemKind::kReminder; }

bool isWholeDay(const std::optional<store::CalendarTime>& time) {
  return time && time->kind == store::CalendarTime::Kind::kDate;
}

/// What it is about, as a person names its time.
struct About {
  std::optional<Moment> start, end;
  bool wholeDays = false;
};

About aboutOf(const AlarmNews& news) {
  if (!isReminder(news)) { return {news.ring.start, news.ring.end, news.item->allDay()}; }
  if (news.item->due) { return {news.ring.end, std::nullopt, isWholeDay(news.item->due)}; }
  return {news.ring.start, std::nullopt, isWholeDay(news.item->start)};
}

LocalDay dayOf(Moment moment, const store::Zone& viewer) { return LocalDay(viewer.toLocal(moment)); }

LocalDay lastDayOf(const About& about, const store::Zone& viewer) {
  return dayOf(std::max(*about.start, about.end.value_or(*about.start) - std::chrono::microseconds(1)), viewer);
}

std::string alarmTitle(const AlarmNews& news) {
  const std::string title = news.item->title.value_or("");
  return title.empty() ? tr("(no title)") : printable(title);
}

/// "2026-11-02 09:00–09:15", "due 2026-11-02".
std::string whenInNumbers(const AlarmNews& news, const store::Zone& viewer) {
  const About about = aboutOf(news);
  if (!about.start) { return ""; }
  const auto due = [&](const std::string& when) { return isReminder(news) ? tr("due {}", when) : when; };
  const auto at = [&](Moment moment) {
    return isoDay(dayOf(moment, viewer)) + " " + clockTime(viewer.toLocal(moment));
  };
  if (about.wholeDays) {
    const LocalDay first = dayOf(*about.start, viewer), last = lastDayOf(about, viewer);
    return due(isoDay(first) + (first == last ? "" : " – " + isoDay(last)));
  }
  if (!about.end || *about.end == *about.start) { return due(at(*about.start)); }
  const bool sameDay = dayOf(*about.start, viewer) == dayOf(*about.end, viewer);
  return at(*about.start) + (sameDay ? "–" + clockTime(viewer.toLocal(*about.end)) : " – " + at(*about.end));
}

/// "09:00" on the day of the alarm, else "Tue 3 Nov 2026 09:00".
std::string whenInWords(const AlarmNews& news, const store::Zone& viewer, std::optional<LocalDay> sameDay) {
  const About about = aboutOf(news);
  if (!about.start) { return ""; }
  const auto due = [&](const std::string& when) { return isReminder(news) ? tr("due {}", when) : when; };
  const LocalDay day = dayOf(*about.start, viewer);
  if (about.wholeDays) { return due(sameDay == day ? tr("that day") : shortDay(day)); }
  return due((sameDay == day ? "" : shortDay(day) + " ") + clockTime(viewer.toLocal(*about.start)));
}

/// "originalStart" is "ORIGINAL_START".
std::string variableName(const std::string& key) {
  std::string name = "ORLOCAL_ALARM_";
  for (const char letter : key) {
    if (std::isupper(static_cast<unsigned char>(letter)) != 0) { name += '_'; }
    name += static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
  }
  return name;
}

}  // namespace

nlohmann::json alarmNewsJson(const AlarmNews& news, const store::Zone& viewer) {
  const store::Item& item = *news.item;
  std::optional<store::Occurrence> occurrence;
  if (!isReminder(news) && news.ring.start && news.ring.end) {
    occurrence = {*news.ring.start, *news.ring.end, news.ring.key.original, news.ring.row, news.ring.key.item};
  }
  nlohmann::json json = itemJson(item, occurrence, *news.calendars, viewer);
  json["rings"] = isoMoment(news.rings, viewer);
  json["state"] = kStateWords[static_cast<int>(news.state)];
  json["alarm"] = isoMoment(news.ring.key.moment, viewer);
  json["rung"] = news.rung ? nlohmann::json(isoMoment(*news.rung, viewer)) : nlohmann::json(nullptr);
  json["action"] = kActionWords[static_cast<int>(news.alarm().action)];
  return json;
}

std::string alarmNewsLine(const AlarmNews& news, const store::Zone& viewer, Moment now) {
  const store::LocalTime rings = viewer.toLocal(news.rings);
  std::string line = isoDay(LocalDay(rings)) + " " + clockTime(rings);
  if (now - news.rings > kLate) { line += tr(" (late)"); }
  for (const std::string& part :
       {alarmTitle(news), whenInNumbers(news, viewer), printable(news.calendar()), news.identifier()}) {
    if (!part.empty()) { line += "  " + part; }
  }
  return line;
}

std::string alarmNewsInWords(const AlarmNews& news, const store::Zone& viewer) {
  const std::string when = whenInWords(news, viewer, std::nullopt);
  return tr("{}{}{}, in {}", alarmTitle(news), when.empty() ? "" : ", ", when, printable(news.calendar()));
}

void printAlarms(const std::vector<AlarmNews>& list, const store::Zone& viewer, Moment now, bool colors,
                 std::ostream& out) {
  const Ink ink(colors);
  const LocalDay today = dayOf(now, viewer);
  const bool states =
      std::any_of(list.begin(), list.end(), [](const AlarmNews& news) { return news.state != AlarmState::kComing; });
  std::size_t titleWidth = 0, whenWidth = 0, calendarWidth = 0;
  for (const AlarmNews& news : list) {
    titleWidth = std::max(titleWidth, displayWidth(alarmTitle(news)));
    whenWidth = std::max(whenWidth, displayWidth(whenInWords(news, viewer, dayOf(news.rings, viewer))));
    calendarWidth = std::max(calendarWidth, displayWidth(printable(news.calendar())));
  }
  const std::size_t before = states ? kBeforeState + kStateWidth : kBeforeState;
  const std::size_t others = before + 2 + whenWidth + 2 + calendarWidth;
  titleWidth = std::min(titleWidth, std::max(kNarrowestTitle, kWidth - std::min(kWidth, others)));
  std::optional<LocalDay> day;
  for (const AlarmNews& news : list) {
    const LocalDay itsDay = dayOf(news.rings, viewer);
    if (day != itsDay) {
      out << (day ? "\n" : "") << ink.bold(longDay(itsDay) + (itsDay == today ? tr(" (today)") : "")) << '\n';
    }
    day = itsDay;
    out << "  " << clockTime(viewer.toLocal(news.rings)) << "  ";
    if (states) {
      out << padded(news.state == AlarmState::kComing ? "" : translated(kStateWords[static_cast<int>(news.state)]),
                    kStateWidth);
    }
    const auto title = foldedText(alarmTitle(news), titleWidth);
    out << padded(title.front(), titleWidth) << "  " << padded(whenInWords(news, viewer, itsDay), whenWidth) << "  "
        << ink.dim(printable(news.calendar())) << '\n';
    for (std::size_t i = 1; i < title.size(); ++i) { out << std::string(before, ' ') << title[i] << '\n'; }
  }
}

std::vector<std::string> alarmVariables(const nlohmann::json& json) {
  std::vector<std::string> variables;
  for (const auto& [key, value] : json.items()) {
    if (value.is_structured()) { continue; }
    std::string text = value.is_string() ? value.get<std::string>() : value.is_null() ? "" : value.dump();
    if (text.size() > kLongestVariable) { continue; }
    // An environment ends a text there.
    std::erase(text, '\0');
    variables.push_back(variableName(key) + "=" + text);
  }
  return variables;
}

}  // namespace orlocal::host
