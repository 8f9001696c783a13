#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "store/model/model.h"
#include "store/recurrence/recurrence.h"
#include "store/rows/put_outcome.h"

namespace orlocal::store {

/// An event, series or reminder that is going to be put.
struct AnnouncedItem {
  Item* main = nullptr;            ///< as `put` will get it, at the same address; no changed occurrence
  std::string_view calendarTitle;  ///< of the calendar it goes to; empty for the default one
  bool isSeries = false;           ///< it has a rule, or comes with changed occurrences
};

/// What a large change is going to put: that is looked up before its turn to write comes, so that others wait less. It
/// changes nothing about what is written; what is not announced can be put all the same.
struct Announcement {
  std::span<const AnnouncedItem> items;
  /// Asked now and then; when set, looking up ends.
  const std::atomic<bool>* stop = nullptr;
};

/// One large change of the store, all or nothing: what importing a file is made of. Made by
/// `CalendarStore::startWriting`; holds the turn to write until it is committed or destroyed. Destroying it without a
/// commit leaves the store as it was.
///
/// It writes into read-only calendars too: a subscription is refreshed this way. Asking whether that is wanted is the
/// caller's part. After a failure with another code than `kInvalid`, `kRefused` or `kTooLarge` only destroying it
/// makes sense.
class ItemWriter {
 public:
  virtual ~ItemWriter() = default;

  /// The oldest calendar of that kind and title.
  virtual Result<std::optional<Calendar>> calendarTitled(CalendarKind kind, std::string_view title) = 0;
  /// The default calendar of that kind, as `CalendarStore::defaultCalendar`.
  virtual Result<std::optional<Calendar>> defaultCalendar(CalendarKind kind) = 0;
  /// Makes a source; fills in id and identifier.
  virtual Status makeSource(Source& source) = 0;
  /// Makes a calendar; a `source` of 0 is the local source. Fills in id, identifier, source and type.
  virtual Status makeCalendar(Calendar& calendar) = 0;

  /// Keeps a private zone, so that items may name it. The same name again replaces its text.
  virtual Status putZone(std::string_view name, std::string_view vtimezone) = 0;

  /// Writes a single event, a series or a reminder (`main`) with the changed occurrences that belong to it; the
  /// calendar, identifier and row fields of all are filled in, what they held before is ignored.
  ///
  /// An item is found again by kind, UID and (for a changed occurrence) original start among the items of `calendar`;
  /// the same UID in another calendar is another item. Found items keep their identifiers. Changed occurrences in the
  /// store that `changed` does not name are removed. A `main` that has a `recurrenceId` is a changed occurrence that
  /// comes without its series: it joins the series when the calendar has it, else it is kept as an item of its own
  /// until a series with its UID comes; then `changed` must be empty.
  ///
  /// `compiled` is `main` compiled for UTC, where the caller has it. Series of their own that `main` names as its
  /// continuations (see `continuationsOf`) and no longer names are removed.
  ///
  /// Stamps are stored as given. An item that has no start (an event) or a calendar of the wrong kind is `kInvalid`.
  virtual Result<PutOutcome> put(CalendarId calendar, Item& main, std::vector<Item>& changed,
                                 const Series* compiled = nullptr) = 0;

  /// Writes a contact, found again by its identifier; an empty identifier is filled in with a new one.
  virtual Result<PutOutcome> putContact(Contact& contact) = 0;

  /// All of it is on disk when this returns without a failure.
  virtual Status commit() = 0;
};

/// Receives a single event, series, reminder or stray changed occurrence, with the changed occurrences of a series in
/// the order of their original starts. A failure stops the walk and becomes its result.
using ItemVisitor = std::function<Status(const Item& main, const std::vector<Item>& changed)>;

}  // namespace orlocal::store
