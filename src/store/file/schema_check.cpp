#include "store/file/schema_check.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"

namespace orlocal::store {
namespace {

/// SQLite makes it for AUTOINCREMENT.
constexpr std::string_view kSequenceTable = "CREATE TABLE sqlite_sequence(name,seq)";
constexpr std::string_view kSequenceName = "sqlite_sequence";
/// What SQLite notes about tables that somebody analyzed; it says how to look and never what is found.
constexpr std::string_view kStatistics = "sqlite_stat";
/// Of UNIQUE and PRIMARY KEY, and part of its table's definition.
constexpr std::string_view kImplied = "sqlite_autoindex_";

/// SQLite keeps the index of words in tables of its own making, which nobody else can write through SQLite's interface.
constexpr std::string_view kWordTables[] = {"search_data", "search_idx", "search_content", "search_config"};

struct Definition {
  std::string_view name;
  std::string sql;  ///< as sqlite_schema has it: as it was written, to before the semicolon; of theirs its beginning
  bool table = false;
  bool found = false;
  bool ours = true;  ///< SQLite's otherwise, which defines it in its own way

  bool fits(std::string_view text) const { return ours ? text == sql : text.starts_with(sql); }
};

Definition* definitionOf(std::vector<Definition>& ours, std::string_view name) {
  const auto found = std::find_if(ours.begin(), ours.end(), [&](const Definition& each) { return each.name == name; });
  return found == ours.end() ? nullptr : &*found;
}

std::string_view upTo(std::string_view text, std::string_view end) { return text.substr(0, text.find_first_of(end)); }

void addMade(std::vector<Definition>& made, std::string_view sql) {
  const bool table = sql.starts_with("CREATE TABLE ");
  constexpr std::string_view kKinds[] = {"TABLE ", "INDEX "};
  std::string_view name = sql;
  for (const std::string_view kind : kKinds) {
    if (const auto at = sql.find(kind); at != std::string_view::npos && at < name.size()) {
      name = sql.substr(at + kind.size());
    }
  }
  name = upTo(name, "( ");
  if (Definition* before = definitionOf(made, name); before != nullptr) {
    before->sql = sql;
  } else {
    made.push_back({name, std::string(sql), table});
  }
  if (!sql.starts_with("CREATE VIRTUAL ")) { return; }
  for (const std::string_view each : kWordTables) {
    made.push_back({each, "CREATE TABLE '" + std::string(each) + "'", false, false, false});
  }
}

/// "ALTER TABLE name ADD COLUMN definition": SQLite puts it before the parenthesis that closes the table's.
void addColumn(std::vector<Definition>& made, std::string_view sql) {
  constexpr std::string_view kBegin = "ALTER TABLE ", kAdded = " ADD COLUMN ";
  Definition* table = definitionOf(made, upTo(sql.substr(kBegin.size()), " "));
  const std::string_view column = sql.substr(sql.find(kAdded) + kAdded.size());
  table->sql.replace(table->sql.rfind(')'), 1, fmt::format(", {})", column));
}

/// Comparing costs less than running the steps on a database in memory. What a later step makes anew counts as that
/// made it.
std::vector<Definition> definitionsIn(std::span<const char* const> steps) {
  std::vector<Definition> made;
  for (const std::string_view step : steps) {
    for (std::size_t at = 0; at < step.size();) {
      const std::string_view sql = step.substr(at, step.find(";\n", at) - at);
      const auto begin = sql.find_first_not_of('\n');
      const std::string_view statement = begin == std::string_view::npos ? std::string_view() : sql.substr(begin);
      if (statement.starts_with("CREATE ")) { addMade(made, statement); }
      if (statement.starts_with("ALTER ")) { addColumn(made, statement); }
      at += sql.size() + 2;
    }
  }
  made.push_back({kSequenceName, std::string(kSequenceTable), true});
  return made;
}

Failed refused(const Database& database, std::string_view name, std::string_view why) {
  return failure(ErrorCode::kCorrupt,
                 tr("The calendar store \"{}\" is damaged or was changed by another program: \"{}\" {}. Write out what "
                    "can still be read (orlocal export --salvage), or put a backup in its place (orlocal restore).",
                    database.file().string(), name, why));
}

}  // namespace

Status checkDefinitions(Database& database, std::span<const char* const> steps) {
  std::vector<Definition> ours = definitionsIn(steps);
  ORLOCAL_TRY(Statement read, database.prepare("SELECT name, tbl_name, sql FROM sqlite_schema"));
  for (;;) {
    ORLOCAL_TRY(const bool found, read.step());
    if (!found) { break; }
    const std::string_view name = read.text(0);
    if (name.starts_with(kStatistics)) { continue; }
    if (name.starts_with(kImplied) && read.isNull(2) && definitionOf(ours, read.text(1)) != nullptr) { continue; }
    Definition* known = definitionOf(ours, name);
    if (known == nullptr || known->found) { return refused(database, name, tr("does not belong there")); }
    if (!known->fits(read.text(2))) { return refused(database, name, tr("is defined in another way")); }
    known->found = true;
  }
  for (const Definition& each : ours) {
    if (!each.found) { return refused(database, each.name, tr("is missing")); }
  }
  return {};
}

Status checkTables(Database& database, std::span<const char* const> steps) {
  std::vector<Definition> ours = definitionsIn(steps);
  ORLOCAL_TRY(Statement read, database.prepare("SELECT name, type, sql FROM sqlite_schema"));
  for (;;) {
    const auto found = read.step();
    // What of the definitions cannot be read defines nothing either.
    if (!found || !*found) { return {}; }
    const Definition* known = definitionOf(ours, read.text(0));
    if (known == nullptr || !known->table) { continue; }
    if (read.text(1) != "table" || !read.text(2).starts_with("CREATE TABLE ")) {
      return refused(database, known->name, tr("is no table of rows"));
    }
  }
}

}  // namespace orlocal::store
