#include "store/calendar_store.h"

#include <utility>

#include "base/try.h"
#include "store/core/command_changes.h"
#include "store/core/queries.h"
#include "store/core/search.h"
#include "store/core/store_core.h"
#include "store/edits/calendar_edits.h"
#include "store/edits/event_edits.h"
#include "store/edits/item_writer.h"
#include "store/edits/reminder_edits.h"
#include "store/edits/undo_edits.h"
#include "store/rows/contact_rows.h"

namespace orlocal::store {

Result<std::unique_ptr<CalendarStore>> CalendarStore::open(StoreOptions options) {
  ORLOCAL_TRY(auto core, StoreCore::open(std::move(options)));
  return std::unique_ptr<CalendarStore>(new CalendarStore(std::move(core)));
}

std::unique_ptr<CalendarStore> CalendarStore::unopened(Failure reason) {
  return std::unique_ptr<CalendarStore>(new CalendarStore(StoreCore::unopened(std::move(reason))));
}

CalendarStore::CalendarStore(std::unique_ptr<StoreCore> core)
    : m_core(std::move(core)),
      m_queries(std::make_unique<Queries>(*m_core)),
      m_search(std::make_unique<Search>(*m_core, *m_queries)) {}

CalendarStore::~CalendarStore() = default;

void CalendarStore::close() { m_core->close(); }
std::uint64_t CalendarStore::generation() { return m_core->generation(); }
Result<std::uint64_t> CalendarStore::calendarsGeneration() { return m_core->calendarsGeneration(); }

Result<std::vector<Source>> CalendarStore::sources() {
  ORLOCAL_TRY(const Transaction snapshot, m_core->beginReading());
  return m_core->calendars.sources();
}

Result<std::vector<Calendar>> CalendarStore::calendars(CalendarKind kind) {
  ORLOCAL_TRY(const Transaction snapshot, m_core->beginReading());
  return m_core->calendars.ofKind(kind);
}

Result<std::optional<Calendar>> CalendarStore::calendar(std::string_view identifier) {
  ORLOCAL_TRY(const Transaction snapshot, m_core->beginReading());
  const auto uuid = Uuid::parse(identifier);
  if (!uuid) { return std::nullopt; }
  return m_core->calendars.withUuid(*uuid);
}

Result<std::optional<Calendar>> CalendarStore::defaultCalendar(CalendarKind kind) {
  ORLOCAL_TRY(const Transaction snapshot, m_core->beginReading());
  return m_core->defaultCalendar(kind);
}

Status CalendarStore::saveCalendar(Calendar& calendar, CalendarFields set) {
  return CalendarEdits(*m_core).save(calendar, set);
}

Status CalendarStore::removeCalendar(std::string_view identifier) { return CalendarEdits(*m_core).remove(identifier); }

Status CalendarStore::makeDefault(std::string_view identifier, CalendarKind kind) {
  return CalendarEdits(*m_core).makeDefault(identifier, kind);
}

Result<OccurrenceList> CalendarStore::occurrences(const EventQuery& query) { return m_queries->occurrences(query); }

Result<std::vector<ItemId>> CalendarStore::reminders(const ReminderQuery& query) { return m_queries->reminders(query); }

Result<std::vector<SearchHit>> CalendarStore::search(const SearchQuery& query) { return m_search->run(query); }

Status CalendarStore::rebuildSearch() { return m_search->rebuild(); }

Result<std::shared_ptr<const Item>> CalendarStore::item(ItemId id) {
  // What is at hand is right as long as nobody wrote.
  const std::uint64_t generation = m_core->generation();
  if (generation == m_checked) {
    if (auto kept = m_core->rows.kept(id)) { return kept; }
  }
  ORLOCAL_TRY(const Transaction snapshot, m_core->beginReading());
  m_checked = generation;
  return m_core->rows.read(id);
}

void CalendarStore::prefetch(std::span<const ItemId> ids) {
  const std::uint64_t generation = m_core->generation();
  if (const auto snapshot = m_core->beginReading()) {
    m_checked = generation;
    m_core->rows.prefetch(ids);
  }
}

Result<std::shared_ptr<const Item>> CalendarStore::event(std::string_view identifier) {
  ORLOCAL_TRY(auto item, itemWithIdentifier(identifier));
  return item != nullptr && item->kind == ItemKind::kEvent ? item : nullptr;
}

Result<std::shared_ptr<const Item>> CalendarStore::itemWithIdentifier(std::string_view itemIdentifier) {
  ORLOCAL_TRY(const Transaction snapshot, m_core->beginReading());
  const auto uuid = Uuid::parse(itemIdentifier);
  if (!uuid) { return nullptr; }
  ORLOCAL_TRY(const auto id, m_core->rows.withUuid(*uuid));
  if (!id) { return nullptr; }
  return m_core->rows.read(*id);
}

Result<std::optional<Occurrence>> CalendarStore::firstOccurrence(const Item& event) {
  return m_queries->firstOccurrence(event);
}

Result<std::optional<Occurrence>> CalendarStore::occurrenceAt(const Item& event, Moment originalStart) {
  return m_queries->occurrenceAt(event, originalStart);
}

Result<Item> CalendarStore::saveEvent(const ItemEdit& edit, const std::optional<Occurrence>& occurrence, Span span) {
  return EventEdits(*m_core, *m_queries).save(edit, occurrence, span);
}

Status CalendarStore::removeEvent(const Item& event, const std::optional<Occurrence>& occurrence, Span span) {
  return EventEdits(*m_core, *m_queries).remove(event, occurrence, span);
}

Result<Item> CalendarStore::saveReminder(const ItemEdit& edit) { return ReminderEdits(*m_core, *m_queries).save(edit); }

Status CalendarStore::removeReminder(const Item& reminder) {
  return ReminderEdits(*m_core, *m_queries).remove(reminder);
}

void CalendarStore::beginCommand(Command command) { m_core->recorder.begin(std::move(command)); }

Result<std::vector<JournalEntry>> CalendarStore::commandsOf(std::string_view person) {
  ORLOCAL_TRY(const Transaction snapshot, m_core->beginReadingLog());
  return JournalRows(m_core->database).commands(person);
}

Result<std::vector<CommandChange>> CalendarStore::changesBy(std::int64_t number) {
  ORLOCAL_TRY(const Transaction snapshot, m_core->beginReading());
  return changesOfCommand(*m_core, number);
}

Result<JournalEntry> CalendarStore::undo(std::string_view person, std::optional<std::int64_t> number) {
  return UndoEdits(*m_core).undo(person, number);
}

void CalendarStore::rehearse() { m_core->rehearse(); }

Result<std::unique_ptr<ItemWriter>> CalendarStore::startWriting(const Announcement& announcement) {
  return ItemWriter::start(*m_core, announcement);
}

Result<std::optional<WholeItem>> CalendarStore::wholeItem(ItemId id) {
  ORLOCAL_TRY(const Transaction snapshot, m_core->beginReading());
  return m_core->readWhole(id);
}

Status CalendarStore::forEachItem(CalendarId calendar, const ItemVisitor& visit) {
  const std::uint64_t generation = m_core->generation();
  ORLOCAL_TRY(const Transaction snapshot, m_core->beginReading());
  if (m_listed != generation) {
    ORLOCAL_TRY(m_idsByCalendar, m_core->rows.idsByCalendar());
    m_listed = generation;
  }
  const auto ids = m_idsByCalendar.find(calendar);
  if (ids == m_idsByCalendar.end()) { return {}; }
  for (const ItemId id : ids->second) {
    ORLOCAL_TRY(const auto main, m_core->rows.read(id));
    if (main == nullptr) { continue; }
    std::vector<Item> changed;
    ORLOCAL_TRY(const auto rows, m_core->rows.changedOf(id));
    for (const ItemRows::Changed& row : rows) {
      ORLOCAL_TRY(const auto occurrence, m_core->rows.read(row.id));
      if (occurrence != nullptr) { changed.push_back(*occurrence); }
    }
    ORLOCAL_CHECK(visit(*main, changed));
  }
  return {};
}

Result<std::vector<ItemId>> CalendarStore::itemsWithAlarms() {
  ORLOCAL_TRY(const Transaction snapshot, m_core->beginReading());
  return m_core->rows.idsWithAlarms();
}

Result<std::optional<std::string>> CalendarStore::privateZone(std::string_view name) {
  ORLOCAL_TRY(const Transaction snapshot, m_core->beginReading());
  ORLOCAL_TRY(Statement find, m_core->database.prepare("SELECT vtimezone FROM zones WHERE name = ?"));
  find.bind(1, name);
  ORLOCAL_TRY(const bool found, find.step());
  return found ? std::optional<std::string>(find.text(0)) : std::nullopt;
}

Result<std::optional<std::string>> CalendarStore::addressOf(std::string_view email) {
  ORLOCAL_TRY(const Transaction snapshot, m_core->beginReading());
  return ContactRows(m_core->database).addressOf(email);
}

Result<std::vector<Contact>> CalendarStore::contacts() {
  ORLOCAL_TRY(const Transaction snapshot, m_core->beginReading());
  return ContactRows(m_core->database).all();
}

// Both ask the log alone, so what is kept in memory need not be brought up to it first.
Result<LogPosition> CalendarStore::newestChange() {
  ORLOCAL_TRY(const Transaction snapshot, m_core->beginReadingLog());
  ORLOCAL_TRY(const std::int64_t newest, m_core->log.newest());
  return LogPosition{.row = newest, .file = m_core->fileNumber()};
}

Result<std::vector<OutsideCommit>> CalendarStore::outsideCommits(LogPosition& position) {
  ORLOCAL_TRY(const Transaction snapshot, m_core->beginReadingLog());
  if (position.file != m_core->fileNumber()) {
    // Another file's log tells another story under the same numbers.
    ORLOCAL_TRY(const std::int64_t newest, m_core->log.newest());
    position = {.row = newest, .file = m_core->fileNumber()};
    return std::vector<OutsideCommit>();
  }
  return outsideCommitsAfter(m_core->log, position.row);
}

Result<LogPosition> CalendarStore::changesSince(Moment moment) {
  ORLOCAL_TRY(const Transaction snapshot, m_core->beginReadingLog());
  ORLOCAL_TRY(const std::int64_t before, m_core->log.newestBefore(moment));
  return LogPosition{.row = before, .file = m_core->fileNumber()};
}

Result<LogPosition> CalendarStore::changesAfter(std::int64_t row) {
  ORLOCAL_TRY(const Transaction snapshot, m_core->beginReadingLog());
  return LogPosition{.row = row, .file = m_core->fileNumber()};
}

Result<bool> CalendarStore::reachesBackTo(const LogPosition& position) {
  ORLOCAL_TRY(const Transaction snapshot, m_core->beginReadingLog());
  ORLOCAL_TRY(const std::int64_t oldest, m_core->log.oldest());
  return position.file == m_core->fileNumber() && oldest <= position.row + 1;
}

Result<TouchedItems> CalendarStore::touchedSince(std::int64_t after) {
  ORLOCAL_TRY(const Transaction snapshot, m_core->beginReadingLog());
  return touchedItemsAfter(m_core->log, after);
}

Result<std::unique_ptr<ChangeSignal>> CalendarStore::listen() {
  // The bell is beside the file that the path leads to now.
  ORLOCAL_CHECK(m_core->beginReadingLog());
  return ChangeSignal::listen(m_core->file());
}

}  // namespace orlocal::store
