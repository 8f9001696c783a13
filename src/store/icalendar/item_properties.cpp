#include <algorithm>
#include <charconv>
#include <utility>

#include <fmt/format.h>

#include "base/text.h"
#include "base/translation.h"
#include "base/try.h"
#include "store/icalendar/item_draft.h"
#include "store/icalendar/item_words.h"
#include "store/recurrence/recurrence_scale.h"
#include "store/recurrence/rule_text.h"
#include "store/time/civil_days.h"
#include "store/time/time_text.h"

// What each property of an item means.
namespace orlocal::store {

using Kind = CalendarTime::Kind;

constexpr std::array<ItemDraft::Property, 24> ItemDraft::kProperties{{
    {"UID", &ItemDraft::uid},
    {"DTSTAMP", &ItemDraft::stamp},
    {"DTSTART", &ItemDraft::start},
    {"DTEND", &ItemDraft::end},
    {"DUE", &ItemDraft::end},
    {"DURATION", &ItemDraft::duration},
    {"SUMMARY", &ItemDraft::summary},
    {"DESCRIPTION", &ItemDraft::description},
    {"LOCATION", &ItemDraft::location},
    {"URL", &ItemDraft::url},
    {"CREATED", &ItemDraft::created},
    {"LAST-MODIFIED", &ItemDraft::modified},
    {"SEQUENCE", &ItemDraft::sequence},
    {"PRIORITY", &ItemDraft::priority},
    {"RRULE", &ItemDraft::rule},
    {"RDATE", &ItemDraft::added},
    {"EXDATE", &ItemDraft::excluded},
    {"EXRULE", &ItemDraft::exceptionRule},
    {"RECURRENCE-ID", &ItemDraft::recurrenceId},
    {"COMPLETED", &ItemDraft::completed},
    {"STATUS", &ItemDraft::status},
    {"PERCENT-COMPLETE", &ItemDraft::percent},
    {"ATTENDEE", &ItemDraft::attendee},
    {"ORGANIZER", &ItemDraft::attendee},
}};

void ItemDraft::property(const ContentLine& line) {
  const auto* found =
      std::find_if(kProperties.begin(), kProperties.end(), [&](const Property& known) { return line.is(known.name); });
  if (found == kProperties.end()) {
    keep(line);
  } else {
    (this->*found->read)(line);
  }
}

void ItemDraft::keep(const ContentLine& line) { m_item.extra.append(line.text).append("\n"); }

void ItemDraft::keepParameters(const ContentLine& line, std::string parameters) {
  if (!parameters.empty()) { m_parameters.emplace(inCapitals(line.name), std::move(parameters)); }
}

void ItemDraft::text(std::optional<std::string>& field, const ContentLine& line, bool escaped) {
  if (field) {
    keep(line);
    return;
  }
  field = escaped ? unescapeText(line.value) : std::string(line.value);
  keepParameters(line, parametersOf(line).others);
}

void ItemDraft::uid(const ContentLine&) {}  // known from the layout

void ItemDraft::stamp(const ContentLine& line) { m_stamp = instant(line); }

void ItemDraft::summary(const ContentLine& line) { text(m_item.title, line, true); }

void ItemDraft::description(const ContentLine& line) { text(m_item.notes, line, true); }

void ItemDraft::location(const ContentLine& line) { text(m_item.location, line, true); }

void ItemDraft::url(const ContentLine& line) { text(m_item.url, line, false); }

ItemDraft::LineParameters ItemDraft::parametersOf(const ContentLine& line) {
  LineParameters made;
  made.line = line.line;
  bool hasValue = false, hasZone = false;  // of several the first counts
  std::string_view rest = line.parameters;
  for (ContentParameter parameter; nextParameter(rest, parameter);) {
    if (equalsNoCase(parameter.name, "VALUE")) {
      if (!std::exchange(hasValue, true)) { made.isDate = equalsNoCase(parameter.plainValue(), "DATE"); }
    } else if (equalsNoCase(parameter.name, "TZID")) {
      if (!std::exchange(hasZone, true)) { made.tzid = parameter.plainValue(); }
    } else {
      made.others += parameter.text;
    }
  }
  return made;
}

std::optional<CalendarTime> ItemDraft::time(LineParameters& parameters, std::string_view value) {
  auto read = parseTime(value);
  if (!read) { return std::nullopt; }
  if (read->kind != Kind::kDate && parameters.isDate) {
    read->kind = Kind::kDate;
    read->local = LocalTime(LocalDay(read->local));
  }
  if (read->kind != Kind::kFloating || parameters.tzid.empty()) { return read; }
  if (parameters.zone == nullptr) {
    parameters.zone = &m_zones.zoneOf(parameters.tzid, m_span.calendar, parameters.line, m_problems);
  }
  if (const auto& zone = *parameters.zone) {
    read->kind = *zone == "UTC" ? Kind::kUtc : Kind::kZoned;
    read->zone = read->kind == Kind::kUtc ? "" : *zone;
  }
  return read;
}

std::optional<Moment> ItemDraft::instant(const ContentLine& line) {
  auto parameters = parametersOf(line);
  const auto read = time(parameters, line.value);
  if (!read && !line.value.empty()) { warn(line.line, tr("{} has no date that can be read", line.name)); }
  return read ? std::optional(momentOf(*read, Zone())) : std::nullopt;
}

void ItemDraft::moment(std::optional<CalendarTime>& field, const ContentLine& line) {
  auto parameters = parametersOf(line);
  const auto read = time(parameters, line.value);
  if (!read) {
    auto reason = tr("{} has no date that can be read: \"{}\"", line.name, line.value.substr(0, 40));
    // A reminder is one without its dates, too.
    return m_item.kind == ItemKind::kEvent ? fail(line.line, std::move(reason)) : warn(line.line, std::move(reason));
  }
  if (field) { return warn(line.line, tr("a second {} was passed over", line.name)); }
  field = read;
  keepParameters(line, std::move(parameters.others));
}

void ItemDraft::start(const ContentLine& line) { moment(m_item.start, line); }

void ItemDraft::end(const ContentLine& line) {
  if (line.is("DUE") != (m_item.kind == ItemKind::kReminder)) {
    return keep(line);  // that of the other kind
  }
  m_endLine = line.line;
  if (line.value.empty()) { return warn(line.line, tr("{} is empty and was passed over", line.name)); }
  moment(m_item.endOrDue(), line);
}

void ItemDraft::duration(const ContentLine& line) {
  m_endLine = line.line;
  m_duration = parseDuration(line.value);
  if (!m_duration) { fail(line.line, tr("DURATION has no length that can be read: \"{}\"", line.value.substr(0, 40))); }
}

void ItemDraft::recurrenceId(const ContentLine& line) {
  moment(m_item.recurrenceId, line);
  m_recurrenceIdLine = line.line;
  const auto range = line.parameter("RANGE");
  if (!range) { return; }
  m_andFuture = equalsNoCase(*range, "THISANDFUTURE");
  if (!m_andFuture) { warn(line.line, tr("RANGE={} is not followed: only this one occurrence is changed", *range)); }
}

Result<RecurrenceRule> ItemDraft::readRule(const ContentLine& line) {
  auto read = parseRule(line.value);
  if (!read || !ScaledRule::isNeededFor(*read)) { return read; }
  ORLOCAL_CHECK(ScaledRule::check(*read));
  return read;
}

bool ItemDraft::mayHaveAnotherRule(const ContentLine& line) {
  constexpr std::size_t kMostRules = 500;
  const bool may = m_item.recurrence.rules.size() + m_item.recurrence.exceptionRules.size() < kMostRules;
  if (!may) { fail(line.line, tr("it has more than 500 rules")); }
  return may;
}

void ItemDraft::rule(const ContentLine& line) {
  if (!mayHaveAnotherRule(line)) { return; }
  auto read = readRule(line);
  m_ruleLine = line.line;
  if (read) {
    m_item.recurrence.rules.push_back(std::move(*read));
  } else if (read.error().code == ErrorCode::kUnsupported && m_span.changed) {
    warn(line.line, translated(kRuleOfChanged));
  } else if (read.error().code == ErrorCode::kUnsupported) {
    keep(line);
    warn(line.line, tr("{}; the rule is kept, and nothing is repeated by it", read.error().message));
  } else {
    fail(line.line, read.error().message);
  }
}

void ItemDraft::exceptionRule(const ContentLine& line) {
  if (!mayHaveAnotherRule(line)) { return; }
  auto read = readRule(line);
  if (!read) {
    keep(line);
    return warn(line.line, tr("{}; EXRULE is kept, and what it takes out is shown", read.error().message));
  }
  ExceptionRule made{std::move(*read), std::nullopt};
  // Ours, of what was split off a series: from when the rule runs there.
  if (const auto start = line.parameter(kExceptionStart)) {
    if (const auto time = parseTime(*start)) { made.start = time->local; }
  }
  m_item.recurrence.exceptionRules.push_back(std::move(made));
}

void ItemDraft::added(const ContentLine& line) { dates(line, m_item.recurrence.added, true); }

void ItemDraft::excluded(const ContentLine& line) { dates(line, m_item.recurrence.excluded, false); }

void ItemDraft::dates(const ContentLine& line, std::vector<CalendarTime>& list, bool periods) {
  if (line.value.empty()) { return warn(line.line, tr("{} is empty and was passed over", line.name)); }
  auto parameters = parametersOf(line);
  for (std::string_view value : splitUnescaped(line.value, ',')) {
    const std::size_t slash = periods ? value.find('/') : std::string_view::npos;
    const auto read = time(parameters, value.substr(0, slash));
    if (!read) {
      warn(line.line,
           tr("{} has no date that can be read and was passed over: \"{}\"", line.name, value.substr(0, 40)));
      continue;
    }
    list.push_back(*read);
    if (slash != std::string_view::npos) {
      m_periods.emplace_back(*read, periodEnd(parameters, *read, value.substr(slash + 1)));
    }
  }
}

std::optional<CalendarTime> ItemDraft::periodEnd(LineParameters& parameters, const CalendarTime& begin,
                                                 std::string_view text) {
  if (const auto length = parseDuration(text)) { return after(begin, *length); }
  return time(parameters, text);
}

void ItemDraft::sequence(const ContentLine& line) {
  const auto [end, error] = std::from_chars(line.value.data(), line.value.data() + line.value.size(), m_item.sequence);
  if (error != std::errc()) { warn(line.line, tr("SEQUENCE is no number and was passed over")); }
}

void ItemDraft::priority(const ContentLine& line) {
  int value = -1;
  std::from_chars(line.value.data(), line.value.data() + line.value.size(), value);
  if (value < 0 || value > 9) { return warn(line.line, tr("PRIORITY is not from 0 to 9 and was passed over")); }
  m_item.priority = value;
}

void ItemDraft::created(const ContentLine& line) { m_item.created = instant(line); }

void ItemDraft::modified(const ContentLine& line) { m_item.modified = instant(line); }

void ItemDraft::completed(const ContentLine& line) {
  if (m_item.kind == ItemKind::kReminder) {
    m_item.completed = instant(line);
  } else {
    keep(line);
  }
}

void ItemDraft::status(const ContentLine& line) {
  if (m_item.kind == ItemKind::kReminder && equalsNoCase(line.value, "COMPLETED")) {
    m_isDone = true;
  } else {
    keep(line);
  }
}

void ItemDraft::percent(const ContentLine& line) {
  if (m_item.kind != ItemKind::kReminder) {
    keep(line);
  } else if (line.value == "100") {
    m_isFull = true;
  } else {
    m_percent = std::string(line.text);
  }
}

void ItemDraft::attendee(const ContentLine& line) { m_item.attendees.push_back(readAttendee(line)); }

CalendarTime ItemDraft::after(CalendarTime begin, const Duration& length) {
  begin.local += length.days * kSecondsPerDay;
  if (begin.kind == Kind::kDate || length.seconds == 0) { return begin; }
  const Zone zone = begin.kind == Kind::kZoned ? Zone::named(begin.zone).value_or(Zone()) : Zone();
  begin.local = zone.toLocal(zone.toMoment(begin.local) + std::chrono::seconds(length.seconds));
  return begin;
}

}  // namespace orlocal::store
