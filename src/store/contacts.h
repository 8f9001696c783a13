#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "base/result.h"
#include "store/birthdays.h"
#include "store/calendar_store.h"
#include "store/export.h"
#include "store/icalendar/icalendar_reader.h"
#include "store/import.h"
#include "store/model/model.h"

namespace orlocal::store {

/// What a vCard file holds (vCard 2.1, 3.0 and 4.0): names, e-mail addresses, and of the postal addresses the preferred
/// or first one as lines of text. Cards without name and address and e-mail are reported in `problems`.
struct ReadContacts {
  std::vector<Contact> contacts;
  std::vector<std::optional<Birthday>> birthdays;  ///< of each of them
  ReadProblems problems;
};
Result<ReadContacts> readContacts(std::string bytes, const std::string& name);

/// Imports a vCard file, all or nothing; cards are found again by their UID, or without one by name and e-mail. What
/// they say of birthdays becomes events of the birthday calendar.
Result<ImportReport> importContactsFile(CalendarStore& store, const std::filesystem::path& file);
/// The same for a text; `name` stands in errors where a file's name would.
Result<ImportReport> importContactsText(CalendarStore& store, std::string text, const std::string& name);

/// Writes all contacts as vCards (4.0), with the birthdays that the birthday calendar has, by name. Gives how many.
Result<std::size_t> exportContacts(CalendarStore& store, const TextSink& sink);

}  // namespace orlocal::store
