#include <algorithm>
#include <array>
#include <utility>

#include "base/text.h"
#include "store/icalendar/item_reader.h"
#include "store/icalendar/item_words.h"
#include "store/time/time_text.h"
#include "store/time/zone.h"

// Alarms and attendees of an item.
namespace orlocal::store {

namespace {

/// A sound or program is a name or URI; what carries its bytes stays as it is.
bool isUri(const ContentLine& line) {
  return !line.value.empty() && !line.parameter("ENCODING") &&
         equalsNoCase(line.parameter("VALUE").value_or("URI"), "URI");
}

std::string_view withoutMailto(std::string_view address) {
  constexpr std::string_view kMailto = "mailto:";
  return equalsNoCase(address.substr(0, kMailto.size()), kMailto) ? address.substr(kMailto.size()) : address;
}

/// An e-mail address, with "mailto:" or without.
bool isMailAddress(std::string_view address) {
  return address.find('@') != std::string_view::npos && withoutMailto(address).find(':') == std::string_view::npos;
}

/// What is said of a field's line beyond its value, as the kept lines have it.
std::string keptParameters(std::string_view property, const ContentLine& line) {
  std::string kept;
  std::string_view rest = line.parameters;
  for (ContentParameter parameter; nextParameter(rest, parameter);) {
    if (!equalsNoCase(parameter.name, "VALUE")) { kept += parameter.text; }
  }
  return kept.empty() ? kept : "@" + std::string(property) + kept + "\n";
}

bool readTrigger(Alarm& alarm, const ContentLine& line) {
  std::string_view rest = line.parameters;
  bool fromEnd = false;
  for (ContentParameter parameter; nextParameter(rest, parameter);) {
    fromEnd = fromEnd || (equalsNoCase(parameter.name, "RELATED") && equalsNoCase(parameter.value, "END"));
  }
  if (const auto offset = parseDuration(line.value)) {
    alarm.trigger = Alarm::Relative{std::chrono::seconds(offset->days * 86400 + offset->seconds), fromEnd};
    return true;
  }
  auto time = parseTime(line.value);
  if (!time) { return false; }
  alarm.trigger = momentOf(*time, Zone());
  return true;
}

}  // namespace

std::optional<Alarm> readAlarm(std::span<const std::string> lines) {
  Alarm alarm;
  bool hasTrigger = false;
  std::string parameters;  // of the line that a field holds
  for (const std::string& text : lines) {
    const auto line = splitContentLine(text, 0);
    if (!line || !line->is("ACTION")) { continue; }
    const auto action = valueOf(kActions, line->value);
    if (!action) { return std::nullopt; }
    alarm.action = *action;
  }
  for (const std::string& text : lines) {
    const auto line = splitContentLine(text, 0);
    if (!line || line->is("ACTION")) { continue; }
    const bool attach = line->is("ATTACH") && isUri(*line);
    if (line->is("TRIGGER") && !hasTrigger) {
      if (!readTrigger(alarm, *line)) { return std::nullopt; }
      hasTrigger = true;
    } else if (attach && alarm.action == Alarm::Action::kAudio && !alarm.soundName) {
      alarm.soundName = std::string(line->value);
      parameters = keptParameters("ATTACH", *line);
    } else if (attach && alarm.action == Alarm::Action::kProcedure && !alarm.url) {
      alarm.url = std::string(line->value);
      parameters = keptParameters("ATTACH", *line);
    } else if (line->is("ATTENDEE") && alarm.action == Alarm::Action::kEmail && !alarm.emailAddress &&
               isMailAddress(line->value)) {
      alarm.emailAddress = std::string(withoutMailto(line->value));
      parameters = keptParameters("ATTENDEE", *line);
    } else if (text != kAlarmDescription && text != kAlarmSummary) {
      alarm.extra.append(text).append("\n");
    }
  }
  // First, so that their order does not hang on where the lines stood.
  alarm.extra.insert(0, parameters);
  return hasTrigger ? std::optional(std::move(alarm)) : std::nullopt;
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
  bool hasStatus = false, hasRole = false, hasType = false;
  std::string_view rest = line.parameters;
  for (ContentParameter parameter; nextParameter(rest, parameter);) {
    const auto read = [&](const auto& words, auto& field, bool& has) {
      // Each may come once (RFC 5545, 3.2); of several the first counts, as for any parameter.
      if (std::exchange(has, true)) { return; }
      const auto value = valueOf(words, parameter.value);
      if (value) {
        field = *value;
      } else {
        field = {};
      }
      if (!value) { made.extra += parameter.text; }
    };
    if (equalsNoCase(parameter.name, "CN")) {
      made.name = made.name ? std::move(made.name) : line.parameter("CN");
    } else if (equalsNoCase(parameter.name, "PARTSTAT")) {
      read(kParticipationStates, made.status, hasStatus);
    } else if (equalsNoCase(parameter.name, "ROLE")) {
      read(kRoles, made.role, hasRole);
    } else if (equalsNoCase(parameter.name, "CUTYPE")) {
      read(kAttendeeTypes, made.type, hasType);
    } else {
      made.extra += parameter.text;
    }
  }
  return made;
}

}  // namespace orlocal::store
