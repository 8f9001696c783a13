#include "accounts/sync/conflict_choice.h"

#include <algorithm>
#include <utility>

#include "accounts/sync/conflict_view.h"
#include "accounts/sync/merge.h"
#include "accounts/sync/server_text.h"
#include "base/translation.h"
#include "base/try.h"
#include "store/edits/item_writer.h"
#include "store/icalendar/item_text.h"
#include "store/remote_reader.h"

namespace orlocal::accounts {
namespace {

using store::Conflict;
using store::ItemWriter;

constexpr const char* kName = "the version that was kept";

Result<store::CalendarId> calendarOf(ItemWriter& writer, const Conflict& conflict) {
  ORLOCAL_TRY(const auto mirrors, writer.remotes().allMirrors());
  const auto mirror = std::find_if(mirrors.begin(), mirrors.end(),
                                   [&](const store::Mirror& each) { return each.id == conflict.mirror; });
  if (mirror != mirrors.end()) { return mirror->calendar; }
  return failure(ErrorCode::kNotFound, tr("The calendar of the conflict is no longer in the calendar store."));
}

/// A copy of ours, which nothing ties to the item that it was.
Status addCopy(ItemWriter& writer, const Conflict& conflict, const ServerText& mine) {
  ORLOCAL_TRY(const store::CalendarId calendar, calendarOf(writer, conflict));
  ORLOCAL_TRY(const auto put, mine.putInto(writer, calendar, mine.uid() + "~mine-" + std::to_string(conflict.id)));
  return writer.remotes().noteUnsent(put.main);
}

/// Puts ours in the place of what the server has, in the fields that the conflict is about; all others stay.
Status takeMine(ItemWriter& writer, const Conflict& conflict, const ServerText& mine) {
  std::optional<Standing> now;
  if (conflict.item) { ORLOCAL_TRY(now, standing(writer, *conflict.item, {})); }
  if (!now) {
    ORLOCAL_TRY(const store::CalendarId calendar, calendarOf(writer, conflict));
    ORLOCAL_TRY(const auto put, mine.putInto(writer, calendar, std::nullopt));
    return writer.remotes().noteUnsent(put.main);
  }
  const ItemState current{store::itemText(now->item), now->item};
  const std::string text = withFields(current, *mine.item(), fieldsOf(conflict));
  const ServerText chosen = ServerText::read(text, kName);
  if (!chosen.item()) { return failure(ErrorCode::kCorrupt, tr("The version that was kept cannot be read any more.")); }
  ORLOCAL_TRY(const auto put, chosen.putInto(writer, now->item.main.calendar, now->item.main.uid));
  return writer.remotes().noteUnsent(put.main);
}

}  // namespace

Status settle(store::CalendarStore& store, const Conflict& conflict, ConflictChoice choice) {
  ORLOCAL_TRY(const auto writer, store.startWriting());
  const bool removedThere = !conflict.theirs, removedHere = !conflict.mine;
  if (choice == ConflictChoice::kTheirs) {
    if (removedThere && conflict.item) { ORLOCAL_CHECK(writer->remove(*conflict.item)); }
  } else if (removedHere) {
    if (choice == ConflictChoice::kMine && conflict.item) {
      ORLOCAL_CHECK(writer->remove(*conflict.item));
      ORLOCAL_CHECK(writer->remotes().noteUnsent(*conflict.item));
    }
  } else {
    const ServerText mine = ServerText::read(*conflict.mine, kName);
    if (!mine.item()) { return failure(ErrorCode::kCorrupt, tr("The version that was kept cannot be read any more.")); }
    if (removedThere && conflict.item) {
      ORLOCAL_CHECK(writer->remotes().noteUnsent(*conflict.item));
    } else if (choice == ConflictChoice::kBoth) {
      ORLOCAL_CHECK(addCopy(*writer, conflict, mine));
    } else {
      ORLOCAL_CHECK(takeMine(*writer, conflict, mine));
    }
  }
  ORLOCAL_CHECK(writer->remotes().removeConflict(conflict.id));
  return writer->commit();
}

}  // namespace orlocal::accounts
