#include "store/recurrence/rule_text.h"

#include <algorithm>
#include <array>
#include <charconv>

#include <fmt/format.h>

#include "base/text.h"
#include "base/translation.h"
#include "base/try.h"
#include "store/time/time_text.h"

namespace orlocal::store {

namespace {

constexpr std::array<std::string_view, 7> kFrequencies{"SECONDLY", "MINUTELY", "HOURLY", "DAILY",
                                                       "WEEKLY",   "MONTHLY",  "YEARLY"};
constexpr std::array<std::string_view, 3> kSkips{"OMIT", "BACKWARD", "FORWARD"};

/// The parts of a rule that are plain lists of numbers, in the order they are written.
struct ListPart {
  std::string_view name;
  std::vector<int> RecurrenceRule::*list;
};
constexpr std::array<ListPart, 4> kTimeParts{{{"BYMONTH", &RecurrenceRule::byMonth},
                                              {"BYWEEKNO", &RecurrenceRule::byWeekNumber},
                                              {"BYYEARDAY", &RecurrenceRule::byYearDay},
                                              {"BYMONTHDAY", &RecurrenceRule::byMonthDay}}};
constexpr std::array<ListPart, 4> kLateParts{{{"BYHOUR", &RecurrenceRule::byHour},
                                              {"BYMINUTE", &RecurrenceRule::byMinute},
                                              {"BYSECOND", &RecurrenceRule::bySecond},
                                              {"BYSETPOS", &RecurrenceRule::bySetPosition}}};

template <class T>
std::optional<T> parseNumber(std::string_view text) {
  if (text.starts_with('+')) { text.remove_prefix(1); }
  T value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

std::optional<int> weekDay(std::string_view text) {
  const auto found =
      std::find_if(kWeekDays.begin(), kWeekDays.end(), [&](auto day) { return equalsNoCase(day, text); });
  return found == kWeekDays.end() ? std::nullopt : std::optional(static_cast<int>(found - kWeekDays.begin()));
}

Failed badPart(std::string_view part) {
  return failure(ErrorCode::kInvalid, tr("the rule's part \"{}\" makes no sense", part));
}

Status readWeekDays(RecurrenceRule& rule, std::string_view part, std::string_view value) {
  for (std::string_view day : splitUnescaped(value, ',')) {
    day = trimmed(day);
    if (day.size() < 2) { return badPart(part); }
    const auto number = weekDay(day.substr(day.size() - 2));
    const std::string_view ordinal = day.substr(0, day.size() - 2);
    const auto nth = ordinal.empty() ? std::optional(0) : parseNumber<int>(ordinal);
    if (!number || !nth || (!ordinal.empty() && *nth == 0)) { return badPart(part); }
    rule.byDay.push_back({*nth, *number});
  }
  return {};
}

Status readPart(RecurrenceRule& rule, std::string_view part, std::string_view name, std::string_view value) {
  const auto listed = [&](const auto& parts) {
    return std::find_if(parts.begin(), parts.end(),
                        [&](const ListPart& known) { return equalsNoCase(known.name, name); });
  };
  const ListPart* list = nullptr;
  if (const auto* found = listed(kTimeParts); found != kTimeParts.end()) { list = found; }
  if (const auto* found = listed(kLateParts); found != kLateParts.end()) { list = found; }
  if (list != nullptr) {
    for (std::string_view item : splitUnescaped(value, ',')) {
      item = trimmed(item);
      const bool leap = list->list == &RecurrenceRule::byMonth && (item.ends_with('L') || item.ends_with('l'));
      if (leap) {
        const auto month = parseNumber<int>(item.substr(0, item.size() - 1));
        if (!month) { return badPart(part); }
        rule.byLeapMonth.push_back(*month);
        continue;
      }
      const auto number = parseNumber<int>(trimmed(item));
      if (!number) { return badPart(part); }
      (rule.*list->list).push_back(*number);
    }
  } else if (equalsNoCase(name, "FREQ")) {
    const auto* found =
        std::find_if(kFrequencies.begin(), kFrequencies.end(), [&](auto known) { return equalsNoCase(known, value); });
    if (found == kFrequencies.end()) { return badPart(part); }
    rule.frequency = static_cast<RecurrenceRule::Frequency>(found - kFrequencies.begin());
  } else if (equalsNoCase(name, "INTERVAL")) {
    const auto number = parseNumber<int>(value);
    if (!number || *number < 1) { return badPart(part); }
    rule.interval = *number;
  } else if (equalsNoCase(name, "COUNT")) {
    rule.count = parseNumber<std::int64_t>(value);
    if (!rule.count || *rule.count < 1) { return badPart(part); }
  } else if (equalsNoCase(name, "UNTIL")) {
    rule.until = parseTime(value);
    if (!rule.until) { return badPart(part); }
  } else if (equalsNoCase(name, "BYDAY")) {
    return readWeekDays(rule, part, value);
  } else if (equalsNoCase(name, "WKST")) {
    rule.weekStart = weekDay(value);
    if (!rule.weekStart) { return badPart(part); }
  } else if (equalsNoCase(name, "RSCALE")) {
    if (value.empty()) { return badPart(part); }
    rule.scale += inCapitals(value);
  } else if (equalsNoCase(name, "SKIP")) {
    const auto* found =
        std::find_if(kSkips.begin(), kSkips.end(), [&](auto known) { return equalsNoCase(known, value); });
    if (found == kSkips.end()) { return badPart(part); }
    rule.skip = static_cast<RecurrenceRule::Skip>(found - kSkips.begin());
  } else {
    return failure(ErrorCode::kUnsupported, tr("the rule's part \"{}\" cannot be followed", part));
  }
  return {};
}

void putList(std::string& out, const ListPart& part, const RecurrenceRule& rule) {
  const char* before = "=";
  const auto put = [&](const std::vector<int>& values, const char* after) {
    for (const int value : values) {
      if (*before == '=') { out.append(";").append(part.name); }
      out += fmt::format("{}{}{}", before, value, after);
      before = ",";
    }
  };
  put(rule.*part.list, "");
  if (part.list == &RecurrenceRule::byMonth) { put(rule.byLeapMonth, "L"); }
}

/// What the parts say together.
Status settle(RecurrenceRule& rule) {
  if (rule.scale.empty() && rule.skip != RecurrenceRule::Skip::kOmit) {
    return failure(ErrorCode::kUnsupported, tr("the rule's SKIP cannot be followed without RSCALE"));
  }
  if (rule.scale.empty() && !rule.byLeapMonth.empty()) {
    return failure(ErrorCode::kInvalid, tr("the rule's BYMONTH names a leap month, and the calendar has none"));
  }
  if (rule.scale == "GREGORIAN" && rule.skip == RecurrenceRule::Skip::kOmit && rule.byLeapMonth.empty()) {
    rule.scale.clear();
  }
  return {};
}

}  // namespace

Result<RecurrenceRule> parseRule(std::string_view text) {
  RecurrenceRule rule;
  bool hasFrequency = false;
  for (std::string_view part : splitUnescaped(text, ';')) {
    part = trimmed(part);
    if (part.empty()) { continue; }
    const std::size_t equals = part.find('=');
    if (equals == std::string_view::npos) { return badPart(part); }
    const std::string_view name = trimmed(part.substr(0, equals)), value = trimmed(part.substr(equals + 1));
    ORLOCAL_CHECK(readPart(rule, part, name, value));
    hasFrequency = hasFrequency || equalsNoCase(name, "FREQ");
  }
  if (!hasFrequency) { return failure(ErrorCode::kInvalid, tr("the rule has no FREQ")); }
  ORLOCAL_CHECK(settle(rule));
  return rule;
}

std::string ruleText(const RecurrenceRule& rule) {
  std::string text = rule.scale.empty() ? std::string() : "RSCALE=" + rule.scale + ";";
  text += fmt::format("FREQ={}", kFrequencies[static_cast<std::size_t>(rule.frequency)]);
  if (rule.until) { text += ";UNTIL=" + timeText(*rule.until); }
  if (rule.count) { text += fmt::format(";COUNT={}", *rule.count); }
  if (rule.interval != 1) { text += fmt::format(";INTERVAL={}", rule.interval); }
  for (const auto& part : kTimeParts) { putList(text, part, rule); }
  for (std::size_t i = 0; i < rule.byDay.size(); ++i) {
    const auto& day = rule.byDay[i];
    text += i == 0 ? ";BYDAY=" : ",";
    if (day.ordinal != 0) { text += fmt::format("{}", day.ordinal); }
    text += kWeekDays[static_cast<std::size_t>(day.day)];
  }
  for (const auto& part : kLateParts) { putList(text, part, rule); }
  if (rule.weekStart) { text += fmt::format(";WKST={}", kWeekDays[static_cast<std::size_t>(*rule.weekStart)]); }
  if (rule.skip != RecurrenceRule::Skip::kOmit) {
    text.append(";SKIP=").append(kSkips[static_cast<std::size_t>(rule.skip)]);
  }
  return text;
}

}  // namespace orlocal::store
