#include "host/commands/installing/bundle_draft.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/system_reason.h"
#include "base/translation.h"
#include "base/try.h"

namespace orlocal::host {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kDraftName = ".orlocal-install-";
constexpr mode_t kFolderMode = 0755;
constexpr mode_t kProgramMode = 0755;
constexpr mode_t kFileMode = 0644;

Status copyFile(const fs::path& from, const fs::path& to, const FileOwner& owner, mode_t mode) {
  std::error_code error;
  fs::copy_file(from, to, error);
  if (error) { return failure(ErrorCode::kIo, tr("{} cannot be written: {}", to.string(), error.message())); }
  return give(to, owner, mode);
}

/// Files and folders alone: nothing else is part of a bundle.
Status copyPart(const fs::path& from, const fs::path& to, const FileOwner& owner) {
  std::error_code error;
  if (!fs::is_directory(from, error)) { return copyFile(from, to, owner, kProgramMode); }
  if (::mkdir(to.c_str(), kFolderMode) != 0) {
    return failure(ErrorCode::kIo, tr("{} cannot be made: {}", to.string(), systemReason(errno)));
  }
  ORLOCAL_CHECK(give(to, owner, kFolderMode));
  for (fs::directory_iterator entry(from, error), end; !error && entry != end; entry.increment(error)) {
    const fs::path copy = to / entry->path().filename();
    if (entry->is_directory()) {
      ORLOCAL_CHECK(copyPart(entry->path(), copy, owner));
    } else {
      ORLOCAL_CHECK(copyFile(entry->path(), copy, owner, kFileMode));
    }
  }
  return error ? Status(failure(ErrorCode::kIo, tr("{} cannot be read: {}", from.string(), error.message())))
               : Status();
}

/// Both change places in one step where both are there; zero, or the system's number of the error.
int trade(const fs::path& ours, const fs::path& theirs) {
  if (!standsThere(theirs)) { return ::rename(ours.c_str(), theirs.c_str()) == 0 ? 0 : errno; }
  if (!standsThere(ours)) { return ::rename(theirs.c_str(), ours.c_str()) == 0 ? 0 : errno; }
  if (::renameat2(AT_FDCWD, ours.c_str(), AT_FDCWD, theirs.c_str(), RENAME_EXCHANGE) == 0) { return 0; }
  if (errno != EINVAL && errno != ENOSYS) { return errno; }
  // A file system that knows no exchange, such as one of a network: three steps then.
  const fs::path between = ours.string() + ".former";
  if (::rename(theirs.c_str(), between.c_str()) != 0) { return errno; }
  if (::rename(ours.c_str(), theirs.c_str()) != 0) {
    const int error = errno;
    static_cast<void>(::rename(between.c_str(), theirs.c_str()));
    return error;
  }
  if (::rename(between.c_str(), ours.c_str()) == 0) { return 0; }
  const int error = errno;
  static_cast<void>(::rename(theirs.c_str(), ours.c_str()));
  static_cast<void>(::rename(between.c_str(), theirs.c_str()));
  return error;
}

Result<fs::path> hiddenFolder(const fs::path& folder) {
  std::string pattern = (folder / kDraftName).string() + "XXXXXX";
  if (::mkdtemp(pattern.data()) == nullptr) {
    return failure(
        errno == EACCES || errno == EPERM ? ErrorCode::kNotPermitted : ErrorCode::kIo,
        tr("nothing can be put into {}: {}; whoever may write there (root) can", folder.string(), systemReason(errno)));
  }
  return fs::path(pattern);
}

}  // namespace

bool standsThere(const fs::path& path) {
  std::error_code error;
  return fs::exists(fs::symlink_status(path, error));
}

std::vector<fs::path> bundleParts(const fs::path& plugin) {
  return {fs::path(plugin).replace_extension(".resources"), fs::path(plugin).replace_extension(".libraries"), plugin};
}

Result<FolderTurn> FolderTurn::take(const fs::path& folder) {
  const int opened = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (opened < 0) {
    return failure(ErrorCode::kNotFound, tr("{}: {}; --folder names the folder that your host loads plug-ins from",
                                            folder.string(), systemReason(errno)));
  }
  FolderTurn turn(opened);
  if (::flock(opened, LOCK_EX | LOCK_NB) != 0) {
    return failure(ErrorCode::kBusy,
                   tr("another install-plugin is at work in {}; wait until it has ended", folder.string()));
  }
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
    if (entry.path().filename().string().starts_with(kDraftName)) { fs::remove_all(entry.path(), error); }
  }
  return turn;
}

FolderTurn::~FolderTurn() {
  if (m_descriptor >= 0) { ::close(m_descriptor); }
}

void FolderTurn::finish() const { static_cast<void>(::fsync(m_descriptor)); }

Result<BundleDraft> BundleDraft::ofNothing(const fs::path& plugin, const fs::path& folder) {
  ORLOCAL_TRY(fs::path hidden, hiddenFolder(folder));
  return BundleDraft(std::move(hidden), plugin.filename());
}

Result<BundleDraft> BundleDraft::copyOf(const fs::path& plugin, const fs::path& folder, const FileOwner& owner) {
  ORLOCAL_TRY(BundleDraft draft, ofNothing(plugin, folder));
  for (const fs::path& part : bundleParts(plugin)) {
    if (standsThere(part)) { ORLOCAL_CHECK(copyPart(part, draft.m_folder / part.filename(), owner)); }
  }
  // Last, so that nobody else reaches into it while it is filled.
  ORLOCAL_CHECK(give(draft.m_folder, owner, kFolderMode));
  return draft;
}

Status BundleDraft::putInPlace() {
  for (const fs::path& ours : bundleParts(plugin())) {
    const fs::path theirs = m_folder.parent_path() / ours.filename();
    if (!standsThere(ours) && !standsThere(theirs)) { continue; }
    if (const int error = trade(ours, theirs); error != 0) {
      return failure(ErrorCode::kIo, tr("{} cannot be replaced: {}", theirs.string(), systemReason(error)));
    }
    m_swapped.emplace_back(ours, theirs);
  }
  return {};
}

BundleDraft::~BundleDraft() {
  if (m_folder.empty()) { return; }
  for (auto swapped = m_swapped.rbegin(); swapped != m_swapped.rend(); ++swapped) {
    static_cast<void>(trade(swapped->first, swapped->second));
  }
  std::error_code ignored;
  fs::remove_all(m_folder, ignored);
}

}  // namespace orlocal::host
