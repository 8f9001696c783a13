#include "store/core/store_core.h"

#include <cstring>
#include <ctime>
#include <utility>

#include <fmt/format.h>
#include <unistd.h>

#include "base/translation.h"
#include "base/try.h"
#include "store/core/zone_data.h"
#include "store/file/change_signal.h"
#include "store/file/checked_row.h"
#include "store/icalendar/item_limits.h"
#include "store/icalendar/private_zone.h"
#include "store/time/zone_data_version.h"

namespace orlocal::store {
namespace {

/// A file that was replaced is noticed after so long at the latest.
constexpr auto kLookEvery = std::chrono::milliseconds(10);

/// Ticks with the kernel's timer; read without calling it.
std::chrono::steady_clock::duration coarseTime() {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

Subject subjectOf(const Item& item) { return item.kind == ItemKind::kEvent ? Subject::kEvent : Subject::kReminder; }

Failed noLonger() {
  return failure(ErrorCode::kNotFound, tr("The item is no longer in the calendar store; read it anew."));
}

Uuid publicUuid(const Item& item) { return Uuid::parse(item.identifier).value_or(Uuid()); }

}  // namespace

StoreCore::StoreCore(StoreOptions storeOptions)
    : options(std::move(storeOptions)),
      log(database, uuids.randomNumber()),
      timeline(database),
      rows(database),
      calendars(database),
      series(rows, options.viewer),
      longEvents(timeline, rows, series),
      recorder(database, log, rows),
      m_file(options.file) {}

Result<std::unique_ptr<StoreCore>> StoreCore::open(StoreOptions storeOptions) {
  std::unique_ptr<StoreCore> core(new StoreCore(std::move(storeOptions)));
  ORLOCAL_CHECK(core->openFile());
  return core;
}

std::unique_ptr<StoreCore> StoreCore::unopened(Failure reason) {
  std::unique_ptr<StoreCore> core(new StoreCore(StoreOptions()));
  core->m_unopened = std::move(reason);
  return core;
}

Status StoreCore::openFile() {
  if (m_unopened) { return failure(*m_unopened); }
  ORLOCAL_TRY(database, m_file.open(m_whenMissing, options.busyTimeout, uuids));
  m_whenMissing = Missing::kIsAFailure;
  m_opener = ::getpid();
  m_nextLook = coarseTime() + kLookEvery;
  m_walIndex = nullptr;
  ++m_generation;
  if (m_file.opensAnother()) {
    ++m_fileNumber;
    m_seen = m_identifiedTo = -1;
    forgetAll();
  }
  // When it cannot be done now it is done at a later opening; reading is not held up for it.
  m_opening = true;
  auto followed = followZoneData(*this, zoneDataVersion());
  m_opening = false;
  if (followed || followed.error().code != ErrorCode::kCorrupt) { return {}; }
  database.close();
  return followed;
}

void StoreCore::close() {
  // A process that was forked off shares the open file with the one that opened it, and none of its locks.
  if (!database.isOpen() || database.inTransaction() || m_opener != ::getpid()) { return; }
  database.emptyLog();
  database.close();
  m_walIndex = nullptr;
  m_whenMissing = Missing::kIsMade;
}

Status StoreCore::followFile(Look look) {
  if (!database.isOpen()) { return openFile(); }
  if (database.inTransaction()) { return {}; }
  const auto now = coarseTime();
  if (look == Look::kNowAndThen && now < m_nextLook) { return {}; }
  // What fails is looked at again at once.
  m_nextLook = {};
  ORLOCAL_TRY(const StoreFile::News news, m_file.look(database));
  if (news == StoreFile::News::kReplaced) { ORLOCAL_CHECK(m_file.partFromLog(database, options.busyTimeout)); }
  if (news != StoreFile::News::kNone) {
    database.close();
    m_walIndex = nullptr;
    return openFile();
  }
  m_nextLook = now + kLookEvery;
  return {};
}

void StoreCore::forget(ItemId item, std::optional<ItemId> ofSeries) {
  for (const ItemId id : {item, ofSeries.value_or(item)}) {
    series.forget(id);
    longEvents.forget(id);
  }
}

void StoreCore::forgetCalendars() {
  ++m_calendarsGeneration;
  calendars.forget();
}

void StoreCore::forgetAll() {
  forgetCalendars();
  rows.forgetAll();
  series.forgetAll();
  longEvents.forgetAll();
  timeline.forget();
}

Status StoreCore::loadZones() {
  Statement& zones = m_zones.in(database);
  const ResetAtExit reset(zones);
  for (;;) {
    ORLOCAL_TRY(const bool found, zones.step());
    if (!found) { return {}; }
    // One that cannot be read any more is treated like an unknown zone.
    announcePrivateZone(std::string(zones.text(0)), std::string(zones.text(1)));
  }
}

Status StoreCore::catchUp(std::int64_t newest) {
  if (newest == m_seen) { return {}; }
  bool zonesChanged = m_seen < 0;
  if (m_seen >= 0) {
    ORLOCAL_TRY(const bool few, log.fewBetween(m_seen, newest));
    if (!few) {
      forgetAll();
      zonesChanged = true;
    } else {
      ORLOCAL_CHECK(log.visitAfter(m_seen, [&](const LoggedChange& change) {
        if (change.subject == Subject::kZone) { zonesChanged = true; }
        if (change.subject == Subject::kCalendar || change.subject == Subject::kReminderList) { forgetCalendars(); }
        if (change.subject != Subject::kEvent && change.subject != Subject::kReminder) { return; }
        rows.forget(change.row);
        forget(change.row, change.series);
      }));
    }
  }
  if (zonesChanged) {
    series.forgetAll();
    longEvents.forgetAll();
    ORLOCAL_CHECK(loadZones());
  }
  m_seen = newest;
  return {};
}

Result<Transaction> StoreCore::beginReadingLog() {
  ORLOCAL_CHECK(followFile(Look::kNowAndThen));
  return Transaction::read(database);
}

Result<Transaction> StoreCore::beginReading() {
  // Who reads inside a turn to write meets what that has done to memory, too.
  if (database.inTransaction()) { return Transaction::read(database); }
  ORLOCAL_CHECK(followFile(Look::kNowAndThen));
  ORLOCAL_TRY(Transaction transaction, Transaction::read(database));
  ORLOCAL_TRY(const std::int64_t newest, log.newest());
  ORLOCAL_CHECK(catchUp(newest));
  return transaction;
}

Status StoreCore::startIdentifiers() {
  if (m_identifiedTo == log.last()) { return {}; }
  ORLOCAL_TRY(const ItemRows::Newest newest, rows.newest());
  if (newest.id > log.last()) { return damaged(database, tr("The log of changes")); }
  uuids.startAfter(newest.uuid);
  return {};
}

Result<std::uint64_t> StoreCore::calendarsGeneration() {
  ORLOCAL_CHECK(beginReading());
  return m_calendarsGeneration;
}

Result<Transaction> StoreCore::beginTransaction() {
  auto begun = Transaction::write(database);
  if (begun || begun.error().code != ErrorCode::kNotPermitted || database.readOnly() || m_opening) { return begun; }
  // SQLite opens the log and its index for reading when they do not open for writing, whatever the reason was.
  database.close();
  m_walIndex = nullptr;
  ORLOCAL_CHECK(openFile());
  return Transaction::write(database);
}

Result<WriteTurn> StoreCore::beginWriting() {
  if (database.whyOnlyRead() && !database.inTransaction()) {
    // There may be room by now.
    database.close();
    m_walIndex = nullptr;
  }
  ORLOCAL_CHECK(followFile(Look::kNow));
  ORLOCAL_TRY(Transaction transaction, beginTransaction());
  ORLOCAL_CHECK(log.startCommit());
  recorder.startCommit();
  ORLOCAL_CHECK(catchUp(log.last()));
  ORLOCAL_CHECK(startIdentifiers());
  return WriteTurn(*this, std::move(transaction));
}

std::uint64_t StoreCore::generation() {
  // Why it cannot be followed is told to who reads next.
  if (!followFile(Look::kNowAndThen)) { return ++m_generation; }
  if (m_walIndex == nullptr) {
    // The index exists from the first transaction on.
    if (auto reading = beginReading(); reading) { m_walIndex = database.readOnly() ? nullptr : database.walIndex(); }
  }
  if (m_walIndex == nullptr) {
    Statement& version = m_readDataVersion.in(database);
    const auto row = version.step();
    if (!row || !*row || version.integer(0) != m_dataVersion) { ++m_generation; }
    if (row && *row) { m_dataVersion = version.integer(0); }
    version.reset();
    return m_generation;
  }
  // Another process may be writing it at this moment: a torn header differs from the last one and from the next.
  const auto wordAt = [this](std::size_t i) { return __atomic_load_n(m_walIndex + i, __ATOMIC_ACQUIRE); };
  std::size_t same = 0;
  while (same < std::size(m_walHeader) && wordAt(same) == m_walHeader[same]) { ++same; }
  if (same == std::size(m_walHeader)) { return m_generation; }
  for (std::size_t i = 0; i < std::size(m_walHeader); ++i) { m_walHeader[i] = wordAt(i); }
  return ++m_generation;
}

Result<std::optional<Calendar>> StoreCore::defaultCalendar(CalendarKind kind) {
  const std::string& wished = kind == CalendarKind::kReminders ? options.reminderList : options.eventCalendar;
  if (!wished.empty()) {
    ORLOCAL_TRY(auto all, calendars.ofKind(kind));
    for (Calendar& calendar : all) {
      if (!calendar.readOnly && (calendar.identifier == wished || calendar.title == wished)) {
        return std::optional(std::move(calendar));
      }
    }
  }
  return calendars.forNewItems(kind);
}

Result<std::optional<WholeItem>> StoreCore::readWhole(ItemId id) {
  ORLOCAL_TRY(const auto main, rows.read(id));
  if (main == nullptr || main->series) { return std::nullopt; }
  WholeItem whole{*main, {}};
  ORLOCAL_TRY(const auto others, rows.changedOf(id));
  for (const ItemRows::Changed& other : others) {
    ORLOCAL_TRY(const auto occurrence, rows.readNamed(other.id));
    whole.changed.push_back(*occurrence);
  }
  return whole;
}

Status StoreCore::insertItem(Item& item, const Series* own, std::optional<std::int64_t> original, bool originalIsWall) {
  ORLOCAL_CHECK(checkSize(item));
  if (own != nullptr) { ORLOCAL_CHECK(own->checkDensity()); }
  const Uuid uuid = uuids.next();
  item.itemIdentifier = uuid.text();
  if (item.uid.empty()) { item.uid = item.itemIdentifier; }
  if (!item.series) { item.identifier = item.itemIdentifier; }
  item.id = 0;
  return addRow(item, log.next(), uuid, own, original, originalIsWall);
}

Status StoreCore::reinsertItem(const Item& item, const Series* own, std::optional<std::int64_t> original,
                               bool originalIsWall) {
  Item row = item;
  return addRow(row, item.id, Uuid::parse(item.itemIdentifier).value_or(Uuid()), own, original, originalIsWall);
}

Status StoreCore::addRow(Item& item, ItemId id, const Uuid& uuid, const Series* own,
                         std::optional<std::int64_t> original, bool originalIsWall) {
  TimelineEntry entry = Timeline::entryOf(item, own, original, originalIsWall);
  ORLOCAL_CHECK(rows.insert(item, id, uuid, {entry.shelf, entry.start, original}));
  entry.item = item.id;
  ORLOCAL_CHECK(timeline.insert(entry));
  recorder.hasInserted(item);
  forget(item.id, item.series);
  if (!item.series) { return log.record(Operation::kInserted, subjectOf(item), item.id, std::nullopt, uuid); }
  return log.record(Operation::kUpdated, subjectOf(item), item.id, item.series, publicUuid(item));
}

Status StoreCore::updateItem(const Item& item, const Series* own, std::optional<std::int64_t> original,
                             bool originalIsWall) {
  ORLOCAL_TRY(const auto before, rows.place(item.id));
  if (!before) { return noLonger(); }
  return updateItem(item, own, original, originalIsWall, *before);
}

Status StoreCore::updateItem(const Item& item, const Series* own, std::optional<std::int64_t> original,
                             bool originalIsWall, const StoredPlace& before) {
  ORLOCAL_CHECK(checkSize(item));
  if (own != nullptr) { ORLOCAL_CHECK(own->checkDensity()); }
  ORLOCAL_CHECK(replaceRow(item, own, original, originalIsWall, before));
  return log.record(Operation::kUpdated, subjectOf(item), item.id, item.series, publicUuid(item));
}

Status StoreCore::replaceRow(const Item& item, const Series* own, std::optional<std::int64_t> original,
                             bool originalIsWall) {
  ORLOCAL_TRY(const auto before, rows.place(item.id));
  if (!before) { return noLonger(); }
  return replaceRow(item, own, original, originalIsWall, *before);
}

Status StoreCore::replaceRow(const Item& item, const Series* own, std::optional<std::int64_t> original,
                             bool originalIsWall, const StoredPlace& before) {
  ORLOCAL_CHECK(recorder.willChange(item.id));
  const TimelineEntry entry = Timeline::entryOf(item, own, original, originalIsWall);
  // An entry takes the place of one that stands there.
  const bool moves = before.shelf != entry.shelf || before.shelfStart != entry.start;
  if (moves) { ORLOCAL_CHECK(timeline.remove(item.id, before.shelf, before.shelfStart)); }
  ORLOCAL_CHECK(timeline.insert(entry));
  ORLOCAL_CHECK(rows.update(item, {entry.shelf, entry.start, original}, before));
  forget(item.id, item.series);
  return {};
}

Status StoreCore::removeItem(const Item& item) {
  ORLOCAL_TRY(const auto before, rows.place(item.id));
  if (!before) { return failure(ErrorCode::kNotFound, tr("The item is no longer in the calendar store.")); }
  ORLOCAL_CHECK(recorder.willChange(item.id));
  ORLOCAL_CHECK(timeline.remove(item.id, before->shelf, before->shelfStart));
  ORLOCAL_CHECK(rows.remove(item.id));
  forget(item.id, item.series);
  if (item.series) { return log.record(Operation::kUpdated, subjectOf(item), item.id, item.series, publicUuid(item)); }
  return log.record(Operation::kDeleted, subjectOf(item), item.id, std::nullopt, publicUuid(item),
                    {item.title, item.calendar});
}

Status StoreCore::removeCalendar(const Calendar& calendar) {
  // Changed occurrences first, while they still have their series' identifier.
  ORLOCAL_TRY(const auto ids, rows.idsInCalendar(calendar.id));
  for (const ItemId id : ids) {
    ORLOCAL_TRY(const auto item, rows.read(id));
    if (item != nullptr) { ORLOCAL_CHECK(removeItem(*item)); }
  }
  ORLOCAL_CHECK(calendars.remove(calendar.id));
  ORLOCAL_CHECK(calendars.removeUnusedSource(calendar.source));
  return logCalendar(Operation::kDeleted, calendar);
}

Status StoreCore::logCalendar(Operation operation, const Calendar& calendar) {
  forgetCalendars();
  return log.record(operation, calendar.kind == CalendarKind::kReminders ? Subject::kReminderList : Subject::kCalendar,
                    calendar.id, std::nullopt, Uuid::parse(calendar.identifier).value_or(Uuid()),
                    operation == Operation::kDeleted ? Departed{calendar.title} : Departed());
}

WriteTurn::~WriteTurn() {
  // What was read meanwhile may never have been.
  if (m_core != nullptr) { m_core->forgetAll(); }
}

Status WriteTurn::commit() {
  // What was done is rolled back when this goes.
  if (m_core->m_rehearses) { return {}; }
  ORLOCAL_CHECK(m_core->rows.writeGathered());
  ORLOCAL_CHECK(m_core->timeline.writeGathered());
  ORLOCAL_CHECK(m_core->recorder.finishCommit());
  ORLOCAL_CHECK(m_core->log.finishCommit());
  const Bell bell(m_core->file());
  ORLOCAL_CHECK(m_transaction.commit());
  bell.ring();
  m_core->m_seen = m_core->m_identifiedTo = m_core->log.last();
  m_core = nullptr;
  return {};
}

}  // namespace orlocal::store
