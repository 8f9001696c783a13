#include <algorithm>
#include <array>
#include <utility>

#include "store/calendar_text.h"
#include "store/item_reader.h"
#include "store/item_words.h"
#include "store/zone.h"

// Alarms and attendees of an item.
namespace orlocal::store {

namespace {

/// A sound or program is a plain name or URI; what carries its bytes or is written in another way stays as it is.
bool isPlainUri(const ContentLine& line) {
  std::string_view rest = line.parameters;
  for (ContentParameter parameter; nextParameter(rest, parameter);)
    if (!equalsNoCase(parameter.name, "VALUE") || !equalsNoCase(parameter.value, "URI")) return false;
  return !line.value.empty();
}

std::string_view withoutMailto(std::string_view address) {
  constexpr std::string_view kMailto = "mailto:";
  return equalsNoCase(address.substr(0, kMailto.size()), kMailto) ? address.substr(kMailto.size()) : address;
}

bool readTrigger(Alarm& alarm, const ContentLine& line) {
  std::string_view rest = line.parameters;
  bool fromEnd = false;
  for (ContentParameter parameter; nextParameter(rest, parameter);)
    fromEnd = fromEnd || (equalsNoCase(parameter.name, "RELATED") && equalsNoCase(parameter.value, "END"));
  if (const auto offset = parseDuration(line.value)) {
    alarm.trigger = Alarm::Relative{std::chrono::seconds(offset->days * 86400 + offset->seconds), fromEnd};
    return true;
  }
  auto time = parseTime(line.value);
  if (!time) return false;
  alarm.trigger = momentOf(*time, Zone());
  return true;
}

}  // namespace

std::optional<Alarm> readAlarm(const std::vector<std::string>& lines) {
  Alarm alarm;
  bool hasTrigger = false;
  for (const std::string& text : lines) {
    const auto line = splitContentLine(text, 0);
    if (!line || !line->is("ACTION")) continue;
    const auto action = valueOf(kActions, line->value);
    if (!action) return std::nullopt;
    alarm.action = *action;
  }
  for (const std::string& text : lines) {
    const auto line = splitContentLine(text, 0);
    if (!line || line->is("ACTION")) continue;
    const bool attach = line->is("ATTACH") && isPlainUri(*line);
    if (line->is("TRIGGER") && !hasTrigger) {
      if (!readTrigger(alarm, *line)) return std::nullopt;
      hasTrigger = true;
    } else if (attach && alarm.action == Alarm::Action::kAudio && !alarm.soundName) {
      alarm.soundName = std::string(line->value);
    } else if (attach && alarm.action == Alarm::Action::kProcedure && !alarm.url) {
      alarm.url = std::string(line->value);
    } else if (line->is("ATTENDEE") && alarm.action == Alarm::Action::kEmail && !alarm.emailAddress &&
               line->parameters.empty()) {
      alarm.emailAddress = std::string(withoutMailto(line->value));
    } else if (text != kAlarmDescription && text != kAlarmSummary) {
      alarm.extra.append(text).append("\n");
    }
  }
  return hasTrigger ? std::optional(alarm) : std::nullopt;
}

Attendee readAttendee(const ContentLine& line) {
  Attendee made;
  made.address = std::string(line.value);
  made.organizer = line.is("ORGANIZER");
  if (!made.organizer) {
    // What RFC 5545 says for an attendee about whom nothing is said.
    made.status = Attendee::Status::kPending;
    made.role = Attendee::Role::kRequired;
    made.type = Attendee::Type::kPerson;
  }
  std::string_view rest = line.parameters;
  for (ContentParameter parameter; nextParameter(rest, parameter);) {
    const auto read = [&](const auto& words, auto& field) {
      const auto value = valueOf(words, parameter.value);
      if (value)
        field = *value;
      else
        field = {};
      if (!value) made.extra += parameter.text;
    };
    if (equalsNoCase(parameter.name, "CN"))
      made.name = line.parameter("CN");
    else if (equalsNoCase(parameter.name, "PARTSTAT"))
      read(kParticipationStates, made.status);
    else if (equalsNoCase(parameter.name, "ROLE"))
      read(kRoles, made.role);
    else if (equalsNoCase(parameter.name, "CUTYPE"))
      read(kAttendeeTypes, made.type);
    else
      made.extra += parameter.text;
  }
  return made;
}

}  // namespace orlocal::store
