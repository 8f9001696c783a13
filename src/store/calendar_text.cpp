#include "store/calendar_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

#include <fmt/core.h>

#include "store/civil_days.h"
#include "store/content_line.h"

namespace orlocal::store {

namespace {

constexpr std::array<std::string_view, 7> kFrequencies{"SECONDLY", "MINUTELY", "HOURLY", "DAILY",
                                                       "WEEKLY",   "MONTHLY",  "YEARLY"};
constexpr std::array<std::string_view, 3> kSkips{"OMIT", "BACKWARD", "FORWARD"};
constexpr std::array<std::string_view, 7> kWeekDays{"SU", "MO", "TU", "WE", "TH", "FR", "SA"};

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

bool allDigits(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

int numberOf(std::string_view digits) {
  int value = 0;
  for (char c : digits) value = value * 10 + (c - '0');
  return value;
}

template <class T>
std::optional<T> parseNumber(std::string_view text) {
  if (text.starts_with('+')) text.remove_prefix(1);
  T value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

std::optional<int> weekDay(std::string_view text) {
  const auto found =
      std::find_if(kWeekDays.begin(), kWeekDays.end(), [&](auto day) { return equalsNoCase(day, text); });
  return found == kWeekDays.end() ? std::nullopt : std::optional(static_cast<int>(found - kWeekDays.begin()));
}

tl::unexpected<Error> badPart(std::string_view part) {
  return failure(ErrorCode::kInvalid, fmt::format("the rule's part \"{}\" makes no sense", part));
}

Status readWeekDays(RecurrenceRule& rule, std::string_view part, std::string_view value) {
  for (std::string_view day : splitUnescaped(value, ',')) {
    day = trimmed(day);
    if (day.size() < 2) return badPart(part);
    const auto number = weekDay(day.substr(day.size() - 2));
    const std::string_view ordinal = day.substr(0, day.size() - 2);
    const auto nth = ordinal.empty() ? std::optional(0) : parseNumber<int>(ordinal);
    if (!number || !nth || (!ordinal.empty() && *nth == 0)) return badPart(part);
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
  if (const auto* found = listed(kTimeParts); found != kTimeParts.end()) list = found;
  if (const auto* found = listed(kLateParts); found != kLateParts.end()) list = found;
  if (list != nullptr) {
    for (std::string_view item : splitUnescaped(value, ',')) {
      item = trimmed(item);
      const bool leap = list->list == &RecurrenceRule::byMonth && (item.ends_with('L') || item.ends_with('l'));
      if (leap) {
        const auto month = parseNumber<int>(item.substr(0, item.size() - 1));
        if (!month) return badPart(part);
        rule.byLeapMonth.push_back(*month);
        continue;
      }
      const auto number = parseNumber<int>(trimmed(item));
      if (!number) return badPart(part);
      (rule.*list->list).push_back(*number);
    }
  } else if (equalsNoCase(name, "FREQ")) {
    const auto* found =
        std::find_if(kFrequencies.begin(), kFrequencies.end(), [&](auto known) { return equalsNoCase(known, value); });
    if (found == kFrequencies.end()) return badPart(part);
    rule.frequency = static_cast<RecurrenceRule::Frequency>(found - kFrequencies.begin());
  } else if (equalsNoCase(name, "INTERVAL")) {
    const auto number = parseNumber<int>(value);
    if (!number || *number < 1) return badPart(part);
    rule.interval = *number;
  } else if (equalsNoCase(name, "COUNT")) {
    rule.count = parseNumber<std::int64_t>(value);
    if (!rule.count || *rule.count < 1) return badPart(part);
  } else if (equalsNoCase(name, "UNTIL")) {
    rule.until = parseTime(value);
    if (!rule.until) return badPart(part);
  } else if (equalsNoCase(name, "BYDAY")) {
    return readWeekDays(rule, part, value);
  } else if (equalsNoCase(name, "WKST")) {
    rule.weekStart = weekDay(value);
    if (!rule.weekStart) return badPart(part);
  } else if (equalsNoCase(name, "RSCALE")) {
    if (value.empty()) return badPart(part);
    for (char c : value) rule.scale += c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
  } else if (equalsNoCase(name, "SKIP")) {
    const auto* found =
        std::find_if(kSkips.begin(), kSkips.end(), [&](auto known) { return equalsNoCase(known, value); });
    if (found == kSkips.end()) return badPart(part);
    rule.skip = static_cast<RecurrenceRule::Skip>(found - kSkips.begin());
  } else {
    return failure(ErrorCode::kUnsupported, fmt::format("the rule's part \"{}\" cannot be followed", part));
  }
  return {};
}

void putList(std::string& out, const ListPart& part, const RecurrenceRule& rule) {
  const char* before = "=";
  const auto put = [&](const std::vector<int>& values, const char* after) {
    for (const int value : values) {
      if (*before == '=') out.append(";").append(part.name);
      out += fmt::format("{}{}{}", before, value, after);
      before = ",";
    }
  };
  put(rule.*part.list, "");
  if (part.list == &RecurrenceRule::byMonth) put(rule.byLeapMonth, "L");
}

/// What the parts say together.
Status settle(RecurrenceRule& rule) {
  if (rule.scale.empty() && rule.skip != RecurrenceRule::Skip::kOmit)
    return failure(ErrorCode::kUnsupported, "the rule's SKIP cannot be followed without RSCALE");
  if (rule.scale.empty() && !rule.byLeapMonth.empty())
    return failure(ErrorCode::kInvalid, "the rule's BYMONTH names a leap month, and the calendar has none");
  if (rule.scale == "GREGORIAN" && rule.skip == RecurrenceRule::Skip::kOmit && rule.byLeapMonth.empty())
    rule.scale.clear();
  return {};
}

}  // namespace

std::optional<CalendarTime> parseTime(std::string_view text) {
  text = trimmed(text);
  CalendarTime time;
  if (text.size() < 8 || !allDigits(text.substr(0, 8))) return std::nullopt;
  const int year = numberOf(text.substr(0, 4)), month = numberOf(text.substr(4, 2)), day = numberOf(text.substr(6, 2));
  if (year < 1 || month < 1 || month > 12 || day < 1 || day > monthLength(year, month)) return std::nullopt;
  time.local = LocalTime(year, month, day);
  if (text.size() == 8) return time;
  const bool utc = text.size() == 16 && (text[15] == 'Z' || text[15] == 'z');
  if ((text.size() != 15 && !utc) || (text[8] != 'T' && text[8] != 't') || !allDigits(text.substr(9, 6)))
    return std::nullopt;
  const int hour = numberOf(text.substr(9, 2)), minute = numberOf(text.substr(11, 2));
  const int second = numberOf(text.substr(13, 2));
  if (hour > 23 || minute > 59 || second > 60) return std::nullopt;
  time.local = LocalTime(year, month, day, hour, minute, std::min(second, 59));  // a leap second is the one before it
  time.kind = utc ? CalendarTime::Kind::kUtc : CalendarTime::Kind::kFloating;
  return time;
}

std::string timeText(const CalendarTime& time) {
  const LocalTime& at = time.local;
  std::string text;
  // Every item of a file is written with some of these: a general formatter would be most of the work.
  const auto two = [&](std::int64_t value) {
    text += static_cast<char>('0' + value / 10);
    text += static_cast<char>('0' + value % 10);
  };
  if (at.year() >= 0 && at.year() <= 9999) {
    two(at.year() / 100);
    two(at.year() % 100);
  } else {
    text = fmt::format("{:04}", at.year());
  }
  two(at.month());
  two(at.day());
  if (time.kind == CalendarTime::Kind::kDate) return text;
  text += 'T';
  two(at.hour());
  two(at.minute());
  two(at.second());
  if (time.kind == CalendarTime::Kind::kUtc) text += 'Z';
  return text;
}

std::string momentText(Moment moment) { return timeText({CalendarTime::Kind::kUtc, Zone().toLocal(moment), ""}); }

std::optional<Duration> parseDuration(std::string_view text) {
  text = trimmed(text);
  std::int64_t sign = 1;
  if (text.starts_with('+') || text.starts_with('-')) {
    sign = text.front() == '-' ? -1 : 1;
    text.remove_prefix(1);
  }
  if (text.empty() || (text.front() != 'P' && text.front() != 'p')) return std::nullopt;
  text.remove_prefix(1);
  Duration made;
  bool inTime = false, any = false;
  while (!text.empty()) {
    if (text.front() == 'T' || text.front() == 't') {
      if (inTime) return std::nullopt;
      inTime = true;
      text.remove_prefix(1);
      continue;
    }
    std::size_t digits = 0;
    while (digits < text.size() && text[digits] >= '0' && text[digits] <= '9') ++digits;
    if (digits == 0 || digits > 9 || digits == text.size()) return std::nullopt;
    const std::int64_t number = *parseNumber<std::int64_t>(text.substr(0, digits));
    switch (text[digits] | 0x20) {
      case 'w':
        made.days += number * 7;
        break;
      case 'd':
        made.days += number;
        break;
      case 'h':
        made.seconds += number * 3600;
        break;
      case 'm':
        made.seconds += number * 60;
        break;
      case 's':
        made.seconds += number;
        break;
      default:
        return std::nullopt;
    }
    any = true;
    text.remove_prefix(digits + 1);
  }
  // A bare "P" or "PT" is written by some for no length at all.
  if (!any && !inTime) return std::nullopt;
  return Duration{sign * made.days, sign * made.seconds};
}

std::string durationText(std::chrono::seconds length) {
  std::int64_t rest = length.count();
  std::string text = rest < 0 ? "-P" : "P";
  rest = rest < 0 ? -rest : rest;
  if (rest != 0 && rest % (7 * kSecondsPerDay) == 0) return text + fmt::format("{}W", rest / (7 * kSecondsPerDay));
  if (rest >= kSecondsPerDay) text += fmt::format("{}D", rest / kSecondsPerDay);
  rest %= kSecondsPerDay;
  if (rest == 0 && text.back() == 'D') return text;
  text += 'T';
  if (rest >= 3600) text += fmt::format("{}H", rest / 3600);
  if (rest % 3600 >= 60) text += fmt::format("{}M", rest % 3600 / 60);
  if (rest % 60 != 0 || text.back() == 'T') text += fmt::format("{}S", rest % 60);
  return text;
}

std::optional<int> parseOffset(std::string_view text) {
  text = trimmed(text);
  if (text.empty() || (text.front() != '+' && text.front() != '-')) return std::nullopt;
  const int sign = text.front() == '-' ? -1 : 1;
  std::string digits;
  for (char c : text.substr(1))
    if (c != ':') digits += c;
  if (!allDigits(digits) || (digits.size() != 4 && digits.size() != 6)) return std::nullopt;
  const int minutes = numberOf(digits.substr(2, 2));
  const int seconds = digits.size() == 6 ? numberOf(digits.substr(4, 2)) : 0;
  const int total = numberOf(digits.substr(0, 2)) * 3600 + minutes * 60 + seconds;
  if (minutes > 59 || seconds > 59 || total >= kSecondsPerDay) return std::nullopt;
  return sign * total;
}

std::string offsetText(int seconds) {
  const int size = std::abs(seconds);
  std::string text = fmt::format("{}{:02}{:02}", seconds < 0 ? '-' : '+', size / 3600, size / 60 % 60);
  return size % 60 != 0 ? text + fmt::format("{:02}", size % 60) : text;
}

Result<RecurrenceRule> parseRule(std::string_view text) {
  RecurrenceRule rule;
  bool hasFrequency = false;
  for (std::string_view part : splitUnescaped(text, ';')) {
    part = trimmed(part);
    if (part.empty()) continue;
    const std::size_t equals = part.find('=');
    if (equals == std::string_view::npos) return badPart(part);
    const std::string_view name = trimmed(part.substr(0, equals)), value = trimmed(part.substr(equals + 1));
    if (auto status = readPart(rule, part, name, value); !status) return tl::unexpected(status.error());
    hasFrequency = hasFrequency || equalsNoCase(name, "FREQ");
  }
  if (!hasFrequency) return failure(ErrorCode::kInvalid, "the rule has no FREQ");
  if (auto status = settle(rule); !status) return tl::unexpected(status.error());
  return rule;
}

std::string ruleText(const RecurrenceRule& rule) {
  std::string text = rule.scale.empty() ? std::string() : "RSCALE=" + rule.scale + ";";
  text += fmt::format("FREQ={}", kFrequencies[static_cast<std::size_t>(rule.frequency)]);
  if (rule.until) text += ";UNTIL=" + timeText(*rule.until);
  if (rule.count) text += fmt::format(";COUNT={}", *rule.count);
  if (rule.interval != 1) text += fmt::format(";INTERVAL={}", rule.interval);
  for (const auto& part : kTimeParts) putList(text, part, rule);
  for (std::size_t i = 0; i < rule.byDay.size(); ++i) {
    const auto& day = rule.byDay[i];
    text += i == 0 ? ";BYDAY=" : ",";
    if (day.ordinal != 0) text += fmt::format("{}", day.ordinal);
    text += kWeekDays[static_cast<std::size_t>(day.day)];
  }
  for (const auto& part : kLateParts) putList(text, part, rule);
  if (rule.weekStart) text += fmt::format(";WKST={}", kWeekDays[static_cast<std::size_t>(*rule.weekStart)]);
  if (rule.skip != RecurrenceRule::Skip::kOmit)
    text.append(";SKIP=").append(kSkips[static_cast<std::size_t>(rule.skip)]);
  return text;
}

}  // namespace orlocal::store
