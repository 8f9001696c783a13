#include "store/edits/known_items.h"

#include <utility>

#include "base/try.h"
#include "store/icalendar/later_changes.h"
#include "store/rows/calendar_titles.h"

namespace orlocal::store {
namespace {

/// So many rows of an index are read in the time that looking one up takes.
constexpr std::int64_t kRowsForOneLookup = 40;

/// Finds the calendars that announced items go to; most go to the one of the item before.
class Targets {
 public:
  explicit Targets(CalendarRows& rows) : m_rows(rows), m_titles(rows) {}

  /// 0 when there is no such calendar yet.
  Result<CalendarId> of(const AnnouncedItem& announced) {
    const ItemKind kind = announced.main->kind;
    if (m_last && m_lastKind == kind && *m_last == announced.calendarTitle) { return m_lastId; }
    const CalendarKind kindOfAll = calendarKindOf(kind);
    std::optional<Calendar> found;
    if (announced.calendarTitle.empty()) {
      ORLOCAL_TRY(found, m_rows.forNewItems(kindOfAll));
    } else {
      ORLOCAL_TRY(found, m_titles.find(kindOfAll, announced.calendarTitle));
    }
    m_last = announced.calendarTitle;
    m_lastKind = kind;
    m_lastId = found ? found->id : 0;
    return m_lastId;
  }

 private:
  CalendarRows& m_rows;
  CalendarTitles m_titles;
  std::optional<std::string> m_last;
  ItemKind m_lastKind = ItemKind::kEvent;
  CalendarId m_lastId = 0;
};

/// Whether a calendar text has the stored moment as the one given: it has no fractions of seconds.
bool isTextOf(const std::optional<Moment>& stored, const std::optional<Moment>& given) {
  return stored && given && std::chrono::floor<std::chrono::seconds>(*stored) == *given;
}

}  // namespace

void identifyAs(const Item& stored, Item& given) {
  given.id = stored.id;
  given.identifier = stored.identifier;
  given.itemIdentifier = stored.itemIdentifier;
}

bool differs(const Item& stored, const Item& given) {
  if (stored == given) { return false; }
  Item alike = given;
  if (stored.stamped && given.stamped) { alike.stamped = stored.stamped; }
  for (const auto moment : {&Item::created, &Item::modified, &Item::completed}) {
    if (isTextOf(stored.*moment, given.*moment)) { alike.*moment = stored.*moment; }
  }
  return !(stored == alike);
}

Status KnownItems::lookAhead(const Announcement& announcement) {
  if (announcement.items.empty()) { return {}; }
  ORLOCAL_TRY(const Transaction reading, m_core.beginReading());
  m_fileNumber = m_core.fileNumber();
  ORLOCAL_TRY(m_seen, m_core.log.newest());
  ORLOCAL_TRY(m_highest, m_core.rows.highestId());
  Targets targets(m_core.calendars);
  for (const AnnouncedItem& announced : announcement.items) {
    if (announcement.stop != nullptr && announcement.stop->load()) { return {}; }
    Item& main = *announced.main;
    ORLOCAL_TRY(const bool known, mayHave(main.uid));
    if (!known) { continue; }
    ORLOCAL_TRY(main.calendar, targets.of(announced));
    if (main.calendar == 0) { continue; }
    ORLOCAL_TRY(Standing standing, look(main, announced.isSeries));
    m_ahead.insert_or_assign(&main, std::move(standing));
  }
  return {};
}

Status KnownItems::beginTurn() {
  ORLOCAL_TRY(m_highest, m_core.rows.highestId());
  if (m_ahead.empty() && !m_stored) { return {}; }
  const bool sameFile = m_fileNumber == m_core.fileNumber();
  ORLOCAL_TRY(const std::int64_t newest, m_core.log.newest());
  if (sameFile && newest == m_seen) { return {}; }
  ORLOCAL_TRY(const bool few, m_core.log.fewBetween(m_seen, newest));
  if (sameFile && few) { return forgetChanged(); }
  m_ahead.clear();
  m_stored.reset();
  m_lookups = 0;
  return {};
}

Status KnownItems::forgetChanged() {
  std::unordered_set<ItemId> changed;
  bool zones = false;
  ORLOCAL_CHECK(m_core.log.visitAfter(m_seen, [&](const LoggedChange& change) {
    if (change.subject == Subject::kZone) { zones = true; }
    if (change.subject != Subject::kEvent && change.subject != Subject::kReminder) { return; }
    changed.insert(change.row);
    if (change.series) { changed.insert(*change.series); }
  }));
  for (const ItemId id : changed) {
    ORLOCAL_TRY(const auto place, m_core.rows.place(id));
    if (place && m_stored) { m_stored->add(static_cast<std::uint64_t>(place->uidHash)); }
  }
  // Other zones may have moved every entry of the timeline. What was not known may be now.
  std::erase_if(m_ahead,
                [&](const auto& ahead) { return zones || ahead.second.id == 0 || changed.contains(ahead.second.id); });
  return {};
}

bool KnownItems::touch(const Item& item) {
  const auto place = static_cast<std::uint64_t>(item.calendar) << 1 | static_cast<std::uint64_t>(item.kind);
  return m_touched.add(static_cast<std::uint64_t>(ItemValues::hashOf(item.uid)) ^ place);
}

Result<Standing> KnownItems::of(Item& main, bool isSeries) {
  if (touch(main)) { return look(main, isSeries); }
  Standing none;
  none.calendar = main.calendar;
  if (m_made.contains(main.calendar)) { return none; }
  const auto ahead = m_ahead.find(&main);
  if (ahead != m_ahead.end() && ahead->second.calendar == main.calendar) { return std::move(ahead->second); }
  ORLOCAL_TRY(const bool known, mayHave(main.uid));
  return known ? look(main, isSeries) : none;
}

Result<Standing> KnownItems::look(Item& main, bool isSeries) {
  Standing standing;
  standing.calendar = main.calendar;
  if (isSeries) {
    ORLOCAL_TRY(const auto strays, m_core.rows.straysWithUid(main.calendar, main.kind, main.uid));
    standing.hasStrays = !strays.empty();
  }
  ORLOCAL_TRY(const ItemRows::Known known, m_core.rows.readWithUid(main.calendar, main.kind, main.uid));
  if (known.item == nullptr) { return standing; }
  standing.id = known.item->id;
  standing.place = known.place;
  standing.hasChanged = known.hasChanged;
  identifyAs(*known.item, main);
  standing.differs = differs(*known.item, main);
  standing.stamped = known.item->stamped;
  if (standing.differs) { standing.continuations = continuationsOf(*known.item); }
  return standing;
}

Result<bool> KnownItems::mayHave(std::string_view uid) {
  // The index of UIDs, from which the filter is made, has none that are their items' own identifiers.
  if (const auto identifier = Uuid::parse(uid); identifier && identifier->version() == UuidMaker::kVersion) {
    return true;
  }
  if (!m_stored && ++m_lookups * kRowsForOneLookup > m_highest) {
    m_stored.emplace();
    ORLOCAL_CHECK(
        m_core.rows.visitUidHashes([this](std::int64_t stored) { m_stored->add(static_cast<std::uint64_t>(stored)); }));
  }
  return !m_stored || m_stored->mayHave(static_cast<std::uint64_t>(ItemValues::hashOf(uid)));
}

}  // namespace orlocal::store
