#include "store/backup.h"

#include <array>
#include <string>
#include <system_error>
#include <vector>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "store/file/file_draft.h"
#include "store/file/file_state.h"
#include "store/file/schema.h"

namespace orlocal::store {

namespace {

constexpr std::array kBeside = {"-wal", "-shm", "-bell", "-journal"};

Status checked(Database& copy, const std::filesystem::path& original) {
  ORLOCAL_TRY(Statement check, copy.prepare("PRAGMA integrity_check(1)"));
  ORLOCAL_TRY(const bool found, check.step());
  if (found && check.text(0) == "ok") { return {}; }
  return failure(ErrorCode::kCorrupt,
                 tr("The calendar store \"{}\" is damaged ({}); nothing was changed. Write out what can still be "
                    "read with orlocal export --salvage.",
                    original.string(), found ? std::string(check.text(0)) : tr("it cannot be checked")));
}

Result<CopiedStore> contentOf(Database& copy) {
  CopiedStore content;
  ORLOCAL_TRY(content.events, copy.integerOf("SELECT count(*) FROM items WHERE kind = 0 AND series IS NULL"));
  ORLOCAL_TRY(content.reminders, copy.integerOf("SELECT count(*) FROM items WHERE kind = 1 AND series IS NULL"));
  std::error_code ignored;
  content.bytes = std::filesystem::file_size(copy.file(), ignored);
  return content;
}

Status mayStandAt(const std::filesystem::path& target, const std::filesystem::path& store, ExistingFile existing) {
  const auto refused = [&](const std::string& why) {
    return failure(ErrorCode::kInvalid, tr("The file \"{}\" {}.", target.string(), why));
  };
  std::error_code error;
  const auto there = std::filesystem::symlink_status(target, error);
  const auto state = FileState::of(target);
  std::vector<std::string> own = {store.string()};
  for (const char* suffix : kBeside) { own.push_back(store.string() + suffix); }
  for (const std::string& file : own) {
    const auto known = FileState::of(file);
    if (known && state && known->isSameFileAs(*state)) {
      return refused(tr("belongs to the calendar store itself; choose another name"));
    }
  }
  if (there.type() != std::filesystem::file_type::not_found) {
    if (existing == ExistingFile::kIsRefused) {
      return refused(tr("is there already; choose another name, or say --replace"));
    }
    if (there.type() != std::filesystem::file_type::regular) {
      return refused(tr("is no regular file; choose another name"));
    }
  }
  if (std::filesystem::exists(target.string() + "-wal", error)) {
    return refused(tr("is in use as a database, or what a program left of one lies beside it; choose another name"));
  }
  return {};
}

}  // namespace

Result<CopiedStore> copyChecked(Database& source, const std::filesystem::path& target,
                                std::chrono::milliseconds busyTimeout) {
  {
    ORLOCAL_TRY(Database copy, Database::open(target, busyTimeout));
    ORLOCAL_CHECK(source.copyInto(copy));
    // It depends on no log: its header says so, and it can be read where nothing can be written.
    ORLOCAL_CHECK(copy.execute("PRAGMA journal_mode=DELETE"));
  }
  ORLOCAL_TRY(Database whole, openStoreAsItIs(target, busyTimeout));
  ORLOCAL_CHECK(checked(whole, source.file()));
  return contentOf(whole);
}

Result<CopiedStore> backUpStore(const std::filesystem::path& file, const std::filesystem::path& target,
                                ExistingFile existing, std::chrono::milliseconds busyTimeout) {
  if (!FileState::of(file)) {
    return failure(ErrorCode::kNotFound,
                   tr("There is no calendar store at \"{}\"; nothing was copied.", file.string()));
  }
  ORLOCAL_CHECK(mayStandAt(target, file, existing));
  UuidMaker uuids;
  ORLOCAL_TRY(Database source, openStoreFile(file, busyTimeout, uuids, Missing::kIsAFailure));
  ORLOCAL_TRY(FileDraft draft, FileDraft::beside(target));
  ORLOCAL_TRY(const CopiedStore content, copyChecked(source, draft.file(), busyTimeout));
  if (existing == ExistingFile::kIsReplaced) {
    ORLOCAL_CHECK(draft.publishInPlaceOf(target));
  } else {
    ORLOCAL_CHECK(draft.publish(target));
  }
  return content;
}

}  // namespace orlocal::store
