#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "store/file/sqlite.h"
#include "store/file/uuid.h"
#include "store/model/model.h"

namespace orlocal::store {

// What may stand in a store's file. What lies outside was not written by this program, and is read as damage; and
// nothing outside is ever written.

/// Row numbers, positions and counters: far more than are ever given, and one can be added without a second thought.
constexpr std::int64_t kHighestNumber = std::int64_t{1} << 62;
/// Seconds since 1970 of the years 0 to 9999, with room for what begins in them and ends after them and for any zone.
constexpr std::int64_t kEarliestSecond = -62'167'219'200 - 400 * 86'400LL;
constexpr std::int64_t kLatestSecond = 253'402'300'800 + 400 * 86'400LL;

constexpr bool isKept(std::int64_t seconds) { return seconds >= kEarliestSecond && seconds <= kLatestSecond; }
bool isKept(Moment moment);
bool isKept(const CalendarTime& time);

/// Reads a row as a file has it that anybody may have written or spoiled. A column that does not hold what this program
/// writes there reads as nothing, and the row is not sound from then on.
class CheckedRow {
 public:
  explicit CheckedRow(const Statement& row) : m_row(row) {}

  bool sound() const { return m_sound; }

  bool isNull(int column) const { return m_row.type(column) == Statement::Type::kNull; }
  std::int64_t number(int column, std::int64_t low = -kHighestNumber, std::int64_t high = kHighestNumber);
  /// The number of a row.
  std::int64_t id(int column) { return number(column, 1); }
  std::optional<std::int64_t> optionalId(int column) {
    return isNull(column) ? std::nullopt : std::optional(id(column));
  }
  bool flag(int column) { return number(column) != 0; }
  /// The values of the enum are 0 to that of `last`.
  template <class Enum>
  Enum oneOf(int column, Enum last) {
    return static_cast<Enum>(number(column, 0, static_cast<std::int64_t>(last)));
  }
  double real(int column);
  /// Well-formed UTF-8, valid until the next step.
  std::string_view text(int column);
  std::optional<std::string> optionalText(int column);
  Uuid uuid(int column);
  std::span<const std::byte> blob(int column);
  std::optional<Moment> optionalMoment(int column);
  std::int64_t seconds(int column) { return number(column, kEarliestSecond, kLatestSecond); }
  /// Its clock stands in the next column; where that is NULL it is `clock`.
  std::optional<CalendarTime> optionalTime(int column, std::string_view clock = {});

 private:
  bool is(int column, Statement::Type type);

  const Statement& m_row;
  bool m_sound = true;
};

/// The one failure for content that is not what it should be; `what` names it: "Item 12".
Failed damaged(const Database& database, std::string_view what);

}  // namespace orlocal::store
