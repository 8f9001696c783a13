#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"
#include "store/edits/item_writer.h"
#include "store/model/model.h"

namespace orlocal::store {

/// A date of birth; many people do not tell the year.
struct Birthday {
  std::optional<int> year;
  int month = 1, day = 1;

  friend bool operator==(const Birthday&, const Birthday&) = default;
};

/// BDAY of a card: "1985-04-12", "19850412", "--0412" (vCard 4.0), "--04-12", a time behind it left out. None for what
/// names no day, such as a year alone.
std::optional<Birthday> parseBirthday(std::string_view value);

/// As BDAY has it: "19850412" or, without the year, "--0412".
std::string birthdayText(const Birthday& birthday);
/// What the birthday calendar keeps of a contact's; none when the event is not of that kind.
std::optional<Birthday> birthdayOf(const Item& event);
/// UID of the event of a contact.
std::string birthdayUid(std::string_view contactIdentifier);

/// Keeps the birthdays of contacts as yearly events in a read-only calendar of their own, which is made with the first
/// one. Lives within the writer's turn.
class BirthdayCalendar {
 public:
  explicit BirthdayCalendar(ItemWriter& writer) : m_writer(writer) {}

  /// Makes, changes or (without a birthday) removes the event of a contact. A failure of `kInvalid`, `kRefused` or
  /// `kTooLarge` is about this one alone.
  Result<PutOutcome> put(const Contact& contact, const std::optional<Birthday>& birthday);

 private:
  /// None when there is none and none is wanted.
  Result<std::optional<CalendarId>> calendar(bool wanted);
  Result<Source> source();

  ItemWriter& m_writer;
  std::optional<CalendarId> m_calendar;
};

}  // namespace orlocal::store
