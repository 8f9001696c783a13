#include "fakes/fake_platform.h"

#include <chrono>

namespace orlocal::fakes {

using namespace std::chrono;

DateComponents FakeTimeZone::components(Date date) const {
  const Date local = date + seconds(m_offset);
  const auto day = floor<days>(local);
  const year_month_day ymd(day);
  const hh_mm_ss time(floor<seconds>(local) - day);
  DateComponents parts;
  parts.year = static_cast<int>(ymd.year());
  parts.month = static_cast<int>(static_cast<unsigned>(ymd.month()));
  parts.day = static_cast<int>(static_cast<unsigned>(ymd.day()));
  parts.hour = static_cast<int>(time.hours().count());
  parts.minute = static_cast<int>(time.minutes().count());
  parts.second = static_cast<int>(time.seconds().count());
  return parts;
}

std::optional<Date> FakeTimeZone::dateFromComponents(const DateComponents& parts) const {
  if (!parts.year) return std::nullopt;
  const year_month_day ymd(year(*parts.year), month(static_cast<unsigned>(parts.month.value_or(1))),
                           day(static_cast<unsigned>(parts.day.value_or(1))));
  return Date(sys_days(ymd)) + hours(parts.hour.value_or(0)) + minutes(parts.minute.value_or(0)) +
         seconds(parts.second.value_or(0)) - seconds(m_offset);
}

}  // namespace orlocal::fakes
