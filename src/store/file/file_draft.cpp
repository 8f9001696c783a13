#include "store/file/file_draft.h"

#include <cerrno>
#include <cstring>
#include <system_error>

#include <fmt/format.h>

#include "base/translation.h"

namespace orlocal::store {
namespace {

Failed cannotWrite(const std::filesystem::path& file, int error) {
  const ErrorCode code = error == EACCES || error == EPERM || error == EROFS ? ErrorCode::kNotPermitted
                         : error == ENOSPC || error == EDQUOT                ? ErrorCode::kFull
                                                                             : ErrorCode::kIo;
  return failure(code, tr("The file \"{}\" cannot be written: {}.", file.string(), std::strerror(error)));
}

}  // namespace

Result<FileDraft> FileDraft::beside(const std::filesystem::path& target) {
  auto entry = DraftEntry::in(target.parent_path());
  if (!entry) { return cannotWrite(target, errno); }
  // SQLite loses its locks on a file that this process closes elsewhere.
  if (const int error = entry->letGo(); error != 0) { return cannotWrite(target, error); }
  auto file = target.parent_path() / entry->name();
  return FileDraft(std::move(*entry), std::move(file));
}

FileDraft::~FileDraft() { removeWhatIsBeside(); }

void FileDraft::removeWhatIsBeside() const {
  if (m_file.empty()) { return; }
  std::error_code ignored;
  for (const char* suffix : kBeside) { std::filesystem::remove(m_file.string() + suffix, ignored); }
}

Status FileDraft::publish(const std::filesystem::path& target) { return moveTo(target, DraftEntry::Existing::kStays); }
Status FileDraft::publishInPlaceOf(const std::filesystem::path& target) {
  return moveTo(target, DraftEntry::Existing::kIsReplaced);
}

Status FileDraft::moveTo(const std::filesystem::path& target, DraftEntry::Existing existing) {
  const int error = m_entry.publish(target.filename().string(), existing);
  if (error == EEXIST) {
    return failure(ErrorCode::kInvalid, tr("The file \"{}\" is there already; choose another name.", target.string()));
  }
  if (error != 0) { return cannotWrite(target, error); }
  removeWhatIsBeside();
  m_file.clear();
  return {};
}

}  // namespace orlocal::store
