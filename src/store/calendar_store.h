#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "store/core/outside_commits.h"
#include "store/core/query.h"
#include "store/core/store_options.h"
#include "store/edits/calendar_edit.h"
#include "store/edits/item_edit.h"
#include "store/edits/item_writer.h"
#include "store/file/change_signal.h"
#include "store/model/model.h"
#include "store/model/occurrence.h"
#include "store/time/zone.h"

namespace orlocal::store {

/// The calendar store: one SQLite file, used by several processes at once. One object serves one thread at a time.
///
/// What is acknowledged is on disk. Failures leave the file as it was. Items are returned as shared, immutable values.
/// A file that takes the place of the one that is open is noticed within ten milliseconds, before every write at once,
/// and opened in its stead. While there is none every call fails; the next one finds it when it is there again.
class CalendarStore {
 public:
  /// Opens the file; makes it, its folder (mode 0700) and the two default calendars when it is not there. Reads nothing
  /// but the header.
  static Result<std::unique_ptr<CalendarStore>> open(StoreOptions options);

  virtual ~CalendarStore() = default;

  /// Lets go of the file, and leaves all of the store in it: the one file, copied alone, is whole then, unless another
  /// process writes meanwhile. The next call opens it again. What was read and kept by callers stays good.
  virtual void close() = 0;

  /// Differs from an earlier value when the content may have changed meanwhile, through this or any other process.
  virtual std::uint64_t generation() = 0;

  virtual Result<std::vector<Source>> sources() = 0;
  /// In their order.
  virtual Result<std::vector<Calendar>> calendars(CalendarKind kind) = 0;
  virtual Result<std::optional<Calendar>> calendar(std::string_view identifier) = 0;
  /// Where new items go when nothing else is said: the oldest one that allows changes.
  virtual Result<std::optional<Calendar>> defaultCalendar(CalendarKind kind) = 0;
  /// Inserts (`id` 0) or writes the fields in `set` on the row as it stands; `calendar` then is what was written.
  virtual Status saveCalendar(Calendar& calendar, CalendarFields set = CalendarFields::all()) = 0;
  virtual Status removeCalendar(std::string_view identifier) = 0;

  /// Ordered by start, end, identifier; changed occurrences in place of the originals.
  virtual Result<std::vector<Occurrence>> occurrences(const EventQuery& query) = 0;
  /// Row numbers in the order of due moment (none last), then of row.
  virtual Result<std::vector<ItemId>> reminders(const ReminderQuery& query) = 0;

  /// The row, null when there is none. Recently read rows are kept.
  virtual Result<std::shared_ptr<const Item>> item(ItemId id) = 0;
  /// Says that these rows will be asked for next, so that they are read together. At most a few hundred; the others are
  /// left out. A failure shows when the rows are asked for.
  virtual void prefetch(std::span<const ItemId> ids) = 0;
  /// The event (a single one or a series) whose public identifier this is; null when there is none.
  virtual Result<std::shared_ptr<const Item>> event(std::string_view identifier) = 0;
  /// The row whose own identifier this is, event or reminder; null when there is none.
  virtual Result<std::shared_ptr<const Item>> itemWithIdentifier(std::string_view itemIdentifier) = 0;
  /// The first occurrence of a series (or the one of a single event); none when its rule and exceptions leave none.
  virtual Result<std::optional<Occurrence>> firstOccurrence(const Item& event) = 0;
  /// The occurrence that the event's rule put there, wherever it was moved since; none when it has none there. Looks at
  /// nothing but this event.
  virtual Result<std::optional<Occurrence>> occurrenceAt(const Item& event, Moment originalStart) = 0;

  // Saves write what was set on the row as it stands inside the transaction: two callers that set different fields of
  // one item both keep their change, and of one field the later save counts. An item that was removed meanwhile is
  // refused. They give what was written.

  /// For an occurrence of a series `occurrence` is the one that was opened, and the start and end in `edit` are its
  /// own; `span` then says what the change is about: this one alone (it becomes a changed occurrence; refused when the
  /// rules were changed, too), this and the later ones (the series is split there; from the first occurrence on it is
  /// changed as it stands), or the whole series. An occurrence that meanwhile is none of its series any more is
  /// refused: it was taken out, the series was split before it, moved as a whole, or got other rules. Exceptions and
  /// changed occurrences follow when the start moves. One occurrence that moves to another calendar becomes an event of
  /// its own there. A series whose rules are taken away goes on as the one occurrence. The occurrence of what was
  /// written is its `firstOccurrence`.
  virtual Result<Item> saveEvent(const ItemEdit& edit, const std::optional<Occurrence>& occurrence, Span span) = 0;
  /// `event` and `occurrence` are what was opened. Refused as above when the occurrence is none of the series any more.
  virtual Status removeEvent(const Item& event, const std::optional<Occurrence>& occurrence, Span span) = 0;
  /// A repeating reminder that is saved as completed moves on: what was done is kept as a reminder of its own, and the
  /// one that is given back is open again and due at its next occurrence. After the last one it stays completed. Who
  /// completes an occurrence from which the reminder has moved on meanwhile is refused.
  virtual Result<Item> saveReminder(const ItemEdit& edit) = 0;
  virtual Status removeReminder(const Item& reminder) = 0;

  /// Begins an all-or-nothing change such as an import; waits for its turn to write. No other call to this store until
  /// the writer is gone.
  virtual Result<std::unique_ptr<ItemWriter>> startWriting(const Announcement& announcement = {}) = 0;
  /// Visits everything in a calendar, in the order in which it came to the store; one snapshot, a few rows in memory.
  virtual Status forEachItem(CalendarId calendar, const ItemVisitor& visit) = 0;
  /// The VTIMEZONE text of a private zone.
  virtual Result<std::optional<std::string>> privateZone(std::string_view name) = 0;

  /// Where the log of changes stands now; what comes after it can be asked for later.
  virtual Result<LogPosition> newestChange() = 0;
  /// What others committed after `position`, in their order; moves `position` to where the log stands. Left out are
  /// this object's own commits, and those that did nothing to events, reminders and calendars. Of more than 100,000
  /// changes at once only the newest are known. Of a file that took the place of the one that `position` speaks of,
  /// only what is committed from now on is told.
  virtual Result<std::vector<OutsideCommit>> outsideCommits(LogPosition& position) = 0;
  /// Wakes when another process may have committed.
  virtual Result<std::unique_ptr<ChangeSignal>> listen() = 0;

  /// The address of the contact with this e-mail address, compared without case.
  virtual Result<std::optional<std::string>> addressOf(std::string_view email) = 0;
};

}  // namespace orlocal::store
