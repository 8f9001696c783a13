#include "fakes/fake_time_zone.h"

#include <utility>

namespace orlocal::fakes {

using namespace std::chrono;

FakeTimeZone::FakeTimeZone(std::string name, std::vector<Offset> offsets, Date now)
    : m_name(std::move(name)), m_offsets(std::move(offsets)), m_now(now) {}

FakeTimeZone FakeTimeZone::berlin(Date now) {
  return FakeTimeZone("Europe/Berlin",
                      {{Date{}, 3600, "CET"},
                       {sys_days{2026y / March / 29} + 1h, 7200, "CEST"},
                       {sys_days{2026y / October / 25} + 1h, 3600, "CET"}},
                      now);
}

const FakeTimeZone::Offset& FakeTimeZone::at(Date date) const {
  std::size_t found = 0;
  for (std::size_t i = 1; i < m_offsets.size() && m_offsets[i].from <= date; ++i) { found = i; }
  return m_offsets[found];
}

DateComponents FakeTimeZone::components(Date date) const {
  const Date local = date + seconds(at(date).seconds);
  const auto day = floor<days>(local);
  const year_month_day civil(day);
  const hh_mm_ss time(floor<seconds>(local - day));
  return {.year = static_cast<int>(civil.year()),
          .month = static_cast<int>(static_cast<unsigned>(civil.month())),
          .day = static_cast<int>(static_cast<unsigned>(civil.day())),
          .hour = static_cast<int>(time.hours().count()),
          .minute = static_cast<int>(time.minutes().count()),
          .second = static_cast<int>(time.seconds().count()),
          .timeZone = std::nullopt};
}

std::optional<Date> FakeTimeZone::dateFromComponents(const DateComponents& parts) const {
  if (!parts.year) { return std::nullopt; }
  const auto day = sys_days{year(*parts.year) / parts.month.value_or(1) / 1} + days(parts.day.value_or(1) - 1);
  const Date local =
      day + hours(parts.hour.value_or(0)) + minutes(parts.minute.value_or(0)) + seconds(parts.second.value_or(0));
  if (parts.timeZone == "UTC") { return local; }
  for (const auto& offset : m_offsets) {
    const Date moment = local - seconds(offset.seconds);
    if (&at(moment) == &offset) { return moment; }
  }
  // A skipped time: the offset before the gap is the one that is still in force a day earlier.
  return local - seconds(at(local - hours(24)).seconds);
}

}  // namespace orlocal::fakes
