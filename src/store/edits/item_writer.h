#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "store/core/outside_commits.h"
#include "store/core/store_core.h"
#include "store/edits/announcement.h"
#include "store/edits/known_items.h"
#include "store/rows/calendar_titles.h"
#include "store/rows/contact_rows.h"
#include "store/rows/put_outcome.h"
#include "store/rows/remote_rows.h"

namespace orlocal::store {

/// One large change of the store, all or nothing: what importing a file is made of. Made by
/// `CalendarStore::startWriting`; holds the turn to write until it is committed or destroyed. Destroying it without a
/// commit leaves the store as it was.
///
/// It writes into read-only calendars too: a subscription is refreshed this way. Asking whether that is wanted is the
/// caller's part. After a failure with another code than `kInvalid`, `kRefused` or `kTooLarge` only destroying it
/// makes sense.
class ItemWriter {
 public:
  static Result<std::unique_ptr<ItemWriter>> start(StoreCore& core, const Announcement& announcement);
  ~ItemWriter();

  /// The oldest calendar of that kind and title.
  Result<std::optional<Calendar>> calendarTitled(CalendarKind kind, std::string_view title);
  /// The default calendar of that kind, as `CalendarStore::defaultCalendar`.
  Result<std::optional<Calendar>> defaultCalendar(CalendarKind kind);
  Result<std::optional<Calendar>> calendarWith(CalendarId id) { return m_core.calendars.withId(id); }
  Result<std::vector<Calendar>> calendars(CalendarKind kind) { return m_core.calendars.ofKind(kind); }
  Result<std::vector<Source>> sources() { return m_core.calendars.sources(); }
  /// This machine's own.
  Result<std::optional<Source>> localSource() { return m_core.calendars.localSource(); }
  /// Makes a source; fills in id and identifier.
  Status makeSource(Source& source);
  Status renameSource(SourceId id, std::string_view title);
  /// With its calendars and all that is known of a server behind it.
  Status removeSource(SourceId id);
  /// Makes a calendar; a `source` of 0 is the local source. Fills in id, identifier, source and type.
  Status makeCalendar(Calendar& calendar);
  /// Writes it as it is given, whatever it allows.
  Status updateCalendar(const Calendar& calendar);
  /// With all that is in it. Nothing happens when it is not there.
  Status removeCalendar(CalendarId id);

  /// Keeps a private zone, so that items may name it. The same name again replaces its text.
  Status putZone(std::string_view name, std::string_view vtimezone);

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
  Result<PutOutcome> put(CalendarId calendar, Item& main, std::vector<Item>& changed, const Series* compiled = nullptr);

  /// As it stands in this turn; none when it is not there, or is a changed occurrence of a series.
  Result<std::optional<WholeItem>> read(ItemId id);
  /// The event, series or reminder with that UID, no changed occurrence.
  Result<std::optional<ItemId>> find(CalendarId calendar, ItemKind kind, std::string_view uid);
  /// The changed occurrence that came without its series and has the UID and original start of `like`.
  Result<std::optional<ItemId>> findStray(CalendarId calendar, const Item& like);
  /// With its changed occurrences. Nothing happens when it is not there.
  Status remove(ItemId id);

  /// What lies on servers, written in the same turn.
  RemoteRows& remotes() { return m_remotes; }

  /// Writes a contact, found again by its identifier; an empty identifier is filled in with a new one.
  Result<PutOutcome> putContact(Contact& contact);

  /// Where the log stands as this turn begins, without what it records itself.
  LogPosition position() const { return m_position; }
  /// Whether this is the store in which the log stood there, and it knows all that came after: not when another file
  /// took its place or a backup was restored since.
  Result<bool> comesAfter(const LogPosition& before);

  /// All of it is on disk when this returns without a failure.
  Status commit();

 private:
  ItemWriter(StoreCore& core, WriteTurn turn, KnownItems known)
      : m_core(core),
        m_turn(std::move(turn)),
        m_known(std::move(known)),
        m_position{.row = core.log.last(), .file = core.fileNumber()},
        m_contacts(core.database),
        m_remotes(core.database),
        m_titles(core.calendars) {}

  Status checkTarget(CalendarId calendar, const Item& item);
  Result<PutOutcome> putMain(Item& main, const Series* series, const Standing& standing);
  /// Removes the series that were cut off the stored one and that `given` does not name any more.
  Status removeContinuations(const std::vector<std::string>& stored, const Item& given);
  Status removeChangedOf(ItemId series);
  Result<PutOutcome> putStray(Item& stray);
  Result<PutOutcome> putChanged(Item& changed, const Item& main, const Series& series, ItemId known);
  /// Finds the right one of the changed occurrences of a known series for each of `changed`; removes the others.
  Result<PutOutcome> putAllChanged(std::vector<Item>& changed, const Item& main, const Series& series);
  Status adoptStrays(const Item& main, const Series& series);

  StoreCore& m_core;
  WriteTurn m_turn;
  KnownItems m_known;
  LogPosition m_position;
  ContactRows m_contacts;
  RemoteRows m_remotes;
  CalendarTitles m_titles;
  std::optional<Calendar> m_lastTarget;
  LazyStatement m_zoneText{"SELECT vtimezone FROM zones WHERE name = ?"};
  LazyStatement m_putZone{"INSERT OR REPLACE INTO zones(name, vtimezone) VALUES(?, ?)"};
};

}  // namespace orlocal::store
