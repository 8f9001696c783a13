#include "store/file/checked_row.h"

#include <cmath>

#include <fmt/format.h>

#include "base/text.h"
#include "base/translation.h"
#include "store/time/civil_days.h"
#include "store/time/clock_name.h"

namespace orlocal::store {

bool isKept(Moment moment) {
  return isKept(std::chrono::floor<std::chrono::seconds>(moment).time_since_epoch().count());
}
bool isKept(const CalendarTime& time) { return isKept(localSeconds(time.local)); }

bool CheckedRow::is(int column, Statement::Type type) {
  if (m_row.type(column) == type) { return true; }
  m_sound = false;
  return false;
}

std::int64_t CheckedRow::number(int column, std::int64_t low, std::int64_t high) {
  if (!is(column, Statement::Type::kInteger)) { return 0; }
  const std::int64_t value = m_row.integer(column);
  if (value >= low && value <= high) { return value; }
  m_sound = false;
  return 0;
}

double CheckedRow::real(int column) {
  if (!is(column, Statement::Type::kReal)) { return 0; }
  const double value = m_row.real(column);
  if (std::isfinite(value)) { return value; }
  m_sound = false;
  return 0;
}

std::string_view CheckedRow::text(int column) {
  if (!is(column, Statement::Type::kText)) { return {}; }
  const std::string_view text = m_row.text(column);
  if (isUtf8(text)) { return text; }
  m_sound = false;
  return {};
}

std::optional<std::string> CheckedRow::optionalText(int column) {
  if (isNull(column)) { return std::nullopt; }
  return std::string(text(column));
}

std::span<const std::byte> CheckedRow::blob(int column) {
  return is(column, Statement::Type::kBlob) ? m_row.blob(column) : std::span<const std::byte>();
}

Uuid CheckedRow::uuid(int column) {
  const auto bytes = blob(column);
  if (bytes.size() != Uuid::kBytes) { m_sound = false; }
  return Uuid(bytes);
}

std::optional<Moment> CheckedRow::optionalMoment(int column) {
  if (isNull(column)) { return std::nullopt; }
  constexpr std::int64_t kMicroseconds = 1'000'000;
  return Moment(
      std::chrono::microseconds(number(column, kEarliestSecond * kMicroseconds, kLatestSecond * kMicroseconds)));
}

std::optional<CalendarTime> CheckedRow::optionalTime(int column, std::string_view clock) {
  if (isNull(column)) { return std::nullopt; }
  const std::int64_t at = seconds(column);
  auto time = timeOnClock(at, isNull(column + 1) ? clock : text(column + 1));
  if (!time) { m_sound = false; }
  return time;
}

Failed damaged(const Database& database, std::string_view what) {
  return failure(ErrorCode::kCorrupt,
                 tr("{} of the calendar store \"{}\" is damaged; write out what can still be read (orlocal export "
                    "--salvage), or put a backup in its place (orlocal restore).",
                    what, database.file().string()));
}

}  // namespace orlocal::store
