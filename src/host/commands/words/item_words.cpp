#include "host/commands/words/item_words.h"

#include <algorithm>
#include <iterator>
#include <variant>

#include <fmt/format.h>

#include "base/text.h"
#include "base/translation.h"
#include "host/commands/words/day_words.h"
#include "store/icalendar/content_line.h"
#include "store/icalendar/item_limits.h"
#include "store/icalendar/kept_lines.h"

namespace orlocal::host {
namespace {

using store::Attendee;

constexpr std::int64_t kWeek = 604'800;
constexpr std::int64_t kLengthUnits[] = {kWeek, 86'400, 3'600, 60, 1};

std::string lengthIn(std::int64_t unit, std::int64_t count) {
  const auto number = static_cast<std::size_t>(count);
  switch (unit) {
    case kWeek:
      return trn("{} week", "{} weeks", number, count);
    case 86'400:
      return trn("{} day", "{} days", number, count);
    case 3'600:
      return trn("{} hour", "{} hours", number, count);
    case 60:
      return trn("{} minute", "{} minutes", number, count);
    default:
      return trn("{} second", "{} seconds", number, count);
  }
}

/// By `Attendee::Status`.
constexpr const char* kAnswers[] = {"",
                                    translatable("has not answered"),
                                    translatable("accepted"),
                                    translatable("declined"),
                                    translatable("tentative"),
                                    translatable("sends somebody else"),
                                    translatable("completed"),
                                    translatable("in process")};

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

void setCategories(const std::vector<std::string>& names, store::Item& item) {
  std::string line;
  for (std::string name : names) {
    store::dropUnwritable(name);
    line += (line.empty() ? "CATEGORIES:" : ",") + store::escapeText(name);
  }
  if (!line.empty()) { line += '\n'; }
  item.extra = store::withLinesOf("CATEGORIES", item.extra, line);
}

bool isCancelled(const store::Item& item) { return statusOf(item) == "cancelled"; }
bool isTentative(const store::Item& item) { return statusOf(item) == "tentative"; }

std::string lengthWords(std::chrono::seconds length) {
  std::int64_t left = std::abs(length.count());
  std::string text;
  for (const std::int64_t unit : kLengthUnits) {
    const std::int64_t count = left / unit;
    // Seven days are a week, and ten days are ten days.
    if (count == 0 || (unit == kWeek && left % unit != 0)) { continue; }
    text += (text.empty() ? "" : " ") + lengthIn(unit, count);
    left %= unit;
  }
  return text.empty() ? lengthIn(1, 0) : text;
}

namespace {

std::string relativeWords(const store::AlarmOffset& trigger, store::ItemKind kind) {
  const std::string length = lengthWords(trigger.offset);
  const bool at = trigger.offset.count() == 0, before = trigger.offset.count() < 0;
  if (!trigger.fromEnd) {
    return at ? tr("at the start") : before ? tr("{} before the start", length) : tr("{} after the start", length);
  }
  if (kind == store::ItemKind::kEvent) {
    return at ? tr("at the end") : before ? tr("{} before the end", length) : tr("{} after the end", length);
  }
  return at ? tr("when it is due") : before ? tr("{} before it is due", length) : tr("{} after it is due", length);
}

}  // namespace

std::string alarmWords(const store::Alarm& alarm, store::ItemKind kind, const store::Zone& viewer) {
  std::string text;
  if (const auto* moment = std::get_if<store::Moment>(&alarm.trigger)) {
    const store::LocalTime time = viewer.toLocal(*moment);
    text = tr("on {} at {}", shortDay(store::LocalDay(time)), clockTime(time));
  } else {
    text = relativeWords(std::get<store::AlarmOffset>(alarm.trigger), kind);
  }
  switch (alarm.action) {
    case store::Alarm::Action::kDisplay:
      break;
    case store::Alarm::Action::kAudio:
      text += tr(", with a sound");
      break;
    case store::Alarm::Action::kProcedure:
      text += alarm.url ? tr(", opens {}", *alarm.url) : tr(", starts a program");
      break;
    case store::Alarm::Action::kEmail:
      text += alarm.emailAddress ? tr(", by e-mail to {}", *alarm.emailAddress) : tr(", by e-mail");
      break;
  }
  return text;
}

std::string statusWords(const store::Item& item) {
  constexpr const char* kKnown[] = {translatable("completed"), translatable("cancelled"),  translatable("tentative"),
                                    translatable("confirmed"), translatable("in-process"), translatable("needs-action"),
                                    translatable("draft"),     translatable("final")};
  const std::string status = statusOf(item);
  const auto* const known = std::find(std::begin(kKnown), std::end(kKnown), status);
  return known != std::end(kKnown) ? translated(*known) : status;
}

std::string priorityWords(int priority) {
  if (priority <= 0) { return tr("none"); }
  // RFC 5545, 3.8.1.9.
  return priority < 5 ? tr("high ({})", priority) : priority == 5 ? tr("medium (5)") : tr("low ({})", priority);
}

std::string answerWords(Attendee::Status status) { return translated(kAnswers[static_cast<std::size_t>(status)]); }

std::string roleWords(const Attendee& attendee) {
  switch (attendee.role) {
    case Attendee::Role::kOptional:
      return tr("optional");
    case Attendee::Role::kChair:
      return tr("chair");
    case Attendee::Role::kNonParticipant:
      return tr("for information");
    default:
      break;
  }
  return attendee.type == Attendee::Type::kRoom       ? tr("room")
         : attendee.type == Attendee::Type::kResource ? tr("resource")
                                                      : "";
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
