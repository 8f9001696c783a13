#include "store/birthdays.h"

#include <charconv>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "base/civil_date.h"
#include "base/try.h"

namespace orlocal::store {
namespace {

constexpr const char* kBirthdaysTitle = "Birthdays";
/// Stands for a year that nobody tells. It has a 29 February, and address books use the same.
constexpr int kNoYear = 1604;

std::optional<int> numberOf(std::string_view digits) {
  int number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (error != std::errc() || end != digits.data() + digits.size()) { return std::nullopt; }
  return number;
}

Item eventOf(const Contact& contact, const Birthday& birthday) {
  const std::string who = contact.name.empty() && !contact.emails.empty() ? contact.emails.front() : contact.name;
  const LocalDay day(birthday.year.value_or(kNoYear), birthday.month, birthday.day);
  Item event;
  event.title = who + "’s birthday";
  event.start = CalendarTime{CalendarTime::Kind::kDate, LocalTime(day), ""};
  event.end = CalendarTime{CalendarTime::Kind::kDate, LocalTime(day + 1), ""};
  RecurrenceRule rule;
  rule.frequency = RecurrenceRule::Frequency::kYearly;
  // Who was born on 29 February has a birthday every year.
  if (birthday.month == 2 && birthday.day == 29) {
    rule.scale = "GREGORIAN";
    rule.skip = RecurrenceRule::Skip::kBackward;
  }
  event.recurrence.rules.push_back(std::move(rule));
  return event;
}

}  // namespace

std::optional<Birthday> parseBirthday(std::string_view value) {
  value = value.substr(0, value.find_first_of("T "));
  const bool yearless = value.starts_with("--");
  const std::string_view year = yearless ? std::string_view() : value.substr(0, 4);
  value.remove_prefix(yearless ? 2 : year.size());
  std::string digits;
  for (const char c : value) {
    if (c != '-') { digits += c; }
  }
  if (digits.size() != 4 || (!yearless && year.size() != 4)) { return std::nullopt; }
  const auto month = numberOf(digits.substr(0, 2)), day = numberOf(digits.substr(2));
  Birthday birthday;
  if (!yearless) {
    birthday.year = numberOf(year);
    if (!birthday.year || *birthday.year < 1) { return std::nullopt; }
    if (*birthday.year == kNoYear) { birthday.year.reset(); }
  }
  if (!month || !day || *month < 1 || *month > 12) { return std::nullopt; }
  if (*day < 1 || *day > monthLength(birthday.year.value_or(kNoYear), *month)) { return std::nullopt; }
  birthday.month = *month;
  birthday.day = *day;
  return birthday;
}

std::string birthdayText(const Birthday& birthday) {
  const std::string day = fmt::format("{:02}{:02}", birthday.month, birthday.day);
  return birthday.year ? fmt::format("{:04}{}", *birthday.year, day) : "--" + day;
}

std::optional<Birthday> birthdayOf(const Item& event) {
  if (!event.allDay()) { return std::nullopt; }
  const LocalDay day(event.start->local);
  Birthday birthday{std::nullopt, day.month(), day.day()};
  if (day.year() != kNoYear) { birthday.year = static_cast<int>(day.year()); }
  return birthday;
}

std::string birthdayUid(std::string_view contactIdentifier) { return "birthday-" + std::string(contactIdentifier); }

Result<PutOutcome> BirthdayCalendar::put(const Contact& contact, const std::optional<Birthday>& birthday) {
  const std::string uid = birthdayUid(contact.identifier);
  ORLOCAL_TRY(const auto target, calendar(birthday.has_value()));
  if (!target) { return PutOutcome::kUnchanged; }
  if (!birthday) {
    ORLOCAL_TRY(const auto known, m_writer.find(*target, ItemKind::kEvent, uid));
    if (!known) { return PutOutcome::kUnchanged; }
    ORLOCAL_CHECK(m_writer.remove(*known));
    return PutOutcome::kUpdated;
  }
  Item event = eventOf(contact, *birthday);
  event.uid = uid;
  std::vector<Item> none;
  return m_writer.put(*target, event, none);
}

Result<std::optional<CalendarId>> BirthdayCalendar::calendar(bool wanted) {
  if (m_calendar) { return m_calendar; }
  ORLOCAL_TRY(const auto calendars, m_writer.calendars(CalendarKind::kEvents));
  for (const Calendar& each : calendars) {
    if (each.type == Source::Type::kBirthday) { return m_calendar = each.id; }
  }
  if (!wanted) { return std::nullopt; }
  ORLOCAL_TRY(const Source from, source());
  Calendar made;
  made.title = kBirthdaysTitle;
  made.source = from.id;
  made.readOnly = true;
  ORLOCAL_CHECK(m_writer.makeCalendar(made));
  return m_calendar = made.id;
}

Result<Source> BirthdayCalendar::source() {
  ORLOCAL_TRY(const auto sources, m_writer.sources());
  for (const Source& each : sources) {
    if (each.type == Source::Type::kBirthday) { return each; }
  }
  Source made{0, "", Source::Type::kBirthday, kBirthdaysTitle};
  ORLOCAL_CHECK(m_writer.makeSource(made));
  return made;
}

}  // namespace orlocal::store
