#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "store/core/outside_commits.h"
#include "store/core/query.h"
#include "store/core/search_query.h"
#include "store/core/store_options.h"
#include "store/core/touched_items.h"
#include "store/edits/announcement.h"
#include "store/edits/calendar_edit.h"
#include "store/edits/item_edit.h"
#include "store/file/change_signal.h"
#include "store/model/command.h"
#include "store/model/model.h"
#include "store/model/occurrence_list.h"
#include "store/time/zone.h"

namespace orlocal::store {

class ItemWriter;
class Queries;
class RemoteReader;
class Search;
class StoreCore;

/// Receives a single event, series, reminder or stray changed occurrence, with the changed occurrences of a series in
/// the order of their original starts. A failure stops the walk and becomes its result.
using ItemVisitor = std::function<Status(const Item& main, const std::vector<Item>& changed)>;

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

  /// Stands for a store that cannot be opened: every call fails with the reason.
  static std::unique_ptr<CalendarStore> unopened(Failure reason);

  ~CalendarStore();

  /// Lets go of the file, and leaves all of the store in it: the one file, copied alone, is whole then, unless another
  /// process writes meanwhile. The next call opens it again. What was read and kept by callers stays good.
  void close();

  /// Differs from an earlier value when the content may have changed meanwhile, through this or any other process.
  std::uint64_t generation();
  /// The same of calendars, reminder lists and their sources alone: saves of events and reminders leave it as it is. It
  /// looks at what others committed, so ask when `generation` differs.
  Result<std::uint64_t> calendarsGeneration();

  Result<std::vector<Source>> sources();
  /// In their order.
  Result<std::vector<Calendar>> calendars(CalendarKind kind);
  Result<std::optional<Calendar>> calendar(std::string_view identifier);
  /// Where new items go when nothing else is said: the one that was made the default or, without one or when that is
  /// gone or allows no changes, the oldest one that does.
  Result<std::optional<Calendar>> defaultCalendar(CalendarKind kind);
  /// Refuses one that does not hold such items or allows no changes.
  Status makeDefault(std::string_view identifier, CalendarKind kind);
  /// Inserts (`id` 0) or writes the fields in `set` on the row as it stands; `calendar` then is what was written.
  Status saveCalendar(Calendar& calendar, CalendarFields set = CalendarFields::all());
  Status removeCalendar(std::string_view identifier);

  /// Ordered by start, end, identifier; changed occurrences in place of the originals.
  Result<OccurrenceList> occurrences(const EventQuery& query);
  /// Row numbers in the order of due moment (none last), then of row.
  Result<std::vector<ItemId>> reminders(const ReminderQuery& query);

  /// Items by their words: titles, places, people (names and addresses), URLs and notes. Words are found by their
  /// beginnings, without case and accents; of scripts without blanks between words any stretch of letters is; words
  /// between quotation marks follow upon each other. All of them are in each hit, in one field or several. Best hits
  /// first: those with all in the title, then by the place of the match, the later before the earlier. Of a series and
  /// its changed occurrences the series is given, unless only occurrences have the words. A text without a word is
  /// `kInvalid`. A first search of a store, and one after very many changes, writes the index of words; where the
  /// file cannot be written it takes longer instead.
  Result<std::vector<SearchHit>> search(const SearchQuery& query);
  /// Makes the index of words anew: the remedy for a damaged one. Nothing else in the store is touched.
  Status rebuildSearch();

  /// The row, null when there is none. Recently read rows are kept.
  Result<std::shared_ptr<const Item>> item(ItemId id);
  /// Says that these rows will be asked for next, so that they are read together. At most a few hundred; the others are
  /// left out. A failure shows when the rows are asked for.
  void prefetch(std::span<const ItemId> ids);
  /// The event (a single one or a series) whose public identifier this is; null when there is none.
  Result<std::shared_ptr<const Item>> event(std::string_view identifier);
  /// The row whose own identifier this is, event or reminder; null when there is none.
  Result<std::shared_ptr<const Item>> itemWithIdentifier(std::string_view itemIdentifier);
  /// The first occurrence of a series (or the one of a single event); none when its rule and exceptions leave none.
  Result<std::optional<Occurrence>> firstOccurrence(const Item& event);
  /// The occurrence that the event's rule put there, wherever it was moved since; none when it has none there. Looks at
  /// nothing but this event.
  Result<std::optional<Occurrence>> occurrenceAt(const Item& event, Moment originalStart);

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
  Result<Item> saveEvent(const ItemEdit& edit, const std::optional<Occurrence>& occurrence, Span span);
  /// `event` and `occurrence` are what was opened. Refused as above when the occurrence is none of the series any more.
  Status removeEvent(const Item& event, const std::optional<Occurrence>& occurrence, Span span);
  /// A repeating reminder that is saved as completed moves on: what was done is kept as a reminder of its own, and the
  /// one that is given back is open again and due at its next occurrence. After the last one it stays completed. Who
  /// completes an occurrence from which the reminder has moved on meanwhile is refused.
  Result<Item> saveReminder(const ItemEdit& edit);
  Status removeReminder(const Item& reminder);

  /// What is saved and removed from now on is one command of a person: what it replaces is kept in the journal, so that
  /// it can be undone.
  void beginCommand(Command command);
  /// The commands of a person that are kept, the newest first: the last hundred of thirty days.
  Result<std::vector<JournalEntry>> commandsOf(std::string_view person);
  /// What the command of that number did, in the order of the rows.
  Result<std::vector<CommandChange>> changesBy(std::int64_t number);
  /// Takes back the command of that number, or the last one that was not taken back yet; gives what it was. Events and
  /// reminders stand as they stood before, with the same rows and identifiers. That is a command of its own, which can
  /// be undone by its number. Refused when something else touched one of the items since, or their calendar is gone or
  /// allows no changes.
  Result<JournalEntry> undo(std::string_view person, std::optional<std::int64_t> number);

  /// From now on saves and removals say what they would do, or why they cannot, and write nothing.
  void rehearse();

  /// Begins an all-or-nothing change such as an import; waits for its turn to write. No other call to this store until
  /// the writer is gone.
  Result<std::unique_ptr<ItemWriter>> startWriting(const Announcement& announcement = {});
  /// With its changed occurrences; none when there is no such row, or when it is itself one of those.
  Result<std::optional<WholeItem>> wholeItem(ItemId id);
  /// Visits everything in a calendar, in the order in which it came to the store; one snapshot, a few rows in memory.
  Status forEachItem(CalendarId calendar, const ItemVisitor& visit);
  /// The rows of all items that have alarms, changed occurrences among them.
  Result<std::vector<ItemId>> itemsWithAlarms();
  /// The VTIMEZONE text of a private zone.
  Result<std::optional<std::string>> privateZone(std::string_view name);

  /// Where the log of changes stands now; what comes after it can be asked for later.
  Result<LogPosition> newestChange();
  /// What others committed after `position`, in their order; moves `position` to where the log stands. Left out are
  /// this object's own commits, and those that did nothing to events, reminders and calendars. Of more than 100,000
  /// changes at once only the newest are known. Of a file that took the place of the one that `position` speaks of,
  /// only what is committed from now on is told.
  Result<std::vector<OutsideCommit>> outsideCommits(LogPosition& position);
  /// Where the log of changes stood at `moment`, for `outsideCommits`: what was committed from then on comes after it.
  /// Of what was written by a program before format 5 no moment is known; it counts as earlier.
  Result<LogPosition> changesSince(Moment moment);
  /// The same of a row of the log; `row` is where it then stands.
  Result<LogPosition> changesAfter(std::int64_t row);
  /// Whether the log still knows all that came after `position`.
  Result<bool> reachesBackTo(const LogPosition& position);
  /// Wakes when another process may have committed.
  Result<std::unique_ptr<ChangeSignal>> listen();

  /// The address of the contact with this e-mail address, compared without case.
  Result<std::optional<std::string>> addressOf(std::string_view email);

  /// The address book, by name.
  Result<std::vector<Contact>> contacts();

  /// Which items somebody else touched after the row `after` of the log; see `TouchedItems`.
  Result<TouchedItems> touchedSince(std::int64_t after);

 private:
  friend class AlarmBook;
  friend class RemoteReader;
  explicit CalendarStore(std::unique_ptr<StoreCore> core);

  std::unique_ptr<StoreCore> m_core;
  std::unique_ptr<Queries> m_queries;
  std::unique_ptr<Search> m_search;
  std::uint64_t m_checked = 0;  ///< generation with which what is kept agrees
  /// What lies in each calendar, and for which generation that is so: whoever visits all calendars asks for each.
  std::map<CalendarId, std::vector<ItemId>> m_idsByCalendar;
  std::uint64_t m_listed = 0;
};

}  // namespace orlocal::store
