#include "store/icalendar/vtimezone.h"

#include <algorithm>
#include <map>

#include <fmt/format.h>

#include "base/text.h"
#include "base/translation.h"
#include "base/try.h"
#include "store/icalendar/content_line.h"
#include "store/recurrence/recurrence_rule.h"
#include "store/recurrence/rule_text.h"
#include "store/time/time_text.h"
#include "store/time/zone_rules.h"

// Reading VTIMEZONE (RFC 5545, 3.6.5).
namespace orlocal::store {

namespace {

/// A STANDARD or DAYLIGHT part: from its onsets on, its clock is in force.
struct Observance {
  std::optional<CalendarTime> start;
  std::optional<int> from, to;
  bool daylight = false;
  std::string name;
  std::vector<RecurrenceRule> rules;
  std::vector<LocalSeconds> dates;

  bool whole() const { return start && from && to; }
};

/// Of all parts together, up to `kLastZoneYear`: nine a year.
constexpr std::uint64_t kMostOnsets = 5'000;
/// Rules from 1601 on take some 11,000 each.
constexpr std::uint64_t kMostOnsetSteps = 100'000;

Status readProperty(Observance& part, const ContentLine& line) {
  if (line.is("DTSTART")) {
    part.start = parseTime(line.value);
  } else if (line.is("TZOFFSETFROM")) {
    part.from = parseOffset(line.value);
  } else if (line.is("TZOFFSETTO")) {
    part.to = parseOffset(line.value);
  } else if (line.is("TZNAME") && part.name.empty()) {
    part.name = unescapeText(line.value).substr(0, 30);
  } else if (line.is("RRULE")) {
    ORLOCAL_TRY(RecurrenceRule rule, parseRule(line.value));
    part.rules.push_back(std::move(rule));
  } else if (line.is("RDATE")) {
    for (std::string_view value : splitUnescaped(line.value, ',')) {
      if (const auto time = parseTime(value.substr(0, value.find('/')))) {
        part.dates.push_back(localSeconds(time->local));
      }
    }
  }
  return {};
}

/// Onsets on the clock before them.
Result<std::vector<LocalSeconds>> onsetsOf(const Observance& part) {
  const LocalSeconds start = localSeconds(part.start->local);
  std::vector<LocalSeconds> onsets = part.dates;
  onsets.push_back(start);
  ExpansionBudget budget(kMostOnsetSteps);
  for (const RecurrenceRule& rule : part.rules) {
    ORLOCAL_TRY(const CompiledRule compiled, CompiledRule::make(rule, start, false));
    LocalSeconds end = dayNumber(kLastZoneYear, 12, 31) * kSecondsPerDay;
    if (rule.until) {
      const bool utc = rule.until->kind == CalendarTime::Kind::kUtc;
      const bool day = rule.until->kind == CalendarTime::Kind::kDate;
      end = std::min(end, localSeconds(rule.until->local) + (utc ? *part.from : day ? kSecondsPerDay - 1 : 0) + 1);
    }
    std::int64_t left = rule.count.value_or(kMostOnsets);
    const bool done = compiled.walk(start, end, budget, [&](LocalSeconds onset) {
      onsets.push_back(onset);
      return --left > 0;
    });
    if (!done) { return failure(ErrorCode::kBudget, tr("its clock changes too often")); }
  }
  return onsets;
}

}  // namespace

Result<ZoneRules> rulesOfVTimeZone(std::string_view text) {
  std::vector<Observance> parts;
  Observance* current = nullptr;
  ContentLines lines(text);
  for (ContentLine line; lines.next(line);) {
    if (line.is("BEGIN") && (equalsNoCase(line.value, "STANDARD") || equalsNoCase(line.value, "DAYLIGHT"))) {
      current = &parts.emplace_back();
      current->daylight = equalsNoCase(line.value, "DAYLIGHT");
    } else if (line.is("END")) {
      current = nullptr;
    } else if (current != nullptr) {
      ORLOCAL_CHECK(readProperty(*current, line));
    }
  }
  std::erase_if(parts, [](const Observance& part) { return !part.whole(); });
  if (parts.empty()) {
    return failure(ErrorCode::kInvalid, tr("it has no part with DTSTART, TZOFFSETFROM and TZOFFSETTO"));
  }

  ZoneRules rules;
  std::map<std::int64_t, const Observance*> onsets;
  for (const Observance& part : parts) {
    ORLOCAL_TRY(const auto found, onsetsOf(part));
    for (LocalSeconds onset : found) { onsets[onset - *part.from] = &part; }
    if (onsets.size() > kMostOnsets) { return failure(ErrorCode::kBudget, tr("its clock changes too often")); }
  }
  const Observance& first = *onsets.begin()->second;
  rules.initial = {*first.from, false, offsetText(*first.from)};
  for (const auto& [at, part] : onsets) {
    rules.changes.push_back({at, {*part->to, part->daylight, part->name.empty() ? offsetText(*part->to) : part->name}});
  }
  return rules;
}

}  // namespace orlocal::store
