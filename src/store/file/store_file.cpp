#include "store/file/store_file.h"

#include <cerrno>
#include <cstring>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include "base/translation.h"
#include "base/try.h"
#include "store/file/change_signal.h"
#include "store/file/side_files.h"

namespace orlocal::store {
namespace {

using std::chrono::milliseconds;

/// File systems round the time of writing, the coarsest of them to two seconds.
constexpr auto kRoundedTimes = std::chrono::seconds(2);
/// A file that is only read because the disk is full is opened anew after so long.
constexpr auto kWithoutRoom = milliseconds(100);

std::filesystem::path beside(const std::filesystem::path& file, const char* suffix) { return file.string() + suffix; }

int openedBell(const std::filesystem::path& file) { return openBeside(file, "-bell", O_RDONLY); }

bool sameFile(const std::optional<FileState>& one, const std::optional<FileState>& other) {
  return one && other && one->isSameFileAs(*other);
}

}  // namespace

Result<PlaceTurn> PlaceTurn::take(const std::filesystem::path& file, Purpose purpose, milliseconds patience) {
  int descriptor = openedBell(file);
  if (descriptor < 0 && purpose == Purpose::kReplace) {
    { const Bell made(file); }
    descriptor = openedBell(file);
  }
  if (descriptor < 0) { return PlaceTurn(-1); }
  PlaceTurn turn(descriptor);
  const auto deadline = std::chrono::steady_clock::now() + patience;
  while (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
    // Where files cannot be locked in this way, SQLite's own locks are what there is.
    if (errno != EWOULDBLOCK && errno != EINTR) { break; }
    if (std::chrono::steady_clock::now() >= deadline) {
      return failure(ErrorCode::kBusy, tr("The calendar store \"{}\" is being replaced by another process and "
                                          "did not become free in time; try again.",
                                          file.string()));
    }
    std::this_thread::sleep_for(milliseconds(2));
  }
  return turn;
}

PlaceTurn::~PlaceTurn() {
  if (m_descriptor >= 0) { ::close(m_descriptor); }
}

Result<Database> StoreFile::open(Missing missing, milliseconds busyTimeout, UuidMaker& uuids) {
  for (;;) {
    // All who use the file must ring the same bell, whatever link or relative name led them here.
    std::error_code unresolved;
    auto resolved = std::filesystem::canonical(m_path, unresolved);
    m_file = unresolved ? m_path : std::move(resolved);
    ORLOCAL_TRY(const PlaceTurn turn, PlaceTurn::take(m_file, PlaceTurn::Purpose::kOpen, busyTimeout));
    if (missing == Missing::kIsAFailure && !FileState::of(m_file)) {
      return failure(ErrorCode::kIo, tr("The calendar store \"{}\" was removed or replaced while it was in use; "
                                        "put it back, or open the store anew.",
                                        m_path.string()));
    }
    const auto before = FileState::of(m_file);
    ORLOCAL_TRY(Database opened, openStoreFile(m_file, busyTimeout, uuids, missing));
    const auto after = FileState::of(m_file);
    if (unresolved) {
      if (auto made = std::filesystem::canonical(m_path, unresolved); !unresolved) { m_file = std::move(made); }
    }
    // One that was replaced at this moment may have been opened with the other's log.
    if (!after || (before && !before->isSameFileAs(*after))) { continue; }
    // For one that nobody takes part in, the state from before counts: what was written since is not seen.
    remember(opened.immutable() && before ? *before : *after);
    return opened;
  }
}

void StoreFile::remember(const FileState& state) {
  m_opened = std::chrono::steady_clock::now();
  m_another = m_state && !m_state->isSameFileAs(state);
  m_state = state;
  m_log = FileState::of(beside(m_file, "-wal"));
  m_index = FileState::of(beside(m_file, "-shm"));
  const auto written = std::chrono::nanoseconds(state.written);
  m_settled = std::chrono::system_clock::now().time_since_epoch() - written > kRoundedTimes;
}

Result<StoreFile::News> StoreFile::look(const Database& open) const {
  const auto now = FileState::of(m_path);
  if (!now) {
    return failure(ErrorCode::kIo,
                   tr("The calendar store \"{}\" was removed or replaced while it was in use, or its folder "
                      "cannot be reached ({}). Put it back, or open the store anew.",
                      m_path.string(), std::strerror(errno)));
  }
  if (!now->isSameFileAs(*m_state)) { return News::kReplaced; }
  // There may be room again; and to read alone keeps others from the file.
  if (open.whyOnlyRead()) {
    return std::chrono::steady_clock::now() - m_opened < kWithoutRoom ? News::kNone : News::kWritten;
  }
  if (!open.immutable()) { return News::kNone; }
  // Somebody who writes has a log, and lets go of it when all of it is in the file.
  const bool same = m_settled && *now == *m_state && !FileState::of(beside(m_file, "-wal"));
  return same ? News::kNone : News::kWritten;
}

Status StoreFile::partFromLog(Database& replaced, milliseconds patience) const {
  if (replaced.readOnly()) { return {}; }
  ORLOCAL_TRY(const PlaceTurn turn, PlaceTurn::take(m_file, PlaceTurn::Purpose::kReplace, patience));
  replaced.emptyLog();
  const auto log = beside(m_file, "-wal");
  const auto index = beside(m_file, "-shm");
  std::error_code ignored;
  // Others who had the old file open too may have been here before, and what lies there now is the new file's.
  if (const auto there = FileState::of(log); sameFile(there, m_log)) {
    if (there->size == 0) {
      std::filesystem::remove(log, ignored);
    } else {
      std::filesystem::rename(log, log.string() + fmt::format(".replaced-{:x}", there->number), ignored);
    }
  }
  if (sameFile(FileState::of(index), m_index)) { std::filesystem::remove(index, ignored); }
  return {};
}

}  // namespace orlocal::store
