#pragma once

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/result.h"
#include "store/calendar_store.h"
#include "store/icalendar/icalendar_reader.h"

namespace orlocal::store {

/// Where the items of a file go, and who hears of it. Without a title: to the calendar that the file's own name names,
/// or to the default one when it has none. What is not there is made.
struct ImportOptions {
  std::optional<std::string> calendarTitle;  ///< of events
  std::optional<std::string> listTitle;      ///< of reminders
  bool readOnly = false;                     ///< calendars that are made allow no changes; such ones are written into
  bool subscription = false;                 ///< as `readOnly`, and those made are marked as subscribed
  bool listItems = false;                    ///< the report has `items`
  /// Called now and then with the number of items done and of all.
  std::function<void(std::size_t, std::size_t)> progress;
  /// Asked now and then; when set, the import ends with `kInterrupted` and nothing is written.
  const std::atomic<bool>* stop = nullptr;
  /// Threads that read the file, the caller's own among them; the others end before anything is written. What is
  /// imported and reported is the same with any number. More than one is for a program that is its own master: in the
  /// process of a host none is started.
  unsigned workers = 1;
};

/// As many as make an import faster on this machine.
unsigned workersThatPay();

/// An item that an import met.
struct ImportedItem {
  enum class Outcome : std::uint8_t { kNew, kUpdated, kUnchanged, kRemoved };
  Outcome outcome = Outcome::kUnchanged;
  int line = 0;
  CalendarId calendar = 0;
  ItemId id = 0;  ///< where it stands now, or would
  std::string uid;
  std::string item;  ///< its title and day for people
};

/// What an import did. An item is a single event, a reminder, or a series with its changed occurrences.
struct ImportReport {
  std::size_t added = 0;
  std::size_t updated = 0;
  std::size_t unchanged = 0;
  std::size_t refused = 0;
  std::vector<Problem> problems;  ///< the refused ones, by line
  std::vector<Problem> warnings;  ///< by line
  /// What messages about invitations say or did, by line: an answer, a proposal, why one was left out.
  std::vector<Problem> notes;
  std::vector<ImportedItem> items;    ///< those of `added`, `updated` and `unchanged`, when they were asked for
  std::vector<CalendarId> calendars;  ///< those of the store that the file speaks of, also where it has no item
  bool endsEarly = false;             ///< the file is cut off: what should have followed is not known
  bool isMessage = false;             ///< about invitations: what is refused is not to be put right in the file
};

/// Imports an iCalendar file: all or nothing, item by item within it, found again by UID. Items of the calendar that
/// the file does not have stay. A file that is a message about invitations (METHOD; RFC 5546) has its meaning: see
/// `Meaning`; without a title it is about the item wherever that is stored.
Result<ImportReport> importCalendarFile(CalendarStore& store, const std::filesystem::path& file,
                                        const ImportOptions& options = {});
/// The same for a text; `name` stands in errors where a file's name would.
Result<ImportReport> importCalendarText(CalendarStore& store, std::string text, const std::string& name,
                                        const ImportOptions& options = {});

}  // namespace orlocal::store
