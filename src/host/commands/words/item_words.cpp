#include "host/commands/words/item_words.h"

#include <algorithm>
#include <iterator>
#include <variant>

#include <fmt/format.h>

#include "base/text.h"
#include "host/commands/words/day_words.h"
#include "store/icalendar/content_line.h"
#include "store/icalendar/kept_lines.h"

namespace orlocal::host {
namespace {

using std::chrono::seconds;
using store::Attendee;

struct LengthUnit {
  std::int64_t seconds;
  std::string_view name;
};
constexpr LengthUnit kLengthUnits[] = {
    {604'800, "week"}, {86'400, "day"}, {3'600, "hour"}, {60, "minute"}, {1, "second"}};

/// By `Attendee::Status`.
constexpr std::string_view kAnswers[] = {"",          "has not answered",    "accepted",  "declined",
                                         "tentative", "sends somebody else", "completed", "in process"};

}  // namespace

std::string statusOf(const store::Item& item) {
  if (item.completed) { return "completed"; }
  const auto values = store::keptValues("STATUS", item.extra);
  std::string word;
  for (const char c : values.empty() ? std::string_view() : trimmed(values.front())) { word += asciiLower(c); }
  return word;
}

std::vector<std::string> categoriesOf(const store::Item& item) {
  std::vector<std::string> categories;
  for (const std::string_view line : store::keptValues("CATEGORIES", item.extra)) {
    for (const std::string_view each : splitUnescaped(line, ',')) {
      if (const auto name = trimmed(each); !name.empty()) { categories.push_back(store::unescapeText(name)); }
    }
  }
  return categories;
}

bool isCancelled(const store::Item& item) { return statusOf(item) == "cancelled"; }
bool isTentative(const store::Item& item) { return statusOf(item) == "tentative"; }

std::string lengthWords(seconds length) {
  std::int64_t left = std::abs(length.count());
  std::string text;
  for (const LengthUnit& unit : kLengthUnits) {
    const std::int64_t count = left / unit.seconds;
    // Seven days are a week, and ten days are ten days.
    if (count == 0 || (unit.name == "week" && left % unit.seconds != 0)) { continue; }
    text += fmt::format("{}{} {}{}", text.empty() ? "" : " ", count, unit.name, count == 1 ? "" : "s");
    left %= unit.seconds;
  }
  return text.empty() ? "0 seconds" : text;
}

std::string alarmWords(const store::Alarm& alarm, store::ItemKind kind, const store::Zone& viewer) {
  std::string text;
  if (const auto* moment = std::get_if<store::Moment>(&alarm.trigger)) {
    const store::LocalTime time = viewer.toLocal(*moment);
    text = fmt::format("on {} at {}", shortDay(store::LocalDay(time)), clockTime(time));
  } else {
    const auto& relative = std::get<store::AlarmOffset>(alarm.trigger);
    const char* anchor = !relative.fromEnd ? "the start" : kind == store::ItemKind::kEvent ? "the end" : "it is due";
    if (relative.offset.count() == 0) {
      text = relative.fromEnd && kind == store::ItemKind::kReminder ? "when it is due" : fmt::format("at {}", anchor);
    } else {
      text = fmt::format("{} {} {}", lengthWords(relative.offset), relative.offset.count() < 0 ? "before" : "after",
                         anchor);
    }
  }
  switch (alarm.action) {
    case store::Alarm::Action::kDisplay:
      break;
    case store::Alarm::Action::kAudio:
      text += ", with a sound";
      break;
    case store::Alarm::Action::kProcedure:
      text += alarm.url ? ", opens " + *alarm.url : ", starts a program";
      break;
    case store::Alarm::Action::kEmail:
      text += alarm.emailAddress ? ", by e-mail to " + *alarm.emailAddress : ", by e-mail";
      break;
  }
  return text;
}

std::string priorityWords(int priority) {
  if (priority <= 0) { return "none"; }
  // RFC 5545, 3.8.1.9.
  return fmt::format("{} ({})", priority < 5 ? "high" : priority == 5 ? "medium" : "low", priority);
}

std::string_view answerWords(Attendee::Status status) { return kAnswers[static_cast<std::size_t>(status)]; }

std::string_view roleWords(const Attendee& attendee) {
  switch (attendee.role) {
    case Attendee::Role::kOptional:
      return "optional";
    case Attendee::Role::kChair:
      return "chair";
    case Attendee::Role::kNonParticipant:
      return "for information";
    default:
      break;
  }
  return attendee.type == Attendee::Type::kRoom ? "room" : attendee.type == Attendee::Type::kResource ? "resource" : "";
}

std::string_view plainAddress(std::string_view address) {
  constexpr std::string_view kMailto = "mailto:";
  return equalsNoCase(address.substr(0, kMailto.size()), kMailto) ? address.substr(kMailto.size()) : address;
}

std::string personWords(const Attendee& attendee) {
  const std::string_view address = plainAddress(attendee.address);
  if (!attendee.name || attendee.name->empty()) { return std::string(address); }
  return address.empty() ? *attendee.name : fmt::format("{} <{}>", *attendee.name, address);
}

}  // namespace orlocal::host
