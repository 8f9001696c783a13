#pragma once

#include <array>
#include <string>
#include <string_view>

#include "store/time/time.h"

namespace orlocal::host {

/// Names of days and months, and how a date is put together of them, in one language: English or German.
class DateNames {
 public:
  /// A language that we do not write in is English: "de_CH" is German, "fr" English.
  explicit DateNames(std::string_view language);
  /// In the language of the program's messages, as it was when this was first asked.
  static const DateNames& ofUser();

  const std::string& weekday(store::LocalDay day) const { return m_weekdays[placeOf(day)]; }
  const std::string& shortWeekday(store::LocalDay day) const { return m_shortWeekdays[placeOf(day)]; }
  const std::string& shortMonth(int month) const { return m_shortMonths[static_cast<std::size_t>(month - 1)]; }
  const std::string& month(int month) const { return m_months[static_cast<std::size_t>(month - 1)]; }

  /// "Monday, 2 November 2026"; "Montag, 2. November 2026".
  std::string longDay(store::LocalDay day) const;
  /// "Mon 2 Nov 2026"; "Mo 2. Nov 2026".
  std::string shortDay(store::LocalDay day) const;
  /// "2 November 2026"; "2. November 2026".
  std::string date(store::LocalDay day) const;
  /// "2 November"; "2. November".
  std::string dayOfYear(int month, int dayOfMonth) const;
  /// "2 Nov"; "2. Nov".
  std::string shortDayOfYear(int month, int dayOfMonth) const;

 private:
  /// Among the weekdays.
  static std::size_t placeOf(store::LocalDay day);

  std::array<std::string, 7> m_weekdays, m_shortWeekdays;  ///< from Sunday on
  std::array<std::string, 12> m_months, m_shortMonths;
  std::string_view m_afterDay;  ///< what follows the number of a day
};

}  // namespace orlocal::host
