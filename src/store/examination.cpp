#include "store/examination.h"

#include <algorithm>
#include <string_view>
#include <system_error>

#include "base/try.h"
#include "store/file/schema.h"
#include "store/salvage.h"

namespace orlocal::store {
namespace {

std::uintmax_t sizeOf(const std::filesystem::path& file) {
  std::error_code error;
  const auto size = std::filesystem::file_size(file, error);
  return error ? 0 : size;
}

/// SQLite puts several sentences, and a headline, into one row.
void addLines(std::string_view text, std::vector<std::string>& lines) {
  while (!text.empty()) {
    const auto end = std::min(text.find('\n'), text.size());
    const auto line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line != "ok" && !line.starts_with("***")) { lines.emplace_back(line); }
  }
}

}  // namespace

Result<Examination> examine(const std::filesystem::path& file, std::chrono::milliseconds busyTimeout) {
  Examination found;
  {
    ORLOCAL_TRY(Database database, openStoreAsItIs(file, busyTimeout));
    ORLOCAL_TRY(found.version, database.integerOf("PRAGMA user_version"));
    ORLOCAL_TRY(const auto pageSize, database.integerOf("PRAGMA page_size"));
    ORLOCAL_TRY(const auto unused, database.integerOf("PRAGMA freelist_count"));
    found.unusedBytes = static_cast<std::uintmax_t>(pageSize * unused);
    ORLOCAL_TRY(Statement check, database.prepare("PRAGMA integrity_check(20)"));
    for (;;) {
      const auto row = check.step();
      if (!row) {
        found.damage.push_back(row.error().message);
        break;
      }
      if (!*row) { break; }
      addLines(check.text(0), found.damage);
    }
    // What cannot be counted is damaged, and was said.
    found.calendars = database.integerOf("SELECT count(*) FROM calendars").value_or(0);
    found.events = database.integerOf("SELECT count(*) FROM items WHERE kind = 0 AND series IS NULL").value_or(0);
    found.reminders = database.integerOf("SELECT count(*) FROM items WHERE kind = 1 AND series IS NULL").value_or(0);
  }
  found.bytes = sizeOf(file);
  found.logBytes = sizeOf(file.string() + "-wal");
  // Reading every row is what tells whether each can be read.
  ORLOCAL_TRY(const SalvageReport report, salvage(file, {}, busyTimeout, [](std::string_view) { return Status(); }));
  found.unread = report.notes;
  return found;
}

}  // namespace orlocal::store
