#pragma once

#include <functional>
#include <optional>
#include <string_view>
#include <vector>

#include "store/file/checked_row.h"
#include "store/file/sqlite.h"
#include "store/model/remote.h"

namespace orlocal::store {

/// The rows of what lies on servers. Writing happens inside a write transaction.
class RemoteRows {
 public:
  explicit RemoteRows(Database& database) : m_database(database) {}

  Result<std::vector<Remote>> remotes();
  /// Inserts it or writes its texts.
  Status put(const Remote& remote);
  /// With its mirrors and what hangs on them; its calendars and items stay.
  Status removeRemote(SourceId source);

  /// By id.
  Result<std::vector<Mirror>> mirrors(SourceId source);
  Result<std::vector<Mirror>> allMirrors();
  /// Inserts (`id` 0, which is filled in) or writes it.
  Status put(Mirror& mirror);
  /// With its resources and conflicts.
  Status removeMirror(MirrorId id);

  /// All of a mirror by id, without their texts: `text` is empty, and `sent` where there is one.
  Result<std::vector<Resource>> resources(MirrorId mirror);
  Result<std::optional<Resource>> resource(MirrorId mirror, std::string_view key);
  /// The one that this item stands for, or is a further part of.
  Result<std::optional<Resource>> resourceOf(ItemId item);
  /// Items that stand for the same text beside its main one: series that it cuts off, changed occurrences without a
  /// series. In the order of rows.
  Result<std::vector<ItemId>> parts(ResourceId resource);
  Status setParts(ResourceId resource, const std::vector<ItemId>& items);
  /// Inserts (`id` 0, which is filled in) or writes it.
  Status put(Resource& resource);
  Status removeResource(ResourceId id);

  /// Items that changed here and were not carried to their server yet, in the order in which they were noted.
  Result<std::vector<ItemId>> unsent();
  Status noteUnsent(ItemId item);
  Status forgetUnsent(ItemId item);
  /// Up to which row of the log changes were noted; 0 before the first time.
  Result<std::int64_t> notedUpTo();
  Status setNotedUpTo(std::int64_t row);

  /// By id.
  Result<std::vector<Conflict>> conflicts();
  Status put(Conflict& conflict);
  Status removeConflict(ConflictId id);

 private:
  Result<std::vector<Mirror>> mirrorsOf(Statement& statement);
  Result<std::optional<Resource>> oneResource(Statement& statement);

  Database& m_database;
  LazyStatement m_remotes{"SELECT source, settings, state FROM remotes ORDER BY source"};
  LazyStatement m_putRemote{"INSERT OR REPLACE INTO remotes(source, settings, state) VALUES(?, ?, ?)"};
  LazyStatement m_removeRemote{"DELETE FROM remotes WHERE source = ?"};
  LazyStatement m_allMirrors{"SELECT id, source, calendar, url, state FROM mirrors ORDER BY id"};
  LazyStatement m_mirrors{"SELECT id, source, calendar, url, state FROM mirrors WHERE source = ? ORDER BY id"};
  LazyStatement m_insertMirror{"INSERT INTO mirrors(source, calendar, url, state) VALUES(?, ?, ?, ?)"};
  LazyStatement m_updateMirror{"UPDATE mirrors SET source = ?, calendar = ?, url = ?, state = ? WHERE id = ?"};
  LazyStatement m_removeMirror{"DELETE FROM mirrors WHERE id = ?"};
  LazyStatement m_removeResources{"DELETE FROM resources WHERE mirror = ?"};
  LazyStatement m_removeConflicts{"DELETE FROM conflicts WHERE mirror = ?"};
  LazyStatement m_resources{
      "SELECT id, mirror, url, key, etag, item, uid, digest, ours, '', CASE WHEN sent IS NULL THEN NULL ELSE '' END, "
      "trouble FROM resources WHERE mirror = ? "
      "ORDER BY id"};
#define ORLOCAL_RESOURCE_COLUMNS \
  "SELECT id, mirror, url, key, etag, item, uid, digest, ours, text, sent, trouble FROM resources "
  LazyStatement m_resource{ORLOCAL_RESOURCE_COLUMNS "WHERE mirror = ? AND key = ?"};
  LazyStatement m_resourceOf{ORLOCAL_RESOURCE_COLUMNS
                             "WHERE item = ?1 OR id = (SELECT resource FROM resource_parts WHERE item = ?1)"};
#undef ORLOCAL_RESOURCE_COLUMNS
  LazyStatement m_insertResource{
      "INSERT INTO resources(mirror, url, key, etag, item, uid, digest, ours, text, sent, trouble) VALUES(?, ?, ?, ?, "
      "?, ?, ?, ?, ?, ?, ?)"};
  LazyStatement m_updateResource{
      "UPDATE resources SET mirror = ?, url = ?, key = ?, etag = ?, item = ?, uid = ?, digest = ?, ours = ?, text = ?, "
      "sent = ?, trouble = ? WHERE id = ?"};
  LazyStatement m_removeResource{"DELETE FROM resources WHERE id = ?"};
  LazyStatement m_parts{"SELECT item FROM resource_parts WHERE resource = ? ORDER BY item"};
  LazyStatement m_removeParts{"DELETE FROM resource_parts WHERE resource = ?"};
  LazyStatement m_addPart{"INSERT OR REPLACE INTO resource_parts(item, resource) VALUES(?, ?)"};
  LazyStatement m_removePartsOfMirror{
      "DELETE FROM resource_parts WHERE resource IN (SELECT id FROM resources WHERE mirror = ?)"};
  LazyStatement m_unsent{"SELECT item FROM unsent ORDER BY rowid"};
  LazyStatement m_noteUnsent{"INSERT OR IGNORE INTO unsent(item) VALUES(?)"};
  LazyStatement m_forgetUnsent{"DELETE FROM unsent WHERE item = ?"};
  LazyStatement m_notedUpTo{"SELECT value FROM properties WHERE name = 'unsent_up_to'"};
  LazyStatement m_setNotedUpTo{"INSERT OR REPLACE INTO properties(name, value) VALUES('unsent_up_to', ?)"};
  LazyStatement m_conflicts{
      "SELECT id, mirror, key, item, title, fields, mine, theirs, made FROM conflicts ORDER BY id"};
  LazyStatement m_insertConflict{
      "INSERT INTO conflicts(mirror, key, item, title, fields, mine, theirs, made) VALUES(?, ?, ?, ?, ?, ?, ?, ?)"};
  LazyStatement m_updateConflict{
      "UPDATE conflicts SET mirror = ?, key = ?, item = ?, title = ?, fields = ?, mine = ?, theirs = ?, made = ? WHERE "
      "id = ?"};
  LazyStatement m_removeConflict{"DELETE FROM conflicts WHERE id = ?"};
};

}  // namespace orlocal::store
