#include "store/core/search_index.h"

#include <algorithm>
#include <charconv>
#include <unordered_set>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "store/file/checked_row.h"

namespace orlocal::store {
namespace {

/// The row of the log up to which the index is right.
constexpr const char* kUpTo = "searched_up_to";
/// While the index is filled: the row of items from which on it is not yet; 0 afterwards.
constexpr const char* kFrom = "searched_from";

}  // namespace

Status SearchIndex::named(Status status) const {
  // What the index answers is no more than a hint, but one that cannot be asked hides what there is.
  if (status || status.error().code != ErrorCode::kCorrupt) { return status; }
  return failure(ErrorCode::kCorrupt,
                 tr("The index of words in the calendar store \"{}\" is damaged; make it anew with orlocal "
                    "search --rebuild. Nothing else is touched by that.",
                    m_database.file().string()));
}

/// What is no such number counts as none: the index is filled anew then.
Result<std::int64_t> SearchIndex::property(const char* name, std::int64_t highest) {
  Statement& read = m_property.in(m_database).bind(1, std::string_view(name));
  const ResetAtExit reset(read);
  ORLOCAL_TRY(const bool found, read.step());
  if (!found) { return -1; }
  const std::string_view text = read.text(0);
  std::int64_t value = -1;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool number = error == std::errc() && end == text.data() + text.size();
  return number && value <= highest ? value : -1;
}

Status SearchIndex::setProperty(const char* name, std::int64_t value) {
  const std::string text = std::to_string(value);
  return m_setProperty.in(m_database).bind(1, std::string_view(name)).bind(2, std::string_view(text)).run();
}

Result<SearchIndex::Backlog> SearchIndex::backlog() {
  ORLOCAL_TRY(const std::int64_t newest, m_log.newest());
  ORLOCAL_TRY(const std::int64_t oldest, m_log.oldest());
  ORLOCAL_TRY(const std::int64_t upTo, property(kUpTo, newest));
  Backlog backlog;
  // A log that was begun anew after a restore leaves a gap, too.
  const bool known = upTo >= 0 && (upTo == newest || oldest <= upTo + 1);
  if (!known) {
    backlog.missingFrom = 1;
    return backlog;
  }
  ORLOCAL_TRY(const std::int64_t from, property(kFrom, kHighestNumber));
  if (from > 0) { backlog.missingFrom = from; }
  std::unordered_set<ItemId> met;
  ORLOCAL_CHECK(m_log.visitAfter(upTo, [&](const LoggedChange& change) {
    const bool ofItem = change.subject == Subject::kEvent || change.subject == Subject::kReminder;
    if (ofItem && met.insert(change.row).second) { backlog.touched.push_back(change.row); }
  }));
  return backlog;
}

Result<bool> SearchIndex::isFarBehind() {
  ORLOCAL_TRY(const Backlog missing, backlog());
  return missing.missingFrom > 0 || missing.touched.size() > kLookedAt;
}

Status SearchIndex::index(ItemId id) {
  ORLOCAL_TRY(const auto item, m_rows.read(id));
  if (item == nullptr) { return named(m_remove.in(m_database).bind(1, id).run()); }
  const std::string words = indexedWords(*item);
  return named(m_put.in(m_database).bind(1, id).bind(2, std::string_view(words)).run());
}

Result<std::vector<ItemId>> SearchIndex::rowsFrom(ItemId first, std::int64_t most) {
  Statement& read = m_rowsFrom.in(m_database).bind(1, first).bind(2, most);
  const ResetAtExit reset(read);
  std::vector<ItemId> rows;
  for (;;) {
    ORLOCAL_TRY(const bool found, read.step());
    if (!found) { return rows; }
    const ItemId id = read.integer(0);
    if (id <= (rows.empty() ? 0 : rows.back())) { return damaged(m_database, tr("The table of items")); }
    rows.push_back(id);
  }
}

Result<bool> SearchIndex::catchUp() {
  ORLOCAL_TRY(Backlog missing, backlog());
  ORLOCAL_TRY(const std::int64_t newest, m_log.newest());
  if (missing.missingFrom == 1) {
    // What an index holds that follows no log may be anything.
    ORLOCAL_CHECK(startAnew());
    missing.touched.clear();
  }
  for (const ItemId id : missing.touched) { ORLOCAL_CHECK(index(id)); }
  std::vector<ItemId> rows;
  if (missing.missingFrom > 0) { ORLOCAL_TRY(rows, rowsFrom(missing.missingFrom, kRowsAtOnce)); }
  for (const ItemId id : rows) { ORLOCAL_CHECK(index(id)); }
  const bool all = static_cast<std::int64_t>(rows.size()) < kRowsAtOnce;
  ORLOCAL_CHECK(setProperty(kUpTo, newest));
  ORLOCAL_CHECK(setProperty(kFrom, all ? 0 : rows.back() + 1));
  return all;
}

Result<std::vector<ItemId>> SearchIndex::candidates(const SearchTerms& terms) {
  ORLOCAL_TRY(const Backlog missing, backlog());
  // Of an index that follows no log nothing can be taken.
  if (missing.missingFrom == 1) { return rowsFrom(1, kHighestNumber); }
  const std::string expression = terms.expression();
  Statement& find = m_find.in(m_database).bind(1, std::string_view(expression));
  const ResetAtExit reset(find);
  std::vector<ItemId> ids;
  for (;;) {
    auto found = find.step();
    if (!found) { ORLOCAL_CHECK(named(tl::unexpected(std::move(found.error())))); }
    if (!*found) { break; }
    const ItemId id = find.integer(0);
    // A damaged index may go in circles.
    if (id <= (ids.empty() ? 0 : ids.back())) { ORLOCAL_CHECK(named(damaged(m_database, tr("The index of words")))); }
    ids.push_back(id);
  }
  ids.insert(ids.end(), missing.touched.begin(), missing.touched.end());
  if (missing.missingFrom > 0) {
    ORLOCAL_TRY(const auto rows, rowsFrom(missing.missingFrom, kHighestNumber));
    ids.insert(ids.end(), rows.begin(), rows.end());
  }
  std::sort(ids.begin(), ids.end());
  ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
  return ids;
}

Status SearchIndex::startAnew() {
  std::string definition;
  {
    // As it was found to be when the file was opened.
    ORLOCAL_TRY(Statement read, m_database.prepare("SELECT sql FROM sqlite_schema WHERE name = 'search'"));
    ORLOCAL_CHECK(read.step());
    definition = read.text(0);
  }
  // What is damaged cannot be dropped; an empty index can: rows 1 and 10 are its averages and its structure.
  ORLOCAL_CHECK(m_database.executeOnIndex(
      "DELETE FROM search_config; INSERT INTO search_config VALUES('version', 4); DELETE FROM search_data; "
      "INSERT INTO search_data VALUES(1, x''), (10, x'00000000000000'); DELETE FROM search_idx; "
      "DELETE FROM search_content; DROP TABLE search"));
  ORLOCAL_CHECK(m_database.execute(definition.c_str()));
  ORLOCAL_CHECK(setProperty(kUpTo, -1));
  return setProperty(kFrom, 0);
}

}  // namespace orlocal::store
