#include "store/edits/item_writer.h"

#include <algorithm>
#include <map>
#include <utility>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "store/icalendar/later_changes.h"
#include "store/icalendar/private_zone.h"
#include "store/recurrence/original_key.h"

namespace orlocal::store {
namespace {

/// Room for what a large file changes, so that pages are written once.
constexpr const char* kLargeCache = "PRAGMA cache_size=-65536";
constexpr const char* kUsualCache = "PRAGMA cache_size=-8192";

/// What a rule that cannot be followed is to a file: one item that is refused, whatever the others are.
Result<Series> compiledToPut(const Item& item) {
  auto series = Series::compile(item, Zone());
  if (!series) { return failure(ErrorCode::kRefused, std::move(series.error().message)); }
  return series;
}

}  // namespace

Result<std::unique_ptr<ItemWriter>> ItemWriter::start(StoreCore& core, const Announcement& announcement) {
  KnownItems known(core);
  ORLOCAL_CHECK(known.lookAhead(announcement));
  ORLOCAL_TRY(WriteTurn turn, core.beginWriting());
  ORLOCAL_CHECK(core.database.execute(kLargeCache));
  ORLOCAL_CHECK(known.beginTurn());
  core.rows.gather();
  core.timeline.gather();
  return std::unique_ptr<ItemWriter>(new ItemWriter(core, std::move(turn), std::move(known)));
}

ItemWriter::~ItemWriter() { (void)m_core.database.execute(kUsualCache); }

Result<std::optional<Calendar>> ItemWriter::calendarTitled(CalendarKind kind, std::string_view title) {
  return m_titles.find(kind, title);
}

Result<std::optional<Calendar>> ItemWriter::defaultCalendar(CalendarKind kind) { return m_core.defaultCalendar(kind); }

Status ItemWriter::makeSource(Source& source) { return m_core.calendars.insertSource(source, m_core.uuids.next()); }

Status ItemWriter::renameSource(SourceId id, std::string_view title) {
  return m_core.calendars.renameSource(id, title);
}

Status ItemWriter::removeSource(SourceId id) {
  for (const CalendarKind kind : {CalendarKind::kEvents, CalendarKind::kReminders}) {
    ORLOCAL_TRY(const auto calendars, m_core.calendars.ofKind(kind));
    for (const Calendar& calendar : calendars) {
      if (calendar.source == id) { ORLOCAL_CHECK(removeCalendar(calendar.id)); }
    }
  }
  ORLOCAL_CHECK(m_remotes.removeRemote(id));
  return m_core.calendars.removeSource(id);
}

Status ItemWriter::makeCalendar(Calendar& calendar) {
  if (calendar.title.empty()) { return failure(ErrorCode::kInvalid, tr("A calendar needs a title.")); }
  std::optional<Source> source;
  if (calendar.source == 0) {
    ORLOCAL_TRY(source, m_core.calendars.localSource());
  } else {
    ORLOCAL_TRY(source, m_core.calendars.source(calendar.source));
  }
  if (!source) { return failure(ErrorCode::kInvalid, tr("The calendar's source is not in the store.")); }
  calendar.source = source->id;
  calendar.type = source->type;
  ORLOCAL_CHECK(m_core.calendars.insert(calendar, m_core.uuids.next()));
  m_titles.add(calendar);
  m_known.calendarMade(calendar.id);
  return m_core.logCalendar(Operation::kInserted, calendar);
}

Status ItemWriter::updateCalendar(const Calendar& calendar) {
  m_lastTarget.reset();
  ORLOCAL_CHECK(m_core.calendars.update(calendar));
  return m_core.logCalendar(Operation::kUpdated, calendar);
}

Status ItemWriter::removeCalendar(CalendarId id) {
  m_lastTarget.reset();
  ORLOCAL_TRY(const auto calendar, m_core.calendars.withId(id));
  if (!calendar) { return {}; }
  ORLOCAL_TRY(const auto ids, m_core.rows.idsInCalendar(id));
  for (const ItemId item : ids) {
    ORLOCAL_TRY(const auto row, m_core.rows.read(item));
    if (row != nullptr) { m_known.touch(*row); }
  }
  return m_core.removeCalendar(*calendar);
}

Result<std::optional<WholeItem>> ItemWriter::read(ItemId id) { return m_core.readWhole(id); }

Result<std::optional<ItemId>> ItemWriter::find(CalendarId calendar, ItemKind kind, std::string_view uid) {
  return m_core.rows.withUid(calendar, kind, uid);
}

Result<std::optional<ItemId>> ItemWriter::findStray(CalendarId calendar, const Item& like) {
  return m_core.rows.strayAt(calendar, like.kind, like.uid, Timeline::keyOf(*like.recurrenceId));
}

Status ItemWriter::remove(ItemId id) {
  ORLOCAL_TRY(const auto main, m_core.rows.read(id));
  if (main == nullptr) { return {}; }
  m_known.touch(*main);
  ORLOCAL_CHECK(removeChangedOf(id));
  return m_core.removeItem(*main);
}

Status ItemWriter::putZone(std::string_view name, std::string_view vtimezone) {
  Statement& read = m_zoneText.in(m_core.database).bind(1, name);
  const ResetAtExit reset(read);
  ORLOCAL_TRY(const bool found, read.step());
  if (found && read.text(0) == vtimezone) { return {}; }
  ORLOCAL_CHECK(registerPrivateZone(std::string(name), vtimezone));
  ORLOCAL_CHECK(m_putZone.in(m_core.database).bind(1, name).bind(2, vtimezone).run());
  return m_core.log.record(Operation::kUpdated, Subject::kZone, 0, std::nullopt, Uuid());
}

Status ItemWriter::checkTarget(CalendarId calendar, const Item& item) {
  if (!m_lastTarget || m_lastTarget->id != calendar) {
    ORLOCAL_TRY(m_lastTarget, m_core.calendars.withId(calendar));
    if (!m_lastTarget) { return failure(ErrorCode::kInvalid, tr("The calendar is not in the store.")); }
  }
  const bool event = item.kind == ItemKind::kEvent;
  if (!m_lastTarget->holds(item.kind)) {
    return failure(ErrorCode::kInvalid,
                   tr("\"{}\" holds no {}.", m_lastTarget->title, event ? tr("events") : tr("reminders")));
  }
  if (event && !item.start) { return failure(ErrorCode::kInvalid, tr("An event needs a start.")); }
  return {};
}

Result<PutOutcome> ItemWriter::put(CalendarId calendar, Item& main, std::vector<Item>& changed,
                                   const Series* compiled) {
  ORLOCAL_CHECK(checkTarget(calendar, main));
  main.calendar = calendar;
  main.series.reset();
  if (main.recurrenceId) {
    m_known.touch(main);
    return putStray(main);
  }
  const bool isSeries = !main.recurrence.empty() || !changed.empty();
  ORLOCAL_TRY(const Standing standing, m_known.of(main, isSeries));
  if (!isSeries) { return putMain(main, nullptr, standing); }
  for (Item& occurrence : changed) {
    occurrence.calendar = calendar;
    occurrence.kind = main.kind;
    occurrence.uid = main.uid;
    if (!occurrence.recurrenceId) {
      return failure(ErrorCode::kInvalid, tr("A changed occurrence needs its original start."));
    }
    ORLOCAL_CHECK(checkTarget(calendar, occurrence));
  }
  std::optional<Series> own;
  if (compiled == nullptr) {
    ORLOCAL_TRY(own, compiledToPut(main));
    compiled = &*own;
  }
  ORLOCAL_TRY(const PutOutcome outcome, putMain(main, compiled, standing));
  if (standing.hasStrays) { ORLOCAL_CHECK(adoptStrays(main, *compiled)); }
  if (changed.empty() && !standing.hasChanged && !standing.hasStrays) { return outcome; }
  ORLOCAL_TRY(const PutOutcome others, putAllChanged(changed, main, *compiled));
  return outcome == PutOutcome::kUnchanged ? others : outcome;
}

Result<PutOutcome> ItemWriter::putMain(Item& main, const Series* series, const Standing& standing) {
  if (standing.id == 0) {
    ORLOCAL_CHECK(m_core.insertItem(main, series, std::nullopt, false));
    return PutOutcome::kNew;
  }
  if (standing.differs) {
    ORLOCAL_CHECK(removeContinuations(standing.continuations, main));
  } else {
    main.stamped = standing.stamped;
  }
  if (series == nullptr) {
    if (standing.hasChanged) { ORLOCAL_CHECK(removeChangedOf(main.id)); }
    if (!standing.differs && !standing.hasChanged) { return PutOutcome::kUnchanged; }
  } else if (!standing.differs && (!main.recurrence.empty() || standing.hasChanged)) {
    // A single event that now has changed occurrences repeats for the timeline.
    return PutOutcome::kUnchanged;
  }
  ORLOCAL_CHECK(m_core.updateItem(main, series, std::nullopt, false, standing.place));
  return PutOutcome::kUpdated;
}

Status ItemWriter::removeChangedOf(ItemId series) {
  ORLOCAL_TRY(const auto others, m_core.rows.changedOf(series));
  for (const ItemRows::Changed& other : others) {
    ORLOCAL_TRY(const auto row, m_core.rows.readNamed(other.id));
    ORLOCAL_CHECK(m_core.removeItem(*row));
  }
  return {};
}

Status ItemWriter::removeContinuations(const std::vector<std::string>& stored, const Item& given) {
  const auto named = continuationsOf(given);
  for (const std::string& uid : stored) {
    if (std::find(named.begin(), named.end(), uid) != named.end()) { continue; }
    ORLOCAL_TRY(const auto known, m_core.rows.withUid(given.calendar, given.kind, uid));
    if (!known) { continue; }
    ORLOCAL_CHECK(removeChangedOf(*known));
    ORLOCAL_TRY(const auto row, m_core.rows.readNamed(*known));
    m_known.touch(*row);
    ORLOCAL_CHECK(m_core.removeItem(*row));
  }
  return {};
}

Result<PutOutcome> ItemWriter::putChanged(Item& changed, const Item& main, const Series& series, ItemId known) {
  changed.series = main.id;
  changed.identifier = main.identifier;
  const std::int64_t original = originalKey(series, *changed.recurrenceId);
  if (known == 0) {
    ORLOCAL_CHECK(m_core.insertItem(changed, nullptr, original, series.followsViewer()));
    return PutOutcome::kNew;
  }
  ORLOCAL_TRY(const auto stored, m_core.rows.readNamed(known));
  identifyAs(*stored, changed);
  if (!differs(*stored, changed)) { return PutOutcome::kUnchanged; }
  changed.identifier = main.identifier;
  ORLOCAL_CHECK(m_core.updateItem(changed, nullptr, original, series.followsViewer()));
  return PutOutcome::kUpdated;
}

Result<PutOutcome> ItemWriter::putAllChanged(std::vector<Item>& changed, const Item& main, const Series& series) {
  struct Known {
    ItemId id = 0;
    bool named = false;
  };
  std::map<std::int64_t, Known> known;
  ORLOCAL_TRY(const auto rows, m_core.rows.changedOf(main.id));
  for (const ItemRows::Changed& row : rows) { known[row.original].id = row.id; }
  PutOutcome outcome = PutOutcome::kUnchanged;
  for (Item& occurrence : changed) {
    // Where a file has an occurrence twice, the later one counts.
    Known& place = known[originalKey(series, *occurrence.recurrenceId)];
    ORLOCAL_TRY(const PutOutcome done, putChanged(occurrence, main, series, place.id));
    place = {occurrence.id, true};
    if (done != PutOutcome::kUnchanged) { outcome = PutOutcome::kUpdated; }
  }
  for (const auto& [original, place] : known) {
    if (place.named) { continue; }
    ORLOCAL_TRY(const auto row, m_core.rows.readNamed(place.id));
    ORLOCAL_CHECK(m_core.removeItem(*row));
    outcome = PutOutcome::kUpdated;
  }
  return outcome;
}

Status ItemWriter::adoptStrays(const Item& main, const Series& series) {
  ORLOCAL_TRY(const auto strays, m_core.rows.straysWithUid(main.calendar, main.kind, main.uid));
  for (const ItemId id : strays) {
    ORLOCAL_TRY(const auto row, m_core.rows.readNamed(id));
    ORLOCAL_TRY(const ItemId taken, m_core.rows.changedAt(main.id, originalKey(series, *row->recurrenceId)));
    if (taken != 0) {
      ORLOCAL_CHECK(m_core.removeItem(*row));
      continue;
    }
    Item adopted = *row;
    adopted.series = main.id;
    adopted.identifier = main.identifier;
    ORLOCAL_CHECK(
        m_core.updateItem(adopted, nullptr, originalKey(series, *adopted.recurrenceId), series.followsViewer()));
  }
  return {};
}

Result<PutOutcome> ItemWriter::putStray(Item& stray) {
  ORLOCAL_TRY(const auto known, m_core.rows.withUid(stray.calendar, stray.kind, stray.uid));
  if (known) {
    ORLOCAL_TRY(const auto main, m_core.rows.readNamed(*known));
    ORLOCAL_TRY(const Series series, compiledToPut(*main));
    ORLOCAL_TRY(const ItemId taken, m_core.rows.changedAt(*known, originalKey(series, *stray.recurrenceId)));
    // The entry of a single event learns that it has changed occurrences.
    if (main->recurrence.empty()) { ORLOCAL_CHECK(m_core.updateItem(*main, &series, std::nullopt, false)); }
    return putChanged(stray, *main, series, taken);
  }
  const std::int64_t original = Timeline::keyOf(*stray.recurrenceId);
  const bool wall = Timeline::isWall(*stray.recurrenceId);
  ORLOCAL_TRY(const auto twin, m_core.rows.strayAt(stray.calendar, stray.kind, stray.uid, original));
  if (!twin) {
    ORLOCAL_CHECK(m_core.insertItem(stray, nullptr, original, wall));
    return PutOutcome::kNew;
  }
  ORLOCAL_TRY(const auto stored, m_core.rows.readNamed(*twin));
  identifyAs(*stored, stray);
  if (!differs(*stored, stray)) { return PutOutcome::kUnchanged; }
  ORLOCAL_CHECK(m_core.updateItem(stray, nullptr, original, wall));
  return PutOutcome::kUpdated;
}

Result<PutOutcome> ItemWriter::putContact(Contact& contact) {
  return m_contacts.put(contact, m_core.uuids, m_core.log);
}

Result<bool> ItemWriter::comesAfter(const LogPosition& before) {
  ORLOCAL_TRY(const std::int64_t oldest, m_core.log.oldest());
  return before.file == m_core.fileNumber() && oldest <= before.row + 1;
}

Status ItemWriter::commit() { return m_turn.commit(); }

}  // namespace orlocal::store
