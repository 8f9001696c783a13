#include "store/rows/remote_rows.h"

#include <charconv>
#include <limits>
#include <string>
#include <utility>

#include <fmt/format.h>

#include "base/try.h"

namespace orlocal::store {
namespace {

void bindOptional(Statement& statement, int parameter, const std::optional<std::string>& text) {
  text ? statement.bind(parameter, std::string_view(*text)) : statement.bindNull(parameter);
}

void bindOptional(Statement& statement, int parameter, const std::optional<ItemId>& id) {
  id ? statement.bind(parameter, *id) : statement.bindNull(parameter);
}

/// Reads every row that the statement gives; `read` makes a value of one.
template <class Value, class Read>
Result<std::vector<Value>> allOf(Statement& statement, const Database& database, const char* what, const Read& read) {
  const ResetAtExit reset(statement);
  std::vector<Value> values;
  for (;;) {
    ORLOCAL_TRY(const bool found, statement.step());
    if (!found) { return values; }
    CheckedRow row(statement);
    Value value = read(row);
    if (!row.sound()) { return damaged(database, fmt::format("The {} {}", what, statement.integer(0))); }
    values.push_back(std::move(value));
  }
}

Resource resourceIn(CheckedRow& row) {
  Resource resource;
  resource.id = row.id(0);
  resource.mirror = row.id(1);
  resource.url = row.text(2);
  resource.key = row.text(3);
  resource.etag = row.text(4);
  resource.item = row.optionalId(5);
  resource.uid = row.text(6);
  resource.digest = static_cast<std::uint64_t>(
      row.number(7, std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()));
  resource.ours = row.flag(8);
  resource.text = row.text(9);
  resource.sent = row.optionalText(10);
  resource.trouble = row.optionalText(11);
  return resource;
}

/// All but the id.
void bindValues(Statement& statement, const Resource& resource) {
  statement.bind(1, resource.mirror).bind(2, std::string_view(resource.url)).bind(3, std::string_view(resource.key));
  statement.bind(4, std::string_view(resource.etag));
  bindOptional(statement, 5, resource.item);
  statement.bind(6, std::string_view(resource.uid)).bind(7, static_cast<std::int64_t>(resource.digest));
  statement.bind(8, std::int64_t{resource.ours}).bind(9, std::string_view(resource.text));
  bindOptional(statement, 10, resource.sent);
  bindOptional(statement, 11, resource.trouble);
}

void bindValues(Statement& statement, const Conflict& conflict) {
  statement.bind(1, conflict.mirror).bind(2, std::string_view(conflict.key));
  bindOptional(statement, 3, conflict.item);
  statement.bind(4, std::string_view(conflict.title)).bind(5, std::string_view(conflict.fields));
  bindOptional(statement, 6, conflict.mine);
  bindOptional(statement, 7, conflict.theirs);
  statement.bind(8, std::int64_t{conflict.made.time_since_epoch().count()});
}

void bindValues(Statement& statement, const Mirror& mirror) {
  statement.bind(1, mirror.source).bind(2, mirror.calendar).bind(3, std::string_view(mirror.url));
  statement.bind(4, std::string_view(mirror.state));
}

}  // namespace

Result<std::vector<Remote>> RemoteRows::remotes() {
  return allOf<Remote>(m_remotes.in(m_database), m_database, "account", [](CheckedRow& row) {
    return Remote{row.id(0), std::string(row.text(1)), std::string(row.text(2))};
  });
}

Status RemoteRows::put(const Remote& remote) {
  Statement& put = m_putRemote.in(m_database).bind(1, remote.source).bind(2, std::string_view(remote.settings));
  return put.bind(3, std::string_view(remote.state)).run();
}

Status RemoteRows::removeRemote(SourceId source) {
  ORLOCAL_TRY(const auto all, mirrors(source));
  for (const Mirror& mirror : all) { ORLOCAL_CHECK(removeMirror(mirror.id)); }
  return m_removeRemote.in(m_database).bind(1, source).run();
}

Result<std::vector<Mirror>> RemoteRows::mirrorsOf(Statement& statement) {
  return allOf<Mirror>(statement, m_database, "mirrored calendar", [](CheckedRow& row) {
    return Mirror{row.id(0), row.id(1), row.number(2, 0), std::string(row.text(3)), std::string(row.text(4))};
  });
}

Result<std::vector<Mirror>> RemoteRows::mirrors(SourceId source) {
  return mirrorsOf(m_mirrors.in(m_database).bind(1, source));
}

Result<std::vector<Mirror>> RemoteRows::allMirrors() { return mirrorsOf(m_allMirrors.in(m_database)); }

Status RemoteRows::put(Mirror& mirror) {
  const bool isNew = mirror.id == 0;
  Statement& put = (isNew ? m_insertMirror : m_updateMirror).in(m_database);
  bindValues(put, mirror);
  if (!isNew) { put.bind(5, mirror.id); }
  ORLOCAL_CHECK(put.run());
  if (isNew) { mirror.id = m_database.lastInsertId(); }
  return {};
}

Status RemoteRows::removeMirror(MirrorId id) {
  for (LazyStatement* remove : {&m_removePartsOfMirror, &m_removeResources, &m_removeConflicts, &m_removeMirror}) {
    ORLOCAL_CHECK(remove->in(m_database).bind(1, id).run());
  }
  return {};
}

Result<std::vector<Resource>> RemoteRows::resources(MirrorId mirror) {
  return allOf<Resource>(m_resources.in(m_database).bind(1, mirror), m_database, "mirrored item", resourceIn);
}

Result<std::optional<Resource>> RemoteRows::oneResource(Statement& statement) {
  ORLOCAL_TRY(auto found, allOf<Resource>(statement, m_database, "mirrored item", resourceIn));
  return found.empty() ? std::nullopt : std::optional(std::move(found.front()));
}

Result<std::optional<Resource>> RemoteRows::resource(MirrorId mirror, std::string_view key) {
  return oneResource(m_resource.in(m_database).bind(1, mirror).bind(2, key));
}

Result<std::optional<Resource>> RemoteRows::resourceOf(ItemId item) {
  return oneResource(m_resourceOf.in(m_database).bind(1, item));
}

Status RemoteRows::put(Resource& resource) {
  const bool isNew = resource.id == 0;
  Statement& put = (isNew ? m_insertResource : m_updateResource).in(m_database);
  bindValues(put, resource);
  if (!isNew) { put.bind(12, resource.id); }
  ORLOCAL_CHECK(put.run());
  if (isNew) { resource.id = m_database.lastInsertId(); }
  return {};
}

Status RemoteRows::removeResource(ResourceId id) {
  ORLOCAL_CHECK(m_removeParts.in(m_database).bind(1, id).run());
  return m_removeResource.in(m_database).bind(1, id).run();
}

Result<std::vector<ItemId>> RemoteRows::parts(ResourceId resource) {
  return allOf<ItemId>(m_parts.in(m_database).bind(1, resource), m_database, "part of a mirrored item",
                       [](CheckedRow& row) { return row.id(0); });
}

Status RemoteRows::setParts(ResourceId resource, const std::vector<ItemId>& items) {
  ORLOCAL_CHECK(m_removeParts.in(m_database).bind(1, resource).run());
  for (const ItemId item : items) { ORLOCAL_CHECK(m_addPart.in(m_database).bind(1, item).bind(2, resource).run()); }
  return {};
}

Result<std::vector<ItemId>> RemoteRows::unsent() {
  return allOf<ItemId>(m_unsent.in(m_database), m_database, "unsent change", [](CheckedRow& row) { return row.id(0); });
}

Status RemoteRows::noteUnsent(ItemId item) { return m_noteUnsent.in(m_database).bind(1, item).run(); }
Status RemoteRows::forgetUnsent(ItemId item) { return m_forgetUnsent.in(m_database).bind(1, item).run(); }

Result<std::int64_t> RemoteRows::notedUpTo() {
  Statement& read = m_notedUpTo.in(m_database);
  const ResetAtExit reset(read);
  ORLOCAL_TRY(const bool found, read.step());
  if (!found) { return 0; }
  const std::string_view text = read.text(0);
  std::int64_t row = 0;
  const auto parsed = std::from_chars(text.data(), text.data() + text.size(), row);
  if (parsed.ec != std::errc() || row < 0) { return damaged(m_database, "The property unsent_up_to"); }
  return row;
}

Status RemoteRows::setNotedUpTo(std::int64_t row) {
  const std::string text = fmt::format("{}", row);
  return m_setNotedUpTo.in(m_database).bind(1, std::string_view(text)).run();
}

Result<std::vector<Conflict>> RemoteRows::conflicts() {
  return allOf<Conflict>(m_conflicts.in(m_database), m_database, "conflict", [](CheckedRow& row) {
    Conflict conflict;
    conflict.id = row.id(0);
    conflict.mirror = row.id(1);
    conflict.key = row.text(2);
    conflict.item = row.optionalId(3);
    conflict.title = row.text(4);
    conflict.fields = row.text(5);
    conflict.mine = row.optionalText(6);
    conflict.theirs = row.optionalText(7);
    conflict.made = row.optionalMoment(8).value_or(Moment());
    return conflict;
  });
}

Status RemoteRows::put(Conflict& conflict) {
  const bool isNew = conflict.id == 0;
  Statement& put = (isNew ? m_insertConflict : m_updateConflict).in(m_database);
  bindValues(put, conflict);
  if (!isNew) { put.bind(9, conflict.id); }
  ORLOCAL_CHECK(put.run());
  if (isNew) { conflict.id = m_database.lastInsertId(); }
  return {};
}

Status RemoteRows::removeConflict(ConflictId id) { return m_removeConflict.in(m_database).bind(1, id).run(); }

}  // namespace orlocal::store
