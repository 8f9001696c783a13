#include "store/left_drafts.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

#include "base/system_reason.h"
#include "base/translation.h"
#include "store/file/draft_entry.h"
#include "store/file/file_draft.h"

namespace orlocal::store {
namespace {

namespace fs = std::filesystem;

/// None of what is not there, or is no file.
std::optional<struct stat> fileAt(const fs::path& path) {
  struct stat found {};
  if (::lstat(path.c_str(), &found) != 0 || !S_ISREG(found.st_mode)) { return std::nullopt; }
  return found;
}

bool isOurs(const struct stat& file) { return file.st_uid == ::geteuid() || ::geteuid() == 0; }

}  // namespace

std::vector<LeftDraft> draftsLeftIn(const fs::path& folder, std::chrono::seconds unwrittenFor) {
  std::vector<LeftDraft> left;
  const auto now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  std::error_code error;
  for (fs::directory_iterator entry(folder.empty() ? "." : folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const fs::path file = entry->path();
    if (!DraftEntry::isNameOfOne(file.filename().string())) { continue; }
    const auto found = fileAt(file);
    if (!found || !isOurs(*found)) { continue; }
    std::time_t written = found->st_mtime;
    LeftDraft draft{file, static_cast<std::uintmax_t>(found->st_size)};
    for (const char* suffix : FileDraft::kBeside) {
      const auto beside = fileAt(file.string() + suffix);
      if (!beside) { continue; }
      draft.bytes += static_cast<std::uintmax_t>(beside->st_size);
      written = std::max(written, beside->st_mtime);
    }
    if (now - written >= unwrittenFor.count()) { left.push_back(std::move(draft)); }
  }
  std::sort(left.begin(), left.end(), [](const LeftDraft& a, const LeftDraft& b) { return a.file < b.file; });
  return left;
}

Status removeLeft(const LeftDraft& draft) {
  for (const char* suffix : FileDraft::kBeside) { ::unlink((draft.file.string() + suffix).c_str()); }
  if (::unlink(draft.file.c_str()) != 0 && errno != ENOENT) {
    return failure(ErrorCode::kIo, tr("{} cannot be removed: {}", draft.file.string(), systemReason(errno)));
  }
  return {};
}

}  // namespace orlocal::store
