#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "store/core/store_core.h"
#include "store/edits/announcement.h"
#include "store/edits/uid_filter.h"
#include "store/model/model.h"
#include "store/rows/item_rows.h"

namespace orlocal::store {

/// What stands in the store where an event, series or reminder is to be put.
struct Standing {
  ItemId id = 0;            ///< 0 when the calendar has none with that UID
  CalendarId calendar = 0;  ///< the one that was asked
  StoredPlace place;        ///< of the one that is known; and so are the next two
  bool hasChanged = false;  ///< whether it has changed occurrences
  bool differs = false;     ///< whether more than a stamp is to be written
  std::optional<Moment> stamped;
  std::vector<std::string> continuations;  ///< the series that were cut off it, where it differs
  bool hasStrays = false;                  ///< whether there are changed occurrences that came without it
};

/// Gives the item that is to be put the identifiers of the stored one that it stands for.
void identifyAs(const Item& stored, Item& given);
/// Whether more than a stamp is to be written to make the stored item the one given, which bears its identifiers: many
/// write a new stamp into every file, whether the item changed or not. Nor does it differ by the fraction of a second
/// of its other moments, which it loses on its way through a calendar text.
bool differs(const Item& stored, const Item& given);

/// What the store knows of the items that a large change puts. What is announced is looked at before the turn to write
/// is taken, and again only where others changed it in between: so a change that meets much that is known keeps its
/// turn no longer than writing takes.
class KnownItems {
 public:
  explicit KnownItems(StoreCore& core) : m_core(core) {}

  /// Before the turn. Ends early when it is stopped; then more is left to be looked at later.
  Status lookAhead(const Announcement& announcement);
  /// After the turn was taken, before anything is written.
  Status beginTurn();

  /// Nothing is known of what is put into a new calendar.
  void calendarMade(CalendarId calendar) { m_made.insert(calendar); }
  /// What stands there now, as long as all that is put and removed is asked for here or told to `touch`. `main` has its
  /// calendar, and takes the identifiers of the one that is known. `isSeries`: it has a rule, or changed occurrences.
  Result<Standing> of(Item& main, bool isSeries);
  /// Says that what was looked at ahead will not stand there any more. Whether that may have been said before.
  bool touch(const Item& item);

 private:
  Result<Standing> look(Item& main, bool isSeries);
  /// False when the store had no item with that UID when the turn began.
  Result<bool> mayHave(std::string_view uid);
  Status forgetChanged();

  StoreCore& m_core;
  std::unordered_map<const Item*, Standing> m_ahead;  ///< of what is announced and may be known
  std::uint64_t m_fileNumber = 0;                     ///< of the file that was looked at
  std::int64_t m_seen = 0;                            ///< newest row of its log then
  ItemId m_highest = 0;                               ///< no row has a higher number
  std::int64_t m_lookups = 0;
  std::optional<UidFilter> m_stored;  ///< what the store held, once it pays to have looked at all of it
  UidFilter m_touched;
  std::unordered_set<CalendarId> m_made;
};

}  // namespace orlocal::store
