#include <algorithm>
#include <array>
#include <cctype>

#include "store/time/civil_days.h"
#include "store/time/zone_rules.h"

namespace orlocal::store {

namespace {

constexpr int kFirstZoneYear = 1900;

/// When a year's clock changes: "Jn", "n" or "Mm.w.d", with the wall clock's time.
struct YearlyChange {
  enum class Kind { kJulian, kDayOfYear, kMonthWeekDay };
  Kind kind = Kind::kMonthWeekDay;
  int month = 0, week = 0, day = 0;
  int seconds = 2 * 3600;

  LocalSeconds in(int year) const {
    DayNumber at = dayNumber(year, 1, 1);
    switch (kind) {
      case Kind::kJulian:
        at += day - 1 + (yearLength(year) == 366 && day >= 60 ? 1 : 0);
        break;  // never 29 February
      case Kind::kDayOfYear:
        at += day;
        break;
      case Kind::kMonthWeekDay: {
        const DayNumber first = dayNumber(year, month, 1);
        at = first + (day - weekDayOf(first) + 7) % 7 + 7 * (week - 1);
        while (at >= first + monthLength(year, month)) { at -= 7; }
        break;
      }
    }
    return at * kSecondsPerDay + seconds;
  }
};

class PosixText {
 public:
  explicit PosixText(std::string_view text) : m_rest(text) {}

  bool done() const { return m_rest.empty(); }
  bool take(char c) {
    if (m_rest.empty() || m_rest.front() != c) { return false; }
    m_rest.remove_prefix(1);
    return true;
  }
  std::optional<std::string> name() {
    const bool quoted = take('<');
    const auto end = std::find_if_not(m_rest.begin(), m_rest.end(), [&](char c) {
      const auto u = static_cast<unsigned char>(c);
      return std::isalpha(u) != 0 || (quoted && (std::isdigit(u) != 0 || c == '+' || c == '-'));
    });
    std::string found(m_rest.begin(), end);
    m_rest.remove_prefix(found.size());
    if (found.size() < 3 || found.size() > 30 || (quoted && !take('>'))) { return std::nullopt; }
    return found;
  }
  std::optional<int> number(int low, int high) {
    int value = 0;
    std::size_t digits = 0;
    while (digits < m_rest.size() && digits < 4 && m_rest[digits] >= '0' && m_rest[digits] <= '9') {
      value = value * 10 + (m_rest[digits++] - '0');
    }
    m_rest.remove_prefix(digits);
    return digits > 0 && value >= low && value <= high ? std::optional(value) : std::nullopt;
  }
  /// [+-]hh[:mm[:ss]] in seconds.
  std::optional<int> time(int highestHour) {
    const int sign = take('-') ? -1 : (take('+'), 1);
    const auto hours = number(0, highestHour);
    if (!hours) { return std::nullopt; }
    int total = *hours * 3600;
    for (int unit : {60, 1}) {
      if (!take(':')) { break; }
      const auto part = number(0, 59);
      if (!part) { return std::nullopt; }
      total += *part * unit;
    }
    return sign * total;
  }
  std::optional<YearlyChange> change() {
    YearlyChange made;
    std::optional<int> month, week, day;
    if (take('M')) {
      month = number(1, 12);
      if (!month || !take('.')) { return std::nullopt; }
      week = number(1, 5);
      if (!week || !take('.')) { return std::nullopt; }
      day = number(0, 6);
      made.month = *month;
      made.week = *week;
    } else if (take('J')) {
      made.kind = YearlyChange::Kind::kJulian;
      day = number(1, 365);
    } else {
      made.kind = YearlyChange::Kind::kDayOfYear;
      day = number(0, 365);
    }
    if (!day) { return std::nullopt; }
    made.day = *day;
    if (take('/')) {
      const auto at = time(167);
      if (!at) { return std::nullopt; }
      made.seconds = *at;
    }
    return made;
  }

 private:
  std::string_view m_rest;
};

}  // namespace

std::optional<ZoneRules> rulesOfPosixText(std::string_view text) {
  PosixText reader(text);
  ZoneRules rules;
  auto name = reader.name();
  if (!name) { return std::nullopt; }
  auto west = reader.time(24);
  if (!west) { return std::nullopt; }
  rules.initial = {-*west, false, *name};
  if (reader.done()) { return rules; }

  name = reader.name();
  if (!name) { return std::nullopt; }
  ZoneRules::Clock summer{rules.initial.offset + 3600, true, *name};
  // Without rules the system takes those of the United States.
  YearlyChange begin{YearlyChange::Kind::kMonthWeekDay, 3, 2, 0}, end{YearlyChange::Kind::kMonthWeekDay, 11, 1, 0};
  bool hasRules = reader.take(',');
  if (!hasRules && !reader.done()) {
    west = reader.time(24);
    hasRules = reader.take(',');
    if (!west || (!hasRules && !reader.done())) { return std::nullopt; }
    summer.offset = -*west;
  }
  if (hasRules) {
    const auto from = reader.change();
    if (!from || !reader.take(',')) { return std::nullopt; }
    const auto to = reader.change();
    if (!to || !reader.done()) { return std::nullopt; }
    begin = *from;
    end = *to;
  }
  for (int year = kFirstZoneYear; year <= kLastZoneYear; ++year) {
    rules.changes.push_back({begin.in(year)-rules.initial.offset, summer});
    rules.changes.push_back({end.in(year)-summer.offset, rules.initial});
  }
  std::sort(rules.changes.begin(), rules.changes.end(), [](const auto& a, const auto& b) { return a.at < b.at; });
  // Summer time all the year round: its end and the next begin fall together, and the begin counts.
  std::vector<ZoneRules::Change> distinct;
  for (const auto& change : rules.changes) {
    if (distinct.empty() || distinct.back().at != change.at) {
      distinct.push_back(change);
    } else {
      distinct.back().clock = summer;
    }
  }
  rules.changes = std::move(distinct);
  return rules;
}

}  // namespace orlocal::store
